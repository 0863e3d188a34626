// Who had the helper started.
#pragma once

#include <optional>

#include "platform/Users.h"

namespace vantory {

// The ordinary user whom pkexec names in the environment and who holds the other end of standard input, with a home
// that is the user's own. None when any of this is not so or cannot be told.
std::optional<User> caller();

}  // namespace vantory
