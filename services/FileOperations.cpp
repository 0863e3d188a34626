#include <functional>

#include "platform/Clock.h"
#include "services/MainThread.h"
#include "services/Paths.h"
#include "services/QWAuthorization.h"
#include "services/QWFileManager.h"
#include "services/QWLocalPaths.h"
#include "services/QWLog.h"
#include "services/Runtime.h"
#include "services/Text.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

FileSystem& files() {
  return Runtime::current().platform().files;
}

Clock& clock() {
  return Runtime::current().platform().clock;
}

QWAuthorization& authorization() {
  return QWAuthorization::sharedController();
}

// For operations that never replace an item: something in the way is no question of rights.
bool onlyRightsAreMissing(const Error& error) {
  return rightsCouldHelp(error) && error.code != std::errc::file_exists;
}

// Keeps a window alive on the main thread.
void pauseBetweenChecks() {
  MainThread& mainThread = MainThread::shared();
  if (mainThread.isCurrent()) {
    mainThread.runPending();
    clock().sleep(10ms);
  } else {
    clock().sleep(300ms);
  }
}

bool waitUntil(const std::function<bool()>& isVisible, std::chrono::seconds timeout) {
  const Timestamp start = clock().now();
  const Timestamp deadline = {start.seconds + timeout.count(), start.nanoseconds};
  while (!isVisible()) {
    if (clock().now() >= deadline) return false;
    pauseBetweenChecks();
  }
  return true;
}

bool waitUntilGone(const std::string& path, std::chrono::seconds timeout) {
  return waitUntil([&] { return QWFileManager::isMissingAtPath(path); }, timeout);
}

// Where a move really goes: into a folder under the item's own name, but never into a package or into itself.
std::string moveTarget(const std::string& source, const std::string& destination) {
  const auto there = files().info(destination, Links::Follow);
  if (!there || there->type != FileType::Folder || QWFileManager::isPackageAtPath(destination)) return destination;
  const auto item = files().info(source, Links::DoNotFollow);
  if (item && item->identity == there->identity) return destination;
  return paths::join(destination, paths::lastComponent(source));
}

Status copyAsUser(const std::string& source, const std::string& destination) {
  auto copy = QWFileManager::stageCopy({.source = source, .destination = destination});
  if (!copy) return copy.error();
  return (*copy)->commit(StagedCopy::Existing::Keep);
}

Status trashAsUser(const std::string& path) {
  const auto trashFolder = QWLocalPaths::trashDirectory();
  if (!trashFolder) return Error{std::errc::no_such_file_or_directory, "No user is logged in at the console."};
  const auto place = files().trash(path, *trashFolder);
  return place ? Status() : Status(place.error());
}

}  // namespace

bool QWFileManager::copyFile(const std::string& source, const std::string& toPath, bool shouldAuth) {
  if (source.empty()) {
    QWLog::appendLogAndPrint("Error copying file: source path is nil");
    return false;
  }
  if (toPath.empty()) {
    QWLog::appendLogAndPrint("Error copying file %@: destination path is nil", source);
    return false;
  }
  unlockFile(paths::parent(toPath));
  const Status copied = copyAsUser(source, toPath);
  if (copied) return true;
  QWLog::appendLog("Error copying file: %@. Authorizing...", copied.error().text);
  return shouldAuth && rightsCouldHelp(copied.error()) && authorization().authCopyFile(source, toPath);
}

bool QWFileManager::copyFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout) {
  return copyFile(source, toPath) && waitUntil([&] { return itemExistsAtPath(toPath); }, timeout);
}

bool QWFileManager::moveFile(const std::string& source, const std::string& toPath, bool shouldAuth) {
  unlockFile(toPath);
  const std::string inside = paths::join(toPath, paths::lastComponent(source));
  const auto insideInfo = files().info(inside, Links::DoNotFollow);
  if (insideInfo && insideInfo->type == FileType::Folder) unlockFolder(inside);

  const std::string target = moveTarget(source, toPath);
  const Status moved = files().move(source, target);
  if (moved) return true;
  QWLog::appendLog("Error moving file: %@. Authorizing...", moved.error().text);
  return shouldAuth && onlyRightsAreMissing(moved.error()) && authorization().authMoveFile(source, target);
}

bool QWFileManager::moveFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout) {
  if (!moveFile(source, toPath)) return false;
  if (compareIgnoringCase(source, toPath) == 0) {
    // Where names ignore case the old one still answers.
    clock().sleep(500us);
    return true;
  }
  return waitUntilGone(source, timeout);
}

bool QWFileManager::removeFile(const std::string& path, bool shouldAuth) {
  unlockFile(path);
  if (isMissingAtPath(path)) return true;
  const Status removed = files().remove(path);
  if (removed || isMissingAtPath(path)) return true;
  QWLog::appendLog("Error removing file: %@. Authorizing...", removed.error().text);
  return shouldAuth && rightsCouldHelp(removed.error()) && authorization().authRemoveFile(path);
}

bool QWFileManager::removeFile(const std::string& path, std::chrono::seconds timeout) {
  return removeFile(path) && waitUntilGone(path, timeout);
}

bool QWFileManager::trashFile(const std::string& path, bool shouldAuth) {
  unlockFile(path);
  if (isMissingAtPath(path)) return true;
  const Status trashed = trashAsUser(path);
  if (trashed || isMissingAtPath(path)) return true;
  if (shouldAuth && rightsCouldHelp(trashed.error()) && authorization().authTrashFile(path)) return true;
  QWLog::appendLog("Unable to trash %@: %@", path, trashed.error().text);
  return false;
}

bool QWFileManager::trashFile(const std::string& path, std::chrono::seconds timeout) {
  return trashFile(path) && waitUntilGone(path, timeout);
}

bool QWFileManager::createDirectory(const std::string& path, bool shouldAuth) {
  const Status made = files().makeFolder(path);
  if (made) return true;
  QWLog::appendLog("Error creating folder: %@. Authorizing...", made.error().text);
  return shouldAuth && onlyRightsAreMissing(made.error()) && authorization().authCreateDir(path);
}

bool QWFileManager::createDirectory(const std::string& path, std::chrono::seconds timeout) {
  return createDirectory(path) && waitUntil([&] { return isDirectoryAtPath(path); }, timeout);
}

Result<std::unique_ptr<StagedCopy>> QWFileManager::stageCopy(const CopyRequest& request) {
  auto copy = files().stageCopy(request);
  if (!copy) return copy;
  for (const std::string& note : (*copy)->notes()) QWLog::appendLog("%@", note);
  return copy;
}

}  // namespace vantory
