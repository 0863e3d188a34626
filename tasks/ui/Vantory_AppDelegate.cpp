// Start and quit, and the opening of documents.
#include "tasks/ui/Vantory_AppDelegate.h"

#include <algorithm>

#include "backups/AutosaveSchedule.h"
#include "backups/BackupNaming.h"
#include "backups/QWDataController.h"
#include "backups/ui/BackupNames.h"
#include "backups/ui/Controls.h"
#include "backups/ui/FailureReport.h"
#include "backups/ui/PaneSwitcher.h"
#include "base/Paths.h"
#include "catalog/ProjectKinds.h"
#include "platform/Documents.h"
#include "platform/Workspace.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWAuthorization.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/receipts/TaskReceipt.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"
#include "services/threads/BackgroundThreads.h"
#include "settings/QWBugReporter.h"
#include "settings/QWSoftwareUpdate.h"
#include "tasks/ui/DocumentPaths.h"
#include "tasks/ui/MainWindowView.h"

namespace vantory {

namespace {

// What counts where nobody has set anything.
void registerDefaults() {
  std::map<std::string, PropertyList> defaults = {{setting::kPeriodicAutosave, 1},
                                                  {setting::kAutosaveFrequency, setting::kUsualAutosaveFrequency},
                                                  {setting::kMaxAutoBackups, setting::kUsualMaxAutoBackups},
                                                  {setting::kSortedColumn, "name"},
                                                  {setting::kSortedDescending, false}};
  if (const auto library = usualLibraryFolder()) defaults.emplace(setting::kBackupPath, *library);
  QWUserDefaults::standardUserDefaults().registerDefaults(defaults);
}

// Listing the library moves a copy of one to the others, so that only its name tells.
bool isAutomaticBackup(const std::string& path) {
  const auto isThat = [&](const auto& backup) {
    return paths::lastComponent(backup->path()) == paths::lastComponent(path);
  };
  return std::ranges::any_of(QWDataController::sharedController().autoBackupArray(), isThat);
}

// A preference file whose copy failed may have found no way back out of the Trash.
bool areAsTheyWere(const TaskReport& report) {
  return std::ranges::none_of(report.files(), [](const FileReport& file) {
    return file.action == FileAction::Trash && file.outcome == FileReport::Outcome::Done && !file.item.empty();
  });
}

std::string reassurance(const std::string& path, const TaskReport& report) {
  if (isAutomaticBackup(path)) return "It is an automatic backup. You can restore it from among the autosaves.";
  return areAsTheyWere(report) ? "Your preferences are as they were." : "";
}

void tellOfImport(const std::string& path, bool restored, const TaskReport& report) {
  if (!restored) {
    reportResult(formatted("The backup \"%@\" could not be restored", backupName(path)), reassurance(path, report),
                 report, Retry::None);
    tellNotices(report);
  } else if (!reportIncompleteRestore(report)) {
    QWAlert::alertSheetWithMessageText("Restoration complete",
                                       withCauses("You may now relaunch your applications.", report));
  }
}

void import(const std::string& path) {
  TaskReport report;
  TaskReceipt receipt(report, {.name = "import", .operands = {path}});
  const bool restored = QWDataController::sharedController().addBackupFromFile(path, report);
  receipt.end();
  // The pane's spinner does not turn while this is on the screen.
  BackgroundThreads::shared().start([=] { tellOfImport(path, restored, report); });
}

// The first identifier of an application that is installed; the first of all where none is.
std::string installedAmong(const std::vector<std::string>& identifiers) {
  for (const std::string& identifier : identifiers)
    if (Runtime::current().platform().workspace.applicationPath(identifier)) return identifier;
  return identifiers.front();
}

}  // namespace

// --- Start and quit --------------------------------------------------------------------------------------------------

bool Vantory_AppDelegate::awakeFromNib() {
  if (QWUserDefaults::standardUserDefaults().integerForKey(setting::kRequireAdministrator) != 1) return true;
  if (QWAuthorization::sharedController().authStart()) return true;
  QWLog::appendLogAndPrint("An administrator is required to open Vantory - quitting...");
  return false;
}

void Vantory_AppDelegate::applicationDidFinishLaunching() {
  if (wasOpenedByProjectFile_) {
    QWLog::appendLog("App was opened by project file - hiding...");
    return;
  }
  registerDefaults();
  // The service manager may take its time.
  BackgroundThreads::shared().start(&AutosaveSchedule::applyAtStart);
  QWSoftwareUpdate().startup();
  parts_.window.bringToFront();
}

void Vantory_AppDelegate::applicationWillTerminate() {
  const QWDataController& data = QWDataController::sharedController();
  // Without a catalog there are no ticks: those of the last time stay.
  if (!data.appArray().empty()) data.saveAppSelections();
  QWBugReporter::stopBugReporter();
}

void Vantory_AppDelegate::terminate() {
  BackgroundThreads::shared().whenIdle([this] { parts_.quit(); });
}

// --- Documents -------------------------------------------------------------------------------------------------------

void Vantory_AppDelegate::openFiles(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) BackgroundThreads::shared().whenIdle([this, path] { openFile(path); });
}

bool Vantory_AppDelegate::openFile(const std::string& path) {
  QWLog::appendLog("User opened file %@", path);
  if (isBackupName(path)) {
    askToImport(path);
    return true;
  }
  wasOpenedByProjectFile_ = true;
  if (const auto known = applicationsOfProject(path, QWDataController::sharedController().appArray()); !known.empty()) {
    if (!startTask([=, this] { openProject(path, installedAmong(known)); })) terminate();
    return true;
  }
  QWLog::appendLogAndPrint("Error - unknown file: %@", path);
  handOn(path);
  return false;
}

void Vantory_AppDelegate::askToImport(const std::string& path) {
  parts_.window.bringToFront();
  parts_.panes.toolbarRestore();
  // What lies in the library is there already.
  const std::string library = QWDataController::vantoryBackupLocation().value_or(path);
  const bool canBeAdded = !paths::isWithin(path, library);
  const bool replaces =
      canBeAdded && QWFileManager::itemExistsAtPath(paths::join(library, backupFileName(backupName(path))));
  AlertTexts question{.messageText = formatted("Are you sure you wish to restore the backup \"%@\"?", backupName(path)),
                      .defaultButton = "Restore",
                      .alternateButton = "Cancel",
                      .informativeText = nameAndDate(*QWBackup::backupWithName(backupName(path), path)) +
                                         ". This will overwrite any existing preferences." +
                                         warningOf(*QWBackup::backupWithFile(path)),
                      .unanswered = QWAlert::Alternate};
  if (replaces) question.informativeText += "\n\nThe backup of that name in your library goes to the Trash.";
  if (canBeAdded) {
    question.otherButton = "Only Add";
    question.informativeText += "\n\nTo keep it in the library and restore nothing now, choose Only Add.";
  }
  const int answer = QWAlert::alertSheetWithMessageText(question);
  if (answer == QWAlert::Default) parts_.restoreOnThread([path] { import(path); });
  if (answer == QWAlert::Other && canBeAdded) parts_.restoreOnThread([this, path] { addWithoutRestoring(path); });
}

// Worker thread.
void Vantory_AppDelegate::addWithoutRestoring(const std::string& path) {
  TaskReport report;
  const TaskReceipt receipt(report, {.name = "import", .operands = {path}});
  const auto added = QWDataController::sharedController().copyBackupFromFile(path, report);
  if (!added) {
    reportResult(formatted("The backup \"%@\" could not be added", backupName(path)), "", report, Retry::None);
    return;
  }
  if (parts_.selectBackup) parts_.selectBackup(*added);
  if (backupName(*added) != backupName(path))
    QWAlert::alertSheetWithMessageText(keptNameInWords(backupName(path), backupName(*added)), kNameIsTaken);
  tellNotices(report);
}

// The desktop may take a while to find an application.
void Vantory_AppDelegate::handOn(const std::string& path) {
  BackgroundThreads::shared().start([path] {
    const Status opened = Runtime::current().platform().documents.open(path);
    if (opened) return;
    QWLog::appendLog("Unable to open %@: %@", path, opened.error().text);
    QWAlert::alertSheetWithMessageText(
        formatted("Vantory cannot open \"%@\"", paths::lastComponent(path)),
        "It is neither a backup nor a project of an editing application, and no other application opens it.");
  });
  terminate();
}

void Vantory_AppDelegate::importBackup() {
  const auto chosen =
      parts_.chooser.choose({.extensions = {kBackupExtensions.begin(), kBackupExtensions.end()}, .folders = true});
  if (chosen.empty()) return;
  if (isBackupName(chosen.front())) {
    openFiles({chosen.front()});
    return;
  }
  QWAlert::alertSheetWithMessageText(formatted("\"%@\" is not a backup", paths::lastComponent(chosen.front())),
                                     "A backup is a folder whose name ends in \".vnt\" or \".vnt2\".");
}

}  // namespace vantory
