// The superuser at work in a user's folders, with that user trying to lead it astray.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

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
    user = {nobody->pw_uid, nobody->pw_gid, scratch / "home"};
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

TEST_F(RightsTest, TheRunnerCopiesNoSpecialBitsAndMovesOverNothingAndOnlyTheUsersOwn) {
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
  EXPECT_EQ(status.st_mode & 07777, 0755u);
  EXPECT_NE(runner.run("/bin/mv", {"-f", source, target}), 0);
  const std::string job = scratch / "Library/LaunchDaemons/com.quarrywell.Test.plist";
  EXPECT_EQ(runner.run("/bin/mkdir", {"-p", scratch / "Library/LaunchDaemons"}), 0);
  writeFile(scratch / "public", "the user may read but not move this");
  EXPECT_NE(runner.run("/bin/mv", {"-f", scratch / "public", job}), 0);
  EXPECT_FALSE(exists(job));
  EXPECT_EQ(runner.run("/bin/mv", {"-f", target, job}), 0);
  EXPECT_EQ(ownerOf(job), 0u);
  EXPECT_NE(SuperuserRunner(std::nullopt, folders, {}).run("/bin/rm", {"-Rdf", source}), 0) << "nobody at the console";
}

TEST_F(RightsTest, OnlyTheUsersOwnFilesAreLocked) {
  LinuxFileMetadata metadata(FileRights::ofUser(user));
  writeFile(user.home + "/own", "x");
  give(user.home + "/own");
  const Status locked = metadata.setLocked(user.home + "/own", true);
  if (!locked && locked.error().code != std::errc::permission_denied)
    GTEST_SKIP() << "the immutable flag cannot be set here: " << locked.error().text;
  EXPECT_TRUE(metadata.setLocked(user.home + "/own", false).ok());
  ASSERT_EQ(link((scratch / "foreign/secret").c_str(), (user.home + "/planted").c_str()), 0);
  chmod((scratch / "foreign/secret").c_str(), 0644);  // the user may look
  EXPECT_FALSE(metadata.setLocked(user.home + "/planted", true).ok());
}

}  // namespace
}  // namespace vantory::test
