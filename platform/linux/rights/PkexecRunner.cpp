// Starts the root helper by pkexec and passes requests on to it.
#include "platform/linux/rights/PkexecRunner.h"

#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <system_error>

#include "platform/posix/rights/AdministratorTools.h"

namespace vantory {
namespace {

constexpr const char* kPkexec = "/usr/bin/pkexec";
// Somebody who knows the password may have to be fetched.
constexpr std::chrono::minutes kPatienceWithPerson{10};

bool onlySuperuserWrites(const std::filesystem::path& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 && status.st_uid == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// The path without links; empty when there is no such file, or when a user could put another in its place.
std::string superusersProgram(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code failure;
  const fs::path real = fs::canonical(path, failure);
  if (failure || !fs::is_regular_file(real, failure)) return {};
  for (fs::path each = real; each != each.parent_path(); each = each.parent_path())
    if (!onlySuperuserWrites(each)) return {};
  return real;
}

}  // namespace

// The dialog belongs to the person's desktop: pkexec's own one on a terminal would be typed into unseen.
bool PkexecRunner::authorize() {
  const std::lock_guard lock(mutex_);
  if (authorized_) return true;
  const std::string program = superusersProgram(VANTORY_LIBEXEC "/vantory-root-helper");
  if (program.empty()) return false;
  auto helper = HelperProcess::start(
      {.path = kPkexec, .arguments = {"--disable-internal-agent", program}, .environment = cleanEnvironment()});
  if (!helper) return false;
  const Result<Message> greeting = helper->channel().receive(kPatienceWithPerson);
  if (!greeting || *greeting != Message{kHelperReady}) return false;
  helper_.emplace(std::move(*helper));
  authorized_ = true;
  return true;
}

void PkexecRunner::release() {
  const std::lock_guard lock(mutex_);
  letGo();
}

// The helper ends with its conversation.
void PkexecRunner::letGo() {
  authorized_ = false;
  helper_.reset();
}

bool PkexecRunner::knows(const std::string& tool) const {
  return AdministratorTools::knows(tool);
}

int PkexecRunner::run(const std::string& tool, const std::vector<std::string>& arguments) {
  const std::lock_guard lock(mutex_);
  if (!helper_) return kFailed;
  const Status sent = helper_->channel().send(requestFor(tool, arguments));
  if (!sent && sent.error().code != std::errc::not_connected) return kFailed;  // the request itself cannot travel
  // Also of a helper that has ended: its last answer may still lie there.
  const Result<Message> answer = helper_->channel().receive();
  if (!answer) letGo();
  return answer && *answer == Message{kHelperDone} ? kDone : kFailed;
}

}  // namespace vantory
