// The command line in one of many homes.
#pragma once

#include <string>
#include <vector>

#include "platform/HomeWorkers.h"

namespace vantory {

// The line as each of the homes is given it, so that its exit code tells enough.
std::vector<std::string> argumentsForEach(std::vector<std::string> arguments);

// The preference files and folders that the catalog names in the home of the process's user and that are there.
std::vector<std::string> filesOfCatalog();

// Runs what the process's arguments ask for, as the process of the home's owner. Answers all but home and owner.
HomeResult runInHome();

}  // namespace vantory
