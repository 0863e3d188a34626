// Applies each setting at once, and shows what came of it.
#include "settings/ui/QWPreferenceController.h"

#include <mutex>

#include "backups/AutosaveSchedule.h"
#include "backups/QWDataController.h"
#include "backups/ui/Controls.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "catalog/ProjectHandlers.h"
#include "services/files/QWAuthorization.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"
#include "services/threads/BackgroundThreads.h"
#include "settings/ui/LibraryMove.h"
#include "settings/ui/QWShortcutKeyTableDelegate.h"

namespace vantory {

namespace {

// Those that are a number in the settings and a control in the window.
constexpr const char* kBoundKeys[] = {setting::kPeriodicAutosave, setting::kAutosaveFrequency, setting::kMaxAutoBackups,
                                      setting::kAutoRestoreDefault, setting::kShowSystemSettings};

QWUserDefaults& defaults() {
  return QWUserDefaults::standardUserDefaults();
}

void tell(const std::string& message, const std::string& information) {
  QWAlert::alertSheetWithMessageText(message, information, AlertParent::SettingsWindow);
}

void tellNotSaved(const Error& cause) {
  tell("The setting could not be saved.",
       "Please check your permissions for the Preferences folder and the free space on your disk.\n\n" + cause.text);
}

bool wantsMove() {
  return QWAlert::alertSheetWithMessageText(
             {.messageText = "Would you like to move your backups to the new backup location?",
              .defaultButton = "Move",
              .alternateButton = "Don't Move",
              .informativeText =
                  "Any backups outside of the current backup location will not be displayed in the Restore pane.",
              .parentWindow = AlertParent::SettingsWindow}) == QWAlert::Default;
}

}  // namespace

// One run at a time; a change during a run leads to another, so that the newest settings count in the end.
class QWPreferenceController::Schedule : public std::enable_shared_from_this<Schedule> {
 public:
  void follow() {
    const std::lock_guard lock(mutex_);
    wanted_ = true;
    if (running_) return;
    running_ = BackgroundThreads::shared().start([self = shared_from_this()] {
      while (self->takeWanted()) AutosaveSchedule::apply();
    });
  }

 private:
  bool takeWanted() {
    const std::lock_guard lock(mutex_);
    running_ = wanted_;
    return std::exchange(wanted_, false);
  }

  std::mutex mutex_;
  bool wanted_ = false;
  bool running_ = false;
};

QWPreferenceController::QWPreferenceController(const Parts& parts)
    : parts_(parts), schedule_(std::make_shared<Schedule>()) {}

// --- The window ------------------------------------------------------------------------------------------------------

void QWPreferenceController::awakeFromNib() {
  if (parts_.delegate) parts_.delegate->disablePrefsMenu();
  updatePrefsHandlingText();
  refresh();
  parts_.view.showPane(PreferencePane::General);
  parts_.view.bringToFront();
}

// The menu's item is off while the window is open.
void QWPreferenceController::windowWillClose() {
  if (parts_.delegate) parts_.delegate->enablePrefsMenu();
}

// Also when the window comes to the front: other programs may have changed what it shows.
void QWPreferenceController::refresh() {
  showBackupPath();
  parts_.view.setValue(setting::kRequireAdministrator, defaults().integerForKey(setting::kRequireAdministrator));
  for (const char* key : kBoundKeys) parts_.view.setValue(key, defaults().integerForKey(key));
  showHandling(ProjectHandlers::checkVantoryDefaultForFileExtensions());
  QWShortcutKeyTableDelegate::sharedController().populateKeyData();
}

void QWPreferenceController::toolbarGeneral() {
  switchTo(PreferencePane::General, "Switched to General prefs view");
}

void QWPreferenceController::toolbarAutosave() {
  switchTo(PreferencePane::Autosave, "Switched to Autosave prefs view");
}

void QWPreferenceController::toolbarProjectHandling() {
  switchTo(PreferencePane::ProjectHandling, "Switched to Project Handling prefs view");
}

void QWPreferenceController::toolbarHotkeys() {
  switchTo(PreferencePane::Hotkeys, "Switched to Hotkeys prefs view");
}

void QWPreferenceController::switchTo(PreferencePane pane, const char* logLine) {
  QWLog::appendLog(logLine);
  parts_.view.showPane(pane);
}

// --- The library's folder --------------------------------------------------------------------------------------------

void QWPreferenceController::showBackupPath() {
  if (unusableLibraryFolder())
    parts_.view.setBackupRemark(
        formatted("That is no whole path. Your backups are in %@.", QWDataController::vantoryBackupLocation()));
  parts_.view.setBackupPath(defaults().stringForKey(setting::kBackupPath).value_or(""));
}

void QWPreferenceController::setBackupPath(const std::string& path) {
  const std::string folder = folderNamed(path).value_or(path);
  if (const std::string reason = reasonAgainstLibrary(folder); !reason.empty())
    tell("Your backups cannot be kept there.", reason);
  else
    modifyBackupPath(folder);
  showBackupPath();
}

void QWPreferenceController::browse() {
  const std::vector<std::string> chosen = parts_.chooser.choose({.folders = true});
  if (!chosen.empty()) setBackupPath(chosen.front());
}

// A task works in the library where it was when the task began.
bool QWPreferenceController::isFree() const {
  if (!BackgroundThreads::shared().isWorking()) return true;
  tell("A task is still running.", "Please choose another backup folder when it has ended.");
  return false;
}

// A folder that cannot be made is told, and stays what the person chose.
void QWPreferenceController::modifyBackupPath(const std::string& path) {
  const auto old = defaults().stringForKey(setting::kBackupPath);
  if (old == path || !isFree()) return;
  // Where the backups are even if what is stored is no path.
  const auto library = QWDataController::vantoryBackupLocation();
  parts_.view.setBackupRemark("");
  if (const Status saved = defaults().setObject(setting::kBackupPath, textValue(path)); !saved)
    return tellNotSaved(saved.error());
  const Status made = QWFileManager::fileExistsAtPath(path) ? Status() : QWFileManager::createDirectory(path);
  if (!made) parts_.view.setBackupRemark(formatted("The folder could not be created. %@", made.error().text));
  showBackupPath();
  QWLog::appendLog("User changed backup path from %@ to %@. Asking user to confirm moving over old files.", old, path);
  if (library && !QWFileManager::isSameItem(*library, path) && mayHoldBackups(*library)) offerMove(*library, path);
  parts_.view.doBehindSheet("Reading the backups…", [] { QWDataController::sharedController().populateBackups(); });
}

// What stayed behind is told below the path, with the cause.
void QWPreferenceController::offerMove(const std::string& from, const std::string& to) {
  if (!wantsMove()) return;
  QWLog::appendLog("User chose to move files");
  TaskReport report;
  parts_.view.doBehindSheet("Moving the backups…", [&] { report = moveLibrary(from, to); });
  const std::string causes = report.causes();
  if (causes.empty()) return;
  const std::size_t left = report.count(FileReport::Outcome::Failed, FileAction::Move);
  if (left > 0) QWLog::appendLog("Backups that could not be moved and stay in %@: %i", from, left);
  parts_.view.setBackupRemark(
      left > 0 ? formatted("Backups that could not be moved and are still in %@: %i. %@", from, left, causes) : causes);
}

// --- Settings --------------------------------------------------------------------------------------------------------

// A control whose value could not be stored goes back to the stored one.
void QWPreferenceController::changeValue(const std::string& key, long long value) {
  const Status saved = defaults().setObject(key, PropertyList(std::int64_t{value}));
  if (saved && (key == setting::kPeriodicAutosave || key == setting::kAutosaveFrequency)) changeAutosaveSettings();
  if (saved) return;
  tellNotSaved(saved.error());
  parts_.view.setValue(key, defaults().integerForKey(key));
}

void QWPreferenceController::changeAutosaveSettings() {
  schedule_->follow();
}

// To take the requirement away takes an administrator already.
void QWPreferenceController::prefsToggleAdminPass(bool required) {
  QWAuthorization& authorization = QWAuthorization::sharedController();
  bool authorized = true;
  bool written = false;
  parts_.view.doBehindSheet("Waiting for an administrator's password…", [&] {
    authorization.beginTask();
    if (!required) authorized = authorization.authStart();
    if (authorized) written = authorization.authRequireAdministrator(required);
  });
  if (written) return;
  parts_.view.setValue(setting::kRequireAdministrator, required ? 0 : 1);
  if (authorized) tell("The setting could not be saved.", "It takes an administrator of this machine.");
}

// --- Project handling ------------------------------------------------------------------------------------------------

void QWPreferenceController::updatePrefsHandlingText() {
  showHandling(ProjectHandlers::updateHandlingStatus());
}

// Whether the check box of the pane can be used goes with it.
void QWPreferenceController::showHandling(bool isDefault) {
  HandlerStatus status{.text = "Status: Vantory is NOT the default handler"};
  if (isDefault)
    status = {.text = "Status: Vantory is the default handler",
              .colour = HandlerStatus::Colour::DarkGreen,
              .keystrokeEnabled = true};
  else if (ProjectHandlers::isNoneInstalled())
    status.note = "No other application is installed for these projects.";
  parts_.view.setHandlerStatus(status);
}

void QWPreferenceController::changeHandlerToFCS() {
  ProjectHandlers::setFCSDefaultFileExtensions();
  updatePrefsHandlingText();
}

void QWPreferenceController::changeHandlerToVantory() {
  ProjectHandlers::setVantoryDefaultFileExtensions();
  updatePrefsHandlingText();
}

}  // namespace vantory
