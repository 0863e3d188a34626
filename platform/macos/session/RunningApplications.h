// Which applications run, told by their processes and the bundles that these lie in.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/FileSystem.h"

namespace vantory {

// The processes of the user that are a copy of the application with exactly this bundle identifier; helpers inside its
// bundle are none. Fails where a bundle that cannot be read is called like the application: it may be it.
Result<std::vector<pid_t>> runningCopies(const FileSystem& files, uid_t user, const std::string& bundleIdentifier);

}  // namespace vantory
