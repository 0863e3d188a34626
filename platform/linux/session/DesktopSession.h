// Whose desktop the program speaks to, and how it gets there.
#pragma once

#include "base/Result.h"
#include "platform/posix/processes/ChildProgram.h"

namespace vantory {

class Users;

// The desktop helper program as it has to be started: with all of an ordinary user's environment, because what it
// starts needs that. The superuser's process is refused on a user's bus; there the helper is the user at the console
// for good, with nothing of the superuser's environment. Fails when it is not installed or nobody is at the console.
Result<ChildProgram> desktopHelperProgram(const Users& users);

// Whether that user has a session bus. Costs next to nothing.
bool hasSessionBus(const Users& users);
// The same for a process that has the user's environment.
bool hasSessionBus();

}  // namespace vantory
