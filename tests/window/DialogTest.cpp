// Alerts, the progress sheet and the backup dialog.

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
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

TEST_F(AlertTest, TheMainThreadGoesOnWhileItWaits) {
  int ticks = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    if (++ticks == 5) QTest::mouseClick(button(*waitForAlert(), "Skip"), Qt::LeftButton);
  });
  timer.start(5);
  EXPECT_EQ(alerts_.ask(question_), QWAlert::Alternate);
  EXPECT_GE(ticks, 5);
}

TEST_F(AlertTest, AnAlertWithAnIntervalAnswersItself) {
  AlertTexts texts = question_;
  texts.interval = std::chrono::seconds(1);
  QElapsedTimer timer;
  timer.start();
  auto answer = ask(texts);
  ASSERT_TRUE(isAnswered(answer));
  EXPECT_EQ(answer.get(), QWAlert::Default);
  EXPECT_GE(timer.elapsed(), 900);
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

class BackupDialogWidgetTest : public testing::Test {
 protected:
  BackupDialogWidgetTest() {
    dialog_.setActions({.confirm = [this] { did_ << "confirm"; },
                        .cancel = [this] { did_ << "cancel"; },
                        .addProject = [this] { did_ << "add"; },
                        .removeProject = [this] { did_ << "remove"; },
                        .enableHandling = [this] { did_ << "enable"; },
                        .expand = [this] { did_ << "expand"; },
                        .contract = [this] { did_ << "contract"; }});
  }

  QWidget window_;
  BackupDialog dialog_{&window_};
  QStringList did_;
};

TEST_F(BackupDialogWidgetTest, AsksForTheName) {
  dialog_.setName("anna");
  dialog_.setProjectListShown(false);
  dialog_.show("Backup");
  auto& field = *dialog_.findChild<QLineEdit*>();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog_));
  QTest::keyClicks(&field, "Clean setup");
  EXPECT_EQ(dialog_.name(), "Clean setup") << "the suggested name was selected";
  QTest::keyClick(&field, Qt::Key_Return);
  EXPECT_EQ(did_, QStringList{"confirm"});
  EXPECT_TRUE(dialog_.isVisible()) << "the controller closes it";
  QTest::keyClick(&field, Qt::Key_Escape);
  EXPECT_EQ(did_.last(), QStringLiteral("cancel"));
  dialog_.close();
  EXPECT_FALSE(dialog_.isVisible());

  dialog_.setName("\xff bytes");
  EXPECT_EQ(dialog_.name(), "\xff bytes") << "a name that is no text survives being shown";
}

TEST_F(BackupDialogWidgetTest, ListsProjects) {
  dialog_.setProjectListShown(true);
  dialog_.setHandlingNoticeShown(true);
  dialog_.setProjects({"/a/one.fcp", "/b/two.motn", "/c/three.ipr"});
  dialog_.show("Edit");
  auto& list = *dialog_.findChild<QListWidget*>();
  ASSERT_EQ(list.count(), 3);
  EXPECT_FALSE(button(dialog_, "Remove")->isEnabled());
  list.item(2)->setSelected(true);
  list.item(0)->setSelected(true);
  EXPECT_EQ(dialog_.selectedProjects(), (std::vector<std::size_t>{0, 2}));
  for (const char* title : {"Add…", "Remove", "Open Projects with Vantory"}) button(dialog_, title)->click();
  EXPECT_EQ(did_, (QStringList{"add", "remove", "enable"}));
  dialog_.setHandlingNoticeShown(false);
  EXPECT_FALSE(button(dialog_, "Open Projects with Vantory")->isVisible());
  dialog_.setProjects({});
  EXPECT_TRUE(dialog_.selectedProjects().empty());
  dialog_.close();
}

}  // namespace

}  // namespace vantory::test
