// The whole window over the real engine: what a person clicks is what happens to the files.

#include <QAction>
#include <QHeaderView>
#include <QLineEdit>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <future>

#include "backups/ui/CatalogRows.h"
#include "services/settings/QWUserDefaults.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"
#include "tests/backups/BackupsTest.h"
#include "tests/support/EnvironmentChange.h"
#include "tests/window/WindowTest.h"
#include "window/application/MainThreadEvents.h"
#include "window/application/WindowMenus.h"
#include "window/application/WindowSession.h"
#include "window/controls/Command.h"
#include "window/outline/OutlineTree.h"
#include "window/outline/QWOutlineView.h"

namespace vantory::test {

namespace {

class SessionTest : public BackupsTest {
 protected:
  SessionTest() {
    writeFile(prefs("com.apple.FinalCutPro.plist"), "settings");
    writeFile(prefs("com.apple.motion.plist"), "settings");
  }
  ~SessionTest() override { close(); }

  MainWindow& open() {
    controller().setBackupArray({});
    session_ = std::make_unique<WindowSession>(home_.path());
    EXPECT_TRUE(session_->open());
    EXPECT_TRUE(eventually([this] { return !controller().backupArray().empty(); }));
    EXPECT_TRUE(eventually([] { return !BackgroundThreads::shared().isWorking(); }));
    return session_->window();
  }
  void close() { session_.reset(); }

  static void choose(MainWindow& window, const QString& title) {
    for (QAction* action : window.findChildren<QAction*>())
      if (action->isCheckable() && action->text().remove('&') == title) action->trigger();
  }
  const MainThreadEvents events_{runtime_.shared<MainThread>()};
  const EnvironmentChange state_{"XDG_STATE_HOME", home_ / "state"};
  std::unique_ptr<WindowSession> session_;
};

TEST_F(SessionTest, BacksUpAndRestores) {
  MainWindow& window = open();
  choose(window, "Backup");
  window.backupPane().backupCommand().trigger();
  auto* dialog = visibleWindow<BackupDialog>();
  ASSERT_NE(dialog, nullptr);
  dialog->setName("Clean setup");
  QTest::keyClick(dialog, Qt::Key_Return);
  ASSERT_TRUE(eventually([&] { return window.shownPane() == Pane::Restore; }));
  RestorePane& pane = window.restorePane();
  ASSERT_TRUE(eventually([&] { return pane.restore.isEnabled(); })) << "the new backup's row is selected";
  EXPECT_EQ(rowAs<QWBackup>(pane.outline().selectedItem())->name(), "Clean setup");

  writeFile(prefs("com.apple.motion.plist"), "misbehaving");
  QTimer::singleShot(0, [] { answer("Restore"); });
  pane.restore.trigger();
  EXPECT_EQ(answer("OK"), QStringLiteral("Preferences successfully restored"));
  EXPECT_EQ(readFile(prefs("com.apple.motion.plist")), "settings");

  QTimer::singleShot(0, [] { answer("Cancel"); });
  QTest::keyClick(&pane.outline().tree(), Qt::Key_Delete);
  EXPECT_TRUE(exists(inLibrary("Clean setup.vnt")));
  QTimer::singleShot(0, [] { answer("Remove"); });
  QTest::keyClick(&pane.outline().tree(), Qt::Key_Delete);
  EXPECT_TRUE(eventually([&] { return !pane.restore.isEnabled(); }));
  EXPECT_FALSE(exists(inLibrary("Clean setup.vnt")));
  EXPECT_TRUE(exists(inTrash("Clean setup.vnt")));
}

TEST_F(SessionTest, OfTwoBackupsThatLookAlikeTheSelectedOneStaysSelected) {
  for (const char* folder : {"Old.vnt", "Old.vnt2"}) writeFile(inLibrary(folder) + "/Settings.plist", "");
  QWOutlineView& outline = open().restorePane().outline();
  for (const std::string& path : {inLibrary("Old.vnt"), inLibrary("Old.vnt2")}) {
    outline.selectItem(std::make_shared<RecordRow>(QWBackup::backupWithFile(path)));
    controller().populateBackups();
    ASSERT_EQ(rowAs<QWBackup>(outline.selectedItem())->path(), path);
  }
  QTimer::singleShot(0, [] { answer("Remove"); });
  QTest::keyClick(&outline.tree(), Qt::Key_Delete);
  EXPECT_TRUE(eventually([&] { return exists(inTrash("Old.vnt2")); }));
  EXPECT_TRUE(exists(inLibrary("Old.vnt")));
}

TEST_F(SessionTest, IsAsItWasLeftButForThePane) {
  MainWindow& first = open();
  first.resize(800, 500);
  choose(first, "Lock");
  const int width = 133;
  first.restorePane().outline().tree().header()->resizeSection(1, width);
  close();
  MainWindow& second = open();
  EXPECT_EQ(second.shownPane(), Pane::Trash);
  EXPECT_EQ(second.size(), QSize(800, 500));
  EXPECT_EQ(second.restorePane().outline().tree().header()->sectionSize(1), width);
  EXPECT_FALSE(exists(home_ / "Library/Preferences/vantory")) << "looks are no settings";
}

TEST_F(SessionTest, OpenSettingsFollowTheBackupDialogOnTheMainThread) {
  MainWindow& window = open();
  window.menus().preferences->trigger();
  const auto fields = visibleWindow<SettingsWindow>()->findChildren<QLineEdit*>();
  QLineEdit* const field = *std::ranges::find(fields, QStringLiteral("Backup folder"), &QWidget::accessibleName);
  std::atomic<bool> isOnMainThread = true;
  QObject::connect(field, &QLineEdit::textChanged, [&, main = QThread::currentThread()] {
    if (QThread::currentThread() != main) isOnMainThread = false;
  });
  window.backupPane().backupCommand().trigger();
  EXPECT_TRUE(QWUserDefaults::standardUserDefaults().setObject("backupPath", PropertyList("/else")));
  button(*visibleWindow<BackupDialog>(), "Open Projects with Vantory")->click();
  EXPECT_TRUE(eventually([&] { return field->text() == "/else"; }));
  EXPECT_TRUE(isOnMainThread);
}

TEST_F(SessionTest, WhatIsBeingTypedCountsWhereAProjectEndsTheProgram) {
  MainWindow& window = open();
  window.menus().preferences->trigger();
  const auto fields = visibleWindow<SettingsWindow>()->findChildren<QLineEdit*>();
  const std::string folder = home_ / "Other backups";
  QLineEdit* const field = *std::ranges::find(fields, QStringLiteral("Backup folder"), &QWidget::accessibleName);
  field->setText(QString::fromStdString(folder));
  field->setModified(true);
  QTimer person;
  person.callOnTimeout([] {
    if (visibleWindow<AlertDialog>()) answer("Don't Move");
  });
  person.start(20);
  session_->receive({.files = {home_ / "cut.fcp"}});
  QApplication::exec();
  EXPECT_EQ(QWUserDefaults::standardUserDefaults().stringForKey("backupPath"), folder);
}

TEST_F(SessionTest, OpensWhatWasHandedOverJustBeforeTheEnd) {
  open();
  MainThread::shared().post([session = session_.get()] { session->receive({.files = {"/a.vnt"}}); });
  close();
  EXPECT_THAT(logged(), testing::Contains("User opened file /a.vnt"));
}

TEST_F(SessionTest, AsksBeforeItClosesDuringATask) {
  MainWindow& window = open();
  std::promise<void> end;
  BackgroundThreads::shared().start([&end] { end.get_future().wait(); });
  QTimer::singleShot(0, [] { answer("Cancel"); });
  EXPECT_FALSE(window.close());
  QTimer::singleShot(0, [] { answer("Quit When Done"); });
  EXPECT_TRUE(window.close());
  EXPECT_TRUE(BackgroundThreads::shared().isWorking()) << "the task is not cut off";
  end.set_value();
  EXPECT_TRUE(eventually([] { return !BackgroundThreads::shared().isWorking(); }));
}

}  // namespace

}  // namespace vantory::test
