// Where the standard folders lie, for the user whose files are handled and for the machine.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/StandardFolders.h"

namespace vantory {

// A process of the superuser handles the files of the user at the console: every user folder is then that user's.
// "user" chooses the user's folder (true) or the machine-wide one (false). None means that there is no such folder, as
// when nobody is at the console.
class QWLocalPaths {
 public:
  static std::optional<std::string> pathForDirectory(StandardFolder directory, bool forUserDomain);

  static std::optional<std::string> applicationDirectory(bool user);
  static std::optional<std::string> adminApplicationDirectory(bool user);
  static std::optional<std::string> documentDirectory(bool user);
  static std::optional<std::string> libraryDirectory(bool user);
  static std::optional<std::string> prefsDirectory(bool user);
  static std::optional<std::string> cacheDirectory(bool user);
  static std::optional<std::string> appSupportDirectory(bool user);
  static std::optional<std::string> logDirectory(bool user);
  static std::optional<std::string> desktopDirectory();
  static std::string systemLibraryDirectory();
  static std::optional<std::string> localDocumentationDirectory();
  static std::optional<std::string> sharedUsersDirectory();
  static std::optional<std::string> movieDirectory();
  static std::optional<std::string> trashDirectory();
  static std::optional<std::string> userDirectory();
  static std::optional<std::string> username();
  static std::optional<std::string> currentConsoleUser();

  // A string that no other call, process or machine is given.
  static std::string uuid();
  // A private folder (0700) for temporary files, made when missing.
  static std::optional<std::string> tempDirectory();
  // A path in it that does not exist yet.
  static std::optional<std::string> tempFile();

  // True for a folder that must not be moved or deleted as a whole; without exactMatch also for everything below the
  // system's own folders.
  static bool isPathSystemDirectory(std::string_view path, bool exactMatch);
  static bool isPathSystemDirectory(std::string_view path);
  static bool isPathOnTimeMachineVolume(std::string_view path);
};

}  // namespace vantory
