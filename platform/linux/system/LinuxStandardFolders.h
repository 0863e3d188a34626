// The layout of macOS below a home and below "/", so that backups fit both systems; Desktop and Trash are where a Linux
// desktop has them.
#pragma once

#include <mutex>

#include "platform/StandardFolders.h"
#include "platform/linux/files/FileRights.h"

namespace vantory {

// Any thread.
class LinuxStandardFolders : public StandardFolders {
 public:
  // `root` is put before every folder that is not a user's.
  explicit LinuxStandardFolders(std::string root = "");
  // A superuser's process does not let the environment move folders. The desktop's settings, which are the user's, are
  // read with these rights.
  LinuxStandardFolders(std::string root, bool superuser, FileRights rights = FileRights::own());

  // The desktop's settings are read once for each home.
  std::optional<std::string> userFolder(StandardFolder folder, const std::string& home) const override;
  std::optional<std::string> localFolder(StandardFolder folder) const override;
  std::string systemLibraryFolder() const override;
  std::vector<std::string> programDataFolders() const override;

 private:
  std::optional<std::string> configuredFolder(const char* variable) const;
  std::string desktop(const std::string& home) const;
  std::string configuredDesktop(const std::string& home) const;

  const std::string root_;
  const bool superuser_;
  const FileRights rights_;
  mutable std::mutex mutex_;
  mutable std::string desktopHome_;  // whose desktop is known
  mutable std::string desktop_;
};

}  // namespace vantory
