// Looks at the disk for each item.
#include "tasks/ItemListing.h"

#include "base/TextTable.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

// Of the item's own patterns what is there now.
std::vector<std::string> filesOf(const QWPrefItem& item) {
  std::vector<std::string> files;
  for (const std::string& pattern : item.files())
    for (std::string& path : item.matches(pattern))
      if (QWFileManager::itemExistsAtPath(path)) files.push_back(std::move(path));
  return files;
}

// Only an item that has users has an entry for them.
PropertyListDictionary entryFor(const QWPrefItem& item) {
  PropertyListArray files;
  for (std::string& path : filesOf(item)) files.push_back(std::move(path));
  PropertyListDictionary entry;
  entry.append("key", item.key());
  entry.append("name", item.name());
  entry.append("lockable", item.lockable());
  entry.append("files", std::move(files));
  if (item.users().empty()) return entry;
  PropertyListArray users;
  for (const auto& user : item.users()) users.push_back(entryFor(*user));
  entry.append("users", std::move(users));
  return entry;
}

// Each further file of an item has a row of its own.
void addRows(TextTable& table, const QWApp& app, const QWPrefItem& item) {
  const std::vector<std::string> files = filesOf(item);
  table.add({item.key(), app.name(), item.name(), item.lockable() ? "yes" : "no", files.empty() ? "-" : files.front()});
  for (std::size_t i = 1; i < files.size(); ++i) table.add({"", "", "", "", files[i]});
  for (const auto& user : item.users()) addRows(table, app, *user);
}

}  // namespace

std::string itemTable(const AppList& apps) {
  TextTable table({"KEY", "APPLICATION", "ITEM", "LOCKABLE", "FILES"});
  for (const auto& app : apps)
    for (const auto& item : app->children()) addRows(table, *app, *item);
  return table.text();
}

PropertyListArray itemEntries(const QWApp& app) {
  PropertyListArray items;
  for (const auto& item : app.children()) items.push_back(entryFor(*item));
  return items;
}

}  // namespace vantory
