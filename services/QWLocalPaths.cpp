// Answers each folder by the platform, and makes private temporary ones.
#include "services/QWLocalPaths.h"

#include <algorithm>
#include <vector>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/FileSystem.h"
#include "platform/OneItem.h"
#include "platform/ProtectedFolders.h"
#include "platform/SystemInfo.h"
#include "platform/Users.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

using Folder = std::optional<std::string>;

Platform& platform() {
  return Runtime::current().platform();
}

// Whose files the process works on; none for a superuser with nobody at the console.
std::optional<User> handledUser() {
  const Users& users = platform().users;
  return users.isSuperuser() ? users.consoleUser() : users.processUser();
}

Folder below(const Folder& folder, std::string_view component) {
  if (!folder) return std::nullopt;
  return paths::join(*folder, component);
}

// A whole character of UTF-8, however many bytes it has.
void dropLastCharacter(std::string_view& text) {
  const auto continues = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; };
  while (!text.empty() && continues(text.back())) text.remove_suffix(1);
  if (!text.empty()) text.remove_suffix(1);
}

}  // namespace

Folder QWLocalPaths::pathForDirectory(StandardFolder directory, bool forUserDomain) {
  if (!forUserDomain) return platform().folders.localFolder(directory);
  const Folder home = userDirectory();
  if (!home) return std::nullopt;
  return platform().folders.userFolder(directory, *home);
}

Folder QWLocalPaths::applicationDirectory(bool user) {
  return pathForDirectory(StandardFolder::Applications, user);
}

Folder QWLocalPaths::adminApplicationDirectory(bool user) {
  return pathForDirectory(StandardFolder::AdministrationApplications, user);
}

Folder QWLocalPaths::documentDirectory(bool user) {
  return pathForDirectory(StandardFolder::Documents, user);
}

Folder QWLocalPaths::libraryDirectory(bool user) {
  return pathForDirectory(StandardFolder::Library, user);
}

Folder QWLocalPaths::prefsDirectory(bool user) {
  return below(libraryDirectory(user), "Preferences");
}

Folder QWLocalPaths::cacheDirectory(bool user) {
  return pathForDirectory(StandardFolder::Caches, user);
}

Folder QWLocalPaths::appSupportDirectory(bool user) {
  return pathForDirectory(StandardFolder::ApplicationSupport, user);
}

Folder QWLocalPaths::logDirectory(bool user) {
  return below(libraryDirectory(user), "Logs");
}

Folder QWLocalPaths::desktopDirectory() {
  return pathForDirectory(StandardFolder::Desktop, true);
}

std::string QWLocalPaths::systemLibraryDirectory() {
  return platform().folders.systemLibraryFolder();
}

Folder QWLocalPaths::localDocumentationDirectory() {
  return pathForDirectory(StandardFolder::Documentation, false);
}

Folder QWLocalPaths::sharedUsersDirectory() {
  return pathForDirectory(StandardFolder::SharedUsers, false);
}

Folder QWLocalPaths::movieDirectory() {
  return below(userDirectory(), "Movies");
}

Folder QWLocalPaths::trashDirectory() {
  return pathForDirectory(StandardFolder::Trash, true);
}

Folder QWLocalPaths::userDirectory() {
  const std::optional<User> user = handledUser();
  if (!user) return std::nullopt;
  return user->home;
}

std::optional<std::string> QWLocalPaths::username() {
  const std::optional<User> user = handledUser();
  if (!user) return std::nullopt;
  return platform().users.nameOf(*user);
}

std::optional<std::string> QWLocalPaths::currentConsoleUser() {
  const std::optional<User> user = platform().users.consoleUser();
  if (!user) return std::nullopt;
  return platform().users.nameOf(*user);
}

std::string QWLocalPaths::uuid() {
  return platform().system.uniqueString();
}

// Made each time, because caches are tidied away.
Folder QWLocalPaths::tempDirectory() {
  Folder folder = below(cacheDirectory(true), "com.quarrywell.Vantory");
  if (!folder || !platform().files.makeFolder(*folder)) return std::nullopt;
  return folder;
}

std::optional<std::string> QWLocalPaths::tempFile() {
  return below(tempDirectory(), uuid());
}

bool QWLocalPaths::isPathSystemDirectory(std::string_view path, bool exactMatch) {
  if (path == "/") return true;
  if (utf16Length(path) < 3) return false;
  // The character before a trailing slash goes with it, so that a path written with one never matches.
  if (path.back() == '/') {
    path.remove_suffix(1);
    dropLastCharacter(path);
  }
  const std::vector<std::string> folders = protectedFolders(platform().folders, userDirectory());
  if (std::ranges::any_of(folders, [&](const std::string& folder) {
        return leadToOneItem(platform().files, std::string(path), folder);
      }))
    return true;
  if (exactMatch) return false;
  // Plain prefixes on purpose: "/usrdata" and "/Systems" are protected too.
  for (const std::string_view prefix : {"/usr", "/var", "/private/var", "/System"})
    if (path.starts_with(prefix)) return true;
  return false;
}

bool QWLocalPaths::isPathSystemDirectory(std::string_view path) {
  return isPathSystemDirectory(path, false);
}

bool QWLocalPaths::isPathOnTimeMachineVolume(std::string_view path) {
  const Folder volumes = pathForDirectory(StandardFolder::Volumes, false);
  if (!volumes || !path.starts_with(*volumes + "/")) return false;
  const std::vector<std::string_view> components = paths::components(path);
  return std::find(components.begin(), components.end(), "Backups.backupdb") != components.end();
}

}  // namespace vantory
