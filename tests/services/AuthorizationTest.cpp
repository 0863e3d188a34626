#include "services/QWAuthorization.h"

#include <filesystem>

#include "services/QWFileManager.h"
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
  std::string inTrash(const std::string& name) const { return home_ / (".local/share/Trash/" + name); }

  const EnvironmentChange zone_{"TZ", "UTC"};
  const std::string file_ = home_ / "com.example.plist";
};

TEST_F(AuthorizationTest, IsDecidedByTheFirstCall) {
  QWAuthorization& authorization = QWAuthorization::sharedController(false);
  EXPECT_FALSE(QWAuthorization::sharedController().hasGUI());
  EXPECT_FALSE(authorization.canAuthorize());
  EXPECT_FALSE(authorization.authRemoveFile(file_));
  EXPECT_THAT(fake_.systemLog.messages(), ElementsAre("Unable to authorize"));
  EXPECT_EQ(fake_.privileged.requests, 0);
  fake_.users.superuser = true;
  EXPECT_TRUE(authorization.authRemoveFile(file_));
  EXPECT_THAT(fake_.privileged.calls, ElementsAre(Call{"/bin/rm", {"-Rdf", file_}}));
}

TEST_F(AuthorizationTest, AsksOnceAndAnswersWhatTheToolDid) {
  QWAuthorization authorization;
  EXPECT_EQ(authorization.authExecTask("/no/such/tool", {}), QWAuthorization::ToolMissing);
  fake_.privileged.grants = false;
  EXPECT_EQ(authorization.authExecTask("/bin/rm", {}), QWAuthorization::NotAuthorized);
  fake_.privileged.grants = true;
  EXPECT_EQ(authorization.authExecTask("/bin/rm", {}), QWAuthorization::NotAuthorized);
  EXPECT_EQ(fake_.privileged.requests, 1);
  authorization.authEnd();
  EXPECT_TRUE(authorization.authCopyFile(file_, "/b"));
  EXPECT_TRUE(authorization.authMoveFile(file_, "/b"));
  EXPECT_TRUE(authorization.authCreateDir("/c"));
  EXPECT_EQ(fake_.privileged.requests, 2);
  EXPECT_THAT(fake_.privileged.calls,
              ElementsAre(Call{"/bin/cp", {"-f", "-p", "-R", file_, "/b"}}, Call{"/bin/mv", {"-f", file_, "/b"}},
                          Call{"/bin/mkdir", {"-p", "/c"}}));
  fake_.privileged.behaviour = [](const Call&) { return 1; };
  EXPECT_FALSE(authorization.authCopyFile(file_, "/b"));
  EXPECT_FALSE(authorization.authCopyFile(home_ / "missing", "/b"));
  EXPECT_FALSE(authorization.authMoveFile(file_, ""));
  EXPECT_THAT(fake_.systemLog.messages(), ElementsAre("Unable to execute task: path /no/such/tool doesn't exist",
                                                      "Error in authMoveFile: new path is null"));
}

TEST_F(AuthorizationTest, AsksAgainForAnotherTaskAndNeverByPassword) {
  QWAuthorization authorization;
  fake_.privileged.grants = false;
  EXPECT_FALSE(authorization.authRemoveFile(file_));
  EXPECT_FALSE(authorization.authRequireAdministrator(false));
  EXPECT_EQ(fake_.privileged.requests, 1);
  authorization.beginTask();
  fake_.privileged.grants = true;
  EXPECT_EQ(authorization.authExecTask("/usr/sbin/chown", {"root:wheel", file_}), QWAuthorization::Success)
      << "done without such a program";
  authorization.beginTask();
  EXPECT_TRUE(authorization.authRequireAdministrator(true));
  EXPECT_EQ(fake_.privileged.requests, 2);

  EXPECT_FALSE(authorization.authStartWithUser("anna", ""));
  EXPECT_THAT(fake_.systemLog.messages(), IsEmpty());
  EXPECT_FALSE(authorization.authStartWithUser("anna", "secret"));
  EXPECT_THAT(fake_.systemLog.messages(), ElementsAre("Unable to create authRef - error 95"));
  EXPECT_FALSE(authorization.isAuthorized());
  fake_.users.superuser = true;
  EXPECT_TRUE(authorization.authStartWithUser("", ""));
}

TEST_F(AuthorizationTest, RefusesProtectedFolders) {
  QWAuthorization authorization;
  const std::string folder = home_ / "Library/Preferences";
  EXPECT_FALSE(authorization.authTrashFile(folder));
  EXPECT_FALSE(authorization.authRemoveFile(folder + "/"));
  EXPECT_FALSE(authorization.authMoveFile("/", home_ / "x"));
  EXPECT_FALSE(authorization.authTrashFolderContents(folder, true));
  EXPECT_THAT(fake_.privileged.calls, IsEmpty());
  EXPECT_EQ(fake_.systemLog.messages().front(),
            "Unable to trash path " + folder + " because it is a system directory.");
}

TEST_F(AuthorizationTest, TrashesWithANoteToPutTheItemBack) {
  QWAuthorization authorization;
  fake_.privileged.behaviour = [](const Call& call) {
    std::filesystem::rename(call.arguments[1], call.arguments[2]);
    return 0;
  };
  EXPECT_TRUE(authorization.authTrashFile(file_));
  EXPECT_EQ(readFile(inTrash("info/com.example.plist.trashinfo")),
            "[Trash Info]\nPath=" + file_ + "\nDeletionDate=2026-11-14T21:35:17\n");
  // The same name three times in a second.
  for (const char* content : {"2", "3"}) {
    writeFile(file_, content);
    EXPECT_TRUE(authorization.authTrashFile(file_));
  }
  EXPECT_EQ(readFile(inTrash("files/com.example.plist")), "content");
  EXPECT_EQ(readFile(inTrash("files/com.example_20261114213517.plist")), "2");
  EXPECT_EQ(readFile(inTrash("files/com.example_20261114213517 2.plist")), "3");
  const std::string odd = home_ / "f\n%\xff";
  writeFile(odd, "");
  EXPECT_TRUE(authorization.authTrashFile(odd));
  EXPECT_THAT(readFile(inTrash("info/f\n%\xff.trashinfo")),
              StartsWith("[Trash Info]\nPath=" + home_.path() + "/f%0A%25%FF\n"));
}

TEST_F(AuthorizationTest, MakesATrashThatTheUserMayNotMake) {
  QWAuthorization authorization;
  for (const std::errc code : {std::errc::permission_denied, std::errc::no_space_on_device}) {
    fake_.privileged.calls.clear();
    files_.fail(Operation::MakeFolder, code, FaultyFileSystem::kEveryCall);
    fake_.privileged.behaviour = [](const Call&) { return 1; };
    EXPECT_FALSE(authorization.authTrashFile(file_));
    files_.heal();
    if (code == std::errc::permission_denied)
      EXPECT_THAT(fake_.privileged.calls, ElementsAre(Call{"/bin/mkdir", {"-p", inTrash("files")}}));
    else
      EXPECT_THAT(fake_.privileged.calls, IsEmpty());
  }
}

TEST_F(AuthorizationTest, LeavesNoNoteOfAFailedTrash) {
  QWAuthorization authorization;
  fake_.privileged.behaviour = [](const Call&) { return 1; };
  EXPECT_FALSE(authorization.authTrashFile(file_));
  EXPECT_THAT(QWFileManager::contentsOfDirectory(inTrash("info")), IsEmpty());
  files_.refuseWrites();
  EXPECT_FALSE(authorization.authTrashFile(file_));
  EXPECT_EQ(readFile(file_), "content");
  EXPECT_EQ(fake_.privileged.calls.size(), 1u);
}

TEST_F(AuthorizationTest, DeletesForTheSuperuserWhenToldTo) {
  fake_.users.superuser = true;
  QWAuthorization authorization;
  writeFile(home_ / "folder/x", "");
  EXPECT_TRUE(authorization.authTrashFolderContents(home_ / "folder", true));
  EXPECT_TRUE(authorization.authTrashFile(file_, true));
  EXPECT_THAT(fake_.privileged.calls, ElementsAre(Call{"/bin/rm", {"-R", "-f", home_ / "folder/x"}},
                                                  Call{"/bin/rm", {"-Rdf", inTrash("files/com.example.plist")}}));
}

}  // namespace
}  // namespace vantory::test
