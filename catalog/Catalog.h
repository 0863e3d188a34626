// The applications the program knows.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "catalog/QWApp.h"

namespace vantory {

using AppList = std::vector<std::shared_ptr<QWApp>>;

// Builds every application of the built-in table, in its order, with the patterns resolved against the folders of the
// user whose files are handled; all lock states are due.
AppList buildCatalog();

// The item, or Avid user, with that key; null when there is none.
std::shared_ptr<QWPrefItem> prefItemForKey(const AppList& apps, const std::string& key);

}  // namespace vantory
