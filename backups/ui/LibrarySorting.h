// The order of the Restore pane's rows.
#pragma once

#include <string>

#include "backups/QWDataController.h"

namespace vantory {

struct SortOrder {
  std::string column;  // "name", "date", or anything else for the size
  bool descending = false;
};

// As the person left it; by date where nothing is stored.
SortOrder storedSortOrder();
void storeSortOrder(const SortOrder& order);

// The group of automatic backups stays first; its own backups are sorted in the same way.
QWDataController::Library sortedLibrary(QWDataController::Library library, const SortOrder& order);

}  // namespace vantory
