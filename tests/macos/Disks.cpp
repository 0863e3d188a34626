// The Mac's own disk, for tests that run there.
#include "tests/platform/Disks.h"

#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/files/MacChecksums.h"
#include "platform/macos/files/MacFileMetadata.h"
#include "platform/macos/files/MacFileSystem.h"

namespace vantory::test {

std::unique_ptr<FileSystem> Disk::files() const {
  return std::make_unique<MacFileSystem>();
}

std::unique_ptr<Checksums> Disk::checksums() const {
  return std::make_unique<MacChecksums>();
}

std::unique_ptr<FileMetadata> Disk::metadata() const {
  return std::make_unique<MacFileMetadata>();
}

bool Disk::setAttribute(const std::string& path, const std::string& name,
                        const std::optional<std::string>& value) const {
  if (!value) return darwin::removeAttributeAt(path.c_str(), name.c_str()) == 0;
  return darwin::setAttributeAt(path.c_str(), name.c_str(), value->data(), value->size()) == 0;
}

std::span<const Disk> disks() {
  static const Disk kDisks[] = {{"Mac"}};
  return kDisks;
}

EmulatedVolume::EmulatedVolume(const Disk&) {}

EmulatedVolume::~EmulatedVolume() = default;

}  // namespace vantory::test
