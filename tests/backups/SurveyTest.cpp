// What there is of the catalog, and how the backups have it.
#include "backups/Survey.h"

#include "services/TaskReport.h"
#include "tests/backups/BackupsTest.h"

namespace vantory::test {
namespace {

namespace fs = std::filesystem;
using Kept = Standing::Kept;

class SurveyTest : public BackupsTest {
 protected:
  SurveyTest() {
    writeFile(prefs("editor.plist"), "12345");
    writeFile(prefs("Plugins/a/one"), "1");
    writeFile(prefs("Plugins/two"), "22");
    fs::create_symlink("two", prefs("Plugins/link"));
    writeFile(machine_ / "Shared/Presets/x", "333");
    setCatalog({{"Preferences", {prefs("editor.plist"), prefs("edit*.plist")}},
                {"Plugins", {prefs("Plugins")}},
                {"Presets", {machine_ / "Shared/Presets"}},
                {"Shared", {prefs("Plugins/two"), prefs("editor.plist")}},
                {"Nothing", {prefs("none"), prefs("no*ne")}}});
  }
  void back(const std::string& name) {
    TaskReport report;
    ASSERT_EQ(backupOfAll(name)->writeData(report), WriteResult::Success);
  }
  Survey look() {
    return *SurveyRequest::forEverything().carryOut([] { return false; });
  }
  // By the item's name.
  Standing of(const std::string& item) { return look().of(*controller().prefItemForKey("key" + item)); }
  Kept ofAll() { return look().total().kept; }
};

TEST_F(SurveyTest, CountsWhatThereIs) {
  const Survey survey = look();
  EXPECT_EQ(of("Shared").bytes, 7U);
  EXPECT_EQ(survey.total().files, 5U) << "those that two items have count once";
  EXPECT_EQ(survey.total().bytes, 11U);
  EXPECT_EQ(survey.ofPreferences(*controller().appArray().front()).bytes, 5U);
  EXPECT_EQ(of("Preferences").files, 1U) << "two patterns name one file";
  EXPECT_EQ(of("Plugins").files, 3U);
  EXPECT_EQ(of("Nothing").files, 0U);
  EXPECT_EQ(of("Nothing").changed, std::nullopt);
  ASSERT_TRUE(metadata_.setModified(prefs("Plugins/two"), Timestamp{9'000'000'000, 0}));
  EXPECT_EQ(of("Plugins").changed->seconds, 9'000'000'000);
  EXPECT_THAT(foldersLookedAt(controller().appArray()), testing::Contains(home_ / "Library"));
}

TEST_F(SurveyTest, TellsWhatHasChangedSinceTheLastGoodBackup) {
  EXPECT_EQ(ofAll(), Kept::NotAtAll);
  back("First");
  EXPECT_EQ(of("Presets").kept, Kept::AsItIs) << "a folder outside of the home lies elsewhere in a backup";
  EXPECT_EQ(ofAll(), Kept::AsItIs);
  writeFile(prefs("Plugins/new"), "");
  EXPECT_EQ(of("Plugins").kept, Kept::Otherwise);
  EXPECT_EQ(of("Preferences").kept, Kept::AsItIs);
  fs::remove(prefs("Plugins/new"));
  EXPECT_EQ(ofAll(), Kept::AsItIs);
  fs::remove_all(machine_ / "Shared/Presets");
  EXPECT_EQ(of("Presets").kept, Kept::Otherwise);
  EXPECT_EQ(of("Presets").files, 0U);

  fs::remove(inLibrary("First.vnt/Settings.plist"));
  controller().populateBackups();
  EXPECT_EQ(of("Preferences").kept, Kept::NotAtAll) << "a torn backup counts for nothing";
}

TEST_F(SurveyTest, EachItemIsComparedWithTheNewestBackupThatHoldsIt) {
  back("All");
  ASSERT_TRUE(metadata_.setModified(inLibrary("All.vnt"), Timestamp{1000, 0}));
  writeFile(prefs("editor.plist"), "changed");
  const AppList all = controller().appArray();
  setCatalog({{"Preferences", {prefs("editor.plist")}}});
  back("One");
  controller().setAppArray(all);
  controller().populateBackups();
  EXPECT_EQ(of("Preferences").kept, Kept::AsItIs);
  EXPECT_EQ(of("Plugins").kept, Kept::AsItIs);
  fs::remove_all(inLibrary("All.vnt"));
  controller().populateBackups();
  EXPECT_EQ(of("Plugins").kept, Kept::NotAtAll);
  EXPECT_EQ(ofAll(), Kept::InPart);
  // As a stick's file system rounds it.
  ASSERT_TRUE(metadata_.setModified(prefs("editor.plist"), Timestamp{5001, 7}));
  ASSERT_TRUE(metadata_.setModified(inLibrary("One.vnt/Users/user/Library/Preferences/editor.plist"), Timestamp{5000}));
  EXPECT_EQ(of("Preferences").kept, Kept::AsItIs);
}

TEST_F(SurveyTest, EndsWhenNobodyWantsItAnyMore) {
  int asked = 0;
  EXPECT_EQ(SurveyRequest::forEverything().carryOut([&] { return ++asked > 2; }), nullptr);
  EXPECT_LT(asked, 6) << "it went through to the end";
}

}  // namespace
}  // namespace vantory::test
