// Putting the files of a backup back in place. At every instant the user's previous file is in its place or in the
// Trash.
#include <algorithm>
#include <chrono>
#include <optional>
#include <string_view>

#include "base/Paths.h"
#include "catalog/BackupPlace.h"
#include "catalog/QWPrefItem.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "services/FailureTally.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

constexpr std::chrono::seconds kTimeout{10};

using Staged = Result<std::unique_ptr<StagedCopy>>;

// Where a path below the backup folder belongs on the live system; none when that is no plain absolute path, or lies in
// a home and there is no user.
std::optional<std::string> destinationOf(const std::string& match, const std::string& backupPath) {
  const std::string_view placeholder = kHomePlaceholder;
  std::string destination = match.substr(std::min(backupPath.size(), match.size()));
  // A plain prefix on purpose: of "/Users/username", too, "/Users/user" is replaced.
  if (destination.starts_with(placeholder)) {
    const std::optional<std::string> home = QWLocalPaths::userDirectory();
    if (!home || destination.size() == placeholder.size()) return std::nullopt;
    destination = paths::join(*home, std::string_view(destination).substr(placeholder.size()));
  }
  const std::vector<std::string_view> parts = paths::components(destination);
  if (!destination.starts_with('/') || std::ranges::count(parts, "..") > 0) return std::nullopt;
  return destination;
}

void logCause(std::string_view cause) {
  QWLog::appendLog("Error copying file: %@. Authorizing...", cause);
}

void logOutcome(bool copied) {
  QWLog::appendLog(copied ? "File copied successfully." : "File failed to copy.");
  if (!copied) FailureTally::shared().add();
}

// Tells of a copy that cannot be made; the live file stays as it is.
void refuse(const std::string& source, const std::string& destination, std::string_view cause) {
  QWLog::appendLog("Copying file %@ to %@", source, destination);
  logCause(cause);
  logOutcome(false);
}

// Nothing else that keeps a copy from being made is worth trying with administrator rights.
bool areRightsMissingIn(const std::string& folder, const Error& error) {
  return rightsCouldHelp(error) && !Runtime::current().platform().metadata.isWritable(folder);
}

void trashLiveFile(const std::string& path) {
  if (QWFileManager::isMissingAtPath(path)) return;
  QWLog::appendLog("Trashing file %@", path);
  const bool trashed = QWFileManager::trashFile(path, kTimeout);
  QWLog::appendLog(trashed ? "File trashed successfully." : "File failed to trash.");
}

bool putInPlace(const Staged& staged, const std::string& source, const std::string& destination) {
  if (staged) {
    const Status committed = (*staged)->commit(StagedCopy::Existing::Keep);
    if (!committed) logCause(committed.error().text);
    return committed.ok();
  }
  // With administrator rights a live file that could not be trashed, or not even seen, would be written over.
  if (!QWFileManager::isMissingAtPath(destination)) return QWFileManager::copyFile(source, destination, false);
  return QWFileManager::copyFile(source, destination, kTimeout);
}

// False for what the backup does not hold; a file that cannot be looked at is tried, so that its failure is told.
bool mayBeHeld(const std::string& path) {
  const Result<FileInfo> info = Runtime::current().platform().files.info(path, Links::Follow);
  return info || !QWFileManager::meansMissing(info.error());
}

void restoreMatch(const std::string& source, const std::string& backupPath) {
  const std::optional<std::string> place = destinationOf(source, backupPath);
  if (!place) {
    logCause(source + " has no place on this system");
    return logOutcome(false);
  }
  const std::string& destination = *place;
  const std::string folder = paths::parent(destination);
  if (!QWFileManager::fileExistsAtPath(folder)) {
    QWLog::appendLog("Creating destination folder %@", folder);
    QWFileManager::createDirectory(folder, kTimeout);
  }
  QWFileManager::unlockFile(folder);

  // The copy is finished, but for its name, before the live file is touched: a bad backup or a full disk costs nothing.
  const Staged staged = QWFileManager::stageCopy(
      {.source = source, .destination = destination, .sourceRoot = backupPath, .links = Links::DoNotFollow});
  if (!staged && !areRightsMissingIn(folder, staged.error())) return refuse(source, destination, staged.error().text);
  trashLiveFile(destination);
  QWLog::appendLog("Copying file %@ to %@", source, destination);
  logOutcome(putInPlace(staged, source, destination));
}

}  // namespace

void QWPrefItem::restoreFilesFromBackup(const BackupPlace& backup) {
  const std::string root = paths::join(backup.path(), "");
  for (const std::string& pattern : files())
    for (const std::string& path : QWFileManager::filesMatchingWildcardPath(backup.safeUserPath(pattern), root))
      if (mayBeHeld(path)) restoreMatch(path, root);
  for (const auto& user : users_)
    if (user->selected() == On) user->restoreFilesFromBackup(backup);
}

}  // namespace vantory
