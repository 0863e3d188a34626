// Looks at owner and mode of what is open, so that nothing can be exchanged between the look and the reading.
#include "platform/posix/system/PosixTrustedFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>

#include "base/Paths.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/kernel/Kernel.h"

namespace vantory {
namespace {

constexpr const char* kIsLink = "is a symbolic link, which is not followed: put what it leads to in its place";

Error distrust(const std::string& path, const std::string& reason) {
  return {std::errc::operation_not_permitted, path + " " + reason};
}

Status checkOwner(int item, const std::string& path, TrustedOwners owners) {
  struct stat status;
  if (fstat(item, &status) != 0) return systemError(path);
  const bool onlySuperuser = owners == TrustedOwners::Superuser;
  if (status.st_uid != 0 && onlySuperuser)
    return distrust(path, "does not belong to root: make it root's (chown root)");
  if (status.st_uid != 0 && status.st_uid != geteuid())
    return distrust(path, "belongs to another user: make it yours (chown)");
  if ((status.st_mode & (onlySuperuser ? S_IWGRP | S_IWOTH : S_IWOTH)) != 0)
    return distrust(path, "may be changed by other users: take that right from them (chmod go-w)");
  return {};
}

bool isLink(int folder, const std::string& name) {
  struct stat status;
  return fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
}

// Reached from the root by folders that are the superuser's alone, none of them a link.
Result<Descriptor> openBelowTrusted(const std::string& path) {
  constexpr int kFlags = kernel::kPassOnly | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  std::string walked;
  Descriptor folder(open("/", kFlags));
  for (const std::string_view component : paths::components(path)) {
    if (component != "/") {
      const std::string name(component);
      walked.append("/").append(name);
      Descriptor next(openat(folder.get(), name.c_str(), kFlags));
      if (!next.valid() && isLink(folder.get(), name)) return distrust(walked, kIsLink);
      folder = std::move(next);
    }
    if (!folder.valid()) return systemError(walked);
    if (Status trusted = checkOwner(folder.get(), walked.empty() ? "/" : walked, TrustedOwners::Superuser); !trusted)
      return trusted.error();
  }
  Descriptor readable(openat(folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!readable.valid()) return systemError(path);
  return readable;
}

// Of a missing folder the first look says all.
Result<Descriptor> openFolder(const std::string& path, TrustedOwners owners) {
  Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.valid()) return systemError(path);
  if (owners == TrustedOwners::Superuser) return openBelowTrusted(path);
  if (const Status trusted = checkOwner(folder.get(), path, owners); !trusted) return trusted.error();
  return folder;
}

Result<std::vector<std::string>> namesIn(int folder, const std::string& path) {
  Descriptor twin(fcntl(folder, F_DUPFD_CLOEXEC, 0));
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(twin.valid() ? fdopendir(twin.get()) : nullptr, closedir);
  if (!entries) return systemError(path);
  twin.release();
  std::vector<std::string> names;
  for (errno = 0; const dirent* entry = readdir(entries.get()); errno = 0) names.emplace_back(entry->d_name);
  if (errno != 0) return systemError(path);
  return names;
}

Result<std::string> readFile(int folder, const std::string& name, const std::string& path, std::size_t limit,
                             TrustedOwners owners) {
  const Descriptor file(uninterrupted(
      [&] { return openat(folder, name.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC); }));
  if (!file.valid() && errno == ELOOP) return distrust(path, kIsLink);
  struct stat status;
  if (!file.valid() || fstat(file.get(), &status) != 0) return systemError(path);
  if (!S_ISREG(status.st_mode)) return distrust(path, "is no file");
  if (const Status trusted = checkOwner(file.get(), path, owners); !trusted) return trusted.error();
  std::string bytes(limit + 1, '\0');
  std::size_t size = 0;
  while (size < bytes.size()) {
    const ssize_t count = uninterrupted([&] { return ::read(file.get(), bytes.data() + size, bytes.size() - size); });
    if (count < 0) return systemError(path);
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  if (size > limit) return systemError(path, EFBIG);
  bytes.resize(size);
  return bytes;
}

}  // namespace

Result<std::vector<TrustedFile>> PosixTrustedFiles::read(const std::string& path, std::string_view ending,
                                                         Limits limits, TrustedOwners owners) const {
  const auto folder = openFolder(path, owners);
  if (!folder && meansMissing(folder.error())) return std::vector<TrustedFile>();
  if (!folder) return folder.error();
  auto names = namesIn(folder->get(), path);
  if (!names) return names.error();
  std::erase_if(*names, [&](const std::string& name) { return name.starts_with('.') || !name.ends_with(ending); });
  if (names->size() > limits.files) return distrust(path, "holds more than " + std::to_string(limits.files) + " files");
  std::sort(names->begin(), names->end());
  std::vector<TrustedFile> files;
  for (const std::string& name : *names) {
    std::string file = paths::join(path, name);
    auto bytes = readFile(folder->get(), name, file, limits.bytes, owners);
    files.push_back({std::move(file), std::move(bytes)});
  }
  return files;
}

}  // namespace vantory
