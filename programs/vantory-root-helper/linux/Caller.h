// Who had the helper started.
#pragma once

#include <sys/types.h>

#include <optional>

#include "platform/Users.h"

namespace vantory {

struct Caller {
  User user;
  pid_t process;  // which made the conversation
};

// The ordinary user whom pkexec names in the environment and whose process made the socket that is standard input, with
// a home that is the user's own. None when any of this is not so or cannot be told.
std::optional<Caller> caller();

}  // namespace vantory
