// One backup: a plain folder with copies of files at their absolute paths and a settings file that says what it holds.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "catalog/Catalog.h"
#include "platform/FileSystem.h"

namespace vantory {

// What an entry of the library answers: a backup, or the group of automatic backups.
class BackupNode {
 public:
  virtual ~BackupNode() = default;
  virtual std::string name() const = 0;
  virtual std::optional<Timestamp> date() const = 0;
  virtual std::uint64_t size() const = 0;  // bytes; measured when first asked for
  // Whether asking for the size takes no time.
  virtual bool isMeasured() const = 0;
  // Below, at or above zero, as sorting by that column puts this entry before, beside or behind the other.
  virtual int nameCompare(const BackupNode& other) const = 0;
  virtual int dateCompare(const BackupNode& other) const = 0;
  virtual int sizeCompare(const BackupNode& other) const = 0;
  // Brings isDefault up to date with the settings.
  virtual void updateDefault() = 0;
};

enum class WriteResult : int { Success = 0, NoFiles = 1, SettingsNotWritten = 2 };

class TaskReport;

// Something that a backup holds files of and that cannot be restored here: it stays in the backup.
struct UnknownPart {
  std::string name;                    // of an application, or "Application: Item"
  std::string reason;                  // such as "no definition of it is known here"
  std::vector<std::string> keys = {};  // of its items, where the backup's own definition tells them
};

class QWBackup : public BackupNode {
 public:
  // `date` is the folder's date of change; none while there is no folder.
  QWBackup(std::string name, std::string path, std::optional<Timestamp> date);

  // A record for a path, by default the library's folder for that name (empty when there is no library).
  static std::shared_ptr<QWBackup> backupWithName(const std::string& name,
                                                  const std::optional<std::string>& path = std::nullopt);
  // A record about to be written, with every item of the applications selected.
  static std::shared_ptr<QWBackup> backupWithName(const std::string& name, const std::optional<std::string>& path,
                                                  AppList children);
  // Reads a backup. Always answers a record; without a readable settings file one without applications.
  static std::shared_ptr<QWBackup> backupWithFile(const std::string& path);
  // An unwritten automatic backup of every catalog item, or of those that hold preferences proper, named by the clock.
  // Where another has its name by the time that it is written, it takes that of the next second.
  static std::shared_ptr<QWBackup> autoBackup(bool preferencesOnly = false);
  // Writes one of those before a task replaces or trashes something, and logs how that went; a failed one leaves
  // nothing, and the task's report gets a remark.
  static WriteResult writeAutoBackup(TaskReport& task, bool preferencesOnly = false);

  std::string name() const override { return name_; }
  void setName(std::string name) { name_ = std::move(name); }
  const std::string& path() const { return path_; }
  void setPath(std::string path);
  std::optional<Timestamp> date() const override { return date_; }
  std::uint64_t size() const override;
  bool isMeasured() const override { return isMeasured_; }

  const AppList& children() const { return children_; }
  void setChildren(AppList children) { children_ = std::move(children); }
  // Selects every item of the application and adds it.
  void addApp(const std::shared_ptr<QWApp>& app);
  const std::vector<std::string>& projects() const { return projects_; }
  void setProjects(std::vector<std::string> projects) { projects_ = std::move(projects); }
  // What neither the catalog nor the backup itself defines.
  const std::vector<UnknownPart>& unknown() const { return unknown_; }
  void setUnknown(std::vector<UnknownPart> parts) { unknown_ = std::move(parts); }
  bool isAutosave() const { return isAutosave_; }
  void setIsAutosave(bool isAutosave) { isAutosave_ = isAutosave; }
  bool isDefault() const { return isDefault_; }
  void setIsDefault(bool isDefault) { isDefault_ = isDefault; }
  // False for one whose settings, which are written last, are not there or damaged: it was torn off, by a full disk or
  // a kill, or damaged since; or whose settings the system does not let us read. Such a one is never the default.
  bool isComplete() const { return isComplete_; }
  void setIsComplete(bool isComplete) { isComplete_ = isComplete; }
  // Why its settings, which are there, could not be read; none where they could, or are not there.
  const std::optional<Error>& readError() const { return readError_; }
  void setReadError(std::optional<Error> error) { readError_ = std::move(error); }
  // "incomplete" or "cannot be read"; empty for a complete one.
  std::string flaw() const;
  // The same as the beginning of a sentence, with the backup's name and the cause: "\"Torn\" is incomplete".
  std::string flawInWords() const;
  // What a person is told where an update found none of the files.
  static constexpr const char* kNothingToUpdate = "None of its files is there now: the backup is as it was.";

  // Writes the backup and returns when it is on disk. With filesOnly the files of an existing backup are replaced one
  // by one, what they were goes to the Trash, and its settings stay. A folder that bears the path already goes to the
  // Trash first; when it will not, or another process is writing there, nothing is written. What was copied and what
  // failed stands in the report, also why the result is no success.
  WriteResult writeData(TaskReport& report, bool filesOnly = false);
  // Deletes what a failed writeData() left: the folder that it created, unless another process has put its own there.
  void removeCreatedFolder(TaskReport& report);
  // The same, and lists the library anew: the backup may have been listed before the disk refused it. Any thread.
  void dropUnwritten(TaskReport& report);

  // Puts the selected applications and items in place, asking the guard about each running application; those it closed
  // are started again. What was restored is on disk when it returns; the report says what was not, and why.
  void restore(TaskReport& report, bool closeAutomatically = false);

  // The path with the user's home folder written as "/Users/user".
  static std::string safeUserPath(const std::string& path);

  // The folder name of the default backup; none when there is no default.
  static std::optional<std::string> defaultBackupName();
  // Makes this the default backup. Nothing happens to a record without a path.
  Status setDefault();
  void updateDefault() override;
  int nameCompare(const BackupNode& other) const override;
  int dateCompare(const BackupNode& other) const override;
  int sizeCompare(const BackupNode& other) const override;

 private:
  WriteResult write(TaskReport& report, bool filesOnly);
  // Makes the folder, and takes hold of it.
  Result<std::unique_ptr<FolderHold>> makeFolder(TaskReport& report);
  // Of a backup that came to nothing: what had made way for it lies in its place again, its own folder is gone.
  void returnEarlier(TaskReport& report);
  // Waits until that begins, and takes its name.
  void takeNextSecond();

  std::string name_;
  std::string path_;
  std::optional<Timestamp> date_;
  AppList children_;
  std::vector<std::string> projects_;
  std::vector<UnknownPart> unknown_;
  bool isAutosave_ = false;
  bool isNamedByTheClock_ = false;
  std::atomic<bool> isDefault_ = false;
  bool isComplete_ = true;
  std::optional<Error> readError_;
  std::optional<FileIdentity> createdFolder_;
  std::string earlier_;           // where what made way for it lies in the Trash; empty for nothing
  mutable std::mutex sizeMutex_;  // held while it is measured, by its path
  mutable std::uint64_t size_ = 0;
  mutable std::atomic<bool> isMeasured_ = false;
};

}  // namespace vantory
