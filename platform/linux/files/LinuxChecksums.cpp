// Opens files without following links, and reads what they hold and carry.
#include "platform/linux/files/LinuxChecksums.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "base/Checksum.h"
#include "platform/linux/files/CarriedChecksum.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/FileContent.h"

namespace vantory {
namespace {

Status regular(int file, const std::string& path, struct stat& status) {
  if (fstat(file, &status) != 0) return systemError(path);
  if (!S_ISREG(status.st_mode)) return errorWithText(std::errc::invalid_argument, path, "is no file");
  return {};
}

class OpenFolderChecksums : public FolderChecksums {
 public:
  OpenFolderChecksums(Descriptor folder, std::string path, const FileRights& rights)
      : folder_(std::move(folder)), path_(std::move(path)), rights_(rights) {}

  Result<FileChecksum> ofFile(const std::string& path) const override;

 private:
  Descriptor folder_;
  std::string path_;
  const FileRights& rights_;
};

Result<FileChecksum> OpenFolderChecksums::ofFile(const std::string& path) const {
  const FileRights::Scope scope(rights_);
  if (!path.starts_with(path_ + "/"))
    return errorWithText(std::errc::invalid_argument, path, "does not lie in " + path_);
  const Descriptor file =
      openBeneath(folder_.get(), path.substr(path_.size() + 1), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (!file.valid()) return systemError(path);
  struct stat status;
  if (const Status isFile = regular(file.get(), path, status); !isFile) return isFile.error();
  FileChecksum result;
  Checksum checksum;
  const auto count = [&](std::size_t bytes) {
    result.bytes += bytes;
    return true;
  };
  if (!addContent(file.get(), static_cast<std::uint64_t>(status.st_size), checksum, count)) return systemError(path);
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
  if (!file.valid()) return systemError(path);
  struct stat status;
  if (const Status isFile = regular(file.get(), path, status); !isFile) return isFile.error();
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
