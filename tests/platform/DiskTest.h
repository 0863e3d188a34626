// A disk and a scratch folder, as tests of file systems use them.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/Disks.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {

class DiskTest : public testing::Test {
 protected:
  explicit DiskTest(std::unique_ptr<FileSystem> disk) : disk_(std::move(disk)) {}

  Status copy(const std::string& from, const std::string& to,
              StagedCopy::Existing existing = StagedCopy::Existing::Keep) {
    auto staged = files.stageCopy({folder / from, folder / to, {}, Links::DoNotFollow});
    if (!staged) return staged.error();
    return (*staged)->commit(existing);
  }
  std::vector<std::string> names(const std::string& path) {
    std::vector<std::string> result;
    auto entries = files.list(path, Detail::Names);
    if (entries)
      for (const auto& entry : *entries) result.push_back(entry.name);
    std::sort(result.begin(), result.end());
    return result;
  }
  // All that a folder holds: paths, and what files contain.
  std::vector<std::string> everything(const std::string& path) {
    std::vector<std::string> result;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
      result.push_back(entry.path().string() + (entry.is_regular_file() ? readFile(entry.path()) : ""));
    std::sort(result.begin(), result.end());
    return result;
  }
  struct stat status(const std::string& path) {
    struct stat result {};
    lstat(path.c_str(), &result);
    return result;
  }

  ScratchFolder folder;

 private:
  std::unique_ptr<FileSystem> disk_;

 protected:
  FileSystem& files = *disk_;
};

// What every platform promises.
class FileSystemTest : public DiskTest, public testing::WithParamInterface<Disk> {
 protected:
  FileSystemTest() : DiskTest(GetParam().files()) {}

  const EmulatedVolume volume{GetParam()};

  static bool copiesAtOneMoment() { return GetParam().isMac && GetParam().volume.clones; }
};

}  // namespace vantory::test
