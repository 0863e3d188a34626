// Connects widgets and controllers.
#include "window/application/WindowSession.h"

#include <QApplication>
#include <algorithm>
#include <utility>

#include "backups/LibraryFolder.h"
#include "backups/QWAutosaveHeader.h"
#include "backups/QWDataController.h"
#include "backups/ui/Surveyor.h"
#include "base/Format.h"
#include "catalog/ProjectHandlers.h"
#include "catalog/ProjectKinds.h"
#include "catalog/definitions/DefinitionFiles.h"
#include "platform/SystemLog.h"
#include "services/Runtime.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"
#include "tasks/HomeCheck.h"
#include "tasks/ui/DocumentPaths.h"
#include "window/appearance/Icons.h"
#include "window/application/WindowMenus.h"
#include "window/controls/Command.h"
#include "window/controls/Spinner.h"
#include "window/outline/QWOutlineView.h"

namespace vantory {

namespace {

template <class Act>
// The command itself is the receiver, so that nothing is called once it has gone.
void onTrigger(Command& command, Act act) {
  QObject::connect(&command, &QAction::triggered, &command, [act] { act(); });
}

}  // namespace

// The parts know each other in this order: panes, then dialogs, then what joins them.
WindowSession::WindowSession(const std::string& home)
    : memory_(home),
      dialog_(&window_),
      comparisonWindow_(&window_),
      progress_(&window_),
      chooser_(&dialog_),
      importChooser_(&window_),
      alerts_([this](AlertParent parent) { return windowOf(parent); }),
      lock_(window_.lockPane().outline(), window_.lockPane().spinner()),
      app_({window_, window_.trashPane().spinner(), progress_, lock_}),
      trash_(window_.trashPane().outline(), window_.trashPane().trashCommand()),
      restore_({window_.restorePane().outline(), window_.restorePane().toggleDefault, window_.restorePane().spinner(),
                app_}),
      backup_({window_.backupPane().outline(), window_.backupPane().backupCommand(), window_.backupPane().spinner(),
               app_, restore_}),
      edit_({dialog_, chooser_, backup_, restore_, &ProjectHandlers::checkVantoryDefaultForFileExtensions,
             [this] {
               ProjectHandlers::setVantoryDefaultFileExtensions();
               const bool isHandler = ProjectHandlers::updateHandlingStatus();
               MainThread::shared().runAndWait([this] { settings_.refresh(); });
               return isHandler;
             }}),
      comparison_(comparisonWindow_),
      delegate_({window_, app_, importChooser_, *window_.menus().preferences,
                 [this] {
                   // What is being typed there counts; a question about it needs the events that end here.
                   settings_.close();
                   QCoreApplication::exit();
                 },
                 [this] { settings_.show(); },
                 [this](std::function<void()> work) { restore_.runOnThread(std::move(work)); },
                 [this](const std::string& path) { selectBackup(path); }}),
      settings_(&window_, &delegate_),
      recentTasks_(&window_),
      undo_(
          {*window_.menus().undo, app_.progressController(), [this](const std::string& path) { selectBackup(path); }}) {
  // Each of the two needs the other, so one of them is told later.
  restore_.setEditor(edit_);
  QWAlert::sharedController().ask = [this](const AlertTexts& texts) { return alerts_.ask(texts); };
  alerts_.setShows({.reveal = [](const std::string& path) { QWRestoreOutlineController::reveal(path); },
                    .log = [this] { delegate_.viewLog(); }});
  connectWindow();
  connectCatalogPanes();
  connectRestorePane();
  connectDialogs();
  connectMenus();
  window_.recall(memory_);
  window_.showNotice(remarkOnHome(home));
}

WindowSession::~WindowSession() {
  finish();
}

// --- Who is told what ------------------------------------------------------------------------------------------------

void WindowSession::connectWindow() {
  window_.setActions({.choosePane =
                          [this](Pane pane) {
                            choosePane(pane);
                            if (painted_) undo_.followOthers();
                          },
                      .openLink = [this] { delegate_.helpGearwrightHome(); },
                      .openHome = [this] { delegate_.helpVantoryHome(); },
                      .sort = [this](const std::string& column) { restore_.didClickTableColumn(column); },
                      .openFiles = [this](const std::vector<std::string>& paths) { delegate_.openFiles(paths); }});
  window_.onAttention = [this] {
    if (painted_) undo_.followOthers();
  };
  window_.mayClose = [this] { return mayClose(); };
}

// The button of the Backup pane asks for a name first; the dialog's own button makes the backup.
void WindowSession::connectCatalogPanes() {
  window_.trashPane().outline().setDelegate(&trash_, &trash_);
  window_.backupPane().outline().setDelegate(&backup_, &backup_);
  window_.lockPane().outline().setDelegate(&lock_, &lock_);
  onTrigger(window_.trashPane().trashCommand(), [this] { app_.trash(); });
  onTrigger(window_.backupPane().backupCommand(), [this] { edit_.showBackupDialog(); });
  onTrigger(window_.lockPane().refreshCommand(), [this] { lock_.reload(); });
}

// Its outline also has keys that stand for commands by name.
void WindowSession::connectRestorePane() {
  RestorePane& pane = window_.restorePane();
  QWOutlineView& outline = pane.outline();
  outline.setDelegate(&restore_, &restore_);
  outline.onSelectionChange = [this] { showSelection(); };
  onTrigger(pane.restore, [this] { restore_.restore(); });
  onTrigger(pane.compare, [this] { comparison_.compare(restore_.selectedBackup()); });
  onTrigger(pane.edit, [this] { restore_.editBackup(); });
  onTrigger(pane.toggleDefault, [this] { restore_.toggleDefault(); });
  onTrigger(pane.rename, [&outline] { outline.editSelectedRow(); });
  onTrigger(pane.remove, [this] { restore_.keyUp(OutlineKey::Delete); });
  onTrigger(pane.linkProjects, [this] { restore_.linkProject(); });
  onTrigger(pane.unlinkProjects, [this] { restore_.unlinkProjects(); });
  onTrigger(pane.revealProjects, [this] { restore_.revealLinkedProjects(); });
  onTrigger(pane.updateFiles, [this] { restore_.updateFiles(); });
  onTrigger(pane.sendToMail, [this] { restore_.sendToMail(); });
  onTrigger(pane.reveal, [this] { restore_.revealFinder(); });
  outline.addWatchKeys(QStringLiteral("\r\n"), "restore:");
  outline.reportMissing = [](const std::string& selector) {
    Runtime::current().platform().systemLog.write(formatted("Selector %@ doesn't exist", selector));
  };
  // Return restores what is selected, as the button does.
  outline.watchDelegate = [this](const std::string& selector) {
    if (selector != "restore:") return false;
    restore_.restore();
    return true;
  };
}

void WindowSession::connectDialogs() {
  comparisonWindow_.outline().setDelegate(&comparison_, nullptr);
  comparisonWindow_.onClose = [this] { comparison_.close(); };
  onTrigger(comparisonWindow_.restore(), [this] { comparison_.restoreTicked(); });
  progress_.onCancel = [this] { app_.progressController().cancel(); };
  dialog_.setActions({.confirm = [this] { edit_.backup(); },
                      .cancel = [this] { edit_.cancelBackup(); },
                      .addProject = [this] { edit_.addProject(); },
                      .removeProject = [this] { edit_.removeProject(); },
                      .enableHandling = [this] { edit_.enableProjectHandling(); },
                      .expand = [this] { edit_.expandProjectView(); },
                      .contract = [this] { edit_.contractProjectView(); },
                      .nameChanged = [this] { edit_.nameDidChange(); }});
}

void WindowSession::connectMenus() {
  WindowMenus& menus = window_.menus();
  onTrigger(*menus.importBackup, [this] { delegate_.importBackup(); });
  onTrigger(*menus.undo, [this] { undo_.undo(); });
  onTrigger(*menus.recentTasks, [this] {
    recentTasks_.open();
    listRecentTasks();
  });
  undo_.onReload = [this] {
    if (recentTasks_.isVisible()) listRecentTasks();
  };
  recentTasks_.onUndo = [this](const std::string& receipt) { undo_.undo(receipt); };
  onTrigger(*menus.preferences, [this] { delegate_.showPreferences(); });
  onTrigger(*menus.userManual, [this] { delegate_.helpUserManual(); });
  onTrigger(*menus.viewLog, [this] { delegate_.viewLog(); });
  onTrigger(*menus.viewTaskLog, [this] { delegate_.viewTaskLog(); });
  onTrigger(*menus.gatherLogs, [this] { delegate_.gatherLogs(); });
  onTrigger(*menus.reportBug, [this] { delegate_.helpReportBug(); });
  onTrigger(*menus.suggestFeature, [this] { delegate_.helpSuggestFeature(); });
  onTrigger(*menus.softwareUpdate, [this] { delegate_.menuSoftwareUpdate(); });
  onTrigger(*menus.programHome, [this] { delegate_.helpVantoryHome(); });
  onTrigger(*menus.maintenanceToolsHome, [this] { delegate_.helpGearwrightHome(); });
  onTrigger(*menus.makerHome, [this] { delegate_.helpQWHome(); });
}

// What is not there cannot be chosen.
void WindowSession::enableHelp() {
  window_.menus().userManual->setEnabled(Vantory_AppDelegate::hasUserManual());
  window_.menus().softwareUpdate->setEnabled(false);
  BackgroundThreads::shared().start([this] {
    if (!Vantory_AppDelegate::hasSoftwareUpdate()) return;
    MainThread::shared().runAndWait([this] { window_.menus().softwareUpdate->setEnabled(true); });
  });
}

// --- While it is open ------------------------------------------------------------------------------------------------

// A backup is shown in the library; a project only passes through to its application.
bool WindowSession::needsWindow(const std::vector<std::string>& files) {
  return files.empty() || std::ranges::any_of(files, isBackupName);
}

bool WindowSession::onlyHandsOn(const std::vector<std::string>& files) {
  if (files.empty() || std::ranges::any_of(files, isKnownDocument)) return false;
  // It is asked before there is a catalog.
  const AppList defined = readDefinedCatalog(foldersOfBackups()).apps;
  return std::ranges::all_of(files, [&](const auto& file) { return applicationsOfProject(file, defined).empty(); });
}

// With a window everything waits for its first paint; without one the files are opened at once.
bool WindowSession::open(const std::vector<std::string>& files) {
  onlyHandsOn_ = onlyHandsOn(files);
  if (!delegate_.awakeFromNib()) return false;
  if (needsWindow(files)) {
    window_.onFirstPaint = [this] {
      delegate_.applicationDidFinishLaunching();
      Surveyor::shared().start();
      app_.load();
      undo_.reload();
      QApplication::setWindowIcon(icons::application());
      enableHelp();
      painted_ = true;
      delegate_.openFiles(std::exchange(waitingFiles_, {}));
      for (const auto& work : std::exchange(waitingWork_, {})) work();
    };
    openFiles(files);
    window_.show();
  } else {
    // Without a window nothing else loads the catalog.
    QWDataController::sharedController().populateApps();
    for (const std::string& file : files) delegate_.openFile(file);
    delegate_.applicationDidFinishLaunching();
  }
  return true;
}

void WindowSession::whenPainted(std::function<void()> work) {
  if (painted_)
    work();
  else
    waitingWork_.push_back(std::move(work));
}

void WindowSession::receive(const OpenRequest& request) {
  // Qt looks there when a window is to come to the front.
  if (!request.activationToken.empty())
    qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(request.activationToken));
  if (needsWindow(request.files)) window_.bringToFront();
  openFiles(request.files);
}

// What backups hold is told by the catalog, which is loaded when the window is painted.
void WindowSession::openFiles(const std::vector<std::string>& files) {
  if (painted_)
    delegate_.openFiles(files);
  else
    waitingFiles_.insert(waitingFiles_.end(), files.begin(), files.end());
}

// The controller logs the choice, and has the window show the pane.
void WindowSession::choosePane(Pane pane) {
  switch (pane) {
    case Pane::Trash:
      return app_.toolbarTrash();
    case Pane::Backup:
      return app_.toolbarBackup();
    case Pane::Lock:
      return app_.toolbarLock();
    case Pane::Restore:
      return app_.toolbarRestore();
  }
}

void WindowSession::listRecentTasks() {
  UndoController::list([this](const std::vector<UndoRow>& rows) { recentTasks_.setRows(rows); });
}

// The library was listed anew. Any thread.
void WindowSession::selectBackup(const std::string& path) {
  restore_.reload();
  MainThread::shared().runAndWait([&] { restore_.selectBackupWithPath(path); });
}

// A command can be chosen only where the selection gives it something to work on.
void WindowSession::showSelection() {
  const OutlineItemPointer row = window_.restorePane().outline().selectedItem();
  const auto backup = restore_.selectedBackup();
  window_.restorePane().showSelection({.backup = backup != nullptr,
                                       .backupRow = rowAs<QWBackup>(row) != nullptr,
                                       .hasProjects = backup && !backup->projects().empty(),
                                       .anyRow = backup || rowAs<QWAutosaveHeader>(row)});
}

// Null where none is on the screen: then the alert stands alone.
QWidget* WindowSession::windowOf(AlertParent parent) {
  if (parent == AlertParent::BackupDialog && dialog_.isVisible()) return &dialog_;
  if (parent == AlertParent::ComparisonWindow && comparisonWindow_.isVisible()) return &comparisonWindow_;
  if (parent == AlertParent::SettingsWindow && settings_.window()) return settings_.window();
  return window_.isVisible() ? &window_ : nullptr;
}

// --- The end ---------------------------------------------------------------------------------------------------------

// The settings window goes with it: what is being typed there counts, and may lead to a question.
bool WindowSession::mayClose() {
  if (BackgroundThreads::shared().isWorking() && !wantsToQuit()) return false;
  settings_.close();
  comparisonWindow_.close();
  return true;
}

// After "Quit When Done" the window goes at once; finish() waits for the task.
bool WindowSession::wantsToQuit() {
  return alerts_.ask({.messageText = "A task is still running.",
                      .defaultButton = "Quit When Done",
                      .alternateButton = "Cancel",
                      .informativeText = "Vantory quits as soon as it has ended. Nothing is left half done."}) ==
         QWAlert::Default;
}

// Work that still runs is served to its end; its questions are answered as if dismissed.
void WindowSession::finish() {
  window_.onAttention = nullptr;
  alerts_.refuse();
  comparison_.close();
  Surveyor::shared().stop();
  // Whoever handed something over just before the end relies on it.
  MainThread::shared().runPending();
  if (painted_) window_.remember(memory_);
  // The window is gone at once, however long the work takes.
  window_.hide();
  BackgroundThreads::shared().waitForAll();
  if (!onlyHandsOn_) delegate_.applicationWillTerminate();
  QWAlert::sharedController().ask = nullptr;
}

}  // namespace vantory
