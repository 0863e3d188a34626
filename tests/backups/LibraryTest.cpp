// The folder of all backups.

#include "services/settings/QWUserDefaults.h"
#include "tests/backups/BackupsTest.h"
#include "tests/support/DesktopFolders.h"

namespace vantory::test {
namespace {

namespace fs = std::filesystem;
using testing::UnorderedElementsAre;

class LibraryTest : public BackupsTest {
 protected:
  LibraryTest() { setSmallCatalog("live"); }

  // A backup of the small catalog with that content, changed at that time.
  void makeBackup(const std::string& path, const std::string& content = "saved", std::int64_t seconds = 1000) {
    writeFile(path + "/Settings.plist", "{Editor = (Preferences);}");
    writeFile(path + "/Users/user/Library/Preferences/editor.plist", content);
    ASSERT_TRUE(metadata_.setModified(path, Timestamp{seconds, 0}));
  }
  QWUserDefaults& settings() { return QWUserDefaults::standardUserDefaults(); }
};

TEST_F(LibraryTest, ListsFoldersThatAreBackups) {
  for (const char* name : {"A.vnt", "X.VNT", "Old.vnt2", "Both.vnt", "Both.vnt2"}) makeBackup(inLibrary(name));
  makeBackup(inLibrary("Auto Backup 2012.vnt2"));
  makeBackup(inLibrary("Auto Backup 2013.vnt"), "stray");
  makeBackup(inLibrary("Autosaves/Auto Backup 2013.vnt"), "there before", 2000);
  makeBackup(machine_ / "Elsewhere.vnt");
  fs::create_symlink(machine_ / "Elsewhere.vnt", inLibrary("Linked.vnt"));

  controller().populateBackups();
  std::vector<std::string> names;
  for (const auto& node : controller().backupArray()) names.push_back(node->name());
  EXPECT_THAT(names, UnorderedElementsAre("Autosaves", "A", "X", "Old", "Both", "Both", "Linked"));
  EXPECT_TRUE(exists(inLibrary("Old.vnt")));
  EXPECT_TRUE(exists(inLibrary("Both.vnt2")));
  EXPECT_FALSE(exists(inLibrary("Auto Backup 2013.vnt")));
  const BackupList autos = controller().autoBackupArray();
  ASSERT_EQ(autos.size(), 3U);
  std::vector<std::string> contents;
  for (const auto& backup : autos)
    contents.push_back(readFile(backup->path() + "/Users/user/Library/Preferences/editor.plist"));
  EXPECT_THAT(contents, UnorderedElementsAre("saved", "stray", "there before"));
}

TEST_F(LibraryTest, TheOldestAutomaticBackupsGoFirst) {
  for (int i = 1; i <= 5; ++i)
    makeBackup(inLibrary("Autosaves/Auto Backup " + std::to_string(i) + ".vnt"), "", 100 * ((i * 2) % 5));
  EXPECT_TRUE(settings().setObject("maxAutoBackups", 2));
  EXPECT_TRUE(settings().setObject("defaultBackup", "Auto Backup 3.vnt"));
  EXPECT_TRUE(controller().manageAutoBackups().isWhole());
  std::vector<std::string> kept;
  for (const auto& backup : controller().autoBackupArray()) kept.push_back(backup->name());
  EXPECT_THAT(kept, ElementsAre("Auto Backup 3", "Auto Backup 4", "Auto Backup 2")) << "the default backup stays";
  EXPECT_FALSE(exists(inLibrary("Autosaves/Auto Backup 1.vnt")));
  EXPECT_FALSE(exists(inTrash("Auto Backup 1.vnt")));
}

TEST_F(LibraryTest, AStrayAutomaticBackupIsSyncedOnItsWay) {
  const std::string moved = inLibrary("Autosaves/Auto Backup x.vnt");
  files_.beforeSync = [&](const std::string& path) {
    EXPECT_TRUE(soon([&] { return exists(moved); }) && exists(path)) << path;
  };
  EXPECT_EQ(backupOfAll("Auto Backup x")->writeData(report_), WriteResult::Success);
}

TEST_F(LibraryTest, ABackupThatAnotherProcessWritesStaysWhereItIs) {
  for (const char* name : {"Auto Backup x.vnt", "Old.vnt2"}) {
    makeBackup(inLibrary(name));
    auto writer = disk_.holdFolder(inLibrary(name), std::chrono::seconds(0));
    controller().populateBackups();
    EXPECT_TRUE(exists(inLibrary(name))) << name;
    writer->reset();
    controller().populateBackups();
    EXPECT_FALSE(exists(inLibrary(name))) << name;
  }
}

TEST_F(LibraryTest, FailedAndUnfinishedRunsPushNoGoodBackupOut) {
  const auto automatic = [&](int day) { return inLibrary("Autosaves/Auto Backup " + std::to_string(day) + ".vnt"); };
  for (int day = 1; day <= 8; ++day) makeBackup(automatic(day), "", day);
  for (const int torn : {1, 5, 7, 8}) {
    fs::remove(automatic(torn) + "/Settings.plist");
    // The removal of the oldest was cut off, which gave it a new date.
    ASSERT_TRUE(metadata_.setModified(automatic(torn), Timestamp{torn == 1 ? 100 : torn, 0}));
  }
  // Another process still writes one.
  const auto writer = disk_.holdFolder(automatic(5), std::chrono::seconds(0));
  EXPECT_TRUE(settings().setObject("maxAutoBackups", 2));
  files_.fail(Operation::Read, std::errc::io_error, FaultyFileSystem::kEveryCall);
  EXPECT_TRUE(controller().manageAutoBackups().hasFailures()) << "how many are to be kept is not known";
  files_.heal();
  const TaskReport report = controller().manageAutoBackups();
  for (int day = 1; day <= 8; ++day)
    EXPECT_EQ(exists(automatic(day)), day == 4 || day == 5 || day == 6 || day > 6) << day;
  EXPECT_EQ(report.count(FileReport::Outcome::Skipped), 1U) << "the one that is held";
}

TEST_F(LibraryTest, ADamagedBackupPushesNoGoodOneOut) {
  const auto automatic = [&](int day) { return inLibrary("Autosaves/Auto Backup " + std::to_string(day) + ".vnt"); };
  for (int day = 1; day <= 3; ++day) makeBackup(automatic(day), "", day);
  writeFile(automatic(3) + "/Settings.plist", "{Editor = (Pref");
  ASSERT_TRUE(metadata_.setModified(automatic(3), Timestamp{3, 0}));
  controller().manageAutoBackups(1);
  for (int day = 1; day <= 3; ++day) EXPECT_EQ(exists(automatic(day)), day > 1) << day;
}

TEST_F(LibraryTest, WhatAnotherProcessWritesIsNeitherRenamedNorRemoved) {
  TaskReport report;
  makeBackup(inLibrary("A.vnt"));
  controller().populateBackups();
  const auto backup = controller().allBackups().front();
  auto writer = disk_.holdFolder(backup->path(), std::chrono::seconds(0));
  EXPECT_EQ(controller().renameBackup(*backup, "B", report).error().code, std::errc::timed_out);
  EXPECT_EQ(controller().removeBackup(backup, report).error().code, std::errc::timed_out);
  EXPECT_TRUE(exists(inLibrary("A.vnt")));
  writer->reset();
  EXPECT_TRUE(controller().removeBackup(backup, report).ok());
}

TEST_F(LibraryTest, TheDefaultIsAnyWholeBackup) {
  const auto path = inLibrary("Autosaves/Auto Backup 1.vnt");
  makeBackup(path);
  EXPECT_TRUE(settings().setObject("defaultBackup", "Auto Backup 1.vnt"));
  controller().populateBackups();
  ASSERT_TRUE(controller().defaultBackup());
  EXPECT_EQ(controller().defaultBackup()->path(), path);
  writeFile(path + "/Settings.plist", "{Editor = (Pref");
  controller().populateBackups();
  EXPECT_FALSE(controller().defaultBackup()) << "it was torn off";
  EXPECT_FALSE(controller().autoBackupArray().front()->isComplete());
}

TEST_F(LibraryTest, AutomaticBackupsAreNamedByTheClock) {
  writeFile(prefs("layout"), "l");
  setCatalog({{"Preferences", {prefs("editor.plist")}}, {"Layouts", {prefs("layout")}}});
  controller().appArray()[0]->children()[0]->setSelected(Off);
  const auto backup = QWBackup::autoBackup();
  EXPECT_EQ(QWBackup::autoBackup(true)->writeData(report_), WriteResult::Success) << "in the same second";
  EXPECT_EQ(backup->writeData(report_), WriteResult::Success);
  EXPECT_THAT(backup->name(), testing::MatchesRegex("Auto Backup 2026-11-1._.._.._18"));
  ASSERT_EQ(controller().autoBackupArray().size(), 2U);
  const auto first = QWBackup::backupWithFile(std::string(backup->path()).replace(backup->path().size() - 5, 1, "7"));
  ASSERT_EQ(first->children()[0]->children().size(), 1U);
  EXPECT_EQ(first->children()[0]->children()[0]->name(), "Preferences");
  const std::uint64_t size = first->size();
  writeFile(machine_ / "large", std::string(5000, 'x'));
  fs::create_directory_symlink(machine_ / "", first->path() + "/out");
  EXPECT_LT(QWBackup::backupWithFile(first->path())->size(), size + 5000) << "a link leads out of it";
  EXPECT_EQ(controller().appArray()[0]->children()[0]->selected(), Off) << "the catalog's ticks stay";
}

TEST_F(LibraryTest, ImportingCopiesAndRestores) {
  const std::string foreign = machine_ / "A.vnt";
  makeBackup(foreign, "foreign");
  makeBackup(inLibrary("A.vnt"), "mine");
  EXPECT_TRUE(controller().addBackupFromFile(foreign + "/", report_));
  EXPECT_EQ(readFile(prefs("editor.plist")), "foreign");
  EXPECT_EQ(readFile(inTrash("A.vnt/Users/user/Library/Preferences/editor.plist")), "mine");

  makeBackup(machine_ / "B.VNT2", "capitals");
  EXPECT_TRUE(controller().addBackupFromFile(machine_ / "B.VNT2", report_));
  EXPECT_EQ(readFile(prefs("editor.plist")), "capitals");
  EXPECT_TRUE(exists(inLibrary("B.vnt")));

  makeBackup(inLibrary("A.vnt"), "here");
  EXPECT_TRUE(controller().addBackupFromFile(library() + "/../Backups/A.vnt", report_))
      << "it is in the library already";
  EXPECT_EQ(readFile(prefs("editor.plist")), "here");
  EXPECT_TRUE(exists(inLibrary("A.vnt")));
}

TEST_F(LibraryTest, AFailedImportChangesNothing) {
  makeBackup(inLibrary("A.vnt"), "mine");
  makeBackup(inLibrary("B.vnt"), "mine");
  makeBackup(machine_ / "A.vnt", "foreign");
  for (const auto cause : {std::errc::no_space_on_device, std::errc::permission_denied}) {
    files_.fail(Operation::StageCopy, cause, FaultyFileSystem::kEveryCall);
    EXPECT_FALSE(controller().addBackupFromFile(machine_ / "A.vnt", report_));
    files_.heal();
    EXPECT_FALSE(exists(inTrash("A.vnt"))) << "also where only rights were missing, and were not given";
  }
  EXPECT_THAT(logged(), testing::Contains("Unable to copy file " + (machine_ / "A.vnt") + " to " + inLibrary("A.vnt")));
  makeBackup(machine_ / "B.vnt2", "foreign");
  makeFolders(machine_ / "Photos");
  for (const char* name : {"B.vnt2", "Photos"}) EXPECT_FALSE(controller().addBackupFromFile(machine_ / name, report_));
  EXPECT_FALSE(exists(inLibrary("Photos")));
  for (const char* name : {"A.vnt", "B.vnt"})
    EXPECT_EQ(readFile(inLibrary(name) + "/Users/user/Library/Preferences/editor.plist"), "mine");
  EXPECT_EQ(readFile(prefs("editor.plist")), "live");
}

}  // namespace
}  // namespace vantory::test
