// The catalog and the library of backups, joined.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "backups/BackupLibrary.h"
#include "backups/LibraryFolder.h"
#include "backups/QWAutosaveHeader.h"
#include "backups/QWBackup.h"
#include "base/Result.h"
#include "catalog/Catalog.h"
#include "services/TaskReport.h"

namespace vantory {

// One for the process. Its lists are replaced whole, on the main thread, and "QWVantoryBackupsRefresh" is posted there
// when the backups were; callers keep two listings from overlapping.
class QWDataController : public BackupLibrary {
 public:
  using Library = std::vector<std::shared_ptr<BackupNode>>;

  static QWDataController& sharedController();

  AppList appArray() const override;
  void setAppArray(AppList apps);
  // The group of automatic backups first, then the manual backups. Empty until populateBackups() has run.
  Library backupArray() const;
  void setBackupArray(Library backups);
  BackupList autoBackupArray() const;
  // All of the library, those of the group included.
  BackupList allBackups() const;
  // The group of automatic backups, where there is one, shows them from now on.
  void setAutoBackupArray(BackupList backups);
  // Why the library's folder or that of the automatic backups could not be listed when last they were; none when they
  // could, or are not there.
  std::optional<Error> libraryError() const;

  // Builds the catalog, that of catalog files included, applies the saved ticks and tells its observers
  // ("QWVantoryAppRefresh"). What is wrong with a catalog file is logged and printed once.
  void populateApps();
  // The item, or Avid user, with that key; null when there is none.
  std::shared_ptr<QWPrefItem> prefItemForKey(const std::string& key) const;
  void saveAppSelections() const;

  // The library's folder, and that of the automatic backups.
  static std::optional<std::string> vantoryBackupLocation() { return libraryFolder(); }
  static std::optional<std::string> autosaveLocation() { return autosavesFolder(); }
  // The name, or with "-2", "-3" ...: the first that no backup in the library's folder bears.
  static std::string uniqueBackupName(const std::string& name);
  // Lists the library anew. On the way a ".vnt2" backup is renamed to ".vnt" where that name is free, and an automatic
  // backup in the library's own folder is moved to the others.
  void populateBackups() override;
  // Measures all listed backups, which takes its time: for whoever is going to show their sizes.
  void measureBackups() const;
  bool areBackupsMeasured() const;
  void populateAutoBackups(bool reload = true);
  // Deletes the oldest automatic backups beyond that number, for good; without one, beyond the number that the settings
  // say. Waits for the main thread, which does it.
  TaskReport manageAutoBackups(std::optional<long long> maximum = std::nullopt);
  // Moves the backup to the Trash, answers where it lies there, and drops it from the list, also when that fails, as it
  // does (timed_out) while another process writes it. Any thread.
  Result<std::string> removeBackup(const std::shared_ptr<QWBackup>& backup, TaskReport& report);
  // Gives a backup's folder another name, with "-2", "-3" ... where another backup, of the library's folder or beside
  // this one, bears that. Answers its path now; the record is left as it is. Fails (timed_out) while another process
  // writes it. Any thread.
  static Result<std::string> renameBackup(const QWBackup& backup, const std::string& name, TaskReport& report);
  // Copies a backup from elsewhere into the library and restores it, on any thread. False when nothing was restored;
  // the report and the log say why. To tell the user is the caller's part.
  bool addBackupFromFile(const std::string& path, TaskReport& report);
  // Copies a backup from elsewhere into the library, with a number behind its name where that is taken, and restores
  // nothing. Answers its path there; none where it failed, as the report and the log say. Any thread.
  std::optional<std::string> copyBackupFromFile(const std::string& path, TaskReport& report);
  // What was told of catalog files that are left out or mean nothing, as sentences.
  std::vector<std::string> complaints() const;
  // The first backup marked as default, of the manual ones or else of the automatic ones; null when there is none.
  std::shared_ptr<QWBackup> defaultBackup() const;

 private:
  TaskReport removeSurplusAutoBackups(std::optional<long long> maximum);
  static void tellObservers();
  void tellOnce(const std::vector<std::string>& complaints);
  std::optional<Error> listingErrorOfAutoBackups() const;
  void noteListing(std::optional<Error>& place, std::optional<Error> error);

  mutable std::mutex mutex_;
  AppList apps_;
  Library backups_;
  BackupList autoBackups_;
  std::optional<Error> libraryError_;
  std::optional<Error> autosaveError_;
  std::set<std::string> told_;  // complaints about catalog files
};

}  // namespace vantory
