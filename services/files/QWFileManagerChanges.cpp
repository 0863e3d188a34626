#include <functional>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/Clock.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWAuthorization.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/threads/MainThread.h"

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

// Keeps a window alive on the main thread. Answers how long it slept.
std::chrono::milliseconds pauseBetweenChecks() {
  MainThread& mainThread = MainThread::shared();
  const bool isMain = mainThread.isCurrent();
  if (isMain) mainThread.runPending();
  const auto pause = isMain ? 10ms : 300ms;
  clock().sleep(pause);
  return pause;
}

// Adds up the pauses instead of asking for the time, which may be set back meanwhile.
bool waitUntil(const std::function<bool()>& isVisible, std::chrono::seconds timeout) {
  for (auto waited = 0ms; !isVisible(); waited += pauseBetweenChecks())
    if (waited >= timeout) return false;
  return true;
}

// Clears the immutable flag of an item that is to go. True when it was set and is no more.
bool unlockIfLocked(const std::string& path) {
  return QWFileManager::isFileLocked(path) && QWFileManager::unlockFile(path);
}

// How an operation ended. What the user's own rights did is there at once; what was handed over is looked for.
enum class Outcome { Failed, Done, HandedOver };

Outcome handedOver(bool accepted) {
  return accepted ? Outcome::HandedOver : Outcome::Failed;
}

bool arrives(Outcome outcome, const std::function<bool()>& isVisible, std::chrono::seconds timeout) {
  return outcome == Outcome::Done || (outcome == Outcome::HandedOver && waitUntil(isVisible, timeout));
}

// Where a move really goes: into a folder under the item's own name, but never into a package or into itself.
std::string moveTarget(const std::string& source, const std::string& destination) {
  const auto there = files().info(destination, Links::Follow);
  if (!there || there->type != FileType::Folder || QWFileManager::isPackageAtPath(destination)) return destination;
  const auto item = files().info(source, Links::DoNotFollow);
  if (item && item->identity == there->identity) return destination;
  return paths::join(destination, paths::lastComponent(source));
}

void logNotes(const StagedCopy& copy) {
  for (const std::string& note : copy.notes()) QWLog::appendLog("%@", note);
}

Status copyAsUser(const std::string& source, const std::string& destination, std::unique_ptr<StagedCopy> staged) {
  if (staged) {
    logNotes(*staged);
  } else {
    auto copy = QWFileManager::stageCopy({.source = source, .destination = destination});
    if (!copy) return copy.error();
    staged = std::move(*copy);
  }
  return staged->commit(StagedCopy::Existing::Keep);
}

Status trashAsUser(const std::string& path) {
  const auto trashFolder = QWLocalPaths::trashDirectory();
  if (!trashFolder) return Error{std::errc::no_such_file_or_directory, "No user is logged in at the console."};
  const auto place = files().trash(path, *trashFolder);
  return place ? Status() : Status(place.error());
}

Outcome copy(const std::string& source, const std::string& toPath, bool shouldAuth,
             std::unique_ptr<StagedCopy> staged = nullptr) {
  if (source.empty()) {
    QWLog::appendLogAndPrint("Error copying file: source path is nil");
    return Outcome::Failed;
  }
  if (toPath.empty()) {
    QWLog::appendLogAndPrint("Error copying file %@: destination path is nil", source);
    return Outcome::Failed;
  }
  // A folder that took the copy is not locked.
  if (!staged) QWFileManager::unlockFile(paths::parent(toPath));
  const Status copied = copyAsUser(source, toPath, std::move(staged));
  if (copied) return Outcome::Done;
  QWLog::appendLog("Error copying file: %@. Authorizing...", copied.error().text);
  return handedOver(shouldAuth && rightsCouldHelp(copied.error()) && authorization().authCopyFile(source, toPath));
}

Outcome move(const std::string& source, const std::string& toPath, bool shouldAuth) {
  QWFileManager::unlockFile(toPath);
  QWFileManager::unlockFolder(paths::join(toPath, paths::lastComponent(source)));
  const std::string target = moveTarget(source, toPath);
  const Status moved = files().move(source, target);
  if (moved) return Outcome::Done;
  QWLog::appendLog("Error moving file: %@. Authorizing...", moved.error().text);
  return handedOver(shouldAuth && onlyRightsAreMissing(moved.error()) && authorization().authMoveFile(source, target));
}

Outcome remove(const std::string& path, bool shouldAuth) {
  unlockIfLocked(path);
  const Status removed = files().remove(path);
  if (removed || QWFileManager::isMissingAtPath(path)) return Outcome::Done;
  QWLog::appendLog("Error removing file: %@. Authorizing...", removed.error().text);
  return handedOver(shouldAuth && rightsCouldHelp(removed.error()) && authorization().authRemoveFile(path));
}

Outcome trash(const std::string& path, bool shouldAuth) {
  // The flag that keeps a file's content keeps its name too, so what could be moved needed no look at it.
  Status trashed = trashAsUser(path);
  if (!trashed && unlockIfLocked(path)) trashed = trashAsUser(path);
  if (trashed || QWFileManager::isMissingAtPath(path)) return Outcome::Done;
  if (shouldAuth && rightsCouldHelp(trashed.error()) && authorization().authTrashFile(path)) return Outcome::HandedOver;
  QWLog::appendLog("Unable to trash %@: %@", path, trashed.error().text);
  return Outcome::Failed;
}

Outcome makeFolder(const std::string& path, bool shouldAuth) {
  const Status made = files().makeFolder(path);
  if (made) return Outcome::Done;
  QWLog::appendLog("Error creating folder: %@. Authorizing...", made.error().text);
  return handedOver(shouldAuth && onlyRightsAreMissing(made.error()) && authorization().authCreateDir(path));
}

}  // namespace

bool QWFileManager::copyFile(const std::string& source, const std::string& toPath, bool shouldAuth) {
  return copy(source, toPath, shouldAuth) != Outcome::Failed;
}

bool QWFileManager::copyFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout,
                             std::unique_ptr<StagedCopy> staged) {
  return arrives(
      copy(source, toPath, true, std::move(staged)), [&] { return itemExistsAtPath(toPath); }, timeout);
}

bool QWFileManager::moveFile(const std::string& source, const std::string& toPath, bool shouldAuth) {
  return move(source, toPath, shouldAuth) != Outcome::Failed;
}

bool QWFileManager::moveFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout) {
  const Outcome outcome = move(source, toPath, true);
  if (outcome != Outcome::Failed && compareIgnoringCase(source, toPath) == 0) {
    // Where names ignore case the old one still answers.
    clock().sleep(500us);
    return true;
  }
  return arrives(
      outcome, [&] { return isMissingAtPath(source); }, timeout);
}

bool QWFileManager::removeFile(const std::string& path, bool shouldAuth) {
  return remove(path, shouldAuth) != Outcome::Failed;
}

bool QWFileManager::removeFile(const std::string& path, std::chrono::seconds timeout) {
  return arrives(
      remove(path, true), [&] { return isMissingAtPath(path); }, timeout);
}

bool QWFileManager::trashFile(const std::string& path, bool shouldAuth) {
  return trash(path, shouldAuth) != Outcome::Failed;
}

bool QWFileManager::trashFile(const std::string& path, std::chrono::seconds timeout) {
  return arrives(
      trash(path, true), [&] { return isMissingAtPath(path); }, timeout);
}

bool QWFileManager::createDirectory(const std::string& path, bool shouldAuth) {
  return makeFolder(path, shouldAuth) != Outcome::Failed;
}

bool QWFileManager::createDirectory(const std::string& path, std::chrono::seconds timeout) {
  return arrives(
      makeFolder(path, true), [&] { return isDirectoryAtPath(path); }, timeout);
}

Result<std::unique_ptr<StagedCopy>> QWFileManager::stageCopy(const CopyRequest& request) {
  auto copy = files().stageCopy(request);
  if (!copy) return copy;
  logNotes(**copy);
  return copy;
}

}  // namespace vantory
