// Goes through a task's deeds backwards.
#include "undo/UndoRun.h"

#include <algorithm>
#include <chrono>
#include <map>

#include "backups/BackupNaming.h"
#include "backups/DefaultBackup.h"
#include "backups/HeldFiles.h"
#include "backups/LibraryHold.h"
#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "platform/StagingName.h"
#include "platform/TrashLayout.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/receipts/TaskReceipt.h"
#include "services/settings/QWUserDefaults.h"
#include "undo/Deeds.h"
#include "undo/TrashContents.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

constexpr ClosedApplications::Words kWords = {.skipped = "User chose to skip app",
                                              .toClose = nullptr,
                                              .closed = "App closed successfully",
                                              .notClosed = "Unable to close app",
                                              .notRunning = nullptr};

FileSystem& files() {
  return Runtime::current().platform().files;
}

// The backup that holds the path.
std::string backupOf(std::string path) {
  while (path.size() > 1 && !isBackupName(path)) path = paths::parent(path);
  return path;
}

// Another Trash than the user's own names folders by where links lead.
bool isSamePlace(const std::string& path, const std::string& other) {
  return path == other || (paths::lastComponent(path) == paths::lastComponent(other) &&
                           QWFileManager::isSameItem(paths::parent(path), paths::parent(other)));
}

}  // namespace

UndoRun::UndoRun(const Receipt& receipt, const std::vector<Receipt>& all, TaskReport& report)
    : receipt_(withEarlierAttempts(receipt, all)), all_(all), report_(report), applications_(kWords, report) {
  for (const auto& root : {QWLocalPaths::userDirectory(), QWLocalPaths::sharedUsersDirectory(),
                           QWLocalPaths::libraryDirectory(false), QWDataController::vantoryBackupLocation()})
    if (root) roots_.push_back(*root);
}

void UndoRun::run() {
  Deeds deeds = deedsLeftOf(receipt_, all_);
  for (ReceiptStep& deed : deeds) deed.place = presentPlace(deed);
  if (!makeWay(deeds)) return;
  std::unique_ptr<FolderHold> hold;
  const auto library = QWDataController::vantoryBackupLocation();
  // Many deeds lie in a few folders.
  std::map<std::string, bool> folders;
  const auto isInLibrary = [&](const std::string& path) {
    const auto [folder, isNew] = folders.try_emplace(paths::parent(path));
    if (isNew) folder->second = QWFileManager::isWithin(folder->first, *library);
    return folder->second;
  };
  touchesLibrary_ = library && std::ranges::any_of(deeds, [&](const ReceiptStep& deed) {
                      return isInLibrary(deed.path) || isInLibrary(deed.place);
                    });
  if (touchesLibrary_ && QWFileManager::isDirectoryAtPath(*library)) {
    auto held = holdBackupFolder(*library);
    if (!held && held.error().code == std::errc::timed_out)
      return report_.failed(FileAction::List, *library, held.error());
    if (held) hold = std::move(*held);
  }
  findReplacedCopies(deeds);
  plan(deeds);
  for (std::size_t left = deeds.size(); left > 0;) {
    if (isOfLocks(deeds[left - 1].action))
      left = takeBackLocks(deeds, left - 1);
    else
      takeBack(deeds[--left]);
  }
  for (auto& [backup, copies] : replaced_) copies.moveToTrash(report_);
  tidyReplacedCopies();
  removeUnfinished();
  for (const std::string& backup : noted_) noteHeldFiles(backup);
  hold.reset();
  makeDurable();
  applications_.relaunch();
  if (touchesLibrary_) QWDataController::sharedController().populateBackups();
}

// Leaves the files of an application out that runs and is to be passed over. False where the person cancelled.
bool UndoRun::makeWay(Deeds& deeds) {
  std::set<std::string> keys;
  for (const ReceiptStep& deed : deeds) keys.insert(deed.item);
  keys.erase("");
  for (const auto& app : QWDataController::sharedController().appArray()) {
    if (!app->holdsAnyOf(keys)) continue;
    const auto answer = applications_.makeWay(*app, false);
    if (answer == ClosedApplications::Answer::Cancel) return false;
    if (answer == ClosedApplications::Answer::PassOver)
      std::erase_if(deeds, [&](const ReceiptStep& deed) { return app->holdsAnyOf({deed.item}); });
  }
  return true;
}

// All of it at once, before the first change.
void UndoRun::plan(const Deeds& deeds) {
  std::map<FileAction, std::vector<FilePlan>> plans;
  for (auto deed = deeds.rbegin(); deed != deeds.rend(); ++deed) {
    switch (deed->action) {
      case FileAction::Trash:
        if (!trashedFolders_.contains(deed->path))
          plans[FileAction::PutBack].push_back({.path = deed->path, .source = deed->place});
        break;
      case FileAction::Restore:
      case FileAction::PutBack:
      case FileAction::Create:
        plans[FileAction::Trash].push_back({.path = deed->path});
        break;
      case FileAction::Lock:
        plans[FileAction::Unlock].push_back({.path = deed->path});
        break;
      case FileAction::Unlock:
        plans[FileAction::Lock].push_back({.path = deed->path});
        break;
      case FileAction::Replace:
        if (deed->place.empty()) plans[FileAction::Trash].push_back({.path = deed->path});
        break;
      case FileAction::Move:
        plans[FileAction::Move].push_back({.path = deed->place, .place = deed->path});
        break;
      default:
        break;
    }
  }
  // What goes to the Trash makes way for what comes back.
  for (const FileAction action :
       {FileAction::Trash, FileAction::PutBack, FileAction::Move, FileAction::Lock, FileAction::Unlock})
    report_.planned(action, plans[action]);
}

bool UndoRun::isAllowed(const std::string& path) const {
  return std::ranges::any_of(roots_, [&](const std::string& root) {
    return path != root && QWFileManager::isWithin(path, root) && !QWFileManager::isSameItem(path, root);
  });
}

// Told in the log, and to the person.
void UndoRun::refuse(FileAction action, const std::string& path, std::string reason, const ReceiptStep& deed) {
  QWLog::appendLog("%@", reason);
  report_.failed(action, path, {kNeverAgain, std::move(reason)}, deed.item);
}

void UndoRun::takeBack(const ReceiptStep& deed) {
  if (deed.action == FileAction::Default) return putDefaultBack(deed);
  if (!isAllowed(deed.path))
    return refuse(deed.action, deed.path, deed.path + " lies outside of the places where a task is taken back.", deed);
  switch (deed.action) {
    case FileAction::Trash:
      return putBack(deed);
    case FileAction::Restore:
    case FileAction::PutBack:
    case FileAction::Create:
      return trashWhatWasPut(deed);
    case FileAction::Replace:
      return replaceBack(deed);
    case FileAction::Move:
      return moveBack(deed);
    case FileAction::Remove:
      return refuse(deed.action, deed.path, deed.path + " was removed for good and cannot come back.", deed);
    default:
      return;
  }
}

// Another name may have been given to it in the Trash, which without notes does not matter.
std::string UndoRun::presentPlace(const ReceiptStep& deed) {
  const std::string folder = paths::parent(deed.place);
  if (deed.action != FileAction::Trash || !deed.traits || hasTrashNotes(folder)) return deed.place;
  const auto found = trash_.find(folder, paths::lastComponent(deed.place), *deed.traits);
  return found ? *found : deed.place;
}

// The note, or without notes the receipt, tells whether it is the same: another may lie under its name since the Trash
// was emptied.
Status UndoRun::checkIsInTrash(const ReceiptStep& deed) {
  const Error gone{std::errc::no_such_file_or_directory, deed.path + " is no longer in the Trash."};
  const std::string folder = paths::parent(deed.place);
  if (!hasTrashNotes(folder))
    return deed.traits ? trash_.find(folder, paths::lastComponent(deed.place), *deed.traits).status() : gone;
  const auto item = trashedItemAt(deed.place);
  if (!item) return item.error();
  if (trashDates(receipt_.begun, receipt_.ended).hold(item->date) && isSamePlace(item->path, deed.path)) return {};
  return gone;
}

void UndoRun::putBack(const ReceiptStep& deed) {
  if (staying_.contains(deed.path) || trashedFolders_.contains(deed.path)) return;  // told, or taken from it
  const Status isThere = checkIsInTrash(deed);
  // What cannot be read now may be another time.
  if (!isThere && !meansMissing(isThere.error()))
    return report_.failed(FileAction::PutBack, deed.path, isThere.error(), deed.item);
  if (!isThere) return refuse(FileAction::PutBack, deed.path, deed.path + " is no longer in the Trash.", deed);
  if (!QWFileManager::isMissingAtPath(deed.path))
    return refuse(
        FileAction::PutBack, deed.path,
        formatted("There is a %@ again, which stays; the earlier one is in the Trash: %@", deed.path, deed.place),
        deed);
  QWLog::appendLog("Putting %@ back to %@", deed.place, deed.path);
  const std::string folder = paths::parent(deed.path);
  if (!QWFileManager::fileExistsAtPath(folder)) (void)QWFileManager::createDirectory(folder);
  const Status moved = QWFileManager::putBackFile(deed.place, deed.path, 10s, report_);
  if (!moved) return report_.failed(FileAction::PutBack, deed.path, moved.error(), deed.item);
  report_.done(FileAction::PutBack, deed.path, deed.item, deed.path);
  changedAnything_ = true;
}

// Tells of what has changed since, and of what cannot be looked at now and may be another time.
bool UndoRun::mustStay(const ReceiptStep& deed) {
  const auto unchanged = isUnchanged(deed, receipt_);
  if (unchanged && *unchanged) return false;
  staying_.insert(deed.path);
  if (unchanged)
    refuse(FileAction::Trash, deed.path, deed.path + " has changed since, and stays as it is.", deed);
  else
    report_.failed(FileAction::Trash, deed.path, {std::errc::io_error, deed.path + " cannot be looked at."}, deed.item);
  return true;
}

void UndoRun::trashWhatWasPut(const ReceiptStep& deed) {
  if (QWFileManager::isMissingAtPath(deed.path)) {
    QWLog::appendLog("%@ is not there any more", deed.path);
    return report_.skipped(FileAction::Trash, deed.path,
                           {std::errc::no_such_file_or_directory, deed.path + " is not there any more."}, deed.item);
  }
  if (mustStay(deed)) return;
  std::unique_ptr<FolderHold> hold;
  if (deed.action == FileAction::Create) {
    auto held = holdBackupFolder(deed.path);
    if (!held && held.error().code == std::errc::timed_out)
      return report_.failed(FileAction::Trash, deed.path, held.error(), deed.item);
    if (held) hold = std::move(*held);
  }
  QWLog::appendLog("Trashing file %@", deed.path);
  const auto place = QWFileManager::trashFile(deed.path, 10s, report_);
  if (!place) {
    staying_.insert(deed.path);
    return report_.failed(FileAction::Trash, deed.path, place.error(), deed.item);
  }
  report_.done(FileAction::Trash, deed.path, deed.item, *place);
  changedAnything_ = true;
}

// An update's earlier copies lie together in the Trash, or in the library where it was killed: then they go there now.
void UndoRun::findReplacedCopies(const Deeds& deeds) {
  std::set<std::string> folders;
  for (const ReceiptStep& deed : receipt_.steps) {
    if (deed.action != FileAction::Replace || deed.place.empty() || !isAllowed(deed.place)) continue;
    const std::size_t below = deed.path.size() - backupOf(deed.path).size();
    folders.insert(deed.place.substr(0, deed.place.size() - std::min(below, deed.place.size())));
  }
  for (const ReceiptStep& deed : deeds)
    if (deed.action == FileAction::Trash && folders.erase(deed.path) > 0) trashedFolders_[deed.path] = deed.place;
  // The first that was begun to take the update back has moved them; what it replaced itself came later.
  for (auto other = all_.rbegin(); other != all_.rend(); ++other) {
    if (other->undoes != receipt_.name) continue;
    for (const ReceiptStep& deed : deedsOf(*other, all_))
      if (deed.action == FileAction::Trash && folders.erase(deed.path) > 0)
        trashedFolders_[deed.path] = presentPlace(deed);
  }
  for (const std::string& folder : folders) {
    if (!isAllowed(folder) || QWFileManager::isMissingAtPath(folder)) continue;
    report_.planned(FileAction::Trash, std::vector{folder});
    const auto place = QWFileManager::trashFile(folder, 10s, report_);
    report_.add(FileAction::Trash, folder, place.status(), {}, place ? *place : "");
    if (place) trashedFolders_[folder] = *place;
  }
}

// What a run that was killed has kept of them. It has taken the backup's note also where it replaced nothing.
void UndoRun::tidyReplacedCopies() {
  std::set<std::string> backups;
  for (const ReceiptStep& step : receipt_.steps)
    if (step.action == FileAction::Replace && isAllowed(step.path)) backups.insert(backupOf(step.path));
  for (const std::string& backup : backups) {
    const auto held = holdBackupFolder(backup);
    if (!held) continue;
    ReplacedCopies::tidy(backup);
    if (!receipt_.ended && !replaced_.contains(backup) && takeNoteOfHeldFiles(backup)) noted_.push_back(backup);
  }
}

// What a run that was killed was putting together. Whoever does so holds it.
void UndoRun::removeUnfinished() {
  for (const ReceiptStep& step : receipt_.steps) {
    const bool puts =
        step.action == FileAction::Replace || step.action == FileAction::Restore || step.action == FileAction::PutBack;
    if (!puts || !isAllowed(step.path)) continue;
    const std::string left = paths::join(paths::parent(step.path), stagingName(paths::lastComponent(step.path)));
    const auto held = files().holdFolder(left, 0ms);
    if (!held) continue;
    QWLog::appendLog("Removing %@, which a task that was killed has left", left);
    (void)QWFileManager::removeFile(left, false);
  }
}

// As an update does it: the present copy is kept for the Trash, and replaced in one step by a copy of the earlier one.
void UndoRun::replaceBack(const ReceiptStep& deed) {
  const std::string backup = backupOf(deed.path);
  const auto [known, isNew] = replaced_.try_emplace(backup, backup);
  ReplacedCopies& copies = known->second;
  if (isNew && takeNoteOfHeldFiles(backup)) noted_.push_back(backup);
  if (deed.place.empty()) return trashWhatWasPut(deed);
  std::string earlier = deed.place;
  for (const auto& [folder, place] : trashedFolders_)
    if (paths::isWithin(earlier, folder)) earlier.replace(0, folder.size(), place);
  if (mustStay(deed)) return;
  const std::string kept = copies.placeFor(deed.path);
  report_.planned(FileAction::Replace, {{.path = deed.path, .source = earlier, .place = kept}}, deed.item);
  QWLog::appendLog("Copying %@ to %@", earlier, deed.path);
  auto copy = files().stageCopy({.source = earlier, .destination = deed.path, .links = Links::DoNotFollow});
  Status done = copy ? ReplacedCopies::keep(deed.path, kept) : copy.status();
  if (done) done = (*copy)->commit(StagedCopy::Existing::Replace);
  if (!done) {
    QWLog::appendLog("%@", done.error().text);
    copies.drop(deed.path, kept);
  }
  report_.add(FileAction::Copy, earlier, done, deed.item, deed.path);
  if (done) report_.noted(FileAction::Replace, deed.path, deed.item, kept);
  changedAnything_ |= done.ok();
}

void UndoRun::moveBack(const ReceiptStep& deed) {
  const auto present = traitsOf(deed.place);
  if (!isAllowed(deed.place) || !present || !deed.traits || !present->isSameItem(*deed.traits))
    return refuse(FileAction::Move, deed.place, deed.place + " is not what was moved there.", deed);
  if (!QWFileManager::isMissingAtPath(deed.path))
    return refuse(FileAction::Move, deed.place,
                  formatted("There is a %@ again: %@ stays where it is.", deed.path, deed.place), deed);
  const auto held = holdBackupFolder(deed.place);
  if (!held && held.error().code == std::errc::timed_out)
    return report_.failed(FileAction::Move, deed.place, held.error(), deed.item);
  QWLog::appendLog("Moving %@ back to %@", deed.place, deed.path);
  const Status moved = QWFileManager::moveFile(deed.place, deed.path, 10s, report_);
  report_.add(FileAction::Move, deed.place, moved, deed.item, deed.path);
  changedAnything_ |= moved.ok();
}

// It stands in the settings by its name alone.
void UndoRun::putDefaultBack(const ReceiptStep& deed) {
  if (placeOfDefault() != deed.path)
    return refuse(FileAction::Write, deed.path, "Another backup is the default since, and stays so.", deed);
  if (isBackupName(deed.place) && !isAllowed(deed.place))
    return refuse(FileAction::Write, deed.place, deed.place + " lies outside of the places of backups.", deed);
  if (isBackupName(deed.place) && QWFileManager::isMissingAtPath(deed.place))
    report_.notice(deed.place + " is not there now. It is the default backup again once it is.");
  QWLog::appendLog("Making %@ the default backup again", isBackupName(deed.place) ? deed.place : "none");
  const Status changed = setPlaceOfDefault(deed.place, report_);
  report_.add(FileAction::Write, QWUserDefaults::settingsPath(true).value_or(""), changed);
}

// Many at once, because another program may do the work. Answers how many deeds are left.
std::size_t UndoRun::takeBackLocks(const Deeds& deeds, std::size_t last) {
  std::vector<const ReceiptStep*> group;
  std::size_t left = last + 1;
  for (; left > 0 && deeds[left - 1].action == deeds[last].action; --left) {
    const ReceiptStep& deed = deeds[left - 1];
    if (isAllowed(deed.path))
      group.push_back(&deed);
    else
      takeBack(deed);
  }
  setLocks(deeds[last].action, group);
  return left;
}

// What is again as it was needs nothing.
void UndoRun::setLocks(FileAction deed, const std::vector<const ReceiptStep*>& deeds) {
  const bool wasLocked = deed == FileAction::Lock;
  std::vector<std::string> paths;
  std::vector<const ReceiptStep*> those;
  for (const ReceiptStep* step : deeds) {
    if (QWFileManager::isFileLocked(step->path) != wasLocked || QWFileManager::isMissingAtPath(step->path)) continue;
    paths.push_back(step->path);
    those.push_back(step);
  }
  const auto announce = [&](const std::string& path) {
    QWLog::appendLog(wasLocked ? "Unlocking file %@" : "Locking file %@", path);
  };
  const auto outcomes =
      wasLocked ? QWFileManager::unlockFiles(paths, announce) : QWFileManager::lockFiles(paths, announce);
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    report_.add(wasLocked ? FileAction::Unlock : FileAction::Lock, paths[i], outcomes[i].status, those[i]->item);
    changedAnything_ |= outcomes[i].changed;
  }
}

void UndoRun::makeDurable() {
  const auto home = QWLocalPaths::userDirectory();
  if (!changedAnything_ || !home) return;
  const Status synced = files().sync(*home);
  if (synced) return;
  QWLog::appendLog("What was put back may not be on disk: %@", synced.error().text);
  report_.failed(FileAction::Sync, *home, synced.error());
}

}  // namespace vantory
