// The settings window over the real engine, and the keys that it captures.

#include <sys/stat.h>

#include <QCheckBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QProgressBar>
#include <QSpinBox>
#include <QTimer>
#include <atomic>
#include <stdexcept>
#include <thread>

#include "services/messages/QWAlert.h"
#include "services/settings/QWUserDefaults.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"
#include "settings/ui/QWShortcutKeyTableDelegate.h"
#include "tests/backups/BackupsTest.h"
#include "tests/window/WindowTest.h"
#include "window/application/MainThreadEvents.h"
#include "window/dialogs/AlertSheets.h"
#include "window/settings/MacKeyCodes.h"
#include "window/settings/QWShortcutKeyFieldEditor.h"
#include "window/settings/QWShortcutKeyTableview.h"
#include "window/settings/SettingsSession.h"

namespace vantory::test {

namespace {

class SettingsTest : public BackupsTest, protected PreferenceDelegate {
 protected:
  SettingsTest() {
    fakes_.system.resources = VANTORY_RESOURCES;
    defaults().registerDefaults({{"backupPath", PropertyList(library())}, {"autosaveFrequency", PropertyList(7)}});
    QWAlert::sharedController().ask = [this](const AlertTexts& texts) { return alerts_.ask(texts); };
    main_.show();
  }
  ~SettingsTest() override { BackgroundThreads::shared().waitForAll(); }

  void disablePrefsMenu() override { menuEnabled_ = false; }
  void enablePrefsMenu() override { menuEnabled_ = true; }

  void show() {
    session_.show();
    ASSERT_TRUE(eventually([this] { return window().isActiveWindow(); }));
  }
  static QWUserDefaults& defaults() { return QWUserDefaults::standardUserDefaults(); }
  SettingsWindow& window() { return *session_.window(); }
  template <class T>
  T& control(const QString& title) {
    for (auto* each : window().findChildren<T*>())
      if (each->accessibleName() == title || each->property("text").toString().remove('&') == title) return *each;
    throw std::runtime_error("there is no control " + title.toStdString());
  }

  const MainThreadEvents events_{runtime_.shared<MainThread>()};
  QWidget main_;
  SettingsSession session_{&main_, this};
  AlertSheets alerts_{
      [this](AlertParent parent) { return parent == AlertParent::SettingsWindow ? session_.window() : &main_; }};
  bool menuEnabled_ = true;
};

TEST_F(SettingsTest, EachControlWritesItsKeyAtOnceAndShowsWhatOthersWrote) {
  show();
  EXPECT_FALSE(menuEnabled_);
  QTest::keyClick(&window(), Qt::Key_2, Qt::ControlModifier);
  EXPECT_THAT(logged(), testing::Contains("Switched to Autosave prefs view"));
  auto& days = control<QSpinBox>("Every days");
  days.setFocus();
  days.selectAll();
  QTest::keyClicks(&days, "14");
  EXPECT_EQ(defaults().integerForKey("autosaveFrequency"), 7) << "the number is not typed to its end";
  show();
  QTest::keyClick(&days, Qt::Key_Tab);
  EXPECT_EQ(defaults().integerForKey("autosaveFrequency"), 14);

  // Another process changes the file, and the person comes back to the window.
  writeFile(prefs("com.quarrywell.Vantory.plist"), "{maxAutoBackups = 3; autosaveFrequency = 99999; other = 1;}");
  QEvent activation(QEvent::ActivationChange);
  QApplication::sendEvent(&window(), &activation);
  EXPECT_EQ(control<QSpinBox>("Keep the newest automatic backups").value(), 3);
  QTest::mouseClick(&control<QCheckBox>("Back up automatically"), Qt::LeftButton, {}, {8, 8});
  EXPECT_EQ(defaults().integerForKey("periodicAutosave"), 1);
  EXPECT_EQ(defaults().integerForKey("other"), 1);
  EXPECT_EQ(defaults().integerForKey("autosaveFrequency"), 99999) << "shown as the most there is, but not touched";

  QTest::keyClick(&window(), Qt::Key_Escape);
  EXPECT_EQ(session_.window(), nullptr);
  EXPECT_TRUE(menuEnabled_);
}

TEST_F(SettingsTest, ATypedFolderIsAskedAboutOnce) {
  writeFile(inLibrary("Mine.vnt/Settings.plist"), "");
  show();
  auto& path = control<QLineEdit>("Backup folder");
  const auto type = [&](const std::string& text) {
    path.setFocus();
    path.selectAll();
    QTest::keyClicks(&path, QString::fromStdString(text));
  };
  type(home_ / "Half");
  QTest::keyClick(&path, Qt::Key_Escape);
  EXPECT_EQ(path.text(), QString::fromStdString(library())) << "given up";
  type(home_ / "Ne");
  main_.activateWindow();
  ASSERT_TRUE(eventually([this] { return main_.isActiveWindow(); }));
  show();
  path.setFocus();
  EXPECT_FALSE(exists(home_ / "Half") || exists(home_ / "Ne")) << "typed to no end";
  QTest::keyClicks(&path, "w");
  int questions = 0;
  QTimer::singleShot(0, &window(), [&] {
    ASSERT_TRUE(eventually([] { return visibleWindow<AlertDialog>() != nullptr; }));
    EXPECT_EQ(visibleWindow<AlertDialog>()->parentWidget(), &window());
    answer("Move");
    ++questions;
  });
  QTest::keyClick(&path, Qt::Key_Return);
  EXPECT_EQ(questions, 1);
  EXPECT_TRUE(exists(home_ / "New/Mine.vnt"));
}

TEST_F(SettingsTest, SlowWorkRunsUnderASheetThatCannotBeClosed) {
  show();
  std::atomic<bool> go = false;
  bool covered = false;
  QTimer looks;
  QObject::connect(&looks, &QTimer::timeout, [&] {
    auto* sheet = window().findChild<QProgressBar*>();
    if (!sheet || !sheet->isVisible()) return;
    covered = !sheet->window()->close();
    go = true;
  });
  looks.start(10);
  window().doBehindSheet("Moving…", [&] {
    while (!go) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  });
  EXPECT_TRUE(covered);
  EXPECT_EQ(window().findChild<QProgressBar*>(), nullptr);
}

TEST_F(SettingsTest, CapturesAShortcut) {
  const std::string manager = machine_ / "Library/Application Support/Quarrywell/Shared Resources/QWShortcutKeyManager";
  show();
  EXPECT_FALSE(window().findChild<QWShortcutKeyTableview*>()->isEnabled());
  writeFile(manager, "#!/bin/sh\n");
  ASSERT_EQ(chmod(manager.c_str(), 0755), 0);
  window().close();
  show();
  QTest::keyClick(&window(), Qt::Key_4, Qt::ControlModifier);
  auto& table = *window().findChild<QWShortcutKeyTableview*>();
  ASSERT_TRUE(table.isEnabled());

  const auto shown = [&] { return table.model()->index(1, 1).data().toString(); };
  table.setFocus();
  table.setCurrentIndex(table.model()->index(1, 0));
  auto& editor = dynamic_cast<QWShortcutKeyFieldEditor&>(table.fieldEditor());
  for (const auto& [key, held, name] :
       {std::tuple{Qt::Key_F, Qt::KeyboardModifiers(), "Shift+Cmd+F"},
        {Qt::Key_W, Qt::KeyboardModifiers(Qt::ControlModifier), "Ctrl+W"},
        {Qt::Key_Return, Qt::KeyboardModifiers(Qt::AltModifier | Qt::MetaModifier), "Alt+Cmd+Return"}}) {
    QTest::keyClick(&table, Qt::Key_Return);
    ASSERT_TRUE(editor.isVisible());
    QTest::keyClick(&editor, Qt::Key_Control);
    QTest::keyClick(&editor, key, held);
    EXPECT_EQ(shown(), QString::fromLatin1(name));
    EXPECT_FALSE(editor.isVisible());
    EXPECT_TRUE(window().isVisible()) << "the keys meant nothing to the window";
  }
  QTest::mouseClick(&control<QPushButton>("Set Shortcut…"), Qt::LeftButton);
  QTest::keyClick(&editor, Qt::Key_Escape);
  EXPECT_FALSE(editor.isVisible());
  EXPECT_EQ(shown(), QStringLiteral("Alt+Cmd+Return"));
  QTest::mouseClick(&control<QPushButton>("Clear Shortcut"), Qt::LeftButton);
  EXPECT_EQ(shown(), QString());
}

TEST(MacKeyCodesTest, AreThoseOfTheCharacterOrElseOfThePlace) {
  const auto codeOf = [](int key, Qt::KeyboardModifiers modifiers, quint32 place) {
    return macKeyCode(QKeyEvent(QEvent::KeyPress, key, modifiers, place, 0, 0));
  };
  EXPECT_EQ(codeOf(Qt::Key_Z, {}, 29), 0x06) << "the German keyboard's Z, at the place of Y";
  EXPECT_EQ(codeOf(Qt::Key_Exclam, Qt::ShiftModifier, 10), 0x12);
  EXPECT_EQ(codeOf(Qt::Key_7, Qt::KeypadModifier, 79), 0x59);
  EXPECT_EQ(codeOf(Qt::Key_Enter, Qt::KeypadModifier, 104), 0x4C);
  EXPECT_EQ(codeOf(Qt::Key_Shift, Qt::ShiftModifier, 50), std::nullopt);
  for (int key = 0x20; key < 0x80; ++key) {
    const auto code = macKeyCode(QKeyEvent(QEvent::KeyPress, key, {}));
    EXPECT_TRUE(!code || keyCodeName(*code)) << key;
  }
}

}  // namespace

}  // namespace vantory::test
