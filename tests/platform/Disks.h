// The disks that every test of what a platform promises is run on.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <ostream>
#include <span>
#include <string>

#include "platform/Checksums.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "tests/darwin/Volume.h"

namespace vantory::test {

// A platform, and what a volume of its can do.
struct Disk {
  const char* name;
  bool isMac = true;
  darwin::Volume volume = {};

  std::unique_ptr<FileSystem> files() const;
  std::unique_ptr<Checksums> checksums() const;
  std::unique_ptr<FileMetadata> metadata() const;
  // Sets what the program knows as an attribute of that name, or removes it. False where it cannot.
  bool setAttribute(const std::string& path, const std::string& name, const std::optional<std::string>& value) const;
};

inline void PrintTo(const Disk& disk, std::ostream* stream) {
  *stream << disk.name;
}

// Those of the system that the tests are built for.
std::span<const Disk> disks();

inline std::string nameOfDisk(const testing::TestParamInfo<Disk>& info) {
  return info.param.name;
}

// Gives the emulated volumes what the disk has, for one test; where there are none it does nothing.
struct EmulatedVolume {
  explicit EmulatedVolume(const Disk& disk);
  ~EmulatedVolume();
  EmulatedVolume(const EmulatedVolume&) = delete;
  EmulatedVolume& operator=(const EmulatedVolume&) = delete;
};

}  // namespace vantory::test
