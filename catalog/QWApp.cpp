// How an application's state follows from its items.
#include "catalog/QWApp.h"

#include <algorithm>

#include "catalog/AppDefinition.h"

namespace vantory {

namespace {

// How many children are off and how many on, and what that makes of their parent.
struct Tally {
  std::size_t total = 0;
  std::size_t off = 0;
  std::size_t on = 0;

  State state() const {
    if (off == total) return Off;
    return on == total ? On : Mixed;
  }
};

}  // namespace

std::shared_ptr<QWApp> QWApp::appWithName(std::string name, std::string icon, std::string bundleID) {
  return std::make_shared<QWApp>(
      std::make_shared<const Definition>(Definition{std::move(name), std::move(icon), std::move(bundleID)}));
}

std::vector<std::string> QWApp::identifiers() const {
  return defined() ? defined()->identifiers : std::vector{bundleID()};
}

bool QWApp::holdsAnyOf(const std::set<std::string>& keys) const {
  return std::ranges::any_of(children_, [&](const auto& item) {
    return keys.contains(item->key()) ||
           std::ranges::any_of(item->users(), [&](const auto& user) { return keys.contains(user->key()); });
  });
}

std::shared_ptr<QWApp> QWApp::copyWithoutChildren() const {
  auto copied = std::make_shared<QWApp>(definition_);
  copied->selected_ = selected();
  copied->locked_ = locked_;
  return copied;
}

std::shared_ptr<QWApp> QWApp::copyWithItems(
    const std::function<std::shared_ptr<QWPrefItem>(const QWPrefItem&)>& copied) const {
  auto app = copyWithoutChildren();
  for (const auto& item : children_)
    if (const auto itemCopy = copied(*item)) app->addItem(itemCopy);
  return app;
}

std::shared_ptr<QWApp> QWApp::copy() const {
  auto copied = copyWithoutChildren();
  copied->children_ = children_;
  return copied;
}

void QWApp::addItem(const std::shared_ptr<QWPrefItem>& item) {
  item->setParent(weak_from_this());
  children_.push_back(item);
  updateSelectionStatus();
}

std::shared_ptr<QWPrefItem> QWApp::addItemWithName(std::string name, std::string key, bool lockable,
                                                   std::vector<std::string> files) {
  auto item = std::make_shared<QWPrefItem>(std::move(name), std::move(key), lockable, std::move(files));
  addItem(item);
  return item;
}

void QWApp::updateSelectionStatus() {
  Tally tally{.total = children_.size()};
  for (const auto& item : children_) {
    item->updateSelectionStatus();
    ++(item->selected() == Off ? tally.off : tally.on);
  }
  selected_ = tally.state();
}

void QWApp::updateSelectionStatusForPrefs() {
  Tally tally;
  for (const auto& item : children_) {
    if (!item->isPreferences()) continue;
    item->updateSelectionStatus();
    const State state = item->selected();
    ++tally.total;
    if (state == Off) ++tally.off;
    if (state == On) ++tally.on;
  }
  selected_ = tally.state();
}

void QWApp::updateLockStatus(bool refreshChildren) {
  if (refreshChildren)
    for (const auto& item : children_) item->updateLockStatus();
  locked_.becomeDue();
}

// Items that cannot be locked do not count.
State QWApp::lockStateOfItems() const {
  Tally tally;
  for (const auto& item : children_) {
    if (!item->lockable()) continue;
    const State state = item->locked();
    ++tally.total;
    if (state == Off) ++tally.off;
    if (state == On) ++tally.on;
  }
  return tally.state();
}

void QWApp::lockFiles(State state, TaskReport& report) {
  for (const auto& item : children_) item->lockFiles(state, report);
  updateLockStatus();
}

LockCount QWApp::locksOfExistingFiles() const {
  LockCount count;
  for (const auto& item : children_) count.add(item->locksOfExistingFiles());
  return count;
}

std::uint64_t QWApp::size() const {
  std::uint64_t total = 0;
  for (const auto& item : children_) total += item->size().value_or(0);
  return total;
}

bool QWApp::isMeasured() const {
  return std::all_of(children_.begin(), children_.end(), [](const auto& item) { return item->isMeasured(); });
}

std::optional<Timestamp> QWApp::date() const {
  std::optional<Timestamp> newest;
  for (const auto& item : children_) newest = std::max(newest, item->date());
  return newest;
}

}  // namespace vantory
