// How old automatic backups are removed.
#include <algorithm>
#include <chrono>

#include "backups/BackupNaming.h"
#include "backups/QWDataController.h"
#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

bool hasSettings(const std::shared_ptr<QWBackup>& backup) {
  return QWFileManager::itemExistsAtPath(paths::join(backup->path(), kBackupSettingsFile));
}

// Its settings are there and cannot be looked at: it may be as good as any.
bool isUnknown(const std::shared_ptr<QWBackup>& backup) {
  const auto settings = Runtime::current().platform().files.read(paths::join(backup->path(), kBackupSettingsFile));
  return !settings && !meansMissing(settings.error());
}

// Of those sorted by date the complete ones beyond the newest `maximum`, and the incomplete ones that a complete one
// has followed. The default backup stays: somebody chose it. Neither a run that failed nor a backup that was damaged
// since pushes a good one out. One whose removal was cut off has a new date, but still the name of its time.
BackupList surplus(const BackupList& backups, std::size_t maximum) {
  // Where the settings of none can be understood, that tells nothing of any.
  const bool tellsApart = std::ranges::any_of(backups, [](const auto& backup) { return backup->isComplete(); });
  const auto isComplete = [&](const auto& backup) { return tellsApart ? backup->isComplete() : hasSettings(backup); };
  std::size_t newerComplete = 0;
  const auto newest = std::find_if(backups.rbegin(), backups.rend(), isComplete);
  BackupList found;
  for (auto backup = backups.rbegin(); backup != backups.rend(); ++backup) {
    const bool complete = isComplete(*backup);
    if ((!complete && isUnknown(*backup)) || (*backup)->isDefault()) continue;
    const bool isFollowed = newerComplete > 0 || (newest != backups.rend() && (*backup)->name() < (*newest)->name());
    if (complete ? newerComplete >= maximum : isFollowed) found.push_back(*backup);
    newerComplete += complete;
  }
  std::ranges::reverse(found);
  return found;
}

// Never from under another process that writes it.
Status removeUnlessHeld(const std::string& path) {
  const auto hold = Runtime::current().platform().files.holdFolder(path, 0s);
  if (!hold && hold.error().code == std::errc::timed_out) return hold.error();
  // First of all what makes it complete: half of it must not pass for the newest backup.
  if (Status opened = QWFileManager::removeFile(paths::join(path, kBackupSettingsFile), 10s); !opened) return opened;
  return QWFileManager::removeFile(path, 10s);
}

}  // namespace

TaskReport QWDataController::manageAutoBackups(std::optional<long long> wanted) {
  TaskReport report;
  MainThread::shared().runAndWait([&] { report = removeSurplusAutoBackups(wanted); });
  return report;
}

// Lists them anew first: other processes make backups too.
TaskReport QWDataController::removeSurplusAutoBackups(std::optional<long long> wanted) {
  TaskReport report;
  QWLog::appendLog("Managing old auto backups...");
  const QWUserDefaults& defaults = QWUserDefaults::standardUserDefaults();
  const bool isMaximumKnown = wanted || defaults.areKnown();
  const long long maximum = std::max(0LL, wanted ? *wanted : defaults.integerForKey(setting::kMaxAutoBackups));
  QWLog::appendLog("Maximum auto backup count: %i", maximum);
  populateAutoBackups(false);
  // What is removed is gone for good.
  std::optional<Error> obstacle = listingErrorOfAutoBackups();
  if (!isMaximumKnown) obstacle = Error{std::errc::io_error, "None is removed while the settings cannot be read."};
  if (obstacle) {
    QWLog::appendLog("%@", obstacle->text);
    report.failed(FileAction::Remove, autosaveLocation().value_or(""), *obstacle);
    return report;
  }

  // The oldest first.
  BackupList backups = autoBackupArray();
  std::ranges::stable_sort(backups, [](const auto& left, const auto& right) { return left->dateCompare(*right) < 0; });
  const BackupList doomed = surplus(backups, static_cast<std::size_t>(maximum));
  for (const auto& backup : doomed) {
    if (QWFileManager::isMissingAtPath(backup->path())) {  // another process was sooner
      std::erase(backups, backup);
      continue;
    }
    QWLog::appendLog("Removing auto backup %@...", backup->path());
    const Status removed = removeUnlessHeld(backup->path());
    if (removed || removed.error().code != std::errc::timed_out) {
      report.add(FileAction::Remove, backup->path(), removed);
      std::erase(backups, backup);
    } else {
      QWLog::appendLog("It stays for now: %@", removed.error().text);
      report.skipped(FileAction::Remove, backup->path(), removed.error());
    }
  }
  setAutoBackupArray(std::move(backups));
  tellObservers();
  return report;
}

}  // namespace vantory
