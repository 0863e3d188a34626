// Adds to the common layout what only a Mac has.
#include "platform/macos/system/MacStandardFolders.h"

#include <filesystem>

#include "platform/posix/kernel/Kernel.h"
#include "platform/posix/system/FolderLayout.h"

namespace vantory {

std::optional<std::string> MacStandardFolders::userFolder(StandardFolder folder, const std::string& home) const {
  return folder == StandardFolder::Trash ? home + "/.Trash" : folderInHome(folder, home);
}

std::optional<std::string> MacStandardFolders::localFolder(StandardFolder folder) const {
  return folderOfMachine(folder, root_);
}

// From where the program lies: an installation may have been moved.
std::vector<std::string> MacStandardFolders::programDataFolders() const {
  const std::filesystem::path program = kernel::ownPath();
  const std::filesystem::path installed = (program.parent_path() / VANTORY_DATA_FROM_BIN).lexically_normal();
  return {root_ + (installed.is_absolute() ? installed.native() : VANTORY_DATA),
          root_ + "/Library/Application Support/Vantory"};
}

}  // namespace vantory
