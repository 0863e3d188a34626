// The superuser at work in a user's folders, with that user trying to lead it astray.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/files/LinuxFileSystem.h"
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

}  // namespace
}  // namespace vantory::test
