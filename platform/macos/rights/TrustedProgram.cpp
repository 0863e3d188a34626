// Looks at each step of the way.
#include "platform/macos/rights/TrustedProgram.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "base/Paths.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

Status checkSuperusers(int item, const std::string& path) {
  darwin::ItemStatus status;
  if (darwin::statusOf(item, status) != 0) return systemError(path);
  if (status.owner != 0) return errorWithText(std::errc::operation_not_permitted, path, "does not belong to root");
  if ((status.mode & (S_IWGRP | S_IWOTH)) != 0 || darwin::listGrants(item))
    return errorWithText(std::errc::operation_not_permitted, path, "may be changed by other users");
  return {};
}

}  // namespace

Status checkSuperusersProgram(const std::string& path) {
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK;
  std::string walked;
  Descriptor item(darwin::openAt(AT_FDCWD, "/", kFlags));
  for (const std::string_view component : paths::components(path)) {
    if (component == "..") return systemError(path, EINVAL);
    if (component != "/") {
      walked.append("/").append(component);
      item = Descriptor(darwin::openAt(item.get(), std::string(component).c_str(), kFlags));
    }
    if (!item.valid()) return systemError(walked);
    if (const Status safe = checkSuperusers(item.get(), walked.empty() ? "/" : walked); !safe) return safe;
  }
  darwin::ItemStatus status;
  if (darwin::statusOf(item.get(), status) != 0 || !S_ISREG(status.mode))
    return errorWithText(std::errc::operation_not_permitted, path, "is no program");
  return {};
}

}  // namespace vantory
