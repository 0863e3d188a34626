// The superuser at work in a user's folders, with that user trying to lead it astray.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>

#include "platform/linux/LinuxFileMetadata.h"
#include "platform/linux/LinuxFileSystem.h"
#include "platform/linux/LinuxStandardFolders.h"
#include "platform/linux/SuperuserRunner.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

class RightsTest : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser takes other rights";
    const passwd* nobody = getpwnam("nobody");
    ASSERT_NE(nobody, nullptr);
    user = {"nobody", nobody->pw_uid, nobody->pw_gid, scratch / "home"};
    makeFolders(user.home);
    ASSERT_EQ(chown(user.home.c_str(), user.id, user.group), 0);
    chmod(scratch.path().c_str(), 0755);
    chmod(user.home.c_str(), 0755);
    writeFile(scratch / "foreign/secret", "root's");
    chmod((scratch / "foreign").c_str(), 0700);
  }
  // A file or folder of the user's own.
  void give(const std::string& path) { ASSERT_EQ(lchown(path.c_str(), user.id, user.group), 0); }
  uid_t ownerOf(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? status.st_uid : static_cast<uid_t>(-1);
  }

  ScratchFolder scratch;
  User user;
};

TEST_F(RightsTest, WithTheUsersRightsAPlantedLinkLeadsOnlyWhereTheUserCouldGo) {
  LinuxFileSystem files(FileRights::ofUser(user));
  ASSERT_EQ(symlink((scratch / "foreign").c_str(), (user.home + "/Library").c_str()), 0);
  EXPECT_FALSE(files.read(user.home + "/Library/secret").ok());
  EXPECT_FALSE(files.write(user.home + "/Library/secret", "x", {}).ok());
  EXPECT_FALSE(files.trash(user.home + "/Library/secret", user.home + "/Trash/files").ok());
  EXPECT_FALSE(files.remove(user.home + "/Library/secret").ok());
  EXPECT_EQ(readFile(scratch / "foreign/secret"), "root's");

  ASSERT_TRUE(files.makeFolder(user.home + "/a/b").ok());
  ASSERT_TRUE(files.write(user.home + "/a/b/file", "x", {.durable = true}).ok());
  for (int i = 0; i < 200; ++i) ASSERT_TRUE(files.write(user.home + "/a/b/" + std::to_string(i), "x", {}).ok());
  auto copy = files.stageCopy({user.home + "/a", user.home + "/c"});
  ASSERT_TRUE(copy.ok());
  ASSERT_TRUE((*copy)->commit(StagedCopy::Existing::Keep).ok());
  for (const char* made : {"/a", "/a/b", "/a/b/file", "/c", "/c/b/file", "/c/b/199"})
    EXPECT_EQ(ownerOf(user.home + made), user.id) << made;
  EXPECT_EQ(geteuid(), 0u);
  EXPECT_EQ(readFile(scratch / "foreign/secret"), "root's") << "the superuser's own rights are back";
}

TEST_F(RightsTest, AdministratorRightsServeBelowTheHomeOnlyAndPassNoLinkOfTheUsers) {
  LinuxFileSystem files(FileRights::administrator(user, {user.home}));
  writeFile(user.home + "/locked/file", "root's file in the home");
  chmod((user.home + "/locked").c_str(), 0700);

  EXPECT_FALSE(files.read(scratch / "foreign/secret").ok());
  EXPECT_FALSE(files.read(user.home + "/../foreign/secret").ok());
  for (const char* end : {"", "/", "//", "/.", "/./"})
    EXPECT_FALSE(files.remove(user.home + end).ok()) << "the home itself" << end;
  ASSERT_EQ(symlink((scratch / "foreign").c_str(), (user.home + "/trap").c_str()), 0);
  give(user.home + "/trap");
  EXPECT_FALSE(files.read(user.home + "/trap/secret").ok());
  EXPECT_FALSE(files.makeFolder(user.home + "/trap/made").ok());
  EXPECT_FALSE(files.stageCopy({user.home + "/locked/file", user.home + "/trap/file"}).ok());
  EXPECT_FALSE(files.remove(user.home + "/trap/secret").ok());
  EXPECT_EQ(files.info(user.home + "/trap", Links::Follow)->type, FileType::SymbolicLink);
  EXPECT_EQ(readFile(scratch / "foreign/secret"), "root's");

  // The user can move a link of the superuser's so that it leads elsewhere. What is made belongs to the home's owner.
  ASSERT_EQ(symlink("../foreign", (user.home + "/way").c_str()), 0);
  ASSERT_EQ(symlink("../../foreign", (user.home + "/locked/way").c_str()), 0);
  ASSERT_EQ(symlink((scratch / "foreign").c_str(), (user.home + "/locked/trap").c_str()), 0);
  give(user.home + "/locked/trap");
  EXPECT_FALSE(files.read(user.home + "/way/secret").ok());
  EXPECT_FALSE(files.read(user.home + "/locked/way/secret").ok());
  EXPECT_TRUE(files.read(user.home + "/locked/file").ok());
  auto copy = files.stageCopy({user.home + "/locked", user.home + "/copy"});
  ASSERT_TRUE(copy.ok()) << copy.error().text;
  ASSERT_TRUE((*copy)->commit(StagedCopy::Existing::Keep).ok());
  EXPECT_EQ(ownerOf(user.home + "/copy"), user.id);
  EXPECT_EQ(ownerOf(user.home + "/copy/file"), user.id);
  EXPECT_EQ(ownerOf(user.home + "/copy/trap"), user.id);
  EXPECT_FALSE(files.remove(user.home + "/copy/trap/secret").ok()) << "copying a link does not make it trusted";
  EXPECT_EQ(readFile(scratch / "foreign/secret"), "root's");
}

TEST_F(RightsTest, AFolderPutInPlaceOfANewOneIsNotTakenForIt) {
  const std::string folder = user.home + "/new";
  makeFolders(folder);
  const FileRights administrator = FileRights::administrator(user, {user.home});
  const auto takes = [&](const FileRights& rights) { return rights.openNewFolder(AT_FDCWD, folder).valid(); };
  ASSERT_EQ(chmod(folder.c_str(), 0700), 0);
  EXPECT_TRUE(takes(administrator));
  ASSERT_EQ(chmod(folder.c_str(), 0770), 0);
  EXPECT_FALSE(takes(administrator)) << "others may write in it";
  ASSERT_EQ(chmod(folder.c_str(), 0700), 0);
  give(folder);
  EXPECT_FALSE(takes(administrator)) << "the user's";
  EXPECT_TRUE(takes(FileRights::ofUser(user)));
}

TEST_F(RightsTest, TheMachinesFoldersAreForAllToReadAndNoUserBendsTheWay) {
  LinuxFileSystem files(FileRights::machine());
  const std::string logs = scratch / "Library/Logs/Maker";
  ASSERT_TRUE(files.makeFolder(logs).ok());
  struct stat status {};
  for (const char* name : {"Library", "Library/Logs", "Library/Logs/Maker"}) {
    ASSERT_EQ(stat((scratch / name).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0755u) << name;
    EXPECT_EQ(status.st_uid, 0u) << name;
  }
  ASSERT_TRUE(files.write(logs + "/own.log", "x", {}).ok());
  EXPECT_TRUE(files.openForAppending(logs + "/own.log").ok());

  ASSERT_EQ(link((scratch / "foreign/secret").c_str(), (logs + "/second.log").c_str()), 0);
  EXPECT_FALSE(files.openForAppending(logs + "/second.log").ok());
  ASSERT_EQ(symlink((scratch / "foreign/secret").c_str(), (logs + "/link.log").c_str()), 0);
  EXPECT_FALSE(files.openForAppending(logs + "/link.log").ok());
  ASSERT_EQ(symlink((scratch / "foreign").c_str(), (scratch / "Library/Logs/Bent").c_str()), 0);
  give(scratch / "Library/Logs/Bent");
  EXPECT_FALSE(files.makeFolder(scratch / "Library/Logs/Bent").ok());
  EXPECT_FALSE(files.write(scratch / "Library/Logs/Bent/made", "x", {}).ok());
  EXPECT_FALSE(exists(scratch / "foreign/made"));
}

TEST_F(RightsTest, ALinkOfTheSuperusersIsAWayWhereNobodyElseCanMoveIt) {
  // Not in a scratch folder, because others may change what lies in the way to it.
  if (!std::filesystem::is_symlink("/bin")) GTEST_SKIP() << "/bin is no link on this machine";
  EXPECT_TRUE(LinuxFileSystem(FileRights::machine()).info("/bin/sh", Links::DoNotFollow).ok());
}

TEST_F(RightsTest, TheRunnerDoesItsToolsWork) {
  const LinuxStandardFolders folders(scratch.path());
  SuperuserRunner runner(user, folders, {});
  const std::string source = user.home + "/source";
  const std::string target = user.home + "/target";
  writeFile(source, "new");
  chmod(source.c_str(), 04755);
  writeFile(target, "old");
  give(target);

  EXPECT_EQ(runner.run("/bin/cp", {"-f", "-p", "-R", source, target}), 0);
  EXPECT_EQ(readFile(target), "new");
  struct stat status {};
  ASSERT_EQ(stat(target.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0755u) << "no set-id bits";
  EXPECT_EQ(runner.run("/bin/mkdir", {"-p", user.home + "/x/y"}), 0);
  EXPECT_EQ(ownerOf(user.home + "/x/y"), user.id);
  EXPECT_NE(runner.run("/bin/mv", {"-f", source, target}), 0) << "never over an existing item";
  EXPECT_EQ(runner.run("/bin/mv", {"-f", source, user.home + "/x/moved"}), 0);
  const std::string job = scratch / "Library/LaunchDaemons/com.quarrywell.Test.plist";
  EXPECT_EQ(runner.run("/bin/mkdir", {"-p", scratch / "Library/LaunchDaemons"}), 0);
  writeFile(scratch / "public", "the user may read but not move this");
  EXPECT_NE(runner.run("/bin/mv", {"-f", scratch / "public", job}), 0);
  EXPECT_FALSE(exists(job));
  EXPECT_EQ(runner.run("/bin/mv", {"-f", target, job}), 0);
  EXPECT_EQ(readFile(job), "new");
  EXPECT_EQ(ownerOf(job), 0u);
  EXPECT_EQ(runner.run("/bin/rm", {"-Rdf", user.home + "/x"}), 0);
  EXPECT_EQ(runner.run("/bin/rm", {"-Rdf", user.home + "/x"}), 0) << "a missing item is success";
  EXPECT_NE(SuperuserRunner(std::nullopt, folders, {}).run("/bin/rm", {"-Rdf", target}), 0) << "nobody at the console";
}

TEST_F(RightsTest, WhoMayWriteToAFileMayTouchIt) {
  LinuxFileMetadata metadata(FileRights::ofUser(user));
  const std::string shared = user.home + "/shared";
  writeFile(shared, "root's, for all to write");
  chmod(shared.c_str(), 0666);
  ASSERT_TRUE(LinuxFileMetadata().setModified(shared, Timestamp{1000, 0}).ok());
  EXPECT_FALSE(metadata.setModified(shared, Timestamp{2000, 0}).ok()) << "not the owner";
  EXPECT_TRUE(metadata.setModified(shared, std::nullopt).ok());
  struct stat status {};
  ASSERT_EQ(stat(shared.c_str(), &status), 0);
  EXPECT_NEAR(static_cast<double>(status.st_mtim.tv_sec), static_cast<double>(std::time(nullptr)), 60);
  EXPECT_FALSE(metadata.setModified(user.home + "/none", std::nullopt).ok());
  EXPECT_FALSE(exists(user.home + "/none"));
}

TEST_F(RightsTest, OnlyTheUsersOwnFilesAreLocked) {
  LinuxFileMetadata metadata(FileRights::ofUser(user));
  LinuxFileSystem files(FileRights::ofUser(user));
  writeFile(user.home + "/own", "x");
  give(user.home + "/own");
  const Status locked = metadata.setLocked(user.home + "/own", true);
  if (!locked && locked.error().code != std::errc::permission_denied)
    GTEST_SKIP() << "the immutable flag cannot be set here: " << locked.error().text;
  EXPECT_TRUE(files.info(user.home + "/own", Links::Follow)->locked);
  EXPECT_TRUE(metadata.setLocked(user.home + "/own", false).ok());

  ASSERT_EQ(link((scratch / "foreign/secret").c_str(), (user.home + "/planted").c_str()), 0);
  chmod((scratch / "foreign/secret").c_str(), 0644);
  EXPECT_FALSE(metadata.setLocked(user.home + "/planted", true).ok());
  ASSERT_EQ(symlink((scratch / "foreign/secret").c_str(), (user.home + "/link").c_str()), 0);
  EXPECT_FALSE(metadata.setLocked(user.home + "/link", true).ok());
  // Nor what a link in the way leads to, with either rights, even where the user may look.
  chmod((scratch / "foreign").c_str(), 0755);
  ASSERT_EQ(symlink((scratch / "foreign").c_str(), (user.home + "/way").c_str()), 0);
  give(user.home + "/way");
  LinuxFileMetadata administrator(FileRights::administrator(user, {user.home}));
  for (LinuxFileMetadata* either : {&metadata, &administrator}) {
    EXPECT_FALSE(either->setLocked(user.home + "/way/secret", true).ok());
    EXPECT_FALSE(either->setLocked(user.home + "/way/.", true).ok());
  }
}

}  // namespace
}  // namespace vantory::test
