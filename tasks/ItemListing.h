// Items with the files that are there, as the answers of questions have them.
#pragma once

#include <string>

#include "base/PropertyList.h"
#include "catalog/Catalog.h"

namespace vantory {

// For people: a row for each item, one more for each further file.
std::string itemTable(const AppList& apps);
// For JSON.
PropertyListArray itemEntries(const QWApp& app);

}  // namespace vantory
