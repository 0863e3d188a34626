// Starting applications by their desktop entries.
#pragma once

#include <string>
#include <vector>

#include "base/Result.h"
#include "programs/vantory-desktop/DesktopEntry.h"

namespace vantory::desktop {

// Starts the application, or shows the files in it, and does not wait for it. It gets a session of its own, the null
// device as its streams, and where the user's service manager runs a unit of its own, so that it outlives whoever
// started it. `addresses` are URIs.
Status launch(GDesktopAppInfo* application, const std::vector<std::string>& addresses);

// The URI of a file.
Result<std::string> addressOf(const std::string& path);

}  // namespace vantory::desktop
