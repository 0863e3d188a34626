// The comparison of a backup with the present files, in a window that is played.
#include "backups/ui/ComparisonController.h"
#include "backups/ui/ComparisonView.h"
#include "base/PropertyListBytes.h"
#include "services/receipts/Receipt.h"
#include "services/settings/QWUserDefaults.h"
#include "tests/backups/ui/PaneTest.h"

namespace vantory::test {
namespace {

class FakeComparisonView : public ComparisonView {
 public:
  void show(const std::string& text) override { title = text; }
  OutlineView& rows() override { return outline; }
  void openRows() override {}
  void setStatus(const std::string& text, bool busy) override {
    status = text;
    isBusy = busy;
  }
  Button& restoreCommand() override { return restore; }

  FakeOutline outline;
  FakeButton restore;
  std::string title, status;
  bool isBusy = false;
};

class ComparisonWindowTest : public PaneTest {
 protected:
  ComparisonWindowTest() {
    setTwoApps();
    QWUserDefaults::standardUserDefaults().registerDefaults({{"maxAutoBackups", 10}});
    writeFile(prefs("editor.plist"), "{ a = 0; b = 0; }");
    EXPECT_EQ(backupOfAll("B")->writeData(report_), WriteResult::Success);
    backup_ = QWBackup::backupWithFile(inLibrary("B.vnt"));
    writeFile(prefs("editor.plist"), "{ a = 1; b = 1; new = 1; }");
    writeFile(prefs("editor.layout"), "other");
    window_.compare(backup_);
    finishWork();
  }
  // By the titles on the way to it.
  OutlineItemPointer row(const std::vector<std::string>& titles) {
    OutlineItemPointer found;
    for (const std::string& title : titles) {
      OutlineItemPointer next;
      for (const OutlineItemPointer& each : window_.childrenOfItem(found))
        if (dynamic_cast<const ComparisonRow&>(*each).title == title) next = each;
      EXPECT_TRUE(next) << title;
      found = next;
    }
    return found;
  }
  void tick(const std::vector<std::string>& titles, State state = On) {
    window_.setObjectValue(state, "name", row(titles));
  }
  State stateOf(const std::vector<std::string>& titles) {
    return std::get<State>(window_.objectValueForTableColumn("name", row(titles)));
  }
  PropertyList live() const { return *parsePropertyList(readFile(prefs("editor.plist"))); }

  static inline const std::vector<std::string> kFile = {"Editor", "Preferences", "editor.plist"};
  FakeComparisonView view_;
  ComparisonController window_{view_};
  std::shared_ptr<QWBackup> backup_;
};

std::vector<std::string> with(std::vector<std::string> titles, const std::string& last) {
  titles.push_back(last);
  return titles;
}

TEST_F(ComparisonWindowTest, ShowsBothValuesAndKeepsTicksTogether) {
  EXPECT_EQ(view_.title, "Compare \"B\"");
  EXPECT_EQ(view_.status, "2 files are not the same, 2 files are the same. Tick what you want back.");
  EXPECT_FALSE(view_.isBusy || view_.restore.enabled);
  EXPECT_EQ(std::get<std::string>(window_.objectValueForTableColumn("now", row(kFile))), "3 keys differ");
  const auto layout = row({"Editor", "Layouts", "editor.layout"});
  EXPECT_EQ(std::get<std::string>(window_.objectValueForTableColumn("now", layout)), "1 line differs");
  const auto key = row(with(kFile, "a"));
  EXPECT_EQ(std::get<std::string>(window_.objectValueForTableColumn("now", key)), "\"1\"");
  EXPECT_EQ(std::get<std::string>(window_.objectValueForTableColumn("backup", key)), "\"0\"");
  EXPECT_EQ(window_.objectValueForTableColumn("name", row(with(kFile, "new"))), ObjectValue("new")) << "no check box";

  for (const char* name : {"a", "b"}) tick(with(kFile, name));
  EXPECT_EQ(stateOf(kFile), Mixed) << "the whole file would take the new key away";
  EXPECT_TRUE(view_.restore.enabled);
  tick(kFile, Off);
  EXPECT_FALSE(view_.restore.enabled);
  tick({"Editor"});
  EXPECT_EQ(stateOf(with(kFile, "b")), On);
}

TEST_F(ComparisonWindowTest, RestoresWhatIsTickedAndNothingElse) {
  tick(with(kFile, "a"));
  answer_ = QWAlert::Alternate;
  window_.restoreTicked();
  finishWork();
  EXPECT_EQ(live(), *parsePropertyList("{a=1;b=1;new=1;}"));
  answer_ = QWAlert::Default;
  window_.restoreTicked();
  finishWork();
  EXPECT_EQ(live(), *parsePropertyList("{a=0;b=1;new=1;}"));
  EXPECT_EQ(readFile(prefs("editor.layout")), "other");
  EXPECT_EQ(controller().autoBackupArray().size(), 1U);
  EXPECT_EQ(alerts_.back(), "Preferences successfully restored");
  const auto receipts = *allReceipts();
  ASSERT_EQ(receipts.size(), 1U) << "it can be taken back";
  EXPECT_EQ(receipts[0].task, "restore");
  EXPECT_FALSE(receipts[0].steps.empty());

  tick({"Editor"});
  window_.restoreTicked();
  finishWork();
  EXPECT_EQ(live(), *parsePropertyList("{a=0;b=0;}"));
  EXPECT_EQ(readFile(prefs("editor.layout")), "layout");
  EXPECT_EQ(view_.status, "A restore would change nothing: 4 files are the same.");
}

TEST_F(ComparisonWindowTest, AnIncompleteBackupIsNotCalledTheSame) {
  makeFolders(inLibrary("Torn.vnt"));
  window_.compare(QWBackup::backupWithFile(inLibrary("Torn.vnt")));
  finishWork();
  EXPECT_EQ(view_.status, "\"Torn\" is incomplete. There is nothing to compare.");
}

TEST_F(ComparisonWindowTest, AClosedWindowIsNotFilledAnyMore) {
  window_.compare(backup_);
  window_.close();
  finishWork();
  EXPECT_EQ(window_.numberOfChildrenOfItem(nullptr), 0U);
}

}  // namespace
}  // namespace vantory::test
