// The folders that must not be moved or deleted as a whole, though what they hold may be.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/StandardFolders.h"

namespace vantory {

// Those of the machine and of the user with this home; without a home those of the machine.
inline std::vector<std::string> protectedFolders(const StandardFolders& standard,
                                                 const std::optional<std::string>& home) {
  using enum StandardFolder;
  std::vector<std::string> folders{standard.systemLibraryFolder()};
  const auto add = [&](const std::optional<std::string>& folder, const char* below = "") {
    if (folder) folders.push_back(*folder + below);
  };
  for (const StandardFolder folder : {Applications, AdministrationApplications, Documents, Library, Caches,
                                      ApplicationSupport, Documentation, SharedUsers, Volumes})
    add(standard.localFolder(folder));
  add(standard.localFolder(Library), "/Preferences");
  if (!home) return folders;
  for (const StandardFolder folder :
       {Applications, AdministrationApplications, Documents, Library, Caches, ApplicationSupport, Desktop})
    add(standard.userFolder(folder, *home));
  add(standard.userFolder(Library, *home), "/Preferences");
  add(home);
  return folders;
}

}  // namespace vantory
