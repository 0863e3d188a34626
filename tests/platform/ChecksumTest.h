// Copies with checksums, in a scratch folder.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/platform/Disks.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {

class ChecksumTest : public testing::TestWithParam<Disk> {
 protected:
  Status copy(const std::string& from, const std::string& to, CopyChecksum checksum, CopyObserver observer = {}) {
    auto staged = files->stageCopy({.source = from, .destination = to, .observer = observer, .checksum = checksum});
    return staged ? (*staged)->commit(StagedCopy::Existing::Keep) : staged.error();
  }
  FileChecksum checksumOf(const std::string& path) {
    return *(*checksums->ofFolder(folder.path()))->ofFile(path.substr(folder.path().size() + 1));
  }
  static void carry(const std::string& path, const std::string& text) {
    ASSERT_TRUE(GetParam().setAttribute(path, kChecksumAttribute, text));
  }

  ScratchFolder folder;
  const EmulatedVolume volume{GetParam()};
  const std::unique_ptr<FileSystem> files = GetParam().files();
  const std::unique_ptr<Checksums> checksums = GetParam().checksums();
};

}  // namespace vantory::test
