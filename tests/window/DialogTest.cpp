// Alerts, the progress sheet and the backup dialog.

#include <QClipboard>
#include <QListWidget>
#include <QProgressBar>
#include <QTextEdit>
#include <QTreeWidget>
#include <future>

#include "services/threads/MainThread.h"
#include "tests/services/ServicesTest.h"
#include "tests/window/WindowTest.h"
#include "window/application/MainThreadEvents.h"
#include "window/dialogs/AlertSheets.h"
#include "window/dialogs/BackupDialog.h"
#include "window/dialogs/ProgressDialog.h"

namespace vantory::test {

namespace {

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

TEST_F(AlertTest, EachButtonAndKeyHasItsCodeForAWorkerThread) {
  const AlertTexts notice{.messageText = "Done.", .defaultButton = "OK"};
  AlertTexts briefly = question_;
  briefly.interval = std::chrono::seconds(1);
  struct Case {
    AlertTexts texts;
    QString button;
    Qt::Key key;
    int code;
  };
  for (const Case& c : std::initializer_list<Case>{{question_, "Close", {}, QWAlert::Default},
                                                   {question_, "Skip", {}, QWAlert::Alternate},
                                                   {question_, "Cancel", {}, QWAlert::Other},
                                                   {question_, "", Qt::Key_Return, QWAlert::Default},
                                                   {question_, "", Qt::Key_Escape, QWAlert::Alternate},
                                                   {question_, "", Qt::Key_A, QWAlert::Other},
                                                   {notice, "", Qt::Key_Escape, QWAlert::Default},
                                                   {briefly, "", {}, QWAlert::Default}}) {
    auto response = ask(c.texts);
    AlertDialog* alert = waitForAlert();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->parentWidget(), &window_);
    EXPECT_EQ(alert->windowModality(), Qt::WindowModal);
    EXPECT_TRUE(std::ranges::is_sorted(alert->findChildren<QPushButton*>(), {}, &QPushButton::x));
    // A letter is a button's own.
    if (c.key != Qt::Key()) QTest::keyClick(alert, c.key, c.key == Qt::Key_A ? Qt::AltModifier : Qt::NoModifier);
    if (!c.button.isEmpty()) QTest::mouseClick(button(*alert, c.button), Qt::LeftButton);
    ASSERT_TRUE(isAnswered(response));
    EXPECT_EQ(response.get(), c.code);
    EXPECT_EQ(visibleWindow<AlertDialog>(), nullptr);
  }
}

TEST_F(AlertTest, WordsAreShownWholeAndCopiedAsTheyAre) {
  const std::string text = std::string(255, 'M') + "\n\nA\u00a0B";
  auto answer = ask({.messageText = text, .defaultButton = "OK"});
  AlertDialog* alert = waitForAlert();
  auto* words = alert->findChild<QTextEdit*>();
  ASSERT_NE(words, nullptr);
  const int lines = words->height() / words->fontMetrics().lineSpacing();
  EXPECT_GE(lines, words->fontMetrics().horizontalAdvance(words->toPlainText()) / words->width());
  words->selectAll();
  words->copy();
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(), text);
  QTest::keyClick(alert, Qt::Key_Return);
  ASSERT_TRUE(isAnswered(answer));
}

TEST_F(AlertTest, AListHasItsFilesAndTheLogShownAndStaysOpen) {
  std::vector<std::string> shown;
  alerts_.setShows(
      {.reveal = [&](const std::string& path) { shown.push_back(path); }, .log = [&] { shown.emplace_back("log"); }});
  auto answer = ask({.messageText = "Not everything was restored",
                     .defaultButton = "OK",
                     .alternateButton = "Try Again",
                     .isDismissedByDefault = true,
                     .rows = {{"/a/\xff", "not restored", "No <room>."}, {"Motion", "passed over", "It runs."}}});
  AlertDialog* alert = waitForAlert();
  const auto* first = alert->findChild<QTreeWidget*>()->topLevelItem(0);
  EXPECT_EQ(first->toolTip(2), "<p>No &lt;room&gt;.</p>") << "where the column cuts it";
  button(*alert, "Reveal")->click();
  button(*alert, "View Log")->click();
  EXPECT_EQ(shown, (std::vector<std::string>{"/a/\xff", "log"}));
  alert->findChild<QTreeWidget*>()->setFocus();
  QTest::keyClick(alert->findChild<QTreeWidget*>(), Qt::Key_Down);
  EXPECT_FALSE(button(*alert, "Reveal")->isEnabled()) << "an application is no file";
  QTest::keyClick(alert, Qt::Key_Escape);
  ASSERT_TRUE(isAnswered(answer));
  EXPECT_EQ(answer.get(), QWAlert::Default) << "nothing is tried again by closing it";
}

TEST_F(AlertTest, TwoThreadsMayAskAtOnce) {
  auto first = ask(question_);
  const AlertDialog* firstAlert = waitForAlert();
  auto second = ask(question_);
  ASSERT_TRUE(eventually([this] { return window_.findChildren<AlertDialog*>().size() == 2; }));
  for (auto* alert : window_.findChildren<AlertDialog*>())
    button(*alert, alert == firstAlert ? "Cancel" : "Skip")->click();
  ASSERT_TRUE(isAnswered(first) && isAnswered(second));
  EXPECT_EQ(first.get(), QWAlert::Other);
  EXPECT_EQ(second.get(), QWAlert::Alternate);
}

TEST_F(AlertTest, AtTheEndOpenAndLaterAlertsAreDismissed) {
  AlertTexts question = question_;
  question.unanswered = QWAlert::Alternate;
  const auto isDismissed = [&](auto& alert) { return isAnswered(alert) && alert.get() == QWAlert::Alternate; };
  auto open = ask(question);
  waitForAlert();
  alerts_.refuse();
  EXPECT_TRUE(isDismissed(open));
  auto later = ask(question);
  EXPECT_TRUE(isDismissed(later));
  runtime_.shared<MainThread>().shutDown();
  auto last = ask(question);
  EXPECT_TRUE(isDismissed(last));
}

TEST(ProgressDialogTest, StaysUntilTheTaskHasEnded) {
  QWidget window;
  ProgressDialog sheet(&window);
  int cancels = 0;
  sheet.onCancel = [&] { ++cancels; };
  sheet.setMaximum(4);
  sheet.setValue(1);
  sheet.show();
  const auto& bar = *sheet.findChild<QProgressBar*>();
  EXPECT_DOUBLE_EQ(1.0 * bar.value() / bar.maximum(), 0.25);
  for (int press = 0; press < 2; ++press) QTest::keyClick(&sheet, Qt::Key_Escape);
  EXPECT_EQ(cancels, 1);
  EXPECT_TRUE(sheet.isVisible());
  sheet.hide();
  sheet.show();
  button(sheet, "Cancel")->click();
  EXPECT_EQ(cancels, 2);
  sheet.show();
  sheet.disableCancel();
  QTest::keyClick(&sheet, Qt::Key_Escape);
  EXPECT_EQ(cancels, 2);
}

TEST(BackupDialogWidgetTest, TellsWhatIsPressedAndSelectedAndKeepsANameThatIsNoText) {
  QWidget window;
  BackupDialog dialog(&window);
  QStringList did;
  const auto note = [&](const char* what) { return [&did, what] { did << what; }; };
  dialog.setActions(
      {note("confirm"), note("cancel"), note("add"), note("remove"), note("enable"), [] {}, [] {}, [] {}});
  dialog.setProjectListShown(true);
  dialog.setHandlingNoticeShown(true);
  dialog.setProjects({"/a/one.fcp", "/b/two.motn", "/c/three.ipr"});
  dialog.show("Edit");
  dialog.setName("\xff bytes");
  EXPECT_EQ(dialog.name(), "\xff bytes");
  EXPECT_FALSE(button(dialog, "Remove")->isEnabled());
  for (const int row : {2, 0}) dialog.findChild<QListWidget*>()->item(row)->setSelected(true);
  EXPECT_EQ(dialog.selectedProjects(), (std::vector<std::size_t>{0, 2}));
  for (const char* title : {"Add…", "Remove", "Open Projects with Vantory"}) button(dialog, title)->click();
  QTest::keyClick(&dialog, Qt::Key_Escape);
  EXPECT_EQ(did, (QStringList{"add", "remove", "enable", "cancel"}));
  EXPECT_TRUE(dialog.isVisible()) << "the controller closes it";
  dialog.close();
}

}  // namespace

}  // namespace vantory::test
