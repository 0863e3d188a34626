#include "services/files/QWAuthorization.h"

#include <filesystem>

#include "platform/TrashLayout.h"
#include "services/QWLocalPaths.h"
#include "services/files/QWFileManager.h"
#include "tests/services/ServicesTest.h"
#include "tests/support/EnvironmentChange.h"

namespace vantory::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Call = FakePrivilegedRunner::Call;

class AuthorizationTest : public ServicesTest {
 protected:
  AuthorizationTest() { writeFile(file_, "content"); }

  const EnvironmentChange zone_{"TZ", "UTC"};
  const std::string file_ = home_ / "com.example.plist";
};

TEST_F(AuthorizationTest, AsksOnceATaskAndNeverByPassword) {
  QWAuthorization authorization;
  EXPECT_EQ(authorization.authExecTask("/no/such/tool", {}), QWAuthorization::ToolMissing);
  fakes_.privileged.grants = false;
  for (int i = 0; i < 2; ++i) EXPECT_EQ(authorization.authExecTask("/bin/rm", {}), QWAuthorization::NotAuthorized);
  EXPECT_EQ(fakes_.privileged.requests, 1);
  authorization.beginTask();
  fakes_.privileged.grants = true;
  EXPECT_TRUE(authorization.authCopyFile(file_, "/b"));
  EXPECT_EQ(fakes_.privileged.requests, 2);
  fakes_.privileged.behaviour = [](const Call&) { return 1; };
  EXPECT_FALSE(authorization.authCopyFile(file_, "/b"));
  EXPECT_FALSE(authorization.authMoveFile(file_, ""));
  EXPECT_FALSE(authorization.authStartWithUser("anna", "secret"));
  EXPECT_FALSE(authorization.isAuthorized());
  authorization.setHasGUI(false);
  for (int i = 0; i < 2; ++i) EXPECT_FALSE(authorization.authRemoveFile(file_)) << "each operation tells it";
  EXPECT_EQ(fakes_.privileged.requests, 2);
  EXPECT_THAT(
      fakes_.systemLog.messages(),
      ElementsAre("Unable to execute task: path /no/such/tool doesn't exist", "Error in authMoveFile: new path is null",
                  "Unable to create authRef - error 95", "Unable to authorize", "Unable to authorize"));
}

TEST_F(AuthorizationTest, FoldersOfTheSystemAreProtected) {
  const auto isProtected = [](const std::string& path) { return QWLocalPaths::isPathSystemDirectory(path); };
  const std::string shared = machine_ / "Users/Shared";
  for (const std::string& path : {std::string("/"), std::string("/usr/local/bin"), std::string("/Systemfoo"), shared,
                                  machine_ / "Volumes", home_.path(), home_ / "Library/Preferences"})
    EXPECT_TRUE(isProtected(path)) << path;
  for (const std::string& path : {std::string("/ab"), std::string(), shared + "/x", shared + "/", home_ / "Movies"})
    EXPECT_FALSE(isProtected(path)) << path;
  // A trailing slash takes the character before it along, whatever its length.
  EXPECT_TRUE(isProtected(shared + "x/"));
  EXPECT_TRUE(isProtected(shared + "\u00e9/"));
  EXPECT_FALSE(QWLocalPaths::isPathSystemDirectory("/usr/local", true));
}

TEST_F(AuthorizationTest, KnowsTheFoldersOfUserAndMachine) {
  EXPECT_EQ(QWLocalPaths::currentConsoleUser(), "anna");
  EXPECT_EQ(QWLocalPaths::movieDirectory(), home_ / "Movies");
  EXPECT_EQ(QWLocalPaths::adminApplicationDirectory(true), home_ / "Applications/Utilities");
  EXPECT_EQ(QWLocalPaths::localDocumentationDirectory(), machine_ / "Library/Documentation");
  EXPECT_EQ(QWLocalPaths::systemLibraryDirectory(), machine_ / "System/Library");
  const std::string volume = machine_ / "Volumes/TM";
  EXPECT_TRUE(QWLocalPaths::isPathOnTimeMachineVolume(volume + "/Backups.backupdb/x"));
  for (const std::string& path : {volume + "/Backups.backupdb2", std::string("/Backups.backupdb/x")})
    EXPECT_FALSE(QWLocalPaths::isPathOnTimeMachineVolume(path)) << path;
}

TEST_F(AuthorizationTest, MovesAllThatAFolderHoldsWhateverFails) {
  QWAuthorization authorization;
  for (const char* name : {"from/a", "from/b"}) writeFile(home_ / name, name);
  makeFolders(home_ / "to");
  bool fails = true;
  fakes_.privileged.behaviour = [&](const Call& call) {
    if (std::exchange(fails, false)) return 1;
    std::filesystem::rename(call.arguments[1], call.arguments[2]);
    return 0;
  };
  EXPECT_FALSE(authorization.authMoveFolderContents(home_ / "from", home_ / "to"));
  EXPECT_EQ(QWFileManager::contentsOfDirectory(home_ / "to").size(), 1U);
  EXPECT_TRUE(authorization.authMoveFolderContents(home_ / "from", home_ / "to"));
  EXPECT_EQ(readFile(home_ / "to/a") + readFile(home_ / "to/b"), "from/afrom/b");
}

TEST_F(AuthorizationTest, RefusesProtectedFolders) {
  QWAuthorization authorization;
  const std::string folder = home_ / "Library/Preferences";
  EXPECT_FALSE(authorization.authTrashFile(folder));
  EXPECT_FALSE(authorization.authRemoveFile(folder + "/"));
  EXPECT_FALSE(authorization.authMoveFile("/", home_ / "x"));
  makeFolders(folder);
  std::filesystem::create_directory_symlink(home_.path(), home_ / "again");
  EXPECT_FALSE(authorization.authRemoveFile(home_ / "again/Library/Preferences")) << "by another way";
  EXPECT_FALSE(authorization.authMoveFolderContents(folder, home_ / "x"));
  EXPECT_FALSE(authorization.authTrashFolderContents(folder, true));
  EXPECT_THAT(fakes_.privileged.calls, IsEmpty());
  EXPECT_EQ(fakes_.systemLog.messages().front(),
            "Unable to trash path " + folder + " because it is a system directory.");
}

TEST_F(AuthorizationTest, TrashesWithANoteToPutTheItemBack) {
  QWAuthorization authorization;
  fakes_.privileged.behaviour = [](const Call& call) {
    std::filesystem::rename(call.arguments[1], call.arguments[2]);
    return 0;
  };
  EXPECT_TRUE(authorization.authTrashFile(file_));
  EXPECT_EQ(readFile(inTrash("../info/com.example.plist.trashinfo")),
            "[Trash Info]\nPath=" + file_ + "\nDeletionDate=2026-11-14T21:35:17\n");
  // The same name three times in a second.
  for (const char* content : {"2", "3"}) {
    writeFile(file_, content);
    EXPECT_TRUE(authorization.authTrashFile(file_));
  }
  EXPECT_EQ(readFile(inTrash("com.example.plist")), "content");
  EXPECT_EQ(readFile(inTrash("com.example_20261114213517.plist")), "2");
  EXPECT_EQ(readFile(inTrash("com.example_20261114213517 2.plist")), "3");
  const std::string odd = home_ / "f\n%\xff";
  writeFile(odd, "");
  EXPECT_TRUE(authorization.authTrashFile(odd));
  EXPECT_THAT(readFile(inTrash("../info/f\n%\xff.trashinfo")),
              StartsWith("[Trash Info]\nPath=" + home_.path() + "/f%0A%25%FF\n"));
  // Its note's name may not be longer than any other.
  const std::string start(238, 'n');
  const std::string longest = home_ / (start + "\u00e9 and more.plist");
  writeFile(longest, "long");
  files_.fail(Operation::Trash, std::errc::permission_denied);
  const auto place = QWFileManager::trashFile(longest);
  ASSERT_TRUE(place.ok());
  EXPECT_EQ(*place, inTrash(start + ".plist"));
  EXPECT_EQ(readFile(*place), "long");
  EXPECT_EQ(nameInTrash(std::string(249, 'n'), "", ".plist", false).size(), 255u) << "where there are no notes";
  // In the Trash of somebody else.
  writeFile(home_ / "own.plist", "own");
  files_.heal();
  files_.fail(Operation::Write, std::errc::permission_denied);
  EXPECT_TRUE(authorization.authTrashFile(home_ / "own.plist"));
  EXPECT_THAT(readFile(inTrash("../info/own.plist.trashinfo")),
              StartsWith("[Trash Info]\nPath=" + home_.path() + "/own.plist\n"));
}

TEST_F(AuthorizationTest, LeavesNoNoteOfAFailedTrash) {
  QWAuthorization authorization;
  fakes_.privileged.behaviour = [](const Call&) { return 1; };
  EXPECT_FALSE(authorization.authTrashFile(file_));
  EXPECT_THAT(QWFileManager::contentsOfDirectory(inTrash("../info")), IsEmpty());
  files_.refuseWrites();
  EXPECT_FALSE(authorization.authTrashFile(file_));
  EXPECT_EQ(readFile(file_), "content");
  EXPECT_EQ(fakes_.privileged.calls.size(), 1u);
}

}  // namespace
}  // namespace vantory::test
