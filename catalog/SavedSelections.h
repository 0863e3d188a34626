// The user's ticks, kept from one start to the next.
#pragma once

#include "catalog/Catalog.h"

namespace vantory {

// Stores the keys of the ticked items.
void saveAppSelections(const AppList& apps);
// Unticks what was not ticked when they were last saved; changes nothing when they never were.
void loadAppSelections(const AppList& apps);

}  // namespace vantory
