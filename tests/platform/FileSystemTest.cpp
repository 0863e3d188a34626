// The disk as the program sees it: whole copies or none, attributes kept, nothing followed that should not be.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>

#include "base/Paths.h"
#include "platform/linux/files/LinuxFileSystem.h"
#include "platform/posix/files/Descriptor.h"
#include "tests/platform/Disks.h"
#include "tests/support/ScratchFolder.h"

namespace {
std::function<void()> whileSyncing;
}

// The C library's call, with what a test does in that moment.
extern "C" int syncfs(int file) noexcept {
  if (whileSyncing) whileSyncing();
  return static_cast<int>(syscall(SYS_syncfs, file));
}

namespace vantory::test {
namespace {

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

class LinuxFileSystemTest : public DiskTest {
 protected:
  LinuxFileSystemTest() : DiskTest(std::make_unique<LinuxFileSystem>()) {}
};

// What every platform promises.
class FileSystemTest : public DiskTest, public testing::WithParamInterface<Disk> {
 protected:
  FileSystemTest() : DiskTest(GetParam().files()) {}

  const EmulatedVolume volume{GetParam()};

  static bool copiesAtOneMoment() { return GetParam().isMac && GetParam().volume.clones; }
};

INSTANTIATE_TEST_SUITE_P(On, FileSystemTest, testing::ValuesIn(kDisks), nameOfDisk);

TEST_F(LinuxFileSystemTest, AFolderThatLetsOthersInPassesThatOnToNoCopy) {
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

// Whoever writes keeps the size, and sets the date back.
TEST_P(FileSystemTest, AFileThatChangesWhileItIsCopiedIsCopiedAnewOrRefused) {
  if (copiesAtOneMoment()) GTEST_SKIP() << "a clone cannot be half a file";
  const std::string path = folder / "file";
  for (const int changes : {1, 99}) {
    writeFile(path, std::string(3 << 20, 'a'));
    const struct stat before = status(path);
    int changed = 0;
    const auto change = [&](std::int64_t, int) {
      if (changed == changes) return true;
      const Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
      const timespec times[] = {before.st_atim, before.st_mtim};
      const char byte = static_cast<char>('b' + changed++);
      return pwrite(file.get(), &byte, 1, 0) == 1 && futimens(file.get(), times) == 0;
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

// From a file system of its own to that of the scratch folder.
class MoveTest : public FileSystemTest {
 protected:
  void SetUp() override {
    makeFolders(elsewhere);
    if (status(elsewhere).st_dev == status(folder.path()).st_dev)
      GTEST_SKIP() << "/dev/shm is no file system of its own";
  }
  ~MoveTest() override {
    whileSyncing = nullptr;
    (void)files.remove(elsewhere);
  }

  const std::string elsewhere = "/dev/shm/vantory-test-" + std::to_string(getpid());
};

INSTANTIATE_TEST_SUITE_P(On, MoveTest, testing::ValuesIn(kDisks), nameOfDisk);

TEST_P(MoveTest, TakesFoldersAndLinksToAnotherFileSystemAndTellsWhatItCannotHold) {
  writeFile(elsewhere + "/tree/sub/file", "content");
  ASSERT_EQ(symlink("tree/sub", (elsewhere + "/link").c_str()), 0);
  const std::string large(60'000, 'x');
  const auto holds = [&](const std::string& path) {
    return setxattr(path.c_str(), "user.large", large.data(), large.size(), 0) == 0;
  };
  const bool isTooLarge = holds(elsewhere + "/tree") && !holds(folder.path());
  const auto moved = files.move(elsewhere + "/tree", folder / "tree");
  ASSERT_TRUE(moved.ok()) << moved.error().text;
  EXPECT_EQ(readFile(folder / "tree/sub/file"), "content");
  if (isTooLarge) {
    ASSERT_EQ(moved->size(), 1u);
    EXPECT_NE(moved->front().find("large"), std::string::npos);
  }
  const timespec date = status(elsewhere + "/link").st_mtim;
  EXPECT_EQ(files.move(elsewhere + "/link", folder / "tree").error().code, std::errc::file_exists);
  ASSERT_TRUE(files.move(elsewhere + "/link", folder / "link").ok());
  EXPECT_EQ(std::filesystem::read_symlink(folder / "link"), "tree/sub");
  EXPECT_EQ(status(folder / "link").st_mtim.tv_nsec, date.tv_nsec);
  EXPECT_TRUE(names(elsewhere).empty());
}

TEST_P(MoveTest, RemovesNothingThatChangedSinceItWasCopied) {
  const std::string tree = elsewhere + "/tree", file = tree + "/sub/file";
  const auto rewrite = [&] {  // as long, and with the old date
    const struct stat before = status(file);
    writeFile(file, "CHANGED");
    const timespec times[] = {before.st_atim, before.st_mtim};
    utimensat(AT_FDCWD, file.c_str(), times, 0);
  };
  const auto replace = [&] {
    writeFile(tree + "/new", "content");
    rename((tree + "/new").c_str(), file.c_str());
  };
  const auto addFile = [&] { writeFile(tree + "/sub/added", ""); };
  const auto addPipe = [&] { mkfifo((tree + "/pipe").c_str(), 0600); };
  const std::pair<std::string, std::function<void()>> moves[] = {{tree, rewrite}, {tree, replace}, {tree, addFile},
                                                                 {tree, addPipe}, {file, rewrite}, {file, replace}};
  for (const auto& [moved, change] : moves) {
    (void)files.remove(tree);
    writeFile(file, "content");
    writeFile(tree + "/other", "other");
    std::vector<std::string> left;
    whileSyncing = [&, &change = change] {
      change();
      left = everything(tree);
    };
    const Status done = files.move(moved, folder / "copy").status();
    whileSyncing = nullptr;
    ASSERT_FALSE(done.ok());
    EXPECT_TRUE(done.error().text.ends_with("and stays")) << done.error().text;
    EXPECT_EQ(everything(tree), left);
    EXPECT_EQ(names(folder.path()), std::vector<std::string>());
  }
}

TEST_F(LinuxFileSystemTest, TrashesOnAnOverlayOfLayersOnTwoDisks) {
  const std::string lower = folder / "lower", upper = folder / "upper", all = folder / "all";
  for (const std::string& each : {lower, upper, all}) makeFolders(each);
  const bool mounted =
      geteuid() == 0 && unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
      mount("none", lower.c_str(), "tmpfs", 0, nullptr) == 0 && mount("none", upper.c_str(), "tmpfs", 0, nullptr) == 0;
  for (const char* name : {"/data", "/work"}) makeFolders(upper + name);
  writeFile(lower + "/home/file", "content");
  for (const char* name : {"/home/tree/sub/one", "/home/tree/two", "/home/busy/one"})
    writeFile(lower + name, "content");
  const std::string layers =
      "redirect_dir=off,lowerdir=" + lower + ",upperdir=" + upper + "/data,workdir=" + upper + "/work";
  if (!mounted || mount("none", all.c_str(), "overlay", 0, layers.c_str()) != 0)
    GTEST_SKIP() << "no overlay can be mounted here";
  const std::string trash = all + "/home/.local/share/Trash/files";
  for (const char* name : {"/file", "/tree"}) {
    const auto trashed = files.trash(all + "/home" + name, trash);
    EXPECT_TRUE(trashed && trashed->place == trash + name) << (trashed ? trashed->place : trashed.error().text);
    EXPECT_TRUE(exists(paths::parent(trash) + "/info" + name + ".trashinfo"));
  }
  EXPECT_EQ(everything(trash + "/tree").size(), 3u);
  EXPECT_EQ(readFile(trash + "/tree/sub/one"), "content");

  whileSyncing = [&] { writeFile(all + "/home/busy/two", ""); };
  EXPECT_EQ(files.trash(all + "/home/busy", trash).status().error().code, std::errc::device_or_resource_busy);
  whileSyncing = nullptr;
  EXPECT_EQ(names(all + "/home"), (std::vector<std::string>{".local", "busy"}));
  EXPECT_EQ(names(all + "/home/busy").size(), 2u);
  EXPECT_EQ(names(trash).size() + names(paths::parent(trash) + "/info").size(), 4u);
  for (const std::string& each : {all, upper, lower}) umount2(each.c_str(), MNT_DETACH);
}

}  // namespace
}  // namespace vantory::test
