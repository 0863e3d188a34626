// Who had the helper started.
#pragma once

#include <optional>

#include "platform/posix/homes/HomeOwner.h"

namespace vantory {

// The ordinary user whose process had this one started, by the kernel's word, with a home that is the user's own. None
// when any of this is not so or cannot be told.
std::optional<HomeOwner> caller();

}  // namespace vantory
