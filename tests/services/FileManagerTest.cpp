#include "services/files/QWFileManager.h"

#include <sys/stat.h>

#include <filesystem>

#include "services/files/QWAuthorization.h"
#include "services/tools/QWTask.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using Manager = QWFileManager;

class FileManagerTest : public ServicesTest {
 protected:
  FileManagerTest() { writeFile(a_, "content"); }

  const std::string a_ = home_ / "a.plist";
  const std::string b_ = home_ / "b.plist";
};

TEST_F(FileManagerTest, NamesAdministratorsWhereTheyCanHelp) {
  QWAuthorization::sharedController(false);
  for (const bool help : {true, false}) {
    fakes_.privileged.hasTools = help;
    files_.fail(Operation::Remove, std::errc::permission_denied, FaultyFileSystem::kEveryCall);
    const Status removed = Manager::removeFile(a_, true);
    ASSERT_FALSE(removed.ok());
    EXPECT_EQ(removed.error().cure.empty(), !help);
  }
}

TEST_F(FileManagerTest, FindsFreeNames) {
  EXPECT_EQ(Manager::uniqueFilename(b_), b_);
  EXPECT_EQ(Manager::uniqueFilename(a_), home_ / "a 2.plist");
  std::filesystem::create_symlink("nothing", home_ / "a 2.plist");
  EXPECT_TRUE(Manager::isSymbolicLinkAtPath(home_ / "a 2.plist") && !Manager::isSymbolicLinkAtPath(a_));
  EXPECT_EQ(Manager::uniqueFilename(a_), home_ / "a 3.plist");
  makeFolders(home_ / "Folder");
  EXPECT_EQ(Manager::uniqueFilename(home_ / "Folder"), home_ / "Folder 2");
}

TEST_F(FileManagerTest, HandlesWhatAFolderHolds) {
  const std::string tree = home_ / "tree", copy = home_ / "copy";
  for (const char* name : {"a.PLIST", "deep/b.plist", "deep/.DS_Store", "empty/.DS_Store", "c.txt"})
    writeFile(tree + "/" + name, name);
  makeFolders(copy);
  EXPECT_TRUE(Manager::copyContentsOfDirectory(tree, copy, 10s));
  EXPECT_EQ(readFile(copy + "/deep/b.plist"), "deep/b.plist");
  EXPECT_EQ(Manager::createDirectoryStructure(tree + "/deep/b.plist", home_ / "mirror"),
            (home_ / "mirror") + tree + "/deep");
  EXPECT_TRUE(Manager::isDirectoryAtPath((home_ / "mirror") + tree + "/deep"));

  EXPECT_TRUE(Manager::removeFolderIfEmpty(tree + "/empty"));
  EXPECT_FALSE(Manager::removeFolderIfEmpty(tree));
  EXPECT_THAT(Manager::trashFilesNamed(".DS_Store", tree), ElementsAre(tree + "/deep/.DS_Store"));
  EXPECT_THAT(Manager::trashFilesOfType("pList", tree),
              UnorderedElementsAre(tree + "/a.PLIST", tree + "/deep/b.plist"));
  EXPECT_THAT(Manager::contentsOfDirectory(tree), UnorderedElementsAre("deep", "c.txt"));
  EXPECT_TRUE(Manager::trashDirectoryContents(tree));
  EXPECT_THAT(Manager::contentsOfDirectory(tree), IsEmpty());
}

TEST_F(FileManagerTest, KeepsAColourLabelAmongOtherFlags) {
  EXPECT_FALSE(Manager::finderColorForPath(a_));
  Manager::setFinderColorIndex(0xFF06, a_);
  EXPECT_EQ(Manager::finderColorForPath(a_)->hue, 0.7917) << "purple; what is no label is not set";
  ASSERT_TRUE(metadata_.setFinderInfo(a_, std::string(8, 'x') + "\x40\x01" + std::string(22, 'x')));
  Manager::setFinderColorIndex(0x000C, a_);
  EXPECT_EQ(Manager::finderColorIndexForPath(a_), 0x400D);
  EXPECT_EQ(metadata_.finderInfo(a_)->substr(0, 8), "xxxxxxxx");
}

TEST_F(FileManagerTest, RegistersApplicationsOfTheSystemsOwnForm) {
  if (!exists("/usr/bin/update-desktop-database")) GTEST_SKIP() << "desktop-file-utils is not installed";
  writeFile(home_ / "apps/ed.desktop", "[Desktop Entry]\nType=Application\nName=Ed\nExec=ed\nMimeType=text/x-ed;\n");
  EXPECT_TRUE(Manager::registerApplicationWithLaunchServices(home_ / "apps/ed.desktop"));
  EXPECT_THAT(readFile(home_ / "apps/mimeinfo.cache"), HasSubstr("text/x-ed=ed.desktop"));
  EXPECT_FALSE(Manager::registerApplicationWithLaunchServices(home_ / "apps/gone.desktop"));
  EXPECT_FALSE(Manager::registerApplicationWithLaunchServices(a_));
}

TEST_F(FileManagerTest, WalksThroughFoldersAndLinksWithoutGoingInCircles) {
  writeFile(home_ / "tree/one/f", "12345");
  writeFile(home_ / "outside/g", "123");
  std::filesystem::create_directory_symlink(home_ / "outside", home_ / "tree/link");
  EXPECT_EQ(Manager::fileSize(home_ / "tree"), 8u);
  std::filesystem::create_directory_symlink("..", home_ / "tree/one/up");
  std::filesystem::create_directory_symlink(home_ / "tree", home_ / "outside/back");
  EXPECT_EQ(Manager::fileSize(home_ / "tree"), 8u);
  std::filesystem::create_directory_symlink(home_ / "outside", home_ / "tree/again");
  EXPECT_EQ(Manager::fileSize(home_ / "tree"), 11u);
  EXPECT_EQ(Manager::fileSize(home_ / "tree/one/f"), 5u);
  EXPECT_EQ(Manager::fileSize(home_ / "none"), 0u);
}

TEST_F(FileManagerTest, LinksThatDoubleAtEveryLevelAreCountedInNoTime) {
  constexpr int kLevels = 40;
  for (int level = 0; level < kLevels; ++level) {
    const std::string folder = home_ / "level" + std::to_string(level);
    makeFolders(folder);
    for (const char* link : {"/one", "/other"})
      std::filesystem::create_directory_symlink("../level" + std::to_string(level + 1), folder + link);
  }
  writeFile(home_ / "level40/f", "1");
  EXPECT_EQ(Manager::fileSize(home_ / "level0"), std::uint64_t{1} << kLevels);
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
  files_.heal();
  EXPECT_FALSE(Manager::removeFile(a_ + "/", false)) << "as a folder";
  EXPECT_EQ(readFile(a_), "content");
  EXPECT_THAT(logged(), Contains("Unable to trash " + a_ + ": " + a_ + ": Input/output error"));
}

TEST_F(FileManagerTest, WaitsForTheEffectOfAPrivilegedTool) {
  const Timestamp start = fakes_.clock.now();
  for (const bool works : {false, true}) {
    files_.heal();
    files_.fail(Operation::Remove, std::errc::permission_denied);
    fakes_.privileged.behaviour = [&](const auto&) { return works && std::filesystem::remove(a_), 0; };
    EXPECT_EQ(Manager::removeFile(a_, 10s).ok(), works);
    EXPECT_EQ(fakes_.clock.now().seconds, start.seconds + 10);
  }
}

TEST_F(FileManagerTest, UnlocksACopyAndLeavesTheLinksInAFolderAlone) {
  metadata_.locked = {home_.path()};
  EXPECT_TRUE(Manager::copyFile(a_, b_));
  EXPECT_THAT(metadata_.locked, IsEmpty());

  // As an ordinary process without a password dialog.
  EXPECT_TRUE(Manager::lockFile(home_ / "missing"));
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

class WildcardPathsTest : public ServicesTest {
 protected:
  std::vector<std::string> find(const std::string& pattern) {
    auto found = Manager::filesMatchingWildcardPath(pattern, folder_);
    for (std::string& path : found) path.erase(0, folder_.size() + 1);
    return found;
  }
  void make(std::initializer_list<const char*> names) {
    for (const char* name : names) writeFile(folder_ + "/" + name, "");
  }

  const std::string folder_ = home_ / "files";
};

TEST_F(WildcardPathsTest, MatchesWholeNamesByCase) {
  make({"x1", "X2", ".x3", "yx", "com.a.1.plist", "com.a.plist", "h\u00e9lo", "hlo",
        "h\xff"
        "lo",
        "a?b", "a*b"});
  EXPECT_THAT(find("x*"), ElementsAre("x1"));
  EXPECT_THAT(find("*x*"), UnorderedElementsAre("x1", ".x3", "yx"));
  EXPECT_THAT(find("com.a.*.plist"), ElementsAre("com.a.1.plist"));
  EXPECT_THAT(find("*h?lo"), UnorderedElementsAre("h\u00e9lo",
                                                  "h\xff"
                                                  "lo"));
  EXPECT_THAT(find("a*b"), UnorderedElementsAre("a?b", "a*b"));
  EXPECT_EQ(find("*").size(), 11u);
}

TEST_F(WildcardPathsTest, TakesTimeForNoPattern) {
  make({std::string(250, 'a').c_str()});
  std::string pattern;
  for (int i = 0; i < 60; ++i) pattern += "*a";
  EXPECT_THAT(find(pattern + "*b"), IsEmpty());
}

TEST_F(WildcardPathsTest, GoesThroughFolders) {
  make({"5.0/Settings/u/a.sqpreset", "5.0/Settings/u/b.txt", "5.5/Settings/v/c.sqpreset", "5.5/Settings/d.sqpreset",
        "file"});
  EXPECT_THAT(find("*/Settings/*/*.sqpreset"),
              UnorderedElementsAre("5.0/Settings/u/a.sqpreset", "5.5/Settings/v/c.sqpreset"));
  EXPECT_THAT(find("*/Settings"), UnorderedElementsAre("5.0/Settings", "5.5/Settings"));
  EXPECT_THAT(find("/*/None/*"), IsEmpty());
  EXPECT_THAT(find("no/such?/file"), ElementsAre("no/such?/file"));
  EXPECT_EQ(Manager::decodeWildcardPath("f*", folder_), folder_ + "/file");
  EXPECT_EQ(Manager::decodeWildcardPath("g*", folder_), folder_ + "/g*");
  // A trailing slash throws the matches away.
  EXPECT_THAT(Manager::filesMatchingWildcardPath("5*/", folder_), ElementsAre(folder_));
  EXPECT_THAT(Manager::filesMatchingWildcardPath(folder_ + "/f*"), ElementsAre(folder_ + "/file"));

  EXPECT_THAT(Manager::filesMatchingWildcardPath("missing/*", folder_, report_), IsEmpty());
  EXPECT_TRUE(report_.isWhole());
  files_.fail(Operation::List, std::errc::permission_denied, FaultyFileSystem::kEveryCall);
  EXPECT_THAT(Manager::filesMatchingWildcardPath("*", folder_), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty()) << "a question tells nobody";
  for (const char* pattern : {"*", "*.plist"})
    EXPECT_THAT(Manager::filesMatchingWildcardPath(pattern, folder_, report_), IsEmpty());
  EXPECT_EQ(report_.count(FileReport::Outcome::Failed), 1U) << "one folder, asked twice";
  EXPECT_THAT(logged(), ElementsAre(testing::StartsWith("The files in " + folder_ + " cannot be listed: ")));
  files_.heal();
  files_.fail(Operation::Info, std::errc::permission_denied, FaultyFileSystem::kEveryCall);
  EXPECT_THAT(find("5.0/*/u"), ElementsAre("5.0/Settings/u"));
  EXPECT_THAT(find("5.*/None"), UnorderedElementsAre("5.0/None", "5.5/None")) << "nobody knows";
}

// Archives are made by a tool of the system: a test skips where it is missing.
class ArchiveTest : public ServicesTest {
 protected:
  std::vector<std::string> temporaryFiles() const {
    return Manager::contentsOfDirectory(home_ / "Library/Caches/com.quarrywell.Vantory");
  }

  const std::string archive_ = home_ / "Backup.zip";
};

TEST_F(ArchiveTest, ZipsAFolderUnderItsOwnNameAndKeepsTheOlderArchive) {
  for (const char* tool : {"/usr/bin/bsdtar", "/usr/bin/unzip", "/usr/bin/python3"})
    if (!exists(tool)) GTEST_SKIP() << tool << " is not installed";
  const std::string folder = home_ / "@Backup.vnt";
  writeFile(folder + "/deep/Gr\u00f6\u00dfe", "content");
  writeFile(folder + "/-C", "");
  writeFile(folder + "/\xff", "no text");
  makeFolders(folder + "/empty");
  std::filesystem::create_symlink("/etc/passwd", folder + "/link");
  ASSERT_EQ(mkfifo((folder + "/pipe").c_str(), 0600), 0);
  writeFile(archive_, "older");
  ASSERT_TRUE(Manager::compressFile(folder, archive_));
  EXPECT_EQ(readFile(home_ / ".local/share/Trash/files/Backup.zip"), "older");
  EXPECT_THAT(temporaryFiles(), IsEmpty());
  EXPECT_THAT(logged(), Contains(HasSubstr("pipe")));  // says that it was left out
  struct stat status;
  ASSERT_EQ(stat(archive_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);

  EXPECT_EQ(QWTask::terminationCodeFromTask("/usr/bin/unzip", {"-tq", archive_}), 0);
  const auto listed = QWTask::stringFromTask(
      "/usr/bin/python3",
      {"-c", "import sys, zipfile\nprint(sorted(zipfile.ZipFile(sys.argv[1]).namelist()))", archive_},
      QWTask::Encoding::Utf8, std::chrono::seconds(60));
  EXPECT_EQ(listed,
            "['@Backup.vnt/', '@Backup.vnt/-C', '@Backup.vnt/deep/', '@Backup.vnt/deep/Gr\u00f6\u00dfe', "
            "'@Backup.vnt/empty/', '@Backup.vnt/link', '@Backup.vnt/\ufffd']\n");
}

TEST_F(ArchiveTest, AnArchiveThatCannotBeMadeLeavesNothing) {
  if (!exists("/usr/bin/bsdtar")) GTEST_SKIP() << "bsdtar is not installed";
  EXPECT_FALSE(Manager::compressFile(home_ / "none", archive_));
  EXPECT_THAT(logged(), Contains(StartsWith("Unable to compress " + (home_ / "none") + ": ")));
  writeFile(home_ / "item", "content");
  EXPECT_FALSE(Manager::compressFile(home_ / "item", home_ / "missing/Backup.zip"));
  EXPECT_FALSE(exists(archive_));
  // An older one that cannot be moved away stays as it is.
  writeFile(archive_, "older");
  files_.heal();
  files_.fail(Operation::Trash, std::errc::io_error);
  EXPECT_FALSE(Manager::compressFile(home_ / "item", archive_));
  EXPECT_EQ(readFile(archive_), "older");
  EXPECT_THAT(temporaryFiles(), IsEmpty());
}

TEST_F(ArchiveTest, TheSuperuserCompressesNobodyElsesFiles) {
  writeFile(home_ / "item", "content");
  fakes_.users.superuser = true;
  fakes_.users.process = User{0, 0, machine_.path()};
  EXPECT_FALSE(Manager::compressFile(home_ / "item", archive_));
}

}  // namespace
}  // namespace vantory::test
