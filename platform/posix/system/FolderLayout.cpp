// Names the folders.
#include "platform/posix/system/FolderLayout.h"

namespace vantory {

namespace {

// Those that homes and the machine have alike.
std::optional<std::string> folderBelow(const std::string& top, StandardFolder folder) {
  switch (folder) {
    case StandardFolder::Applications:
      return top + "/Applications";
    case StandardFolder::AdministrationApplications:
      return top + "/Applications/Utilities";
    case StandardFolder::Library:
      return top + "/Library";
    case StandardFolder::Caches:
      return top + "/Library/Caches";
    case StandardFolder::ApplicationSupport:
      return top + "/Library/Application Support";
    case StandardFolder::Documentation:
      return top + "/Library/Documentation";
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<std::string> folderInHome(StandardFolder folder, const std::string& home) {
  if (folder == StandardFolder::Documents) return home + "/Documents";
  if (folder == StandardFolder::Desktop) return home + "/Desktop";
  return folderBelow(home, folder);
}

std::optional<std::string> folderOfMachine(StandardFolder folder, const std::string& root) {
  if (folder == StandardFolder::SharedUsers) return root + "/Users/Shared";
  if (folder == StandardFolder::Volumes) return root + "/Volumes";
  return folderBelow(root, folder);
}

}  // namespace vantory
