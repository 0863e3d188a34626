// Names each folder, from the home and the desktop's own settings.
#include "platform/linux/system/LinuxStandardFolders.h"

#include <unistd.h>

#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/TrashLayout.h"
#include "platform/linux/files/LinuxFileSystem.h"
#include "platform/posix/files/EnvironmentFolder.h"
#include "platform/posix/files/SmallFiles.h"
#include "platform/posix/system/FolderLayout.h"

namespace vantory {

LinuxStandardFolders::LinuxStandardFolders(std::string root) : LinuxStandardFolders(std::move(root), getuid() == 0) {}

LinuxStandardFolders::LinuxStandardFolders(std::string root, bool superuser, FileRights rights)
    : root_(std::move(root)), superuser_(superuser), rights_(std::move(rights)) {}

// As on a Mac, but for the Desktop and the Trash, which are where this desktop has them.
std::optional<std::string> LinuxStandardFolders::userFolder(StandardFolder folder, const std::string& home) const {
  if (folder == StandardFolder::Desktop) return desktop(home);
  if (folder != StandardFolder::Trash) return folderInHome(folder, home);
  if (const auto data = configuredFolder("XDG_DATA_HOME")) return *data + "/Trash/" + kTrashItemsFolder;
  return home + "/.local/share/Trash/" + kTrashItemsFolder;
}

std::optional<std::string> LinuxStandardFolders::localFolder(StandardFolder folder) const {
  return folderOfMachine(folder, root_);
}

std::string LinuxStandardFolders::systemLibraryFolder() const {
  return root_ + "/System/Library";
}

// From where the program lies: an installation may have been moved.
std::vector<std::string> LinuxStandardFolders::programDataFolders() const {
  std::error_code failure;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
  const std::filesystem::path installed = (program.parent_path() / VANTORY_DATA_FROM_BIN).lexically_normal();
  return {root_ + (installed.is_absolute() ? installed.native() : VANTORY_DATA), root_ + "/etc/vantory"};
}

// The superuser's variables say nothing about the user who is served.
std::optional<std::string> LinuxStandardFolders::configuredFolder(const char* variable) const {
  if (superuser_) return std::nullopt;
  return environmentFolder(variable);
}

// Asked for every path that is checked, so the settings file is not read each time.
std::string LinuxStandardFolders::desktop(const std::string& home) const {
  const std::lock_guard lock(mutex_);
  if (desktop_.empty() || desktopHome_ != home) {
    desktop_ = configuredDesktop(home);
    desktopHome_ = home;
  }
  return desktop_;
}

// The desktop's file may name the home by its variable, and no other.
std::string LinuxStandardFolders::configuredDesktop(const std::string& home) const {
  const std::string settings = configuredFolder("XDG_CONFIG_HOME").value_or(home + "/.config") + "/user-dirs.dirs";
  const Result<std::string> text = LinuxFileSystem(rights_).read(settings);
  std::string value = assignedValueIn(text ? *text : "", "XDG_DESKTOP_DIR").value_or("");
  constexpr std::string_view kHome = "$HOME";
  if (value == kHome || value.starts_with("$HOME/")) value.replace(0, kHome.size(), home);
  return normalisedFolder(value).value_or(home + "/Desktop");
}

}  // namespace vantory
