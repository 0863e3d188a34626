#include "services/QWFileManager.h"

#include <filesystem>

#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Manager = QWFileManager;

class FileManagerTest : public ServicesTest {
 protected:
  FileManagerTest() { writeFile(a_, "content"); }

  const std::string a_ = home_ / "a.plist";
  const std::string b_ = home_ / "b.plist";
};

TEST_F(FileManagerTest, FindsFreeNames) {
  EXPECT_EQ(Manager::uniqueFilename(b_), b_);
  EXPECT_EQ(Manager::uniqueFilename(a_), home_ / "a 2.plist");
  std::filesystem::create_symlink("nothing", home_ / "a 2.plist");
  EXPECT_EQ(Manager::uniqueFilename(a_), home_ / "a 3.plist");
  makeFolders(home_ / "Folder");
  EXPECT_EQ(Manager::uniqueFilename(home_ / "Folder"), home_ / "Folder 2");
}

TEST_F(FileManagerTest, WalksThroughFoldersAndLinksWithoutGoingInCircles) {
  writeFile(home_ / "tree/one/f", "12345");
  writeFile(home_ / "outside/g", "123");
  std::filesystem::create_directory_symlink(home_ / "outside", home_ / "tree/link");
  EXPECT_EQ(Manager::fileSize(home_ / "tree"), 8u);
  std::filesystem::create_directory_symlink("..", home_ / "tree/one/up");
  std::filesystem::create_directory_symlink(home_ / "tree", home_ / "outside/back");
  EXPECT_EQ(Manager::fileSize(home_ / "tree"), 8u);
  EXPECT_EQ(Manager::fileSize(home_ / "tree/one/f"), 5u);
  EXPECT_EQ(Manager::fileSize(home_ / "none"), 0u);
}

TEST_F(FileManagerTest, AsksForRightsOnlyWhereTheyHelp) {
  writeFile(b_, "old");
  fakes_.privileged.behaviour = [&](const auto&) { return writeFile(b_, "privileged"), 0; };
  EXPECT_FALSE(Manager::copyFile(a_, b_, false));
  EXPECT_EQ(readFile(b_), "old");
  EXPECT_TRUE(Manager::copyFile(a_, b_, 10s));
  EXPECT_EQ(readFile(b_), "privileged");

  files_.heal();
  files_.fail(Operation::Commit, std::errc::no_space_on_device);
  EXPECT_FALSE(Manager::copyFile(a_, home_ / "c"));
  EXPECT_FALSE(exists(home_ / "c"));
  EXPECT_EQ(fakes_.privileged.calls.size(), 1u);
  EXPECT_THAT(logged(), Contains("Error copying file: " + (home_ / "c") + ": No space left on device. Authorizing..."));
}

TEST_F(FileManagerTest, MovesIntoAFolderButOverNothing) {
  makeFolders(home_ / "folder");
  EXPECT_TRUE(Manager::moveFile(a_, home_ / "folder", 10s));
  EXPECT_EQ(readFile(home_ / "folder/a.plist"), "content");
  EXPECT_FALSE(Manager::moveFile(home_ / "folder", home_ / "folder"));

  writeFile(a_, "new");
  EXPECT_FALSE(Manager::moveFile(a_, home_ / "folder"));
  makeFolders(home_ / "backup.vnt");
  EXPECT_FALSE(Manager::moveFile(a_, home_ / "backup.vnt"));
  EXPECT_EQ(readFile(a_), "new");
  EXPECT_EQ(readFile(home_ / "folder/a.plist"), "content");
  EXPECT_THAT(fakes_.privileged.calls, IsEmpty());

  EXPECT_TRUE(Manager::moveFile(a_, home_ / "A.PLIST", 10s));
  EXPECT_EQ(readFile(home_ / "A.PLIST"), "new");
}

TEST_F(FileManagerTest, ClaimsNothingAboutAFileThatItCannotSee) {
  files_.fail(Operation::Info, std::errc::permission_denied, FaultyFileSystem::kEveryCall);
  files_.fail(Operation::Remove, std::errc::permission_denied);
  files_.fail(Operation::Trash, std::errc::io_error);
  EXPECT_FALSE(Manager::removeFile(a_, false));
  EXPECT_FALSE(Manager::trashFile(a_));
  EXPECT_EQ(readFile(a_), "content");
  EXPECT_THAT(logged(), Contains("Unable to trash " + a_ + ": " + a_ + ": Input/output error"));
}

TEST_F(FileManagerTest, WaitsForTheEffectOfAPrivilegedTool) {
  const Timestamp start = fakes_.clock.now();
  for (const bool works : {false, true}) {
    files_.heal();
    files_.fail(Operation::Remove, std::errc::permission_denied);
    fakes_.privileged.behaviour = [&](const auto&) { return works && std::filesystem::remove(a_), 0; };
    EXPECT_EQ(Manager::removeFile(a_, 10s), works);
    EXPECT_EQ(fakes_.clock.now().seconds, start.seconds + 10);
  }
}

TEST_F(FileManagerTest, UnlocksACopyAndLeavesTheLinksInAFolderAlone) {
  metadata_.locked = {home_.path()};
  EXPECT_TRUE(Manager::copyFile(a_, b_));
  EXPECT_THAT(metadata_.locked, IsEmpty());

  // As an ordinary process without a password dialog.
  QWFileManager::lockFile(home_ / "missing");
  EXPECT_THAT(logged(), IsEmpty());
  fakes_.privileged.grants = false;
  metadata_.lockAnswer = Error{std::errc::operation_not_permitted, "it: not permitted"};
  writeFile(home_ / "folder/deep/x", "");
  writeFile(home_ / "folder/y", "");
  std::filesystem::create_directory_symlink(home_.path(), home_ / "folder/deep/link");
  Manager::lockFolder(home_ / "folder");
  Manager::lockFolder(home_ / "folder/deep/link");
  EXPECT_THAT(logged(), ElementsAre("Unable to lock it: not permitted", "Unable to lock it: not permitted"));
  EXPECT_LE(fakes_.privileged.requests, 1);
}

}  // namespace
}  // namespace vantory::test
