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

TEST_F(FileManagerTest, CleansNames) {
  EXPECT_EQ(Manager::validateFilename("  My:Backup/1 \n"), "MyBackup1");
  EXPECT_EQ(Manager::validateFilename("."), "");
  EXPECT_EQ(Manager::validateFilename("..x"), ".x");
  EXPECT_EQ(Manager::validateFilename(" .x"), ".x");
  EXPECT_EQ(Manager::validateFilename("/ :/"), " ");
}

TEST_F(FileManagerTest, WritesSizesForPeople) {
  EXPECT_EQ(Manager::formatFileSize(1023), "1023 B");
  EXPECT_EQ(Manager::formatFileSize(1024), "1.00 KB");
  EXPECT_EQ(Manager::formatFileSize(1048575), "1024.00 KB");
  EXPECT_EQ(Manager::formatFileSize(1048576), "1.00 MB");
  EXPECT_EQ(Manager::formatFileSize(1073741824), "1.00 GB");
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

TEST_F(FileManagerTest, CopiesAFileThatIsNotThereYet) {
  EXPECT_TRUE(Manager::copyFile(a_, b_));
  EXPECT_EQ(readFile(b_), "content");
  EXPECT_FALSE(Manager::copyFile("", b_));
  EXPECT_FALSE(Manager::copyFile(a_, ""));
  EXPECT_THAT(logged(), ElementsAre("Error copying file: source path is nil",
                                    "Error copying file " + a_ + ": destination path is nil"));
  EXPECT_EQ(fake_.systemLog.messages().size(), 2u);
  EXPECT_THAT(metadata_.changes, IsEmpty());
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
  EXPECT_EQ(metadata_.changes.size(), 3u);
  EXPECT_THAT(logged(), testing::Each(std::string("Unable to lock it: not permitted")));
  EXPECT_EQ(logged().size(), 3u);
  EXPECT_LE(fake_.privileged.requests, 1);
}

TEST_F(FileManagerTest, TrashesByNameAndType) {
  for (const char* name : {"t/.DS_Store", "t/d/.DS_Store", "t/d/a.plist", "t/b.Plist", "t/c.txt"})
    writeFile(home_ / name, name);
  makeFolders(home_ / "t/e/.DS_Store/f");
  EXPECT_THAT(Manager::trashFilesNamed(".DS_Store", home_ / "t"),
              UnorderedElementsAre(home_ / "t/.DS_Store", home_ / "t/d/.DS_Store"));
  EXPECT_THAT(Manager::trashFilesOfType("PLIST", home_ / "t"),
              UnorderedElementsAre(home_ / "t/d/a.plist", home_ / "t/b.Plist"));
  EXPECT_TRUE(Manager::trashDirectoryContents(home_ / "t"));
  EXPECT_THAT(Manager::contentsOfDirectory(home_ / "t"), IsEmpty());
  EXPECT_EQ(readFile(trash_ + "/c.txt"), "t/c.txt");
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

TEST_F(FileManagerTest, RecreatesFolderChainsAndCopiesContents) {
  makeFolders(home_ / "backup/p.vnt");
  EXPECT_EQ(Manager::createDirectoryStructure(a_, home_ / "out"), (home_ / "out") + home_.path());
  EXPECT_EQ(Manager::createDirectoryStructure(home_ / "backup/p.vnt", home_ / "out"),
            (home_ / "out") + (home_ / "backup"));
  EXPECT_TRUE(exists((home_ / "out") + (home_ / "backup")));
  writeFile(home_ / "from/1/x", "x");
  makeFolders(home_ / "to");
  EXPECT_TRUE(Manager::copyContentsOfDirectory(home_ / "from", home_ / "to", 10s));
  EXPECT_EQ(readFile(home_ / "to/1/x"), "x");
  EXPECT_FALSE(Manager::createDirectory(a_));
  EXPECT_THAT(fake_.privileged.calls, IsEmpty());
}

TEST_F(FileManagerTest, TouchesOnlyWhatExists) {
  EXPECT_FALSE(Manager::touchFile(home_ / "missing"));
  EXPECT_FALSE(exists(home_ / "missing"));
  EXPECT_TRUE(Manager::touchFile(a_));
  EXPECT_EQ(disk_.info(a_, Links::Follow)->modified, fake_.clock.now());
  EXPECT_EQ(fake_.privileged.requests, 0);
}

TEST_F(FileManagerTest, KeepsOtherFinderFlagsWithALabel) {
  std::string info(32, '\0');
  info[8] = '\x04';  // a custom icon
  if (!metadata_.setFinderInfo(a_, info)) GTEST_SKIP() << "no extended attributes here";
  Manager::setFinderColorIndex(13, a_);
  EXPECT_EQ(Manager::finderColorIndexForPath(a_), 0x040C);
  EXPECT_FALSE(Manager::finderColorForPath(a_));
  ASSERT_TRUE(metadata_.setFinderInfo(a_, std::string(32, '\0')));
  Manager::setFinderColorIndex(14, a_);
  EXPECT_EQ(Manager::finderColorForPath(a_)->hue, 0.0888);
  EXPECT_FALSE(Manager::finderColorForPath(b_));
}

}  // namespace
}  // namespace vantory::test
