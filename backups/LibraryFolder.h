// Where the library of backups lies.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"

namespace vantory {

// The folder of the manual backups; none when no user's folders can be resolved. It need not exist.
std::optional<std::string> libraryFolder();
// The same where nobody chose another.
std::optional<std::string> usualLibraryFolder();
// The folder that a person names by a whole path, or by one in the home that begins with "~"; none by any other.
std::optional<std::string> folderNamed(const std::string& path);
// The setting "backupPath" where it names no folder and is passed over.
std::optional<std::string> unusableLibraryFolder();
// The folders that hold backups, which are nobody's preferences.
std::vector<std::string> foldersOfBackups();
// That the library's folder is not there, in a sentence; none where it may be.
std::optional<std::string> missingLibraryInWords();
// The folder of the automatic backups, inside the library's.
std::optional<std::string> autosavesFolder();
// What is called like a backup in a folder; nothing in one that is missing.
Result<std::vector<std::string>> backupNamesIn(const std::string& folder);
// The paths of all that is called like a backup in the library, as far as it can be listed.
std::vector<std::string> pathsOfBackups();

}  // namespace vantory
