// Applications that catalog files define, in backups.
#include "backups/BackupCheck.h"
#include "backups/comparison/Comparison.h"
#include "base/PropertyListBytes.h"
#include "services/RunningApplicationGuard.h"
#include "tests/backups/BackupsTest.h"

namespace vantory::test {
namespace {

class CarriedDefinitionsTest : public BackupsTest {
 protected:
  // The example of the documentation.
  static std::string example() {
    const std::string page = readFile(VANTORY_RESOURCES "/../docs/catalogs.md");
    const std::size_t begin = page.find("```\n") + 4;
    return page.substr(begin, page.find("```", begin) - begin);
  }
  // A backup of the application of the example, whose files and definition are gone since.
  void makeBackup() {
    writeFile(userFile_, example());
    writeFile(settings_, "mine");
    writeFile(profile_, "ini");
    controller().populateApps();
    EXPECT_EQ(backupOfAll("B")->writeData(report_), WriteResult::Success);
    for (const std::string& path : {userFile_, settings_, profile_}) std::filesystem::remove(path);
    controller().populateApps();
  }
  void restore() { QWBackup::backupWithFile(inLibrary("B.vnt"))->restore(report_); }
  // Replaces a text of the backup's settings.
  void changeSettings(const std::string& from, const std::string& to) {
    const std::string path = inLibrary("B.vnt/Settings.plist");
    std::string text = readFile(path);
    ASSERT_NE(text.find(from), std::string::npos);
    writeFile(path, text.replace(text.find(from), from.size(), to));
  }

  const std::string userFile_ = home_ / "Library/Application Support/Quarrywell/Vantory/Catalogs/obs.plist";
  const std::string settings_ = home_ / ".config/obs-studio/global.ini";
  const std::string profile_ = home_ / ".config/obs-studio/basic/profiles/Untitled/basic.ini";
};

TEST_F(CarriedDefinitionsTest, ABackupRestoresWhereNothingDefinesItsApplications) {
  makeBackup();
  EXPECT_EQ(controller().prefItemForKey("obsPrefs"), nullptr);
  EXPECT_EQ(readFile(inLibrary("B.vnt/Users/user/.config/obs-studio/global.ini")), "mine");
  const auto compared =
      compareBackups({.after = QWBackup::backupWithFile(inLibrary("B.vnt")), .items = {{"obsPrefs"}}});
  EXPECT_EQ(compared.count(Difference::Added), 1U);
  restore();
  EXPECT_EQ(readFile(settings_), "mine");
  EXPECT_EQ(readFile(profile_), "ini");
  EXPECT_THAT(report_.remarks(),
              ElementsAre(AllOf(HasSubstr("The backup itself says where the files of OBS Studio belong: "),
                                HasSubstr(settings_))));
}

// Also where only the path that a wildcard stands for is out of bounds, and of a folder that is taken whole.
TEST_F(CarriedDefinitionsTest, WhatOnlyABackupDefinesIsNoProgramAndReachesNone) {
  makeBackup();
  changeSettings("profiles/*/basic.ini", "*");
  const std::string held = inLibrary("B.vnt/Users/user/.config/obs-studio/");
  makeFolders(held + "basic/bin");
  makeFolders(held + "basic/looks");
  makeFolders(held + "basic/ways");
  std::filesystem::create_symlink("../../..", held + "basic/ways/up");
  makeFolders(held + "basic/kept");
  for (const char* name : {"global.ini", "basic/tool", "basic/bin/ls", "basic/x.desktop", "basic/looks/x.desktop",
                           "basic/startup.py", "basic/kept/look"})
    writeFile(held + name, "mine");
  for (const char* name : {"global.ini", "basic/tool", "basic/kept/look", "basic/kept"})
    std::filesystem::permissions(held + name, std::filesystem::perms::mask);
  std::vector<std::string> refused;
  const auto compared = compareBackups({.after = QWBackup::backupWithFile(inLibrary("B.vnt"))});
  for (const ItemComparison& item : compared.items)
    for (const FileComparison& file : item.files)
      if (file.difference == Difference::Refused) refused.push_back(file.path.substr(file.path.rfind('/') + 1));
  EXPECT_THAT(refused, ElementsAre("bin", "looks", "startup.py", "ways", "x.desktop"));
  restore();
  const std::string own = home_ / ".config/obs-studio/";
  const auto modeOf = [](const std::string& path) {
    return static_cast<unsigned>(std::filesystem::status(path).permissions());
  };
  writeFile(own + "basic/new", "");
  makeFolders(own + "basic/newFolder");
  for (const char* name : {"global.ini", "basic/tool", "basic/kept/look"})
    EXPECT_EQ(modeOf(own + name), modeOf(own + "basic/new")) << name;
  EXPECT_EQ(modeOf(own + "basic/kept"), modeOf(own + "basic/newFolder"));
  for (const char* name : {"basic/bin/ls", "basic/x.desktop", "basic/looks", "basic/ways", "basic/startup.py"})
    EXPECT_FALSE(exists(own + name));
  writeFile(userFile_, example());
  controller().populateApps();
  report_ = TaskReport();
  QWBackup::backupWithFile(inLibrary("B.vnt"))->restore(report_);
  EXPECT_EQ(modeOf(settings_) & 0777U, 0777U);
}

// Nor is a folder left for it.
TEST_F(CarriedDefinitionsTest, ALinkInABackupIsNamedAndNotRestored) {
  makeBackup();
  std::filesystem::remove_all(home_ / ".config/obs-studio");
  const std::string held = inLibrary("B.vnt/Users/user/.config/obs-studio");
  std::filesystem::rename(held, held + ".elsewhere");
  std::filesystem::create_symlink(held + ".elsewhere", held);
  restore();
  EXPECT_FALSE(exists(home_ / ".config/obs-studio"));
  EXPECT_THAT(report_.causes(),
              HasSubstr(held + " is a symbolic link to " + held + ".elsewhere, which a restore does"));
}

// An earlier restore may have put it there.
TEST_F(CarriedDefinitionsTest, WhatOnlyABackupDefinesPassesNoLink) {
  makeBackup();
  makeFolders(home_ / ".ssh");
  std::filesystem::remove_all(home_ / ".config/obs-studio/basic");
  std::filesystem::create_symlink("../../.ssh", home_ / ".config/obs-studio/basic");
  restore();
  EXPECT_EQ(readFile(settings_), "mine");
  EXPECT_TRUE(std::filesystem::is_empty(home_ / ".ssh"));
}

// It runs under both of its identifiers, and the person is asked once, unless they have to quit the second by hand.
TEST_F(CarriedDefinitionsTest, AnApplicationIsClosedUnderWhicheverIdentifierItRuns) {
  struct Guard : RunningApplicationGuard {
    GuardDecision checkRunningAppsForName(const std::string&, const std::string& bundleID, bool) override {
      ++asked;
      return bundleID.empty() ? GuardDecision::NotRunning : GuardDecision::CloseAndRelaunch;
    }
    bool closeAppWithName(const std::string&, const std::string& bundleID, const std::function<bool()>&) override {
      closed.push_back(bundleID);
      return true;
    }
    std::vector<std::string> closed;
    int asked = 0;
  } guard;
  makeBackup();
  fakes_.workspace.running = {"com.obsproject.obs-studio"};
  runtime_.guard = &guard;
  restore();
  EXPECT_EQ(guard.asked, 1);
  EXPECT_THAT(guard.closed, ElementsAre("com.obsproject.Studio", "com.obsproject.obs-studio"));
  EXPECT_EQ(fakes_.workspace.launched, guard.closed);
  fakes_.workspace.canBeAsked = false;
  restore();
  EXPECT_EQ(guard.asked, 3);
}

TEST_F(CarriedDefinitionsTest, WhatABackupCarriesIsNotTrusted) {
  makeBackup();
  changeSettings("~/.config/obs-studio/global.ini", "~/.config/autostart/evil.desktop");
  writeFile(inLibrary("B.vnt/Users/user/.config/autostart/evil.desktop"), "evil");
  restore();
  EXPECT_FALSE(exists(home_ / ".config/autostart/evil.desktop"));
  EXPECT_FALSE(exists(profile_));
  ASSERT_EQ(report_.passedOver().size(), 1U);
  EXPECT_EQ(report_.passedOver()[0].application, "OBS Studio");
  EXPECT_THAT(report_.passedOver()[0].reason, HasSubstr("the backup carries is refused"));
}

TEST_F(CarriedDefinitionsTest, WhatAnotherInstalledApplicationHasIsOutOfReach) {
  makeBackup();
  std::string other = example();
  const auto rename = [&](const char* own, const char* reason) {
    other.replace(other.find(own), 3, "Any");
    writeFile(userFile_, other);
    controller().populateApps();
    report_ = {};
    restore();
    EXPECT_FALSE(exists(settings_));
    ASSERT_EQ(report_.passedOver().size(), 1U);
    EXPECT_THAT(report_.passedOver()[0].reason, HasSubstr(reason));
  };
  rename("OBS Studio\"", "It has an identifier of \"Any Studio\"");
  rename("com.obsproject.Studio", "It has an identifier of \"Any Studio\"");
  rename("com.obsproject.obs-studio", "The key \"obsPrefs\" is taken: ");
  rename("obsPrefs", ".plist has it. Change the key there");
  rename("obsProfiles", "could match what belongs to Any Studio");
}

TEST_F(CarriedDefinitionsTest, ItemsThatNothingDefinesStayInTheBackup) {
  makeBackup();
  changeSettings("<string>Preferences</string>", "<string>Looks</string><string>Preferences</string>");
  restore();
  EXPECT_EQ(readFile(settings_), "mine");
  ASSERT_EQ(report_.passedOver().size(), 1U);
  EXPECT_EQ(report_.passedOver()[0].application, "OBS Studio: Looks");
  // Whoever ticked single items has not asked for it.
  const auto backup = QWBackup::backupWithFile(inLibrary("B.vnt"));
  backup->children().front()->children().back()->setSelected(Off);
  backup->children().front()->updateSelectionStatus();
  report_ = {};
  backup->restore(report_);
  EXPECT_TRUE(report_.isWhole());
  TaskReport update;
  QWBackup::backupWithFile(inLibrary("B.vnt"))->writeData(update, true);
  EXPECT_EQ(update.passedOver().size(), 1U);
}

TEST_F(CarriedDefinitionsTest, TheSuperuserTakesNone) {
  makeBackup();
  fakes_.users.superuser = true;
  restore();
  EXPECT_FALSE(exists(settings_));
  EXPECT_THAT(QWBackup::backupWithFile(inLibrary("B.vnt"))->unknown().front().keys,
              ElementsAre("obsPrefs", "obsProfiles"));
}

TEST_F(CarriedDefinitionsTest, ForItsOwnBackupItsDefinitionGoesFirst) {
  makeBackup();
  std::string other = example();
  other.replace(other.find("~/.config/obs-studio/global.ini"), 31, "~/.config/obs-studio/user.ini12");
  writeFile(userFile_, other);
  controller().populateApps();
  EXPECT_NE(controller().prefItemForKey("obsPrefs"), nullptr);
  restore();
  EXPECT_EQ(readFile(settings_), "mine");
}

// A folder may have any name.
TEST_F(CarriedDefinitionsTest, WhatAWildcardFindsIsJudgedWhenItIsUsed) {
  std::string wide = example();
  wide.replace(wide.find("profiles/*/basic.ini"), 20, "profiles/*/*");
  writeFile(userFile_, wide);
  const std::string profiles = home_ / ".config/obs-studio/basic/profiles/";
  for (const char* name : {"My Secret/basic.ini", "One/passwords.ini", "One/x.desktop", "bin/basic.ini", "One/a.py"})
    writeFile(profiles + name, "mine");
  controller().populateApps();
  EXPECT_EQ(backupOfAll("B")->writeData(report_), WriteResult::Success);
  const std::string held = inLibrary("B.vnt/Users/user/.config/obs-studio/basic/profiles/");
  for (const auto& [name, isHeld] : std::map<std::string, bool>{{"My Secret/basic.ini", true},
                                                                {"One/a.py", true},
                                                                {"One/passwords.ini", false},
                                                                {"One/x.desktop", false},
                                                                {"bin", false}})
    EXPECT_EQ(exists(held + name), isHeld) << name;
  EXPECT_EQ(report_.count(FileReport::Outcome::Skipped, FileAction::List), 3U);
  EXPECT_FALSE(report_.isWhole());
  writeFile(held + "One/x.desktop", "theirs");
  std::filesystem::remove(profiles + "One/x.desktop");
  report_ = TaskReport();
  const auto backup = QWBackup::backupWithFile(inLibrary("B.vnt"));
  EXPECT_EQ(compareBackups({.after = backup}).count(Difference::Refused), 1U);
  backup->restore(report_);
  EXPECT_FALSE(exists(profiles + "One/x.desktop"));
  EXPECT_EQ(report_.count(FileReport::Outcome::Skipped, FileAction::List), 1U);
  controller().prefItemForKey("obsProfiles")->trash(report_);
  EXPECT_TRUE(exists(profiles + "One/passwords.ini"));
  EXPECT_FALSE(exists(profiles + "One/a.py"));
}

// An older version has backed it up. It would come back one level deeper.
TEST_F(CarriedDefinitionsTest, AFolderThatAllUsersShareStaysInTheBackup) {
  makeBackup();
  const std::string pattern = "~/.config/obs-studio/basic/profiles/*/basic.ini";
  const std::string folder = machine_ / "Users/Shared/Editor";
  changeSettings(pattern, folder + "/*.look");
  writeFile(inLibrary("B.vnt") + folder + "/a.look/a.look/inside", "x");
  const std::string told = folder + "/a.look is a folder, of which none is looked after there";
  restore();
  EXPECT_FALSE(exists(folder));
  EXPECT_THAT(report_.causes(), HasSubstr(told));
  EXPECT_THAT(logged(), testing::Contains("Error copying file: " + told + ". Authorizing..."));

  std::string installed = example();
  writeFile(userFile_, installed.replace(installed.find(pattern), pattern.size(), folder + "/*.look"));
  controller().populateApps();
  report_ = {};
  restore();
  EXPECT_FALSE(exists(folder));
  EXPECT_FALSE(report_.hasFailures()) << report_.causes();
  EXPECT_EQ(report_.count(FileReport::Outcome::Skipped, FileAction::List), 1U);
  const auto backup = QWBackup::backupWithFile(inLibrary("B.vnt"));
  EXPECT_EQ(compareBackups({.after = backup}).count(Difference::Refused), 1U);
  for (const BackupFault& fault : checkBackup(*backup).faults) EXPECT_NE(fault.kind, BackupFault::Kind::Missing);
}

TEST_F(CarriedDefinitionsTest, TheFirstBackupTellsOfSecrets) {
  makeBackup();
  EXPECT_THAT(report_.notices(), ElementsAre(HasSubstr("\"Preferences\" of OBS Studio may hold passwords: ")));
  for (const std::string& path : {userFile_, settings_, profile_}) writeFile(path, example());
  controller().populateApps();
  // One that the window makes before a task too.
  std::filesystem::remove_all(library());
  report_ = TaskReport();
  EXPECT_EQ(QWBackup::writeAutoBackup(report_), WriteResult::Success);
  EXPECT_EQ(report_.notices().size(), 1U);
  report_ = TaskReport();
  EXPECT_EQ(backupOfAll("C")->writeData(report_), WriteResult::Success);
  EXPECT_THAT(report_.notices(), IsEmpty());
}

TEST_F(CarriedDefinitionsTest, BuiltInApplicationsAddNothingToTheSettings) {
  setSmallCatalog("x");
  EXPECT_EQ(backupOfAll("B")->writeData(report_), WriteResult::Success);
  const auto settings = parsePropertyList(readFile(inLibrary("B.vnt/Settings.plist")));
  EXPECT_EQ(settings->asDictionary()->entries().size(), 1u);
}

TEST_F(CarriedDefinitionsTest, ABrokenFileIsToldOnceAndCostsNothingElse) {
  writeFile(userFile_, "nonsense");
  controller().populateApps();
  controller().populateApps();
  EXPECT_THAT(fakes_.systemLog.messages(), ElementsAre(HasSubstr("obs.plist:1: It is no property list")));
  EXPECT_NE(controller().prefItemForKey("fcpPrefs"), nullptr);
}

}  // namespace
}  // namespace vantory::test
