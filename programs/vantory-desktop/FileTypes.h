// Types of files, by the shared MIME database.
#pragma once

#include <string>

#include "base/Result.h"

namespace vantory::desktop {

// The type of files with this extension: the database's, else the one that our declaration of project types has. Fails
// with no_such_file_or_directory where neither knows the extension.
Result<std::string> typeOfExtension(const std::string& extension);

// Declares the types of projects for this user when this is one of them that the database does not know yet.
Status declareType(const std::string& type);

}  // namespace vantory::desktop
