// How an item is copied, and its state follows from its users.
#include "catalog/QWPrefItem.h"

#include <algorithm>
#include <string_view>

namespace vantory {

QWPrefItem::QWPrefItem(std::string name, std::string key, bool lockable, std::vector<std::string> files,
                       bool hasAvidUsers)
    : QWPrefItem(std::make_shared<const Definition>(
          Definition{std::move(name), std::move(key), lockable, std::move(files), hasAvidUsers})) {}

std::shared_ptr<QWPrefItem> QWPrefItem::copy() const {
  auto copied = std::make_shared<QWPrefItem>(definition_);
  copied->selected_.store(selected(), std::memory_order_relaxed);  // nobody else knows the copy yet
  copied->locked_ = locked_;
  copied->users_ = users_;
  copied->placeRule_ = placeRule_;
  return copied;
}

bool QWPrefItem::isPreferences() const {
  return std::string_view(name()).ends_with("Preferences");
}

void QWPrefItem::addUser(const std::shared_ptr<QWPrefItem>& user) {
  user->setParent(weak_from_this());
  users_.push_back(user);
}

void QWPrefItem::updateSelectionStatus() {
  if (users_.empty()) return;
  const auto isOff = [](const auto& user) { return user->selected() == Off; };
  const auto off = static_cast<std::size_t>(std::count_if(users_.begin(), users_.end(), isOff));
  if (off == users_.size())
    selected_ = Off;
  else
    selected_ = off == 0 ? On : Mixed;
}

// Off where there is no parent.
void QWPrefItem::inheritSelectionFromParent() {
  const std::shared_ptr<CatalogParent> holder = parent();
  State state = holder ? holder->selected() : Off;
  if (state == Mixed) state = On;
  selected_ = state;
  for (const auto& user : users_) user->setSelected(state);
}

std::optional<Timestamp> QWPrefItem::date() {
  measureIfDue();
  return date_;
}

std::optional<std::uint64_t> QWPrefItem::size() {
  measureIfDue();
  return size_;
}

void QWPrefItem::measureIfDue() {
  if (const auto backup = measuredWhenAsked_) populateFileDatesAndSizes(*backup);
}

}  // namespace vantory
