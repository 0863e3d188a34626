// Disks as this machine mounts them: what lies on two of them, and what only Linux has.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <functional>

#include "base/Paths.h"
#include "platform/linux/files/LinuxFileSystem.h"
#include "tests/platform/ChecksumTest.h"
#include "tests/platform/DiskTest.h"

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

class LinuxFileSystemTest : public DiskTest {
 protected:
  LinuxFileSystemTest() : DiskTest(std::make_unique<LinuxFileSystem>()) {}
};

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

INSTANTIATE_TEST_SUITE_P(On, MoveTest, testing::ValuesIn(disks()), nameOfDisk);

// With a checksum, which reads holes too, as a backup's copies are made.
TEST_P(MoveTest, RefusesAtOnceWhatNoDiskCouldHoldAndKeepsHoles) {
  const std::string file = elsewhere + "/file";
  writeFile(file, "x");
  ASSERT_EQ(truncate(file.c_str(), off_t{7} << 60U), 0);
  for (const std::string& copy : {elsewhere + "/copy", folder / "copy"})
    EXPECT_EQ(files.stageCopy({file, copy, {}, Links::DoNotFollow, {}, {}, CopyChecksum::Make}).status().error().code,
              std::errc::no_space_on_device);
  ASSERT_EQ(truncate(file.c_str(), off_t{1} << 28U), 0);
  ASSERT_TRUE((*files.stageCopy({file, folder / "copy", {}, Links::DoNotFollow}))->commit(StagedCopy::Existing::Keep));
  EXPECT_EQ(status(folder / "copy").st_size, off_t{1} << 28U);
  EXPECT_LT(status(folder / "copy").st_blocks, 5000);
}

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

TEST_P(ChecksumTest, AFileSystemWithoutAttributesHoldsCopiesAllTheSame) {
  makeFolders(folder / "plain");
  if (unshare(CLONE_NEWNS) != 0 || mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("ramfs", (folder / "plain").c_str(), "ramfs", 0, nullptr) != 0)
    GTEST_SKIP() << "nothing may be mounted here";
  writeFile(folder / "file", "content");
  auto staged = files->stageCopy(
      {.source = folder / "file", .destination = folder / "plain/copy", .checksum = CopyChecksum::Make});
  ASSERT_TRUE(staged.ok());
  EXPECT_TRUE((*staged)->notes().empty());
  ASSERT_TRUE((*staged)->commit(StagedCopy::Existing::Keep).ok());
  EXPECT_EQ(checksumOf(folder / "plain/copy").carried, std::nullopt);
  EXPECT_EQ(checksums->setHeld(folder / "plain/copy", "1").error().code, std::errc::operation_not_supported);
  staged->reset();
  umount2((folder / "plain").c_str(), MNT_DETACH);
}

}  // namespace
}  // namespace vantory::test
