// Sorts the library as the person wants it.
#include "backups/ui/LibrarySorting.h"

#include <algorithm>

#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"

namespace vantory {

namespace {

int compare(const BackupNode& left, const BackupNode& right, const std::string& column) {
  if (column == "name") return left.nameCompare(right);
  return column == "date" ? left.dateCompare(right) : left.sizeCompare(right);
}

template <class List>
// Turned round as a whole: entries that are equal change places too.
void sort(List& list, const SortOrder& order) {
  std::stable_sort(list.begin(), list.end(),
                   [&](const auto& left, const auto& right) { return compare(*left, *right, order.column) < 0; });
  if (order.descending) std::reverse(list.begin(), list.end());
}

}  // namespace

SortOrder storedSortOrder() {
  const QWUserDefaults& defaults = QWUserDefaults::standardUserDefaults();
  return {defaults.stringForKey(setting::kSortedColumn).value_or("date"),
          defaults.boolForKey(setting::kSortedDescending)};
}

void storeSortOrder(const SortOrder& order) {
  QWUserDefaults& defaults = QWUserDefaults::standardUserDefaults();
  // Where it cannot be stored the order holds for now, and the log says why.
  (void)defaults.setObject(setting::kSortedColumn, PropertyList(order.column));
  (void)defaults.setObject(setting::kSortedDescending, PropertyList(order.descending));
}

QWDataController::Library sortedLibrary(QWDataController::Library library, const SortOrder& order) {
  std::shared_ptr<QWAutosaveHeader> header;
  if (!library.empty()) header = std::dynamic_pointer_cast<QWAutosaveHeader>(library.front());
  if (header) library.erase(library.begin());
  sort(library, order);
  if (!header) return library;
  BackupList children = header->children();
  sort(children, order);
  library.insert(library.begin(), QWAutosaveHeader::autosaveHeaderWithChildren(std::move(children)));
  return library;
}

}  // namespace vantory
