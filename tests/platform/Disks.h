// The disks that every test of what a platform promises is run on.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

#include "platform/linux/files/LinuxChecksums.h"
#include "platform/linux/files/LinuxFileSystem.h"
#include "platform/macos/files/MacChecksums.h"
#include "platform/macos/files/MacFileSystem.h"
#include "tests/darwin/Volume.h"

namespace vantory::test {

// A platform, and what a volume of its can do.
struct Disk {
  const char* name;
  bool isMac = true;
  darwin::Volume volume = {};

  std::unique_ptr<FileSystem> files() const {
    if (isMac) return std::make_unique<MacFileSystem>();
    return std::make_unique<LinuxFileSystem>();
  }
  std::unique_ptr<Checksums> checksums() const {
    if (isMac) return std::make_unique<MacChecksums>();
    return std::make_unique<LinuxChecksums>();
  }
  // What Linux calls an attribute of that name.
  std::string attribute(const std::string& name) const { return isMac ? "user." + name : name; }
};

inline void PrintTo(const Disk& disk, std::ostream* stream) {
  *stream << disk.name;
}

inline const Disk kDisks[] = {{"Linux", false},
                              {"Mac"},
                              {"MacThatOnlyRenames", true, {.clones = false}},
                              {"MacOnANetwork", true, {false, false, false, false}}};

inline std::string nameOfDisk(const testing::TestParamInfo<Disk>& info) {
  return info.param.name;
}

// Gives the emulated volumes what the disk has, for one test.
struct EmulatedVolume {
  explicit EmulatedVolume(const Disk& disk) { darwin::volume() = disk.volume; }
  ~EmulatedVolume() { darwin::volume() = {}; }
  EmulatedVolume(const EmulatedVolume&) = delete;
  EmulatedVolume& operator=(const EmulatedVolume&) = delete;
};

}  // namespace vantory::test
