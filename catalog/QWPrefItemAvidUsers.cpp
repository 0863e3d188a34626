// How the Avid users of an item are found.
#include <optional>
#include <string>
#include <vector>

#include "base/Paths.h"
#include "catalog/QWPrefItem.h"
#include "services/QWLocalPaths.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

constexpr const char* kUsersFolder = "AvidMediaComposer/Avid Users";
constexpr const char* kWebCache = "AvidWebCache";  // lies among the users' folders and is none

// Their names contain the user's; no other file of the folder belongs to the item.
std::vector<std::string> filesOfUser(const std::string& usersFolder, const std::string& user) {
  const std::string folder = usersFolder + "/" + user + "/";
  return {folder + user + " Settings.avs", folder + user + " Settings.xml", folder + user + ".ave",
          folder + "Media Tool.avb", folder + "MCState"};
}

bool isUserFolder(const std::string& folder, const std::string& name) {
  return name != kWebCache && QWFileManager::isDirectoryAtPath(paths::join(folder, name));
}

}  // namespace

void QWPrefItem::populateAvidUsers() {
  populateAvidUsersInBackup(std::nullopt);
}

void QWPrefItem::populateAvidUsersInBackup(const std::optional<std::string>& backupPath) {
  QWLog::appendLog("Populating Avid users...");
  Users found;
  if (const std::optional<std::string> shared = QWLocalPaths::sharedUsersDirectory()) {
    const std::string live = paths::join(*shared, kUsersFolder);
    const std::string folder = backupPath ? paths::join(*backupPath, live) : live;
    for (const std::string& name : QWFileManager::contentsOfDirectory(folder)) {
      if (!isUserFolder(folder, name)) continue;
      if (QWFileManager::isWildcardPath(name)) {
        QWLog::appendLog("Skipping user %@: a \"*\" in its name would stand for other users too", name);
        continue;
      }
      QWLog::appendLog("Found user %@", name);
      // The files are the live ones, also for a user found in a backup.
      auto user = std::make_shared<QWPrefItem>(name, "avidPrefUser" + name, true, filesOfUser(live, name));
      user->setParent(weak_from_this());
      user->updateLockStatus();
      user->inheritSelectionFromParent();
      found.push_back(std::move(user));
    }
  }
  users_ = std::move(found);
}

}  // namespace vantory
