// What a process of the superuser's does for one of a user's.
#pragma once

#include <string>

#include "platform/Users.h"
#include "platform/posix/processes/StreamChannel.h"

namespace vantory {

enum class RootWork { Tools, ToolsAndLog };

// Serves the work of the administrator's tools, for this user, until the conversation ends, and tells the system log of
// each; the machine's log where it is asked to. What is no message ends it. Whoever asks is not trusted.
void serveAsSuperuser(StreamChannel& channel, const User& user, const std::string& userName, RootWork work);

// Leaves this process nothing of a user's: no variables, folder, mask, and no standard stream but `kept`. False where
// that failed.
bool leaveUsersSurroundings(int kept = -1);

}  // namespace vantory
