// Says what a backup is the first to hold that others should not read.
#pragma once

#include <string>

#include "base/PropertyList.h"
#include "catalog/Catalog.h"

namespace vantory {

class TaskReport;

// For each item in the settings of a new backup whose definition names secrets and which no other backup of the library
// holds, a notice.
void noticeSecrets(const AppList& apps, const PropertyListDictionary& settings, const std::string& backup,
                   TaskReport& report);

}  // namespace vantory
