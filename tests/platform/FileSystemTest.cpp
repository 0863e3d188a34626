// The disk as the program sees it: whole copies or none, attributes kept, nothing followed that should not be.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <thread>

#include "platform/linux/LinuxFileMetadata.h"
#include "platform/linux/LinuxFileSystem.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

class FileSystemTest : public testing::Test {
 protected:
  Status copy(const std::string& from, const std::string& to,
              StagedCopy::Existing existing = StagedCopy::Existing::Keep) {
    auto staged = files.stageCopy({folder / from, folder / to, {}, Links::DoNotFollow});
    if (!staged) return staged.error();
    notes = (*staged)->notes();
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
  struct stat status(const std::string& path) {
    struct stat result {};
    lstat(path.c_str(), &result);
    return result;
  }

  ScratchFolder folder;
  LinuxFileSystem files;
  LinuxFileMetadata metadata;
  std::vector<std::string> notes;
};

void expectSameTimes(const struct stat& left, const struct stat& right) {
  EXPECT_EQ(left.st_mtim.tv_sec, right.st_mtim.tv_sec);
  EXPECT_EQ(left.st_mtim.tv_nsec, right.st_mtim.tv_nsec);
}

TEST_F(FileSystemTest, CopiesAFileWithAllThatBelongsToIt) {
  const std::string source = folder / "a \xC3\xBC 100%\n\xFF.plist";
  writeFile(source, "settings of years");
  ASSERT_EQ(setxattr(source.c_str(), "user.note", "kept", 4, 0), 0);
  const timespec times[2] = {{1'000'000'000, 1}, {1'234'567'890, 987'654'321}};
  ASSERT_EQ(utimensat(AT_FDCWD, source.c_str(), times, 0), 0);
  ASSERT_EQ(chmod(source.c_str(), 0440), 0);

  ASSERT_TRUE(copy("a \xC3\xBC 100%\n\xFF.plist", "copy").ok());
  EXPECT_EQ(readFile(folder / "copy"), "settings of years");
  expectSameTimes(status(source), status(folder / "copy"));
  EXPECT_EQ(status(folder / "copy").st_mode & 07777, 0440u);
  char value[8];
  EXPECT_EQ(getxattr((folder / "copy").c_str(), "user.note", value, sizeof value), 4);
  EXPECT_EQ(names(folder.path()).size(), 2u) << "a temporary file is left";
}

TEST_F(FileSystemTest, AFolderThatLetsOthersInPassesThatOnToNoCopy) {
  writeFile(folder / "from/sub/file", "private");
  for (const char* name : {"from/sub/file", "from/sub", "from"}) ASSERT_EQ(chmod((folder / name).c_str(), 0750), 0);
  makeFolders(folder / "to");
  // Version 2: everything to the owner and to user 1, nothing to the rest.
  const unsigned list[] = {2, 0x70001, ~0u, 0x70002, 1, 0x00004, ~0u, 0x70010, ~0u, 0x00020, ~0u};
  if (setxattr((folder / "to").c_str(), "system.posix_acl_default", list, sizeof list, 0) != 0)
    GTEST_SKIP() << "no access lists here";
  ASSERT_TRUE(copy("from", "to/tree").ok());
  ASSERT_TRUE(copy("from/sub/file", "to/file").ok());
  for (const char* name : {"to/tree", "to/tree/sub", "to/tree/sub/file", "to/file"})
    for (const char* kind : {"system.posix_acl_access", "system.posix_acl_default"})
      EXPECT_LT(getxattr((folder / name).c_str(), kind, nullptr, 0), 0) << name << " " << kind;
}

TEST_F(FileSystemTest, NeverCopiesOverSomethingUnlessAskedTo) {
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

TEST_F(FileSystemTest, AStagedCopyThatIsNotCommittedLeavesNoTrace) {
  writeFile(folder / "from/sub/file", "x");
  makeFolders(folder / "to");
  { ASSERT_TRUE(files.stageCopy({folder / "from", folder / "to/copy"}).ok()); }
  { ASSERT_TRUE(files.stageCopy({folder / "from/sub/file", folder / "to/copy"}).ok()); }
  EXPECT_TRUE(names(folder / "to").empty());
}

TEST_F(FileSystemTest, CopiesAFolderWithLinksAsLinksAndSpecialFilesLeftOut) {
  for (int i = 0; i < 200; ++i) writeFile(folder / ("tree/many/f" + std::to_string(i)), std::to_string(i));
  writeFile(folder / "tree/sub/deep/file", "deep");
  writeFile(folder / "tree/empty", "");
  makeFolders(folder / "tree/nothing");
  ASSERT_EQ(symlink("../elsewhere", (folder / "tree/link").c_str()), 0);
  ASSERT_EQ(mkfifo((folder / "tree/pipe").c_str(), 0600), 0);
  ASSERT_EQ(chmod((folder / "tree/sub").c_str(), 0550), 0);
  const timespec times[2] = {{1, 0}, {1'000, 5}};
  ASSERT_EQ(utimensat(AT_FDCWD, (folder / "tree/sub").c_str(), times, 0), 0);

  ASSERT_TRUE(copy("tree", "copy").ok());
  EXPECT_EQ(names(folder / "copy/many").size(), 200u);
  EXPECT_EQ(readFile(folder / "copy/many/f199"), "199");
  EXPECT_EQ(readFile(folder / "copy/sub/deep/file"), "deep");
  EXPECT_EQ(names(folder / "copy"), (std::vector<std::string>{"empty", "link", "many", "nothing", "sub"}));
  EXPECT_TRUE(S_ISLNK(status(folder / "copy/link").st_mode));
  EXPECT_EQ(status(folder / "copy/sub").st_mode & 07777, 0550u);
  expectSameTimes(status(folder / "tree/sub"), status(folder / "copy/sub"));
  ASSERT_EQ(notes.size(), 1u);
  EXPECT_NE(notes[0].find("tree/pipe"), std::string::npos);

  ASSERT_TRUE(files.remove(folder / "copy").ok()) << "a read-only folder of our own must not stop us";
  EXPECT_FALSE(exists(folder / "copy"));
  chmod((folder / "tree/sub").c_str(), 0755);
}

TEST_F(FileSystemTest, ReplacesAFolderInOneStepAndRemovesTheOldOne) {
  writeFile(folder / "new/file", "new");
  writeFile(folder / "old/other", "old");
  ASSERT_TRUE(copy("new", "old", StagedCopy::Existing::Replace).ok());
  EXPECT_EQ(names(folder / "old"), std::vector<std::string>{"file"});
  EXPECT_EQ(names(folder.path()), (std::vector<std::string>{"new", "old"}));
}

TEST_F(FileSystemTest, ClearsWhatAKilledCopyLeftButNotWhatALiveOneNeeds) {
  writeFile(folder / "from/file", "x");
  makeFolders(folder / "to");
  auto live = files.stageCopy({folder / "from", folder / "to/copy"});
  ASSERT_TRUE(live.ok());
  const auto staging = names(folder / "to");
  ASSERT_EQ(staging.size(), 1u);

  auto second = files.stageCopy({folder / "from", folder / "to/copy"});
  ASSERT_TRUE(second.ok());
  EXPECT_EQ(names(folder / "to").size(), 2u);
  ASSERT_TRUE((*second)->commit(StagedCopy::Existing::Keep).ok());
  live->reset();
  ASSERT_TRUE(files.remove(folder / "to/copy").ok());

  writeFile(folder / "to" + "/" + staging[0] + "/half", "left by a killed process");
  ASSERT_TRUE(copy("from", "to/copy").ok());
  EXPECT_EQ(names(folder / "to"), std::vector<std::string>{"copy"});
}

TEST_F(FileSystemTest, CopiesFromBelowAFolderWithoutPassingALink) {
  writeFile(folder / "outside/secret", "s");
  writeFile(folder / "backup/inner/file", "f");
  ASSERT_EQ(symlink("../outside", (folder / "backup/trap").c_str()), 0);
  ASSERT_EQ(symlink("../../outside/secret", (folder / "backup/inner/leaf").c_str()), 0);
  const auto stage = [&](const std::string& source) {
    return files.stageCopy({source, folder / "copy", folder / "backup", Links::DoNotFollow}).ok();
  };
  EXPECT_TRUE(stage(folder / "backup/inner/file"));
  EXPECT_FALSE(stage(folder / "backup/trap/secret"));
  EXPECT_FALSE(stage(folder / "backup/inner/leaf"));
  EXPECT_FALSE(stage(folder / "backup/../outside/secret"));
  EXPECT_FALSE(stage(folder / "backup2"));
}

TEST_F(FileSystemTest, RefusesWhatIsNoFileWithoutWaiting) {
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_FALSE(files.stageCopy({folder / "pipe", folder / "copy"}).ok());
  EXPECT_FALSE(files.read(folder / "pipe").ok());
  EXPECT_FALSE(files.openForAppending(folder / "pipe").ok());
  EXPECT_FALSE(files.read(folder.path()).ok());
  EXPECT_EQ(files.info("relative", Links::Follow).error().code, std::errc::invalid_argument);
}

TEST_F(FileSystemTest, AFileThatKeepsChangingIsNotCopiedHalf) {
  writeFile(folder / "busy", std::string(64 << 20, 'a'));
  std::atomic<bool> started = false;
  std::atomic<bool> stop = false;
  std::thread writer([&] {
    const int file = open((folder / "busy").c_str(), O_WRONLY);
    while (!stop) started = pwrite(file, "b", 1, 0) == 1;
    close(file);
  });
  while (!started) std::this_thread::yield();
  const Status copied = copy("busy", "copy");
  stop = true;
  writer.join();
  ASSERT_FALSE(copied.ok());
  EXPECT_NE(copied.error().text.find("changing"), std::string::npos);
  EXPECT_FALSE(exists(folder / "copy"));
}

TEST_F(FileSystemTest, KeepsHolesAndLargeFilesWhole) {
  const int file = open((folder / "sparse").c_str(), O_CREAT | O_WRONLY, 0600);
  ASSERT_EQ(pwrite(file, "head", 4, 0), 4);
  ASSERT_EQ(pwrite(file, "tail", 4, 4 << 20), 4);
  close(file);
  ASSERT_TRUE(copy("sparse", "copy").ok());
  EXPECT_EQ(readFile(folder / "sparse"), readFile(folder / "copy"));
  EXPECT_LT(status(folder / "copy").st_blocks, 1024);
}

TEST_F(FileSystemTest, AFailedWriteLeavesTheOldFile) {
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

TEST_F(FileSystemTest, MovesWithoutReplacingAndDeletesWithoutFollowing) {
  writeFile(folder / "a", "a");
  writeFile(folder / "b", "b");
  EXPECT_EQ(files.move(folder / "a", folder / "b").error().code, std::errc::file_exists);
  EXPECT_TRUE(files.move(folder / "a", folder / "c").ok());
  EXPECT_EQ(readFile(folder / "c"), "a");

  makeFolders(folder / "tree");
  ASSERT_EQ(symlink((folder / "b").c_str(), (folder / "tree/link").c_str()), 0);
  ASSERT_EQ(symlink(folder.path().c_str(), (folder / "tree/folder").c_str()), 0);
  EXPECT_TRUE(files.remove(folder / "tree").ok());
  EXPECT_EQ(readFile(folder / "b"), "b");
  EXPECT_EQ(files.remove(folder / "tree").error().code, std::errc::no_such_file_or_directory);
}

TEST_F(FileSystemTest, AFolderTooDeepIsRefusedAndCleanedUp) {
  std::string path = folder / "deep";
  makeFolders(path);
  int level = open(path.c_str(), O_RDONLY | O_DIRECTORY);
  for (int i = 0; i < 400; ++i) {
    ASSERT_EQ(mkdirat(level, "d", 0700), 0);
    const int next = openat(level, "d", O_RDONLY | O_DIRECTORY);
    close(level);
    level = next;
  }
  close(level);
  const Status copied = copy("deep", "copy");
  ASSERT_FALSE(copied.ok());
  EXPECT_NE(copied.error().text.find("deeply"), std::string::npos);
  EXPECT_EQ(names(folder.path()), std::vector<std::string>{"deep"});

  ASSERT_EQ(chmod(path.c_str(), 0500), 0);
  EXPECT_FALSE(files.remove(path).ok());
  EXPECT_EQ(status(path).st_mode & 07777, 0500u) << "opened up for nothing";
}

TEST_F(FileSystemTest, AHeldFolderIsRefusedToOthers) {
  auto held = files.holdFolder(folder.path(), std::chrono::milliseconds(0));
  ASSERT_TRUE(held.ok());
  EXPECT_EQ(files.holdFolder(folder.path(), std::chrono::milliseconds(30)).error().code, std::errc::timed_out);
  held->reset();
  EXPECT_TRUE(files.holdFolder(folder.path(), std::chrono::milliseconds(0)).ok());
}

TEST_F(FileSystemTest, LockedFilesAreToldApart) {
  writeFile(folder / "file", "x");
  const Status locked = metadata.setLocked(folder / "file", true);
  if (!locked) GTEST_SKIP() << "the immutable flag cannot be set here: " << locked.error().text;
  EXPECT_TRUE(files.info(folder / "file", Links::Follow)->locked);
  EXPECT_FALSE(files.move(folder / "file", folder / "moved").ok());
  ASSERT_TRUE(copy("file", "copy").ok());
  EXPECT_FALSE(files.info(folder / "copy", Links::Follow)->locked) << "a copy never carries the flag";
  EXPECT_TRUE(metadata.setLocked(folder / "file", false).ok());
  EXPECT_FALSE(files.info(folder / "file", Links::Follow)->locked);
}

}  // namespace
}  // namespace vantory::test
