// Edit > Undo where another process works too.
#include "tasks/ui/UndoController.h"

#include <ctime>
#include <filesystem>

#include "services/messages/QWProgressController.h"
#include "services/receipts/ReceiptFolder.h"
#include "services/receipts/TaskReceipt.h"
#include "tests/backups/ui/PaneTest.h"

namespace vantory::test {
namespace {

using testing::Contains;
using testing::Not;
using testing::StartsWith;

class UndoControllerTest : public PaneTest {
 protected:
  UndoControllerTest() {
    setTwoApps();
    fakes_.clock.set({std::time(nullptr), 0});  // as the Trash has it
    TaskReport report;
    TaskReceipt receipt(report, {.name = "trash"});
    editor_->children().front()->trash(report);
    receipt.end();
    finishWork();
  }

  FakeProgressSheet sheet_;
  QWProgressController progress_{sheet_};
  // The titles of the list.
  std::vector<std::string> titles() {
    UndoController::list([this](const std::vector<UndoRow>& rows) { rows_ = rows; });
    finishWork();
    std::vector<std::string> titles;
    for (const UndoRow& row : rows_) titles.push_back(row.title);
    return titles;
  }

  std::vector<UndoRow> rows_;
  std::string selected_;
  UndoController undo_{{button_, progress_, [this](const std::string& path) { selected_ = path; }}};
};

TEST_F(UndoControllerTest, WhatTookATaskBackIsNamedByIt) {
  undo_.undo(receiptNames()->front());
  finishWork();
  undo_.undo(receiptNames()->front());
  finishWork();
  EXPECT_THAT(titles(), ElementsAre("Redo of Trash of Editor, 1 file", "Undo of Trash of Editor, 1 file",
                                    "Trash of Editor, 1 file"));
  EXPECT_FALSE(rows_[1].canBeUndone);
}

TEST_F(UndoControllerTest, ABackupThatCameBackIsSelected) {
  ASSERT_EQ(backupOfAll("B")->writeData(report_), WriteResult::Success);
  {
    TaskReport report;
    const TaskReceipt receipt(report, {.name = "remove", .operands = {"B"}});
    ASSERT_TRUE(controller().removeBackup(listed("B"), report));
  }
  undo_.reload();
  finishWork();
  undo_.undo();
  finishWork();
  EXPECT_EQ(selected_, inLibrary("B.vnt"));
  EXPECT_NE(listed("B"), nullptr);
}

TEST_F(UndoControllerTest, WhatAnotherProcessDidIsShownToo) {
  undo_.reload();
  finishWork();
  EXPECT_THAT(button_.title, StartsWith("Undo Trash"));
  EXPECT_EQ(listed("B"), nullptr);

  std::string receipt = readFile(receiptPath(*receiptFolder(), receiptNames()->front()));
  receipt.replace(receipt.find("\"trash\""), 7, "\"lock\"");
  writeFile(receiptPath(*receiptFolder(), "30000101-000000-000"), receipt);
  EXPECT_EQ(backupOfAll("B")->writeData(report_), WriteResult::Success);
  undo_.followOthers();
  finishWork();
  EXPECT_THAT(button_.title, StartsWith("Undo Lock"));
  EXPECT_NE(listed("B"), nullptr);
  logged();
  undo_.followOthers();
  finishWork();
  EXPECT_THAT(logged(), Not(Contains("Populating backups..."))) << "nothing has changed";
}

TEST_F(UndoControllerTest, WhatChangedNothingIsNotOffered) {
  const std::size_t before = receiptNames()->size();
  std::filesystem::remove_all(prefs(""));
  std::filesystem::remove_all(machine_ / "Users");
  {
    TaskReport report;
    const TaskReceipt receipt(report, {.name = "backup"});
    const auto backup = backupOfAll("Empty");
    EXPECT_NE(backup->writeData(report), WriteResult::Success);
    backup->dropUnwritten(report);
  }
  {
    TaskReport report;
    const TaskReceipt receipt(report, {.name = "lock"});
    report.planned(FileAction::Lock, std::vector{prefs("none.plist")});
  }
  EXPECT_EQ(receiptNames()->size(), before + 2);
  undo_.reload();
  finishWork();
  EXPECT_THAT(button_.title, StartsWith("Undo Trash"));
}

TEST_F(UndoControllerTest, SaysSoWhereAnotherProcessWasFaster) {
  const std::string name = receiptNames()->front();
  undo_.undo(name);
  finishWork();
  EXPECT_THAT(alerts_.back(), StartsWith("Taken back: Trash"));
  undo_.undo(name);
  finishWork();
  EXPECT_EQ(alerts_.back(), "This task cannot be taken back now");
}

}  // namespace
}  // namespace vantory::test
