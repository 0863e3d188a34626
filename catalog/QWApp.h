// An application and what it remembers.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "catalog/CatalogParent.h"
#include "catalog/QWPrefItem.h"
#include "catalog/States.h"

namespace vantory {

struct AppDefinition;

// An application of the live catalog, or the copy of one that a backup holds.
class QWApp : public CatalogParent, public std::enable_shared_from_this<QWApp> {
 public:
  using Items = std::vector<std::shared_ptr<QWPrefItem>>;

  // What never changes; shared by all copies of an application.
  struct Definition {
    std::string name;
    std::string icon;
    std::string bundleID;
    std::shared_ptr<const AppDefinition> defined = nullptr;
  };

  // An application without items.
  static std::shared_ptr<QWApp> appWithName(std::string name, std::string icon, std::string bundleID);
  explicit QWApp(std::shared_ptr<const Definition> definition) : definition_(std::move(definition)) {}
  // A copy shares the items; they keep this application as their parent.
  std::shared_ptr<QWApp> copy() const;
  // A copy without items; a lock state that nobody has worked out yet is that of an application without any.
  std::shared_ptr<QWApp> copyWithoutChildren() const;
  // A copy with items of its own, for a backup: what `copied` makes of each item, but for null.
  std::shared_ptr<QWApp> copyWithItems(
      const std::function<std::shared_ptr<QWPrefItem>(const QWPrefItem&)>& copied) const;

  const std::string& name() const { return definition_->name; }
  const std::string& bundleID() const { return definition_->bundleID; }
  const std::string& icon() const { return definition_->icon; }  // resource name, or one of the icon theme
  // What a catalog file says of it; null for an application of the built-in table.
  const AppDefinition* defined() const { return definition_->defined.get(); }
  // All that it may run under, bundleID() first.
  std::vector<std::string> identifiers() const;

  State selected() const override { return selected_; }
  void setSelected(State state) { selected_ = state; }
  // Looks at the files where the state is due.
  State locked() const {
    return locked_.value([this] { return lockStateOfItems(); });
  }
  // Without a look at the disk: the state when it was last set or asked for.
  State lockedWhenLastKnown() const { return locked_.lastKnown(); }
  void setLocked(State state) { locked_ = state; }

  const Items& children() const { return children_; }
  void setChildren(Items children) { children_ = std::move(children); }
  // Whether one of its items, or of their users, has one of these keys.
  bool holdsAnyOf(const std::set<std::string>& keys) const;
  // Becomes the item's parent, adds it and recomputes the selection.
  void addItem(const std::shared_ptr<QWPrefItem>& item);
  std::shared_ptr<QWPrefItem> addItemWithName(std::string name, std::string key, bool lockable,
                                              std::vector<std::string> files);

  // On when every item is on or mixed, off when every item is off: a mixed item counts as on here.
  void updateSelectionStatus();
  // Looks at the items that hold preferences proper only; a mixed one makes the application mixed.
  void updateSelectionStatusForPrefs();
  // The state is due from now on, with refreshChildren that of all items too.
  void updateLockStatus(bool refreshChildren) override;
  void updateLockStatus() { updateLockStatus(true); }
  // Locks (On) or unlocks the files of every lockable item.
  void lockFiles(State state, TaskReport& report);
  // Of the files of all items that are there. Looks at the disk.
  LockCount locksOfExistingFiles() const;

  // Total size and newest change of the items, as far as they are known.
  std::uint64_t size() const;
  std::optional<Timestamp> date() const;
  // Whether all items are measured.
  bool isMeasured() const;

 private:
  State lockStateOfItems() const;

  std::shared_ptr<const Definition> definition_;
  std::atomic<State> selected_ = Off;
  LockState locked_;
  Items children_;
};

}  // namespace vantory
