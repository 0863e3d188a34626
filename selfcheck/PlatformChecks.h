// The checks, in tables by what they are about.
#pragma once

#include "selfcheck/Check.h"

namespace vantory {

// In the scratch folder.
Checks fileChecks();
Checks copyChecks();
Checks metadataChecks();
Checks trashChecks();
Checks toolChecks();
// Of the machine and the desktop, which are asked and never changed.
Checks systemChecks();
Checks sessionChecks();

}  // namespace vantory
