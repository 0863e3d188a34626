// What differs inside of two files.
#pragma once

#include "backups/comparison/Comparison.h"

namespace vantory {

// Fills in the difference of two regular files, of which it is known that both are there: Same, Different with keys or
// lines where they can be told, or Unreadable.
void compareContent(FileComparison& file, bool haveSameSize);

}  // namespace vantory
