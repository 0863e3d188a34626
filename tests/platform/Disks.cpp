// Linux's disk, and volumes of a Mac on emulated calls.
#include "tests/platform/Disks.h"

#include <sys/xattr.h>

#include "platform/linux/files/LinuxChecksums.h"
#include "platform/linux/files/LinuxFileMetadata.h"
#include "platform/linux/files/LinuxFileSystem.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/files/MacChecksums.h"
#include "platform/macos/files/MacFileMetadata.h"
#include "platform/macos/files/MacFileSystem.h"

namespace vantory::test {

std::unique_ptr<FileSystem> Disk::files() const {
  if (isMac) return std::make_unique<MacFileSystem>();
  return std::make_unique<LinuxFileSystem>();
}

std::unique_ptr<Checksums> Disk::checksums() const {
  if (isMac) return std::make_unique<MacChecksums>();
  return std::make_unique<LinuxChecksums>();
}

std::unique_ptr<FileMetadata> Disk::metadata() const {
  if (isMac) return std::make_unique<MacFileMetadata>();
  return std::make_unique<LinuxFileMetadata>();
}

bool Disk::setAttribute(const std::string& path, const std::string& name,
                        const std::optional<std::string>& value) const {
  const char* const item = path.c_str();
  if (!value) return (isMac ? darwin::removeAttributeAt(item, name.c_str()) : removexattr(item, name.c_str())) == 0;
  if (isMac) return darwin::setAttributeAt(item, name.c_str(), value->data(), value->size()) == 0;
  return setxattr(item, name.c_str(), value->data(), value->size(), 0) == 0;
}

std::span<const Disk> disks() {
  static const Disk kDisks[] = {{"Linux", false},
                                {"Mac"},
                                {"MacThatOnlyRenames", true, {.clones = false}},
                                {"MacOnANetwork", true, {false, false, false, false}}};
  return kDisks;
}

EmulatedVolume::EmulatedVolume(const Disk& disk) {
  darwin::volume() = disk.volume;
}

EmulatedVolume::~EmulatedVolume() {
  darwin::volume() = {};
}

}  // namespace vantory::test
