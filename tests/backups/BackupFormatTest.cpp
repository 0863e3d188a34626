// Writing backups and reading them back.

#include "tests/backups/BackupsTest.h"

namespace vantory::test {
namespace {

namespace fs = std::filesystem;

class BackupFormatTest : public BackupsTest {};

TEST_F(BackupFormatTest, FilesOutsideTheHomeKeepTheirPath) {
  const std::string beside = home_.path() + "bel";
  writeFile(beside + "/x.plist", "hers");
  writeFile(machine_ / "Plain/f", "1");
  writeFile(machine_ / "Tool.bundle/f", "2");
  setCatalog({{"All", {beside + "/x.plist", machine_ / "Plain", machine_ / "Tool.bundle"}}});
  EXPECT_EQ(backupOfAll("A")->writeData(report_), WriteResult::Success);
  fs::remove_all(beside);

  const std::string stored = inLibrary("A.vnt");
  EXPECT_EQ(readFile(stored + beside + "/x.plist"), "hers");
  EXPECT_EQ(readFile(stored + (machine_ / "Plain/Plain/f")), "1");
  EXPECT_EQ(readFile(stored + (machine_ / "Tool.bundle/f")), "2");
}

TEST_F(BackupFormatTest, AFailedBackupTakesNothingAwayThatAnotherProcessPutThere) {
  for (const bool replaced : {false, true}) {
    setSmallCatalog("mine");
    const auto backup = backupOfAll("Clean");
    files_.fail(Operation::Write, std::errc::io_error);  // of the settings
    EXPECT_EQ(backup->writeData(report_), WriteResult::SettingsNotWritten);
    const std::string path = inLibrary("Clean.vnt");
    if (replaced) {
      fs::rename(path, home_ / "elsewhere");
      writeFile(path + "/Settings.plist", "theirs");
    }
    backup->removeCreatedFolder(report_);
    EXPECT_EQ(exists(path + "/Settings.plist"), replaced);
    EXPECT_EQ(exists(path), replaced);
    files_.heal();
  }
}

TEST_F(BackupFormatTest, NoEarlierBackupMakesWayForNothing) {
  setSmallCatalog("mine");
  ASSERT_EQ(backupOfAll("Clean")->writeData(report_), WriteResult::Success);
  const std::string file = home_ / "Library/Preferences/editor.plist";
  fs::remove(file);
  fs::create_symlink("elsewhere", file);
  EXPECT_EQ(backupOfAll("Clean")->writeData(report_), WriteResult::NoFiles);
  EXPECT_EQ(readFile(inLibrary("Clean.vnt/Users/user/Library/Preferences/editor.plist")), "mine");
  EXPECT_THAT(report_.remarks(), ElementsAre("There are no files to back up: the earlier backup stays as it is."));
  EXPECT_EQ(report_.count(FileReport::Outcome::Skipped, FileAction::Copy), 1u) << "the link";
}

// Whole is a backup whose settings are there, with the file as it was then.
bool isWhole(const std::string& backup, const std::string& content) {
  const std::string copy = backup + "/Users/user/Library/Preferences/editor.plist";
  return exists(backup + "/Settings.plist") && exists(copy) && readFile(copy) == content;
}

// Fails, and ends the process, before and after every single step of a backup that replaces an older one.
TEST_F(BackupFormatTest, NothingIsLostWhateverFails) {
  using enum Operation;
  for (const Operation operation : {HoldFolder, MakeFolder, Trash, StageCopy, Commit, Write, Sync, Info}) {
    // To end where nothing is changed is to end at another step.
    for (int kind = 0; kind < (operation == Info ? 1 : 3); ++kind) {
      for (int call = 1, more = 1; more > 0; ++call) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(operation) << " call " << call << " kind " << kind);
        fs::remove_all(library());
        fs::remove_all(home_ / ".local");
        setSmallCatalog("old");
        ASSERT_EQ(backupOfAll("Clean")->writeData(report_), WriteResult::Success);
        setSmallCatalog("new");
        const auto backup = backupOfAll("Clean");
        report_ = {};
        files_.heal();
        if (kind == 0) files_.fail(operation, std::errc::io_error, call);
        if (kind == 1) files_.crashBefore(operation, call);
        if (kind == 2) files_.crashAfter(operation, call);
        bool done = false;
        try {
          done = backup->writeData(report_) == WriteResult::Success && report_.isWhole();
        } catch (const SimulatedCrash&) {
        }
        more = files_.calls(operation) >= call;
        files_.heal();
        EXPECT_TRUE(isWhole(inLibrary("Clean.vnt"), "old") || isWhole(inTrash("Clean.vnt"), "old"));
        EXPECT_TRUE(!done || isWhole(inLibrary("Clean.vnt"), "new"));
        EXPECT_EQ(backupOfAll("Clean")->writeData(report_), WriteResult::Success) << "after the trouble is over";
        EXPECT_TRUE(isWhole(inLibrary("Clean.vnt"), "new"));
      }
    }
  }
}

TEST_F(BackupFormatTest, ABackupThatMayNotBeOnDiskIsNotListed) {
  setSmallCatalog("new");
  files_.fail(Operation::Sync, std::errc::io_error);
  EXPECT_EQ(QWBackup::writeAutoBackup(report_), WriteResult::SettingsNotWritten);
  EXPECT_THAT(controller().autoBackupArray(), IsEmpty());
}

TEST_F(BackupFormatTest, AFileThatVanishesOnTheWayIsNoneThatTheBackupLacks) {
  struct Disk : LinuxFileSystem {
    Result<std::unique_ptr<StagedCopy>> stageCopy(const CopyRequest& request) override {
      if (request.source == vanishing) fs::remove(vanishing);
      return LinuxFileSystem::stageCopy(request);
    }
    std::string vanishing;
  } disk;
  FakePlatform fakes(disk, metadata_, machine_.path(), home_.path());
  const Runtime runtime(fakes.platform);
  disk.vanishing = prefs("gone");
  for (const char* name : {"here", "gone"}) writeFile(prefs(name), name);
  setCatalog({{"Both", {prefs("gone"), prefs("here")}}});
  EXPECT_EQ(backupOfAll("A")->writeData(report_), WriteResult::Success);
  EXPECT_TRUE(exists(inLibrary("A.vnt/Users/user/Library/Preferences/here")));
  EXPECT_TRUE(report_.isWhole());
  EXPECT_EQ(report_.count(FileReport::Outcome::Skipped), 1U);
}

TEST_F(BackupFormatTest, OfAnUpdateThatFailedWhatWasReplacedIsTold) {
  for (const char* name : {"first", "second"}) writeFile(prefs(name), name);
  setCatalog({{"Both", {prefs("first"), prefs("second")}}});
  const auto backup = backupOfAll("B");
  ASSERT_EQ(backup->writeData(report_), WriteResult::Success);
  files_.heal();
  files_.fail(Operation::Commit, std::errc::no_space_on_device, 4);
  backup->writeData(report_, true);
  const std::string kept = inTrash("B (replaced copies)");
  EXPECT_THAT(report_.remarks(), ElementsAre("The copies that were replaced are in the Trash: " + kept));
  EXPECT_TRUE(exists(kept + "/Users/user/Library/Preferences/first"));
  EXPECT_FALSE(exists(kept + "/Users/user/Library/Preferences/second"));
}

TEST_F(BackupFormatTest, FilesAloneAreReplacedOneByOne) {
  setSmallCatalog("old");
  const auto backup = backupOfAll("Clean");
  ASSERT_EQ(backup->writeData(report_), WriteResult::Success);
  const auto copied = files_.info(inLibrary("Clean.vnt/Users/user/Library/Preferences/editor.plist"), Links::Follow);
  EXPECT_EQ(QWBackup::backupWithFile(backup->path())->children()[0]->date(), copied->modified);
  writeFile(inLibrary("Clean.vnt/Settings.plist"), "{}");
  setSmallCatalog("new");
  // The old copy could not be kept, or the new one not made.
  for (const int call : {1, 2}) {
    files_.heal();
    files_.fail(Operation::Commit, std::errc::no_space_on_device, call);
    EXPECT_EQ(backup->writeData(report_, true), WriteResult::Success);
    files_.heal();
    EXPECT_TRUE(isWhole(inLibrary("Clean.vnt"), "old")) << call;
    EXPECT_TRUE(report_.hasFailures()) << call;
    EXPECT_THAT(report_.remarks(), IsEmpty());
    EXPECT_FALSE(exists(inLibrary("Clean (replaced copies)")) || exists(inTrash("Clean (replaced copies)"))) << call;
    report_ = {};
  }

  EXPECT_EQ(backup->writeData(report_, true), WriteResult::Success);
  EXPECT_TRUE(isWhole(inLibrary("Clean.vnt"), "new"));
  EXPECT_EQ(readFile(inLibrary("Clean.vnt/Settings.plist")), "{}");
  EXPECT_EQ(readFile(inTrash("Clean (replaced copies)") + "/Users/user/Library/Preferences/editor.plist"), "old");

  // A backup from elsewhere whose folder is a link to another place.
  fs::remove_all(inLibrary("Clean.vnt/Users/user/Library"));
  writeFile(machine_ / "Library/Preferences/editor.plist", "foreign");
  fs::create_symlink(machine_ / "Library", inLibrary("Clean.vnt/Users/user/Library"));
  EXPECT_EQ(backup->writeData(report_, true), WriteResult::Success);
  EXPECT_EQ(readFile(machine_ / "Library/Preferences/editor.plist"), "foreign");
}

TEST_F(BackupFormatTest, NothingGoesThroughALinkThatACopiedFolderHolds) {
  const std::string live = home_ / "elsewhere/s";
  writeFile(live, "live");
  fs::create_directories(prefs("sets"));
  fs::create_directory_symlink(home_ / "elsewhere", prefs("sets/link"));
  const auto before = files_.info(live, Links::DoNotFollow)->identity;
  for (const bool folderFirst : {true, false}) {
    const std::string items[] = {prefs("sets"), prefs("sets/link/s")};
    setCatalog({{"A", {items[folderFirst ? 0 : 1]}}, {"B", {items[folderFirst ? 1 : 0]}}});
    TaskReport report;
    EXPECT_EQ(backupOfAll("A")->writeData(report), WriteResult::Success);
    EXPECT_EQ(report.count(FileReport::Outcome::Failed), 1U) << folderFirst;
    EXPECT_EQ(files_.info(live, Links::DoNotFollow)->identity, before);
  }
}

TEST_F(BackupFormatTest, ForeignSettingsAreReadAsFarAsTheyMakeSense) {
  setSmallCatalog("p");
  const auto read = [&](const std::string& settings) {
    writeFile(inLibrary("X.vnt/Settings.plist"), settings);
    return QWBackup::backupWithFile(inLibrary("X.vnt"));
  };
  for (const char* settings :
       {"", "{", "(Preferences)", "{Editor = Preferences; projects = {a = b;}; projectPath = \"\";}",
        "{Editor = (preferences, (Preferences)); Other = (Preferences); projects = ();}"}) {
    const auto backup = read(settings);
    EXPECT_THAT(backup->children(), IsEmpty()) << settings;
    EXPECT_THAT(backup->projects(), IsEmpty()) << settings;
  }
  const auto older =
      read("{Editor = (Gone, Preferences, Preferences, {}); projectPath = \"/p.fcp\"; projects = ({});}");
  ASSERT_EQ(older->children().size(), 1U);
  EXPECT_EQ(older->children()[0]->children().size(), 1U);
  EXPECT_THAT(older->projects(), ElementsAre("/p.fcp"));
}

}  // namespace
}  // namespace vantory::test
