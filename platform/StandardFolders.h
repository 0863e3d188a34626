// Where the standard folders lie. Every fixed absolute folder of the program comes from here, so that tests can move
// it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vantory {

enum class StandardFolder {
  Applications,
  AdministrationApplications,
  Documents,
  Library,
  Caches,
  ApplicationSupport,
  Desktop,
  Documentation,
  Trash,        // user domain only
  SharedUsers,  // local domain only: folders shared by all users
  Volumes,      // local domain only
};

class StandardFolders {
 public:
  virtual ~StandardFolders() = default;

  // The folder of the user whose home is given; none when that domain has no such folder.
  virtual std::optional<std::string> userFolder(StandardFolder folder, const std::string& home) const = 0;
  // The machine-wide folder; none when that domain has no such folder.
  virtual std::optional<std::string> localFolder(StandardFolder folder) const = 0;
  // The operating system's own Library folder.
  virtual std::string systemLibraryFolder() const = 0;
  // Where the machine keeps files for this program: those installed beside it, then those of its administrator.
  virtual std::vector<std::string> programDataFolders() const = 0;
};

}  // namespace vantory
