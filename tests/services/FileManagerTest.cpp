#include "services/QWFileManager.h"

#include <filesystem>
#include <thread>

#include "services/MainThread.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using Manager = QWFileManager;

class FileManagerTest : public ServicesTest {
 protected:
  FileManagerTest() {
    writeFile(a_, "content");
    files_.heal();
  }
  static std::string nameOf(const FakePrivilegedRunner::Call& call) { return call.tool; }

  const std::string a_ = home_ / "a.plist";
  const std::string b_ = home_ / "b.plist";
  const std::string trash_ = home_ / ".local/share/Trash/files";
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
  EXPECT_FALSE(Manager::isFolderEmpty(home_ / "tree"));

  makeFolders(home_ / "empty/deep");
  writeFile(home_ / "empty/.DS_Store", "x");
  writeFile(home_ / "empty/deep/Icon\r", "x");
  std::filesystem::create_directory_symlink("..", home_ / "empty/deep/up");
  EXPECT_TRUE(Manager::isFolderEmpty(home_ / "empty"));
  EXPECT_TRUE(Manager::isFolderEmpty(home_ / "none"));
}

TEST_F(FileManagerTest, AsksForRightsOnlyWhereTheyHelp) {
  writeFile(b_, "old");
  fake_.privileged.behaviour = [&](const auto&) { return writeFile(b_, "privileged"), 0; };
  EXPECT_FALSE(Manager::copyFile(a_, b_, false));
  EXPECT_EQ(readFile(b_), "old");
  EXPECT_TRUE(Manager::copyFile(a_, b_, 10s));
  EXPECT_EQ(readFile(b_), "privileged");

  files_.heal();
  files_.fail(Operation::Commit, std::errc::no_space_on_device);
  EXPECT_FALSE(Manager::copyFile(a_, home_ / "c"));
  EXPECT_FALSE(exists(home_ / "c"));
  EXPECT_EQ(fake_.privileged.calls.size(), 1u);
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
  EXPECT_THAT(fake_.privileged.calls, IsEmpty());

  EXPECT_TRUE(Manager::moveFile(a_, home_ / "A.PLIST", 10s));
  EXPECT_EQ(readFile(home_ / "A.PLIST"), "new");
}

TEST_F(FileManagerTest, RemovesAndTrashesWhatIsThere) {
  const std::string link = home_ / "link";
  std::filesystem::create_symlink("nothing", link);
  EXPECT_TRUE(Manager::removeFile(link, 10s));
  EXPECT_FALSE(exists(link));
  EXPECT_TRUE(Manager::removeFile(link));
  EXPECT_TRUE(Manager::trashFile(link));
  EXPECT_TRUE(Manager::trashFile(a_, 10s));
  EXPECT_EQ(readFile(trash_ + "/a.plist"), "content");
  EXPECT_THAT(logged(), IsEmpty());
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
  files_.fail(Operation::Remove, std::errc::permission_denied);
  const Timestamp start = fake_.clock.now();
  EXPECT_FALSE(Manager::removeFile(a_, 10s));
  EXPECT_EQ(fake_.clock.now().seconds, start.seconds + 10);

  files_.heal();
  files_.fail(Operation::Remove, std::errc::permission_denied);
  fake_.privileged.behaviour = [&](const auto&) { return std::filesystem::remove(a_), 0; };
  MainThread::shared();
  std::thread worker([&] { EXPECT_TRUE(Manager::removeFile(a_, 10s)); });
  worker.join();
  EXPECT_EQ(fake_.clock.now().seconds, start.seconds + 10);
}

TEST_F(FileManagerTest, UnlocksOnlyWhatIsLocked) {
  disk_.locked = home_.path();
  EXPECT_TRUE(Manager::copyFile(a_, b_));
  EXPECT_THAT(metadata_.changes, ElementsAre(std::pair(home_.path(), false)));

  // As an ordinary process without a password dialog.
  QWFileManager::lockFile(home_ / "missing");
  EXPECT_THAT(logged(), IsEmpty());
  fake_.privileged.grants = false;
  metadata_.answer = Error{std::errc::operation_not_permitted, "it: not permitted"};
  writeFile(home_ / "folder/deep/x", "");
  writeFile(home_ / "folder/y", "");
  std::filesystem::create_directory_symlink(home_.path(), home_ / "folder/deep/link");
  metadata_.changes.clear();
  Manager::lockFolder(home_ / "folder");
  Manager::lockFolder(home_ / "folder/deep/link");
  EXPECT_EQ(metadata_.changes.size(), 2u) << "the link is left alone";
  EXPECT_THAT(logged(), testing::Each(std::string("Unable to lock it: not permitted")));
  EXPECT_EQ(logged().size(), 2u);
  EXPECT_LE(fake_.privileged.requests, 1);
}

TEST_F(FileManagerTest, RemovesNoFolderThatMayHoldSomething) {
  EXPECT_FALSE(Manager::removeFolderIfEmpty(a_));
  writeFile(home_ / "full/x", "");
  EXPECT_FALSE(Manager::removeFolderIfEmpty(home_ / "full"));
  writeFile(home_ / "closed/deep/x", "");
  files_.heal();
  files_.fail(Operation::List, std::errc::permission_denied, 2);
  EXPECT_FALSE(Manager::removeFolderIfEmpty(home_ / "closed"));
  EXPECT_TRUE(exists(home_ / "closed/deep/x"));
  std::filesystem::remove(home_ / "full/x");
  EXPECT_TRUE(Manager::removeFolderIfEmpty(home_ / "full"));
  EXPECT_FALSE(exists(home_ / "full"));
}

}  // namespace
}  // namespace vantory::test
