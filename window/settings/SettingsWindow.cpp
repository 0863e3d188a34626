// Shows one pane at a time, and a sheet while something takes long.
#include "window/settings/SettingsWindow.h"

#include <QCloseEvent>
#include <QEvent>
#include <QEventLoop>
#include <QLineEdit>
#include <QShortcut>
#include <QStackedWidget>
#include <QTimer>

#include "services/log/QWException.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"
#include "settings/ui/QWPreferenceController.h"
#include "settings/ui/QWShortcutKeyTableDelegate.h"
#include "window/controls/PaneToolbar.h"
#include "window/dialogs/ProgressDialog.h"
#include "window/settings/AutosavePane.h"
#include "window/settings/GeneralPane.h"
#include "window/settings/ProjectHandlingPane.h"
#include "window/settings/QWShortcutKeyContainerView.h"

namespace vantory {

namespace {

constexpr QSize kFirstSize(600, 420);
constexpr int kMillisecondsWithoutSheet = 300;  // for what is done before anybody wonders
constexpr const char* kTitles[] = {"&General", "&Autosave", "&Project Handling", "&Hotkeys"};
constexpr const char* kSymbols[] = {"general", "autosave", "project-handling", "hotkeys"};

}  // namespace

SettingsWindow::SettingsWindow(QWidget* parent)
    : QMainWindow(parent, Qt::Dialog),
      general_(new GeneralPane(controls_)),
      projectHandling_(new ProjectHandlingPane(controls_)),
      stack_(new QStackedWidget),
      toolbar_(new PaneToolbar(this)) {
  setWindowTitle(QStringLiteral("Preferences"));  // the toolkit adds the program's name
  stack_->addWidget(general_);
  stack_->addWidget(new AutosavePane(controls_));
  stack_->addWidget(projectHandling_);
  stack_->addWidget(new QWShortcutKeyContainerView(QWShortcutKeyTableDelegate::sharedController()));
  setCentralWidget(stack_);
  makeToolbar();
  resize(kFirstSize.expandedTo(minimumSizeHint()));
  connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this, [this] { close(); });
  connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, [this] { leave(); });
}

void SettingsWindow::setActions(Actions actions) {
  actions_ = std::move(actions);
  general_->onPath = actions_.setBackupPath;
  general_->onBrowse = actions_.browse;
  projectHandling_->onVantory = actions_.changeHandlerToVantory;
  projectHandling_->onFinalCutStudio = actions_.changeHandlerToFCS;
  controls_.onChange = actions_.changeValue;
}

// In the order of PreferencePane.
void SettingsWindow::makeToolbar() {
  addToolBar(toolbar_);
  for (int i = 0; i < 4; ++i)
    toolbar_->addPane(QLatin1String(kTitles[i]), QLatin1String(kSymbols[i]), [this, i] {
      if (actions_.choosePane) actions_.choosePane(static_cast<PreferencePane>(i));
    });
}

void SettingsWindow::showPane(PreferencePane pane) {
  const int index = static_cast<int>(pane);
  toolbar_->panes().actions().at(index)->setChecked(true);
  stack_->setCurrentIndex(index);
}

void SettingsWindow::bringToFront() {
  // Where no window manager places it.
  if (!testAttribute(Qt::WA_WState_Created) && parentWidget())
    move(parentWidget()->geometry().center() - rect().center());
  show();
  raise();
  activateWindow();
}

void SettingsWindow::setBackupPath(const std::string& path) {
  general_->setBackupPath(path);
}

void SettingsWindow::setBackupRemark(const std::string& text) {
  general_->setBackupRemark(text);
}

void SettingsWindow::setValue(const std::string& key, long long value) {
  controls_.show(key, value);
}

void SettingsWindow::setHandlerStatus(const HandlerStatus& status) {
  projectHandling_->setStatus(status);
}

// Short work passes without a sheet, and without events of the person's meanwhile.
void SettingsWindow::doBehindSheet(const std::string& label, const std::function<void()>& work) {
  QEventLoop loop;
  bool done = false;
  const bool begun = BackgroundThreads::shared().start([&] {
    try {
      work();
    } catch (const std::exception& exception) {
      QWException::logException(exception, "SettingsWindow");
    }
    MainThread::shared().runAndWait([&] {
      done = true;
      loop.quit();
    });
  });
  // Where no thread is to be had, the work is done here.
  if (!begun) return work();
  QTimer patience;
  patience.setSingleShot(true);
  connect(&patience, &QTimer::timeout, &loop, &QEventLoop::quit);
  patience.start(kMillisecondsWithoutSheet);
  loop.exec(QEventLoop::ExcludeUserInputEvents);
  if (done) return;
  ProgressDialog sheet(this);
  sheet.hideCancelButton();
  sheet.setLabel(label);
  sheet.setIndeterminate();
  sheet.show();
  loop.exec();
  // The program may be about to quit, which ends all loops.
  MainThread::shared().runUntil([&] { return done; });
}

// What is being typed is given up first.
void SettingsWindow::leave() {
  QWidget* const control = focusWidget();
  auto* text = qobject_cast<QLineEdit*>(control);
  if (!text && control) text = control->findChild<QLineEdit*>();  // of a number
  if (!text || !text->isModified()) return (void)close();
  text->setModified(false);
  if (actions_.activated) actions_.activated();
}

// Leaving a control has what was typed there count.
void SettingsWindow::closeEvent(QCloseEvent* event) {
  setFocus();  // what is being typed counts
  general_->takePath();
  QMainWindow::closeEvent(event);
  if (actions_.closed) actions_.closed();
}

// Other programs may have changed what the window shows while they were in front.
void SettingsWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::ActivationChange && isActiveWindow() && actions_.activated) actions_.activated();
}

}  // namespace vantory
