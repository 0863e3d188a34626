// Whether the home folder is one that the program can work in.
#pragma once

#include <optional>
#include <string>

namespace vantory {

// Why nothing must be touched there; none when all is well. The library's folder is looked at only where it is needed.
std::optional<std::string> reasonToRefuse(const std::optional<std::string>& home, bool usesBackups);

// What to tell the user of a home whose depth makes backups hard to move; empty for an ordinary one.
std::string remarkOnHome(const std::string& home);

// That there is no such folder; empty where there is.
std::string remarkOnMissingHome(const std::string& home);

// That the task works in another home than the superuser's HOME names, and how it would in that one; empty where it
// does not.
std::string remarkOnOtherHome(const std::string& home);

}  // namespace vantory
