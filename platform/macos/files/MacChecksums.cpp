// Opens files without following links, and reads what they hold and carry.
#include "platform/macos/files/MacChecksums.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "base/Checksum.h"
#include "base/Paths.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/files/Items.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/FileContent.h"

namespace vantory {

namespace {

// What was opened, if it is a regular file.
Result<Descriptor> regular(Descriptor file, const std::string& path, darwin::ItemStatus& status) {
  if (!file.valid() || darwin::statusOf(file.get(), status) != 0) return systemError(path);
  if (!S_ISREG(status.mode)) return errorWithText(std::errc::invalid_argument, path, "is no file");
  return file;
}

Result<Descriptor> openFile(const std::string& path) {
  const int opened =
      uninterrupted([&] { return darwin::openAt(AT_FDCWD, path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW); });
  darwin::ItemStatus status;
  return regular(Descriptor(opened), path, status);
}

class OpenFolderChecksums : public FolderChecksums {
 public:
  OpenFolderChecksums(Descriptor folder, std::string path) : folder_(std::move(folder)), path_(std::move(path)) {}

  Result<FileChecksum> ofFile(const std::string& pathBelow) const override;

 private:
  Descriptor folder_;
  std::string path_;
};

Result<FileChecksum> OpenFolderChecksums::ofFile(const std::string& pathBelow) const {
  const std::string path = paths::join(path_, pathBelow);
  darwin::ItemStatus status;
  const Result<Descriptor> file =
      regular(macos::openBeneath(folder_.get(), pathBelow, O_RDONLY | O_NONBLOCK), path, status);
  if (!file) return file.error();
  FileChecksum result;
  Checksum checksum;
  const auto count = [&](std::size_t bytes) {
    result.bytes += bytes;
    return true;
  };
  if (!addContent(file->get(), status.size, checksum, count)) return systemError(path);
  result.content = checksum.text();
  result.carried = macos::carriedText(file->get(), kChecksumAttribute);
  return result;
}

}  // namespace

std::optional<std::string> macos::carriedText(int file, const char* attribute) {
  char value[64];
  const ssize_t length = darwin::attribute(file, attribute, value, sizeof value, 0);
  if (length >= 0) return std::string(value, static_cast<std::size_t>(length));
  if (errno == darwin::kNoAttribute || darwin::isUnsupported(errno)) return std::nullopt;
  return "";
}

Result<std::unique_ptr<FolderChecksums>> MacChecksums::ofFolder(const std::string& folder) const {
  Descriptor opened(darwin::openAt(AT_FDCWD, folder.c_str(), O_RDONLY | O_DIRECTORY));
  if (!opened.valid()) return systemError(folder);
  return std::unique_ptr<FolderChecksums>(std::make_unique<OpenFolderChecksums>(std::move(opened), folder));
}

Result<std::optional<std::string>> MacChecksums::held(const std::string& path) const {
  const Result<Descriptor> file = openFile(path);
  if (!file) return file.error();
  return macos::carriedText(file->get(), kHeldAttribute);
}

Status MacChecksums::setHeld(const std::string& path, const std::optional<std::string>& held) {
  const Result<Descriptor> file = openFile(path);
  if (!file) return file.error();
  const int done = held ? darwin::setAttribute(file->get(), kHeldAttribute, held->data(), held->size(), 0)
                        : darwin::removeAttribute(file->get(), kHeldAttribute);
  if (done != 0 && darwin::isUnsupported(errno)) return systemError(path, EOPNOTSUPP);
  if (done != 0 && (held || errno != darwin::kNoAttribute)) return systemError(path);
  return {};
}

}  // namespace vantory
