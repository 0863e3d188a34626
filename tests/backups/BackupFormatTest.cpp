// Writing backups and reading them back.
#include <sys/stat.h>

#include <fstream>

#include "services/FailureTally.h"
#include "tests/backups/BackupsTest.h"

namespace vantory::test {
namespace {

namespace fs = std::filesystem;

class BackupFormatTest : public BackupsTest {};

TEST_F(BackupFormatTest, WhatIsWrittenReadsBack) {
  const std::vector<std::string> names = {"a b.set",  "\xc3\xa4\xc3\xb6.set",  "100%@ %s.set",
                                          "a\nb.set", "\xff\xfe not text.set", "-rf.set"};
  for (const std::string& name : names) writeFile(prefs("Sets/" + name), "content of " + name);
  fs::permissions(prefs("Sets/a b.set"), fs::perms::owner_read);
  writeFile(prefs("Bars/deep/one"), "1");
  fs::create_symlink("one", prefs("Bars/deep/link"));
  setCatalog({{"Preferences", {prefs("Sets/*.set")}}, {"Bars", {prefs("Bars")}}, {"Plugins", {prefs("none")}}});
  const auto backup = backupOfAll("Clean 100%");
  backup->setProjects({"/Volumes/x.fcp", "/Volumes/\xff.fcp"});
  backup->setIsDefault(true);

  ASSERT_EQ(backup->writeData(), WriteResult::Success);
  const std::string stored = inLibrary("Clean 100%.vnt/Users/user/Library/Preferences/");
  for (const std::string& name : names) EXPECT_EQ(readFile(stored + "Sets/" + name), "content of " + name);
  EXPECT_EQ(fs::status(stored + "Sets/a b.set").permissions(), fs::perms::owner_read);
  EXPECT_EQ(fs::last_write_time(stored + "Bars/deep/one"), fs::last_write_time(prefs("Bars/deep/one")));
  EXPECT_EQ(fs::read_symlink(stored + "Bars/deep/link"), "one");

  const auto read = QWBackup::backupWithFile(inLibrary("Clean 100%.vnt"));
  EXPECT_EQ(read->name(), "Clean 100%");
  EXPECT_EQ(read->date(), fake_.clock.now());
  EXPECT_EQ(read->projects(), backup->projects());
  EXPECT_TRUE(read->isDefault());
  ASSERT_EQ(read->children().size(), 1U);
  const auto& items = read->children()[0]->children();
  ASSERT_EQ(items.size(), 2U);
  EXPECT_EQ(items[0]->name(), "Bars");
  EXPECT_EQ(items[1]->name(), "Preferences");
  EXPECT_GT(items[1]->size(), 0U);
  EXPECT_EQ(controller().defaultBackup()->path(), read->path());
}

TEST_F(BackupFormatTest, FilesOutsideTheHomeKeepTheirPath) {
  const std::string beside = home_.path() + "bel";
  writeFile(beside + "/x.plist", "hers");
  writeFile(machine_ / "Plain/f", "1");
  writeFile(machine_ / "Tool.bundle/f", "2");
  setCatalog({{"All", {beside + "/x.plist", machine_ / "Plain", machine_ / "Tool.bundle"}}});
  EXPECT_EQ(backupOfAll("A")->writeData(), WriteResult::Success);
  fs::remove_all(beside);

  const std::string stored = inLibrary("A.vnt");
  EXPECT_EQ(readFile(stored + beside + "/x.plist"), "hers");
  EXPECT_EQ(readFile(stored + (machine_ / "Plain/Plain/f")), "1");
  EXPECT_EQ(readFile(stored + (machine_ / "Tool.bundle/f")), "2");
  EXPECT_EQ(QWBackup::safeUserPath(prefs("x")), "/Users/user/Library/Preferences/x");
}

TEST_F(BackupFormatTest, LinksSpecialFilesAndMissingFilesAreLeftOut) {
  setSmallCatalog("p");
  ASSERT_EQ(mkfifo(prefs("fifo").c_str(), 0600), 0);
  fs::create_symlink(prefs("editor.plist"), prefs("link"));
  setCatalog({{"Nothing", {prefs("none"), prefs("fifo"), prefs("link")}}});
  const auto backup = backupOfAll("Empty");
  EXPECT_EQ(backup->writeData(), WriteResult::NoFiles);
  EXPECT_TRUE(backup->createdFolder());
  EXPECT_TRUE(fs::is_empty(backup->path()));
  EXPECT_THAT(logged(), testing::Contains("Unable to create backup - no files to backup"));
  EXPECT_THAT(logged(), testing::Contains(HasSubstr("Skipping " + prefs("fifo"))));
}

TEST_F(BackupFormatTest, TwoItemsMayHoldTheSameFile) {
  writeFile(prefs("x"), "x");
  setCatalog({{"One", {prefs("x")}}, {"Two", {prefs("*")}}});
  EXPECT_EQ(backupOfAll("A")->writeData(), WriteResult::Success);
  const std::string copy = inLibrary("A.vnt/Users/user/Library/Preferences/x");
  EXPECT_EQ(readFile(copy), "x");
  EXPECT_EQ(QWBackup::backupWithFile(inLibrary("A.vnt"))->children()[0]->children().size(), 2U);
  const std::string removing = "Destination file " + copy + " exists - removing...";
  EXPECT_THAT(logged(), testing::IsSupersetOf({removing, "Copying " + prefs("x") + " to " + copy}));
}

TEST_F(BackupFormatTest, AvidUsersAreStoredWithTheirFiles) {
  const std::string users = machine_ / "Users/Shared/AvidMediaComposer/Avid Users";
  writeFile(users + "/Anna/Anna Settings.avs", "anna");
  makeFolders(users + "/Empty");
  controller().populateApps();
  EXPECT_EQ(QWBackup::autoBackup()->writeData(), WriteResult::Success);
  ASSERT_EQ(controller().autoBackupArray().size(), 1U);
  const auto backup = controller().autoBackupArray()[0];
  EXPECT_EQ(readFile(backup->path() + users + "/Anna/Anna Settings.avs"), "anna");
  ASSERT_EQ(backup->children().size(), 1U);
  const auto& found = backup->children()[0]->children()[0]->users();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0]->name(), "Anna");
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
    for (int call = 1, more = 1; more > 0; ++call) {
      for (const int kind : {0, 1, 2}) {
        if (operation == Info && kind != 0) continue;  // changes nothing, so ending there is ending at another step
        fs::remove_all(library());
        fs::remove_all(home_ / ".local");
        setSmallCatalog("old");
        ASSERT_EQ(backupOfAll("Clean")->writeData(), WriteResult::Success);
        setSmallCatalog("new");
        const auto backup = backupOfAll("Clean");
        files_.heal();
        const std::size_t failures = FailureTally::shared().count();

        if (kind == 0) files_.fail(operation, std::errc::io_error, call);
        if (kind == 1) files_.crashBefore(operation, call);
        if (kind == 2) files_.crashAfter(operation, call);
        auto result = WriteResult::SettingsNotWritten;
        try {
          result = backup->writeData();
        } catch (const SimulatedCrash&) {
        }
        more = files_.calls(operation) >= call;
        files_.heal();

        SCOPED_TRACE(testing::Message() << static_cast<int>(operation) << " call " << call << " kind " << kind);
        EXPECT_EQ(readFile(prefs("editor.plist")), "new");
        EXPECT_TRUE(isWhole(inLibrary("Clean.vnt"), "old") || isWhole(inTrash("Clean.vnt"), "old"));
        if (result == WriteResult::Success && FailureTally::shared().count() == failures) {
          EXPECT_TRUE(isWhole(inLibrary("Clean.vnt"), "new"));
        }
        EXPECT_EQ(backupOfAll("Clean")->writeData(), WriteResult::Success) << "after the trouble is over";
        EXPECT_TRUE(isWhole(inLibrary("Clean.vnt"), "new"));
      }
    }
  }
}

TEST_F(BackupFormatTest, ABackupThatCannotBeMovedAsideIsLeftAlone) {
  setSmallCatalog("old");
  ASSERT_EQ(backupOfAll("Clean")->writeData(), WriteResult::Success);
  setSmallCatalog("new");
  const auto backup = backupOfAll("Clean");
  files_.fail(Operation::Trash, std::errc::io_error);
  EXPECT_EQ(backup->writeData(), WriteResult::SettingsNotWritten);
  files_.heal();
  files_.fail(Operation::HoldFolder, std::errc::timed_out, 2);
  EXPECT_EQ(backup->writeData(), WriteResult::SettingsNotWritten) << "another process is writing it";
  EXPECT_FALSE(backup->createdFolder());
  EXPECT_TRUE(isWhole(inLibrary("Clean.vnt"), "old"));
}

TEST_F(BackupFormatTest, FilesAloneAreReplacedOneByOne) {
  setSmallCatalog("old");
  const auto backup = backupOfAll("Clean");
  ASSERT_EQ(backup->writeData(), WriteResult::Success);
  const std::string settings = readFile(inLibrary("Clean.vnt/Settings.plist"));
  setSmallCatalog("new");
  files_.heal();
  files_.fail(Operation::Commit, std::errc::no_space_on_device);
  EXPECT_EQ(backup->writeData(true), WriteResult::Success);
  files_.heal();
  EXPECT_TRUE(isWhole(inLibrary("Clean.vnt"), "old")) << "the copy failed";

  EXPECT_EQ(backup->writeData(true), WriteResult::Success);
  EXPECT_TRUE(isWhole(inLibrary("Clean.vnt"), "new"));
  EXPECT_EQ(readFile(inLibrary("Clean.vnt/Settings.plist")), settings);
  EXPECT_FALSE(exists(inTrash("Clean.vnt")));

  // A backup from elsewhere whose folder is a link to another place.
  fs::remove_all(inLibrary("Clean.vnt/Users/user/Library"));
  writeFile(machine_ / "Library/Preferences/editor.plist", "foreign");
  fs::create_symlink(machine_ / "Library", inLibrary("Clean.vnt/Users/user/Library"));
  EXPECT_EQ(backup->writeData(true), WriteResult::Success);
  EXPECT_EQ(readFile(machine_ / "Library/Preferences/editor.plist"), "foreign");

  fs::remove_all(inLibrary("Clean.vnt"));
  EXPECT_EQ(backup->writeData(true), WriteResult::SettingsNotWritten);
}

TEST_F(BackupFormatTest, AStarInTheLibraryIsRefused) {
  setSmallCatalog("p");
  AppList apps = {controller().appArray()[0]->copy()};
  const auto backup = QWBackup::backupWithName("A", home_ / "Back*ups/A.vnt", apps);
  EXPECT_EQ(backup->writeData(), WriteResult::SettingsNotWritten);
  EXPECT_FALSE(exists(home_ / "Back*ups"));
  EXPECT_EQ(backupOfAll("Take *")->writeData(), WriteResult::Success) << "a backup's own name may have one";
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
  EXPECT_EQ(QWBackup::backupWithFile(inLibrary("None.vnt"))->date(), std::nullopt);
}

}  // namespace
}  // namespace vantory::test
