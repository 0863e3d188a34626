// What the lock helper makes of itself before it listens to anybody.
#pragma once

#include "base/Result.h"

namespace vantory {

// Leaves this process no right but its user's and CAP_LINUX_IMMUTABLE, no way to more, no environment, and no open
// files but its standard streams. Fails where the capability is missing, and where any other privilege came with it,
// as for the superuser or a set-id program.
Status confine();

}  // namespace vantory
