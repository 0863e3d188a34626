// The tools by which the desktop of a Mac is spoken to.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "base/Result.h"

namespace vantory {

// Starts, opens and shows things: "/usr/bin/open". Any thread.
Status openByTool(const std::vector<std::string>& arguments);

// Runs a text of AppleScript with the same program.
Status runDesktopScript(const std::string& script, std::chrono::seconds patience);

// What the frameworks of the desktop answer to one of the questions of DesktopScript.h, as a line of text; the text of
// an error is theirs. They are loaded by "/usr/bin/osascript", so that one that hangs holds up that program only, and
// its caller for the given time. Any thread.
Result<std::string> askDesktop(const std::string& question, const std::vector<std::string>& arguments,
                               std::chrono::seconds patience);

}  // namespace vantory
