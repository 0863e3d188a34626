// One thing an application remembers: its preference files, its layouts, its presets.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Timestamp.h"
#include "catalog/CatalogParent.h"
#include "catalog/States.h"

namespace vantory {

class BackupPlace;
class RealPaths;
class TaskReport;

// An item of the live catalog, or the copy of one that a backup holds. An Avid item also has one sub-item for each Avid
// user. The states may be read and set from any thread; lists are replaced whole, by one thread at a time.
class QWPrefItem : public CatalogParent, public std::enable_shared_from_this<QWPrefItem> {
 public:
  using Users = std::vector<std::shared_ptr<QWPrefItem>>;

  // Why the item may not have at a path what was found, there or in a backup; empty where it may.
  using PlaceRule = std::function<std::string(const std::string& path, const std::string& found, RealPaths& realPaths)>;

  // What never changes; shared by all copies of an item.
  struct Definition {
    std::string name;
    std::string key;
    bool lockable = true;
    std::vector<std::string> files;
    bool hasAvidUsers = false;
    PlaceRule matchRule = {};  // for what the patterns find; may be empty
  };

  QWPrefItem(std::string name, std::string key, bool lockable, std::vector<std::string> files,
             bool hasAvidUsers = false);
  explicit QWPrefItem(std::shared_ptr<const Definition> definition) : definition_(std::move(definition)) {}
  // A copy has the same states and users; it has no parent, date or size.
  std::shared_ptr<QWPrefItem> copy() const;

  const std::string& name() const { return definition_->name; }
  const std::string& key() const { return definition_->key; }  // unique in the catalog
  bool lockable() const { return definition_->lockable; }
  // Absolute path patterns.
  const std::vector<std::string>& files() const { return definition_->files; }
  // What is there of one of the patterns, on the live system or in a backup; a path that is no pattern is there in any
  // case. Folders that cannot be listed, and what the item may not have, are told in the report, if any.
  std::vector<std::string> matches(const std::string& pattern, TaskReport* report = nullptr,
                                   const BackupPlace* backup = nullptr) const;
  // Why what a pattern finds for the path is none of the item's; empty where it is.
  std::string faultOfMatch(const std::string& path, const std::string& found, RealPaths& realPaths) const {
    return definition_->matchRule ? definition_->matchRule(path, found, realPaths) : "";
  }
  // Whether the Avid users' folders are looked for, to become its users.
  bool hasAvidUsers() const { return definition_->hasAvidUsers; }
  // True for an item that holds an application's preferences proper.
  bool isPreferences() const;

  State selected() const override { return selected_; }
  void setSelected(State state) { selected_ = state; }
  // Looks at the files where the state is due.
  State locked() const {
    return locked_.value([this] { return lockStateOfFiles(); });
  }
  // Without a look at the disk: the state when it was last set or asked for.
  State lockedWhenLastKnown() const { return locked_.lastKnown(); }
  void setLocked(State state) { locked_ = state; }

  // Of an item of a backup that nothing but this backup defines: whoever made it decides where its files go. They are
  // restored by this rule, cannot be executed, and are never put anywhere with administrator rights. Empty for others.
  const PlaceRule& placeRule() const { return placeRule_; }
  void setPlaceRule(PlaceRule rule) { placeRule_ = std::move(rule); }

  // The record that holds this item; null when it has gone or there is none.
  std::shared_ptr<CatalogParent> parent() const { return parent_.lock(); }
  void setParent(std::weak_ptr<CatalogParent> parent) { parent_ = std::move(parent); }

  const Users& users() const { return users_; }
  void setUsers(Users users) { users_ = std::move(users); }
  // Becomes the sub-item's parent and adds it; recomputes nothing.
  void addUser(const std::shared_ptr<QWPrefItem>& user);

  // Newest change and total size of the item's files in its backup; none for an item that belongs to no backup. In a
  // backup that was read they are measured when first asked for.
  std::optional<Timestamp> date();
  std::optional<std::uint64_t> size();
  void measureWhenAsked(std::shared_ptr<const BackupPlace> backup) {
    measuredWhenAsked_ = std::move(backup);
    isMeasured_ = false;
  }
  // Whether asking takes no time and may be done on any thread; until then one thread at a time may ask.
  bool isMeasured() const { return isMeasured_; }
  void populateFileDatesAndSizes(const BackupPlace& backup);

  // Takes its state from its users; without users it keeps its own.
  void updateSelectionStatus();
  // Takes the parent's state, mixed as on, and gives it to all its users.
  void inheritSelectionFromParent();

  // Of the files that are there, those of users too; none of an item that cannot be locked. Looks at the disk.
  LockCount locksOfExistingFiles() const;

  // What is done to each file below, and why not, stands in the report.

  // Moves the item's files, and those of its ticked users, to the Trash; answers how many.
  int trash(TaskReport& report);
  // Locks (On) or unlocks the files of the item and its users, whose states are due then, the parent's too where asked.
  // Nothing happens to an item that is not lockable.
  void lockFiles(State state, TaskReport& report, bool refreshParent = true);
  // The state is due from now on, with refreshUsers that of all users too.
  void updateLockStatus(bool refreshUsers) override;
  void updateLockStatus() { updateLockStatus(true); }
  // Puts the backup's files of the item, and of its ticked users, in place; what was there goes to the Trash. A failure
  // leaves the file as it was, is logged, and does not stop the others.
  void restoreFilesFromBackup(const BackupPlace& backup, TaskReport& report);

  // Finds the Avid user folders, live or below a backup folder, and makes them the users.
  void populateAvidUsers();
  void populateAvidUsersInBackup(const std::optional<std::string>& backupPath);

 private:
  // The same of the item's own files; whether the backup has any.
  bool restoreCopies(const BackupPlace& backup, TaskReport& report) const;
  void measureIfDue();
  State lockStateOfFiles() const;

  std::shared_ptr<const Definition> definition_;
  std::atomic<State> selected_ = On;
  LockState locked_;
  std::weak_ptr<CatalogParent> parent_;
  PlaceRule placeRule_;
  Users users_;
  std::shared_ptr<const BackupPlace> measuredWhenAsked_;  // null once measured
  std::atomic<bool> isMeasured_ = true;
  std::optional<Timestamp> date_;
  std::optional<std::uint64_t> size_;
};

}  // namespace vantory
