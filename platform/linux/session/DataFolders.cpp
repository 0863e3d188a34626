// Reads the variables that name data folders.
#include "platform/linux/session/DataFolders.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <sstream>

#include "platform/posix/files/EnvironmentFolder.h"

namespace vantory {

namespace {

constexpr const char* kMachineFolders = "/usr/local/share:/usr/share";
// A process that no desktop session has started may not have been told of those.
constexpr const char* kPackageFolders = "/var/lib/flatpak/exports/share:/var/lib/snapd/desktop";

void addOnce(std::vector<std::string>& folders, std::string folder) {
  if (std::find(folders.begin(), folders.end(), folder) == folders.end()) folders.push_back(std::move(folder));
}

// Of folders between colons those that are absolute, each once.
void addListed(std::vector<std::string>& folders, const std::string& list) {
  std::istringstream entries(list);
  for (std::string entry; std::getline(entries, entry, ':');)
    if (std::optional<std::string> folder = normalisedFolder(entry)) addOnce(folders, std::move(*folder));
}

}  // namespace

// Those of packages come last, and come also where no session has named them.
std::vector<std::string> dataFolders(const std::string& home, bool environment) {
  const std::optional<std::string> own = environment ? environmentFolder("XDG_DATA_HOME") : std::nullopt;
  const char* listed = environment ? std::getenv("XDG_DATA_DIRS") : nullptr;
  std::vector<std::string> folders = {own.value_or(home + "/.local/share")};
  addListed(folders, listed && *listed != '\0' ? listed : kMachineFolders);
  addOnce(folders, folders.front() + "/flatpak/exports/share");
  addListed(folders, kPackageFolders);
  return folders;
}

}  // namespace vantory
