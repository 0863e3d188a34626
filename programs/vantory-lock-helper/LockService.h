// Locking and unlocking for the user who started the helper.
#pragma once

#include <optional>

#include "platform/linux/helpers/Channel.h"

namespace vantory {

// Does what a request of LockProtocol.h asks and answers it; none for what is no such request, and then nothing is
// done. Touches regular files and folders of the user's own below the user's home, as the password database names it,
// and below the folders shared by all users; on a way without links, under their only name, and in folders that nobody
// else may write to.
std::optional<Message> serveLockRequest(const Message& request);

}  // namespace vantory
