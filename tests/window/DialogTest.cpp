// Alerts, the progress sheet and the backup dialog.

#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <future>

#include "backups/ui/BackupDialog.h"
#include "platform/qt/AlertDialog.h"
#include "platform/qt/ProgressDialog.h"
#include "services/MainThread.h"
#include "tasks/ui/AlertSheets.h"
#include "tasks/ui/MainThreadEvents.h"
#include "tests/services/ServicesTest.h"
#include "tests/window/WindowTest.h"

namespace vantory::test {

namespace {

QPushButton* button(QWidget& window, const QString& title) {
  for (auto* each : window.findChildren<QPushButton*>())
    if (each->text().remove('&') == title) return each;
  return nullptr;
}

class AlertTest : public ServicesTest {
 protected:
  AlertTest() { window_.show(); }

  // Asks on a thread of its own, as tasks do.
  std::future<int> ask(const AlertTexts& texts) {
    return std::async(std::launch::async, [this, texts] { return alerts_.ask(texts); });
  }
  static AlertDialog* waitForAlert() {
    eventually([] { return visibleWindow<AlertDialog>() != nullptr; });
    return visibleWindow<AlertDialog>();
  }
  static bool isAnswered(std::future<int>& answer) {
    return eventually([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
  }

  const MainThreadEvents events_{runtime_.shared<MainThread>()};
  QWidget window_;
  AlertSheets alerts_{[this](AlertParent) { return &window_; }};
  const AlertTexts question_{.messageText = "Final Cut Pro is running.",
                             .defaultButton = "Close",
                             .alternateButton = "Skip",
                             .otherButton = "Cancel",
                             .informativeText = "Its files cannot be touched."};
};

TEST_F(AlertTest, EachButtonHasItsCodeForAWorkerThread) {
  for (const auto& [title, code] : {std::pair{"Close", 1}, {"Skip", 0}, {"Cancel", -1}}) {
    auto answer = ask(question_);
    AlertDialog* alert = waitForAlert();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->parentWidget(), &window_);
    EXPECT_EQ(alert->windowModality(), Qt::WindowModal);
    EXPECT_EQ(alert->accessibleName(), QStringLiteral("Final Cut Pro is running."));
    const auto buttons = alert->findChildren<QPushButton*>();
    ASSERT_EQ(buttons.size(), 3);
    EXPECT_LT(buttons[0]->x(), buttons[1]->x());
    EXPECT_LT(buttons[1]->x(), buttons[2]->x());
    QTest::mouseClick(button(*alert, title), Qt::LeftButton);
    ASSERT_TRUE(isAnswered(answer)) << title;
    EXPECT_EQ(answer.get(), code) << title;
  }
}

TEST_F(AlertTest, ReturnIsTheDefaultAndEscapeTheAlternateOrOnlyButton) {
  auto answer = ask(question_);
  QTest::keyClick(waitForAlert(), Qt::Key_Return);
  ASSERT_TRUE(isAnswered(answer));
  EXPECT_EQ(answer.get(), QWAlert::Default);

  answer = ask(question_);
  QTest::keyClick(waitForAlert(), Qt::Key_Escape);
  ASSERT_TRUE(isAnswered(answer));
  EXPECT_EQ(answer.get(), QWAlert::Alternate);

  answer = ask({.messageText = "Done.", .defaultButton = "OK"});
  waitForAlert()->close();
  ASSERT_TRUE(isAnswered(answer));
  EXPECT_EQ(answer.get(), QWAlert::Default);
}

TEST_F(AlertTest, ALongNameIsShownWhole) {
  auto answer = ask({.messageText = std::string(255, 'M'), .defaultButton = "OK"});
  AlertDialog* alert = waitForAlert();
  for (auto* label : alert->findChildren<QLabel*>()) {
    const QString text = label->text();
    const int lines = label->height() / label->fontMetrics().lineSpacing();
    EXPECT_GE(lines, label->fontMetrics().horizontalAdvance(text) / label->width());
  }
  QTest::keyClick(alert, Qt::Key_Return);
  ASSERT_TRUE(isAnswered(answer));
}

TEST_F(AlertTest, AnAlertWithAnIntervalAnswersItself) {
  AlertTexts texts = question_;
  texts.interval = std::chrono::seconds(1);
  auto answer = ask(texts);
  ASSERT_TRUE(isAnswered(answer));
  EXPECT_EQ(answer.get(), QWAlert::Default);
  EXPECT_EQ(visibleWindow<AlertDialog>(), nullptr);
}

TEST_F(AlertTest, TwoThreadsMayAskAtOnce) {
  AlertTexts texts = question_;
  auto first = ask(texts);
  AlertDialog* firstAlert = waitForAlert();
  texts.messageText = "Motion is running.";
  auto second = ask(texts);
  ASSERT_TRUE(eventually([] {
    const auto windows = QApplication::topLevelWidgets();
    return std::count_if(windows.begin(), windows.end(),
                         [](QWidget* w) { return dynamic_cast<AlertDialog*>(w) && w->isVisible(); }) == 2;
  }));
  button(*firstAlert, "Cancel")->click();
  ASSERT_TRUE(isAnswered(first));
  EXPECT_EQ(first.get(), QWAlert::Other);
  ASSERT_TRUE(eventually([] { return visibleWindow<AlertDialog>() != nullptr; }));
  button(*visibleWindow<AlertDialog>(), "Skip")->click();
  ASSERT_TRUE(isAnswered(second));
  EXPECT_EQ(second.get(), QWAlert::Alternate);
}

TEST_F(AlertTest, AtTheEndOpenAndLaterAlertsAreDismissed) {
  auto open = ask(question_);
  waitForAlert();
  alerts_.refuse();
  ASSERT_TRUE(isAnswered(open));
  EXPECT_EQ(open.get(), QWAlert::Other);
  auto later = ask(question_);
  ASSERT_TRUE(isAnswered(later));
  EXPECT_EQ(later.get(), QWAlert::Other);
  runtime_.shared<MainThread>().shutDown();
  auto last = ask(question_);
  ASSERT_TRUE(isAnswered(last));
  EXPECT_EQ(last.get(), QWAlert::Other);
}

TEST(ProgressDialogTest, ShowsHowFarTheTaskIs) {
  QWidget window;
  ProgressDialog sheet(&window);
  auto& bar = *sheet.findChild<QProgressBar*>();
  int cancels = 0;
  sheet.onCancel = [&] { ++cancels; };
  sheet.setIndeterminate();
  sheet.setLabel("Backing up...");
  sheet.show();
  EXPECT_TRUE(sheet.isVisible());
  EXPECT_EQ(sheet.windowModality(), Qt::WindowModal);
  EXPECT_EQ(sheet.findChild<QLabel*>()->text(), QStringLiteral("Backing up..."));
  EXPECT_EQ(bar.maximum(), 0);
  sheet.setMaximum(4);
  sheet.setValue(1);
  EXPECT_DOUBLE_EQ(1.0 * bar.value() / bar.maximum(), 0.25);

  QTest::keyClick(&sheet, Qt::Key_Escape);
  EXPECT_EQ(cancels, 1);
  EXPECT_TRUE(sheet.isVisible()) << "until the task has ended";
  QTest::keyClick(&sheet, Qt::Key_Escape);
  EXPECT_EQ(cancels, 1);
  sheet.hide();
  EXPECT_FALSE(sheet.isVisible());
  sheet.show();
  QTest::mouseClick(button(sheet, "Cancel"), Qt::LeftButton);
  EXPECT_EQ(cancels, 2);
}

TEST(BackupDialogWidgetTest, ListsProjectsAndKeepsANameThatIsNoText) {
  QWidget window;
  BackupDialog dialog(&window);
  QStringList did;
  dialog.setActions({.confirm = [&] { did << "confirm"; },
                     .cancel = [&] { did << "cancel"; },
                     .addProject = [&] { did << "add"; },
                     .removeProject = [&] { did << "remove"; },
                     .enableHandling = [&] { did << "enable"; },
                     .expand = [] {},
                     .contract = [] {}});
  dialog.setProjectListShown(true);
  dialog.setHandlingNoticeShown(true);
  dialog.setProjects({"/a/one.fcp", "/b/two.motn", "/c/three.ipr"});
  dialog.show("Edit");
  dialog.setName("\xff bytes");
  EXPECT_EQ(dialog.name(), "\xff bytes");
  auto& list = *dialog.findChild<QListWidget*>();
  EXPECT_FALSE(button(dialog, "Remove")->isEnabled());
  list.item(2)->setSelected(true);
  list.item(0)->setSelected(true);
  EXPECT_EQ(dialog.selectedProjects(), (std::vector<std::size_t>{0, 2}));
  for (const char* title : {"Add…", "Remove", "Open Projects with Vantory"}) button(dialog, title)->click();
  EXPECT_EQ(did, (QStringList{"add", "remove", "enable"}));
  QTest::keyClick(&dialog, Qt::Key_Return);
  EXPECT_EQ(did.last(), QStringLiteral("confirm"));
  EXPECT_TRUE(dialog.isVisible()) << "the controller closes it";
  QTest::keyClick(&dialog, Qt::Key_Escape);
  EXPECT_EQ(did.last(), QStringLiteral("cancel"));
  dialog.close();
}

}  // namespace

}  // namespace vantory::test
