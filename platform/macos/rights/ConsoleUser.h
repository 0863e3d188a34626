// The superuser's process as two: one that works as the user at the console, and one that serves it.
#pragma once

#include <memory>

#include "base/Result.h"
#include "platform/Users.h"
#include "platform/macos/rights/RootConversation.h"

namespace vantory {

// How the process goes on that is the user's.
struct ConsoleUserProcess {
  User user;
  std::shared_ptr<RootConversation> superuser;
};

// For the superuser's process before it has a second thread. It forks: the child has become the user at the console for
// good when this returns; the parent serves it, hands signals on to it, and ends as it ends. Fails, and nothing has
// changed, where nobody is at the console or the home is not that user's own.
Result<ConsoleUserProcess> becomeConsoleUser();

}  // namespace vantory
