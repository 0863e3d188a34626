// Copying, moving, deleting, trashing and making folders, with a second attempt with administrator rights.
#include <functional>

#include "base/Format.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "platform/Clock.h"
#include "platform/FileMetadata.h"
#include "platform/PrivilegedRunner.h"
#include "platform/TrashLayout.h"
#include "platform/Users.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
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
struct Attempt {
  Status status;
  bool handedOver = false;
  std::string place = {};  // of what was trashed
  Notes notes = {};        // what a move could not keep
  bool unlocked = false;   // what was trashed had to be
};

// What keeps its owner from taking an item away, or putting one there: the folder, unless that may be written to.
std::string closedPart(const std::string& folder, const std::string& item) {
  return Runtime::current().platform().metadata.isWritable(folder) ? item : folder;
}

// For a home that was named: also as root a task works there as its owner.
std::string cureInNamedHome(const std::string& closed) {
  const std::string cure = "A home that is named is worked in with its owner's rights. An administrator can give them";
  const auto owner = Runtime::current().platform().users.processUser();
  if (!owner || !standsInQuotes(closed)) return cure + ".";
  return formatted("%@: sudo chown %@ \"%@\" && sudo chmod u+rwX \"%@\"", cure,
                   Runtime::current().platform().users.nameOf(*owner), closed, closed);
}

// A task of the command line asks nobody for administrator rights, and not every platform has a use for them.
Error withCure(Error cause, const std::string& closed) {
  const bool haveUse = Runtime::current().platform().privileged.knows(kMachineSettingTool);
  if (cause.cure.empty() && onlyRightsAreMissing(cause) && haveUse && !authorization().canAuthorize())
    cause.cure = Runtime::current().isHomeNamed ? cureInNamedHome(closed)
                                                : "An administrator can do it: run the same task with sudo.";
  return cause;
}

// Where administrator rights did not do it either, the cause is that of the first failure.
Attempt handedOver(bool accepted, const Error& cause, const std::string& closed) {
  return accepted ? Attempt{.status = {}, .handedOver = true} : Attempt{.status = withCure(cause, closed)};
}

// What the user's own rights did needs no look; what was handed over is waited for until it shows.
Status arrival(const Attempt& attempt, const std::string& path, const std::function<bool()>& isVisible,
               std::chrono::seconds timeout) {
  if (!attempt.status || !attempt.handedOver || waitUntil(isVisible, timeout)) return attempt.status;
  return Error{std::errc::timed_out, path + ": administrator rights did not do it in time"};
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

// What a move has lost is gone for good: the person hears of it, on standard error at least.
Attempt tellNotes(Attempt attempt) {
  for (const std::string& note : attempt.notes) QWLog::appendLogAndPrint("%@", note);
  return attempt;
}

void remarkNotes(const Attempt& attempt, TaskReport& report) {
  for (const std::string& note : attempt.notes) report.remark(note);
}

// Notes of a copy that was staged ahead are logged now, in its turn.
Status copyAsUser(const std::string& source, const std::string& destination, std::unique_ptr<StagedCopy> staged,
                  CopyChecksum checksum) {
  if (staged) {
    logNotes(*staged);
  } else {
    auto copy = QWFileManager::stageCopy({.source = source, .destination = destination, .checksum = checksum});
    if (!copy) return copy.error();
    staged = std::move(*copy);
  }
  return staged->commit(StagedCopy::Existing::Keep);
}

Result<Trashed> trashAsUser(const std::string& path) {
  const auto trashFolder = QWLocalPaths::trashDirectory();
  if (!trashFolder) return Error{std::errc::no_such_file_or_directory, "No user is logged in at the console."};
  return files().trash(path, *trashFolder);
}

Attempt copy(const std::string& source, const std::string& toPath, bool shouldAuth, std::unique_ptr<StagedCopy> staged,
             CopyChecksum checksum) {
  if (source.empty()) {
    QWLog::appendLogAndPrint("Error copying file: source path is nil");
    return {.status = Error{std::errc::invalid_argument, "There is nothing to copy."}};
  }
  if (toPath.empty()) {
    QWLog::appendLogAndPrint("Error copying file %@: destination path is nil", source);
    return {.status = Error{std::errc::invalid_argument, source + " has nowhere to go."}};
  }
  // A folder that took the copy is not locked. One that stays locked refuses the copy, which is told.
  if (!staged) (void)QWFileManager::unlockFile(paths::parent(toPath));
  const Status copied = copyAsUser(source, toPath, std::move(staged), checksum);
  if (copied) return {};
  QWLog::appendLog("Error copying file: %@. Authorizing...", copied.error().text);
  // With rights a link would be copied, and not what it leads to.
  const bool mayHandOver =
      shouldAuth && rightsCouldHelp(copied.error()) && !QWFileManager::isSymbolicLinkAtPath(source);
  return handedOver(mayHandOver && authorization().authCopyFile(source, toPath), copied.error(),
                    closedPart(paths::parent(toPath), source));
}

Attempt move(const std::string& source, const std::string& toPath, bool shouldAuth) {
  // What stays locked refuses the move, which is told.
  (void)QWFileManager::unlockFile(toPath);
  QWFileManager::unlockFolder(paths::join(toPath, paths::lastComponent(source)));
  const std::string target = moveTarget(source, toPath);
  const Result<Notes> moved = files().move(source, target);
  if (moved) return tellNotes({.status = {}, .notes = *moved});
  QWLog::appendLog("Error moving file: %@. Authorizing...", moved.error().text);
  return handedOver(shouldAuth && onlyRightsAreMissing(moved.error()) && authorization().authMoveFile(source, target),
                    moved.error(), closedPart(paths::parent(source), source));
}

Attempt remove(const std::string& path, bool shouldAuth) {
  unlockIfLocked(path);
  const Status removed = files().remove(path);
  if (removed || QWFileManager::isMissingAtPath(path)) return {};
  QWLog::appendLog("Error removing file: %@. Authorizing...", removed.error().text);
  return handedOver(shouldAuth && rightsCouldHelp(removed.error()) && authorization().authRemoveFile(path),
                    removed.error(), closedPart(paths::parent(path), path));
}

Attempt trash(const std::string& path, bool shouldAuth) {
  // The flag that keeps a file's content keeps its name too, so what could be moved needed no look at it.
  Result<Trashed> trashed = trashAsUser(path);
  const bool unlocked = !trashed && unlockIfLocked(path);
  if (unlocked) trashed = trashAsUser(path);
  if (trashed) return tellNotes({.status = {}, .place = trashed->place, .notes = trashed->notes, .unlocked = unlocked});
  if (QWFileManager::isMissingAtPath(path)) return {};
  if (shouldAuth && rightsCouldHelp(trashed.error()))
    if (const auto place = authorization().trashedPlace(path))
      return {.status = {}, .handedOver = true, .place = *place, .unlocked = unlocked};
  QWLog::appendLog("Unable to trash %@: %@", path, trashed.error().text);
  Error cause = withCure(trashed.error(), closedPart(paths::parent(path), path));
  if (cause.code == std::errc::no_space_on_device)
    cause.cure = "The Trash needs a little room for its note: delete something on that disk, then try again.";
  return {.status = std::move(cause), .unlocked = unlocked};
}

Attempt makeFolder(const std::string& path, bool shouldAuth) {
  const Status made = files().makeFolder(path);
  if (made) return {};
  QWLog::appendLog("Error creating folder: %@. Authorizing...", made.error().text);
  return handedOver(shouldAuth && onlyRightsAreMissing(made.error()) && authorization().authCreateDir(path),
                    made.error(), paths::parent(path));
}

Result<std::string> placeOf(const Attempt& attempt, const Status& status) {
  if (!status) return status.error();
  return attempt.place;
}

}  // namespace

Status QWFileManager::copyFile(const std::string& source, const std::string& toPath, bool shouldAuth,
                               CopyChecksum checksum) {
  return copy(source, toPath, shouldAuth, nullptr, checksum).status;
}

Status QWFileManager::copyFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout,
                               std::unique_ptr<StagedCopy> staged, CopyChecksum checksum) {
  return arrival(
      copy(source, toPath, true, std::move(staged), checksum), toPath, [&] { return itemExistsAtPath(toPath); },
      timeout);
}

Status QWFileManager::moveFile(const std::string& source, const std::string& toPath, bool shouldAuth) {
  return move(source, toPath, shouldAuth).status;
}

Status QWFileManager::moveFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout) {
  TaskReport nobodys;
  return moveFile(source, toPath, timeout, nobodys);
}

Status QWFileManager::moveFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout,
                               TaskReport& report) {
  const Attempt attempt = move(source, toPath, true);
  remarkNotes(attempt, report);
  if (attempt.status && compareIgnoringCase(source, toPath) == 0) {
    // Where names ignore case the old one still answers.
    clock().sleep(500us);
    return {};
  }
  return arrival(
      attempt, source, [&] { return isMissingAtPath(source); }, timeout);
}

Status QWFileManager::removeFile(const std::string& path, bool shouldAuth) {
  return remove(path, shouldAuth).status;
}

Status QWFileManager::removeFile(const std::string& path, std::chrono::seconds timeout) {
  return arrival(
      remove(path, true), path, [&] { return isMissingAtPath(path); }, timeout);
}

Result<std::string> QWFileManager::trashFile(const std::string& path, bool shouldAuth) {
  const Attempt attempt = trash(path, shouldAuth);
  return placeOf(attempt, attempt.status);
}

Result<std::string> QWFileManager::trashFile(const std::string& path, std::chrono::seconds timeout) {
  TaskReport nobodys;
  return trashFile(path, timeout, nobodys);
}

Result<std::string> QWFileManager::trashFile(const std::string& path, std::chrono::seconds timeout,
                                             TaskReport& report) {
  const Attempt attempt = trash(path, true);
  if (attempt.unlocked) report.noted(FileAction::Unlock, path);
  remarkNotes(attempt, report);
  return placeOf(attempt, arrival(
                              attempt, path, [&] { return isMissingAtPath(path); }, timeout));
}

// A note that stays says that its item lies in the Trash no more: file managers pass it over.
Status QWFileManager::putBackFile(const std::string& place, const std::string& path, std::chrono::seconds timeout,
                                  TaskReport& report) {
  Status moved = moveFile(place, path, timeout, report);
  if (moved && hasTrashNotes(paths::parent(place))) (void)files().remove(trashNotePath(place));
  return moved;
}

bool QWFileManager::returnFile(const std::string& place, const std::string& path, std::chrono::seconds timeout,
                               TaskReport& report) {
  if (place.empty() || !isMissingAtPath(path)) return false;
  QWLog::appendLog("Putting %@ back to %@", place, path);
  const Status moved = putBackFile(place, path, timeout, report);
  if (!moved) QWLog::appendLog("%@", moved.error().text);
  return moved.ok();
}

Status QWFileManager::createDirectory(const std::string& path, bool shouldAuth) {
  return makeFolder(path, shouldAuth).status;
}

Status QWFileManager::createDirectory(const std::string& path, std::chrono::seconds timeout) {
  return arrival(
      makeFolder(path, true), path, [&] { return isDirectoryAtPath(path); }, timeout);
}

Result<std::unique_ptr<StagedCopy>> QWFileManager::stageCopy(const CopyRequest& request) {
  auto copy = files().stageCopy(request);
  if (!copy) return copy;
  logNotes(**copy);
  return copy;
}

}  // namespace vantory
