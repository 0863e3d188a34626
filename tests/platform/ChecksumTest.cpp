// Checksums that copies carry: those of the bytes in the copy, and a reason not to copy what is damaged.
#include "tests/platform/ChecksumTest.h"

#include <filesystem>

namespace vantory::test {
namespace {

INSTANTIATE_TEST_SUITE_P(On, ChecksumTest, testing::ValuesIn(disks()), nameOfDisk);

TEST_P(ChecksumTest, ACopyCarriesWhatItsBytesAre) {
  writeFile(folder / "from/small", "hello\n");
  writeFile(folder / "from/empty", "");
  writeFile(folder / "from/sub/large", std::string(3'000'000, 'x'));
  writeFile(folder / "from/holes", "begin");
  std::filesystem::resize_file(folder / "from/holes", 2'000'000);
  carry(folder / "from/small", "of what it was copied from");
  ASSERT_TRUE(copy(folder / "from", folder / "to", CopyChecksum::Make).ok());
  for (const char* name : {"small", "empty", "sub/large", "holes"}) {
    const FileChecksum checksum = checksumOf(folder / "to/" + name);
    EXPECT_EQ(checksum.carried, checksum.content) << name;
    EXPECT_EQ(readFile(folder / "to/" + name), readFile(folder / "from/" + name)) << name;
  }
  EXPECT_EQ(checksumOf(folder / "to/small").content, "6bba86c7e069f56d5a10b435f1c8e49c");  // by xxh128sum
}

TEST_P(ChecksumTest, OfASourceThatChangesMeanwhileItIsThatOfTheCopy) {
  if (GetParam().isMac && GetParam().volume.clones) GTEST_SKIP() << "a clone is made at one moment";
  writeFile(folder / "file", std::string(3'000'000, 'a'));
  bool changed = false;
  ASSERT_TRUE(copy(folder / "file", folder / "copy", CopyChecksum::Make, [&](std::int64_t, int) {
                if (!changed) writeFile(folder / "file", std::string(2'000'000, 'b'));
                return changed = true;
              }).ok());
  EXPECT_EQ(readFile(folder / "copy"), std::string(2'000'000, 'b'));
  EXPECT_EQ(checksumOf(folder / "copy").carried, checksumOf(folder / "copy").content);
}

TEST_P(ChecksumTest, WhatIsDamagedIsNotCopied) {
  for (const char* name : {"flipped", "long", "whole", "without"}) writeFile(folder / "live/" + name, name);
  ASSERT_TRUE(copy(folder / "live", folder / "kept", CopyChecksum::Make).ok());
  writeFile(folder / "kept/flipped", "Flipped");
  carry(folder / "kept/long", std::string(300, 'a'));
  ASSERT_TRUE(GetParam().setAttribute(folder / "kept/without", kChecksumAttribute, std::nullopt));
  for (const char* name : {"flipped", "long", ""}) {
    EXPECT_EQ(copy(folder / "kept/" + name, folder / "back", CopyChecksum::Check).error().code, std::errc::bad_message);
    EXPECT_FALSE(exists(folder / "back"));
  }
  for (const char* name : {"whole", "without"}) {
    ASSERT_TRUE(copy(folder / "kept/" + name, folder / name, CopyChecksum::Check).ok());
    EXPECT_EQ(checksumOf(folder / name).carried, std::nullopt);
  }
}

TEST_P(ChecksumTest, NothingOutsideOfTheFolderIsRead) {
  writeFile(folder / "outside", "content");
  writeFile(folder / "in/file", "content");
  std::filesystem::create_symlink("../outside", folder / "in/link");
  const auto in = checksums->ofFolder(folder / "in");
  EXPECT_TRUE((*in)->ofFile("file").ok());
  for (const char* path : {"../outside", "link", "../in/file", "/etc/passwd", ""})
    EXPECT_FALSE((*in)->ofFile(path).ok()) << path;
}

}  // namespace
}  // namespace vantory::test
