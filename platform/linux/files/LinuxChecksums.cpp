// Opens files without following links, and reads what they hold and carry.
#include "platform/linux/files/LinuxChecksums.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <memory>
#include <mutex>
#include <string_view>

#include "base/Checksum.h"
#include "base/Paths.h"
#include "platform/linux/files/CarriedChecksum.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/FileContent.h"

namespace vantory {
namespace {

Error noFile(const std::string& path) {
  return errorWithText(std::errc::invalid_argument, path, "is no file");
}

class OpenFolderChecksums : public FolderChecksums {
 public:
  OpenFolderChecksums(Descriptor folder, std::string path, const FileRights& rights)
      : folder_(std::move(folder)), path_(std::move(path)), rights_(rights) {}

  Result<FileChecksum> ofFile(const std::string& pathBelow) const override;

 private:
  using Opened = std::shared_ptr<const Descriptor>;

  std::string whole(const std::string& pathBelow) const { return paths::join(path_, pathBelow); }
  Opened openFolder(std::string_view pathBelow) const;
  Descriptor open(const std::string& pathBelow) const;

  Descriptor folder_;
  std::string path_;
  const FileRights& rights_;
  mutable std::mutex mutex_;
  mutable std::string lastPath_;
  mutable Opened last_;
};

// Kept for the next file, which as a rule lies in the same.
OpenFolderChecksums::Opened OpenFolderChecksums::openFolder(std::string_view pathBelow) const {
  const std::lock_guard lock(mutex_);
  if (last_ && lastPath_ == pathBelow) return last_;
  auto opened =
      std::make_shared<const Descriptor>(openBeneath(folder_.get(), std::string(pathBelow), O_PATH | O_DIRECTORY));
  if (!opened->valid()) return opened;
  lastPath_ = pathBelow;
  return last_ = std::move(opened);
}

Descriptor OpenFolderChecksums::open(const std::string& pathBelow) const {
  constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY;
  const std::size_t slash = pathBelow.rfind('/');
  if (slash == std::string::npos) return openBeneath(folder_.get(), pathBelow, kFlags);
  const Opened above = openFolder(std::string_view(pathBelow).substr(0, slash));
  return above->valid() ? openBeneath(above->get(), pathBelow.substr(slash + 1), kFlags) : Descriptor();
}

Result<FileChecksum> OpenFolderChecksums::ofFile(const std::string& pathBelow) const {
  const FileRights::Scope scope(rights_);
  const Descriptor file = open(pathBelow);
  struct stat status;
  if (!file.valid() || fstat(file.get(), &status) != 0) return systemError(whole(pathBelow));
  if (!S_ISREG(status.st_mode)) return noFile(whole(pathBelow));
  FileChecksum result;
  Checksum checksum;
  const auto count = [&](std::size_t bytes) {
    result.bytes += bytes;
    return true;
  };
  if (!addContent(file.get(), static_cast<std::uint64_t>(status.st_size), checksum, count))
    return systemError(whole(pathBelow));
  result.content = checksum.text();
  result.carried = carriedText(file.get(), kChecksumAttribute);
  return result;
}

}  // namespace

Result<std::unique_ptr<FolderChecksums>> LinuxChecksums::ofFolder(const std::string& folder) const {
  const FileRights::Scope scope(rights_);
  Result<Place> place = rights_.locate(folder);
  if (!place) return place.error();
  Descriptor opened(
      openat(place->at(), place->name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC | rights_.noFollowFlag()));
  if (!opened.valid()) return systemError(folder);
  return std::unique_ptr<FolderChecksums>(std::make_unique<OpenFolderChecksums>(std::move(opened), folder, rights_));
}

Result<Descriptor> LinuxChecksums::openFile(const std::string& path) const {
  Result<Place> place = rights_.locate(path);
  if (!place) return place.error();
  Descriptor file(uninterrupted([&] {
    return openat(place->at(), place->name.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC);
  }));
  struct stat status;
  if (!file.valid() || fstat(file.get(), &status) != 0) return systemError(path);
  if (!S_ISREG(status.st_mode)) return noFile(path);
  return file;
}

Result<std::optional<std::string>> LinuxChecksums::held(const std::string& path) const {
  const FileRights::Scope scope(rights_);
  const Result<Descriptor> file = openFile(path);
  if (!file) return file.error();
  return carriedText(file->get(), kHeldAttribute);
}

Status LinuxChecksums::setHeld(const std::string& path, const std::optional<std::string>& held) {
  const FileRights::Scope scope(rights_);
  const Result<Descriptor> file = openFile(path);
  if (!file) return file.error();
  const bool done = held ? carryText(file->get(), kHeldAttribute, *held)
                         : fremovexattr(file->get(), kHeldAttribute) == 0 || errno == ENODATA;
  if (!done) return systemError(path);
  return {};
}

}  // namespace vantory
