// The disk as the program sees it: whole copies or none, attributes kept, nothing followed that should not be. What
// every platform promises.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "platform/posix/files/Descriptor.h"
#include "tests/platform/DiskTest.h"

namespace vantory::test {
namespace {

INSTANTIATE_TEST_SUITE_P(On, FileSystemTest, testing::ValuesIn(disks()), nameOfDisk);

// Whoever writes keeps the size, and sets the date back.
TEST_P(FileSystemTest, AFileThatChangesWhileItIsCopiedIsCopiedAnewOrRefused) {
  if (copiesAtOneMoment()) GTEST_SKIP() << "a clone cannot be half a file";
  const std::string path = folder / "file";
  for (const int changes : {1, 99}) {
    writeFile(path, std::string(3 << 20, 'a'));
    const auto before = std::filesystem::last_write_time(path);
    int changed = 0;
    const auto change = [&](std::int64_t, int) {
      if (changed == changes) return true;
      const Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
      const char byte = static_cast<char>('b' + changed++);
      const bool written = pwrite(file.get(), &byte, 1, 0) == 1;
      std::filesystem::last_write_time(path, before);
      return written;
    };
    const auto copy = files.stageCopy({folder / "file", folder / "copy", {}, Links::DoNotFollow, change});
    ASSERT_EQ(copy.ok(), changes == 1);
    if (!copy) {
      EXPECT_EQ(copy.error().code, std::errc::device_or_resource_busy);
      continue;
    }
    ASSERT_TRUE((*copy)->commit(StagedCopy::Existing::Keep).ok());
    EXPECT_EQ(readFile(folder / "copy").front(), 'b');
  }
}

TEST_P(FileSystemTest, NeverCopiesOverSomethingUnlessAskedTo) {
  writeFile(folder / "new", "new");
  writeFile(folder / "old", "old");
  EXPECT_EQ(copy("new", "old").error().code, std::errc::file_exists);
  EXPECT_EQ(readFile(folder / "old"), "old");
  ASSERT_TRUE(copy("new", "old", StagedCopy::Existing::Replace).ok());
  EXPECT_EQ(readFile(folder / "old"), "new");

  // A dangling link bears the name too, and is never written through.
  ASSERT_EQ(symlink((folder / "nowhere").c_str(), (folder / "link").c_str()), 0);
  EXPECT_EQ(copy("new", "link").error().code, std::errc::file_exists);
  EXPECT_FALSE(exists(folder / "nowhere"));
  EXPECT_EQ(names(folder.path()).size(), 3u);
}

TEST_P(FileSystemTest, TakesNoLiveCopyForALeftover) {
  writeFile(folder / "from/file", "x");
  makeFolders(folder / "to");
  const auto live = files.stageCopy({folder / "from", folder / "to/copy"});
  ASSERT_TRUE(live.ok());
  EXPECT_EQ(names(folder / "to").size(), 1u);
  EXPECT_TRUE(files.stageCopy({folder / "from", folder / "to/copy"}).ok());
  ASSERT_TRUE((*live)->commit(StagedCopy::Existing::Keep).ok());
  EXPECT_EQ(readFile(folder / "to/copy/file"), "x");
}

TEST_P(FileSystemTest, CopiesNoFolderIntoItself) {
  writeFile(folder / "from/sub/file", "x");
  makeFolders(folder / "from/library");
  EXPECT_EQ(copy("from", "from/library/copy").error().code, std::errc::invalid_argument);
  EXPECT_TRUE(names(folder / "from/library").empty());
}

TEST_P(FileSystemTest, RefusesWhatIsNoFileWithoutWaiting) {
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_FALSE(files.stageCopy({folder / "pipe", folder / "copy"}).ok());
  EXPECT_FALSE(files.read(folder / "pipe").ok());
  EXPECT_FALSE(files.haveSameContent(folder / "pipe", folder / "pipe").ok());
  EXPECT_FALSE(files.openForAppending(folder / "pipe").ok());
  EXPECT_FALSE(files.read(folder.path()).ok());
  EXPECT_EQ(files.info("relative", Links::Follow).error().code, std::errc::invalid_argument);
}

TEST_P(FileSystemTest, AFileThatKeepsChangingIsNotCopiedHalf) {
  if (copiesAtOneMoment()) GTEST_SKIP() << "a clone cannot be half a file";
  writeFile(folder / "busy", std::string(2 << 20, 'a'));
  const int file = open((folder / "busy").c_str(), O_WRONLY);
  int changes = 0;
  // The observer is asked in the middle of every attempt.
  const auto change = [&](std::int64_t bytes, int) {
    if (bytes > 0) changes += pwrite(file, "b", 1, 0) == 1;
    return true;
  };
  const auto staged = files.stageCopy({.source = folder / "busy", .destination = folder / "copy", .observer = change});
  close(file);
  ASSERT_FALSE(staged.ok());
  EXPECT_NE(staged.error().text.find("changing"), std::string::npos);
  EXPECT_GE(changes, 3) << "three attempts";
  EXPECT_FALSE(exists(folder / "copy"));
}

TEST_P(FileSystemTest, WhatVanishesFromAFolderMeanwhileIsNoted) {
  for (const char* name : {"from/a", "from/b", "from/c"}) writeFile(folder / name, "whole");
  const auto removeAll = [&](std::int64_t, int) {
    for (const std::string& name : names(folder / "from")) unlink((folder / "from/" + name).c_str());
    return true;
  };
  const auto staged = files.stageCopy({.source = folder / "from", .destination = folder / "to", .observer = removeAll});
  ASSERT_TRUE(staged.ok());
  EXPECT_EQ((*staged)->notes().size(), 2u);
  ASSERT_TRUE((*staged)->commit(StagedCopy::Existing::Keep).ok());
  ASSERT_EQ(names(folder / "to").size(), 1u);
  EXPECT_EQ(readFile(folder / "to/" + names(folder / "to").front()), "whole");
}

TEST_P(FileSystemTest, ALockedItemStaysWhereItIs) {
  const auto metadata = GetParam().metadata();
  for (const char* name : {"file", "folder/inside", "new"}) writeFile(folder / name, name);
  if (!metadata->setLocked(folder / "file", true)) GTEST_SKIP() << "nothing can be locked here";
  ASSERT_TRUE(metadata->setLocked(folder / "folder", true).ok());
  EXPECT_TRUE(files.info(folder / "file", Links::DoNotFollow)->locked);
  EXPECT_EQ(copy("new", "file", StagedCopy::Existing::Replace).error().code, std::errc::operation_not_permitted);
  EXPECT_FALSE(files.write(folder / "file", "other", {}).ok());
  EXPECT_FALSE(files.move(folder / "file", folder / "other").status().ok());
  EXPECT_FALSE(files.trash(folder / "file", folder / ".Trash/files").status().ok());
  EXPECT_FALSE(files.openForAppending(folder / "file").status().ok());
  for (const char* name : {"file", "folder", "folder/inside"}) EXPECT_FALSE(files.remove(folder / name).ok()) << name;
  EXPECT_EQ(readFile(folder / "file") + readFile(folder / "folder/inside"), "filefolder/inside");
  ASSERT_TRUE(copy("file", "copy").ok());
  EXPECT_FALSE(files.info(folder / "copy", Links::DoNotFollow)->locked);
  ASSERT_TRUE(metadata->setLocked(folder / "folder", false).ok());
  EXPECT_TRUE(files.remove(folder / "folder").ok());
  EXPECT_EQ(metadata->setLocked("/dev/null", true).error().code, std::errc::invalid_argument);
  ASSERT_EQ(symlink("file", (folder / "link").c_str()), 0);
  EXPECT_FALSE(metadata->setLocked(folder / "link", false).ok());
  ASSERT_TRUE(metadata->setLocked(folder / "file", false).ok());
}

TEST_P(FileSystemTest, AFailedWriteLeavesTheOldFile) {
  writeFile(folder / "settings", "old");
  ASSERT_EQ(chmod((folder / "settings").c_str(), 0640), 0);
  ASSERT_TRUE(files.write(folder / "settings", "new", {.durable = true}).ok());
  EXPECT_EQ(readFile(folder / "settings"), "new");
  EXPECT_EQ(status(folder / "settings").st_mode & 07777, 0640u);
  ASSERT_TRUE(files.write(folder / "fresh", "x", {}).ok());
  EXPECT_EQ(status(folder / "fresh").st_mode & 07777, 0600u);

  signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit tight{1000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &tight);
  const Status written = files.write(folder / "settings", std::string(5000, 'x'), {});
  writeFile(folder / "small", std::string(900, 'y'));
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(written.error().code, std::errc::file_too_large);
  EXPECT_EQ(readFile(folder / "settings"), "new");
  EXPECT_EQ(names(folder.path()), (std::vector<std::string>{"fresh", "settings", "small"}));
}

}  // namespace
}  // namespace vantory::test
