// As whom the program works, settled before it does anything else.
#pragma once

#include <memory>
#include <optional>

#include "base/Result.h"
#include "platform/Users.h"
#include "platform/macos/darwin/Authorization.h"
#include "platform/macos/rights/RootConversation.h"

namespace vantory {

struct MacIdentity {
  // The user at the console, whom the superuser's process has become, and who serves it with that one's rights; none
  // and null for any other process.
  std::optional<User> consoleUser = {};
  std::shared_ptr<RootConversation> superuser = {};
  // The administrator's right that was handed down to a user's process, or null.
  darwin::AuthorizationHandle handedDown = nullptr;
};

// That of the process's real user: an executable that was given somebody else's does not use it. Where the system gave
// it the superuser's for a right of its starter's, it has that right.
MacIdentity ownIdentity();

// For the superuser's process before it has a second thread. It forks: the child has become the user at the console for
// good when this returns; the parent serves it, hands signals on to it, and ends as it ends. Fails, and nothing has
// changed, where nobody is at the console or the home is not that user's own.
Result<MacIdentity> becomeConsoleUser();

}  // namespace vantory
