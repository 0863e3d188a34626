// Putting the files of a backup back in place. At every instant the user's previous file is in its place or in the
// Trash.
#include <chrono>
#include <optional>
#include <set>

#include "base/Format.h"
#include "base/Paths.h"
#include "catalog/BackupPlace.h"
#include "catalog/FileRestoring.h"
#include "catalog/QWPrefItem.h"
#include "platform/Checksums.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "services/QWCmdUtils.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/FolderWalk.h"
#include "services/files/QWFileManager.h"
#include "services/files/RealPaths.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

constexpr std::chrono::seconds kTimeout{10};

using Staged = Result<std::unique_ptr<StagedCopy>>;

// The line that precedes every second attempt, whether or not there is one.
void logCause(std::string_view cause) {
  QWLog::appendLog("Error copying file: %@. Authorizing...", cause);
}

// Nothing else that keeps a copy from being made is worth trying with administrator rights.
bool areRightsMissingIn(const std::string& folder, const Error& error) {
  return rightsCouldHelp(error) && !Runtime::current().platform().metadata.isWritable(folder);
}

// Names the finished copy; where there is none for want of rights, copies with them.
Status putInPlace(const Staged& staged, const std::string& source, const std::string& destination) {
  if (staged) {
    Status committed = (*staged)->commit(StagedCopy::Existing::Keep);
    if (!committed) logCause(committed.error().text);
    return committed;
  }
  // With administrator rights a live file that could not be trashed, or not even seen, would be written over.
  if (!QWFileManager::isMissingAtPath(destination))
    return QWFileManager::copyFile(source, destination, false, CopyChecksum::Check);
  return QWFileManager::copyFile(source, destination, kTimeout, nullptr, CopyChecksum::Check);
}

// A file that is a folder in the backup, or the reverse. One of them may have become so since; where that is the
// backup's, it is not what was backed up.
Status checkKind(const BackupPlace& backup, const std::string& source, const std::string& destination) {
  const FileSystem& files = Runtime::current().platform().files;
  const auto held = files.info(source, Links::DoNotFollow), live = files.info(destination, Links::DoNotFollow);
  const auto is = [](const auto& info, FileType type) { return info && info->type == type; };
  const bool isFile = is(live, FileType::File) && is(held, FileType::Folder);
  const bool isFolder = is(live, FileType::Folder) && is(held, FileType::File);
  if ((!isFile && !isFolder) || !backup.holdsOtherFiles()) return {};
  return Error{
      std::errc::bad_message,
      formatted(isFile ? "%@: it is a file, but a folder in the backup, which holds other files than were backed up"
                       : "%@: it is a folder, but a file in the backup, which holds other files than were backed up",
                destination)};
}

// For what the backup alone decides.
Error notAllowed(const std::string& path, const std::string& fault) {
  return {std::errc::operation_not_permitted, formatted("%@ %@", path, fault),
          "It stays in the backup, from where you can copy it yourself."};
}

// A link in the backup may lead anywhere.
Status checkNoLink(const std::string& source, std::string_view backupPath) {
  const auto link = QWFileManager::linkOnTheWay(source, std::string(backupPath));
  if (!link) return {};
  const auto target = Runtime::current().platform().metadata.linkTarget(*link);
  return Error{std::errc::too_many_symbolic_link_levels,
               formatted("%@ is a symbolic link to %@, which a restore does not follow", *link,
                         target ? *target : "an unknown place"),
               "Another backup may have the file itself, or copy by hand what the link leads to."};
}

// A folder comes back whole or not at all.
Status checkHeldFolder(const std::string& source, const std::string& destination, const QWPrefItem::PlaceRule& rule,
                       RealPaths& realPaths) {
  Status allowed;
  const auto check = [&](const std::string& path, const DirectoryEntry& entry) {
    const std::string place = destination + path.substr(source.size());
    const std::string fault = entry.type == FileType::SymbolicLink ? "is a symbolic link, which is not restored"
                                                                   : rule(place, place, realPaths);
    if (!fault.empty()) allowed = notAllowed(place, fault);
    return fault.empty();
  };
  const bool isThrough = walkFolder(source, Detail::Names, Links::DoNotFollow, check, Unreadable::End);
  if (!isThrough && allowed) return Error{std::errc::permission_denied, source + ": a folder in it cannot be read"};
  return allowed;
}

// What was restored before may hold links that lead on.
Status checkPlace(const std::string& source, const std::string& destination, const QWPrefItem::PlaceRule& rule) {
  if (QWFileManager::isLeftToOthers(destination))
    return Error{std::errc::operation_not_permitted, destination + " belongs to another user"};
  if (!rule) return {};
  RealPaths realPaths;
  if (const std::string fault = rule(destination, source, realPaths); !fault.empty())
    return notAllowed(destination, fault);
  const auto home = QWLocalPaths::userDirectory(), shared = QWLocalPaths::sharedUsersDirectory();
  const std::string root = home && paths::isWithin(destination, *home) ? *home : shared.value_or("/");
  const auto link = QWFileManager::linkOnTheWay(paths::parent(destination), root);
  if (link) return notAllowed(*link, "is a symbolic link, through which nothing is restored");
  const auto held = Runtime::current().platform().files.info(source, Links::DoNotFollow);
  return held && held->type == FileType::Folder ? checkHeldFolder(source, destination, rule, realPaths) : Status();
}

// A file in the backup, and where it belongs; none for what has no place on this system.
struct Restorable {
  std::string source;
  std::optional<std::string> place;
};

// Puts the files of one item back.
class ItemRestoring {
 public:
  // Null where nothing comes from a backup.
  ItemRestoring(const BackupPlace* backup, const std::string& item, TaskReport& report, QWPrefItem::PlaceRule rule = {})
      : backup_(backup),
        rule_(std::move(rule)),
        backupPath_(backup ? paths::withoutTrailingSlashes(backup->path()) : ""),
        item_(item),
        report_(report) {}

  // What a pattern matches in the backup.
  void restoreAll(std::vector<std::string> sources);
  void replaceContent(const std::string& path, std::string bytes, const FileInfo& known);

 private:
  void plan(const std::vector<Restorable>& files);
  void planUnlocking(const std::vector<FilePlan>& files);
  void restore(const Restorable& file);
  Status makeFolder(const std::string& folder) const;
  void restoreTo(const std::string& destination, const std::string& source);
  Status replace(const Staged& staged, const std::string& source, const std::string& destination);
  Result<std::string> trashLiveFile(const std::string& path);
  void note(const std::string& path, const Status& copied);
  void replaceAndNote(const Staged& staged, const std::string& source, const std::string& destination);
  void putContent(const std::string& path, std::string bytes, const FileInfo& known);
  bool unlock(const std::string& folder);
  void lockAgain(const std::string& path);
  Error withCure(Error cause, const std::string& source) const;
  Status withReason(Status staged, const std::string& source) const;

  const BackupPlace* const backup_;
  const QWPrefItem::PlaceRule rule_;
  const std::string backupPath_;
  const std::string& item_;  // its key
  TaskReport& report_;
};

void ItemRestoring::note(const std::string& path, const Status& copied) {
  QWLog::appendLog(copied ? "File copied successfully." : "File failed to copy.");
  report_.add(FileAction::Restore, path, copied, item_, path);
}

Error ItemRestoring::withCure(Error cause, const std::string& source) const {
  return backup_ ? withCureForDamage(std::move(cause), *backup_, source, "-restore", item_) : cause;
}

// The system's own word for it tells nobody which link it is.
Status ItemRestoring::withReason(Status staged, const std::string& source) const {
  if (staged || staged.error().code != std::errc::too_many_symbolic_link_levels) return staged;
  Status link = checkNoLink(source, backupPath_);
  return link ? staged : link;
}

// Answers where it lies now; nothing where nothing was in the way.
Result<std::string> ItemRestoring::trashLiveFile(const std::string& path) {
  if (QWFileManager::isMissingAtPath(path)) return std::string();
  QWLog::appendLog("Trashing file %@", path);
  auto place = QWFileManager::trashFile(path, kTimeout, report_);
  QWLog::appendLog(place ? "File trashed successfully." : "File failed to trash.");
  return place;
}

// The old file goes first, because a copy never takes an existing item's name, and returns where the copy then fails.
Status ItemRestoring::replace(const Staged& staged, const std::string& source, const std::string& destination) {
  const auto link = Runtime::current().platform().metadata.linkTarget(destination);
  const auto trashed = trashLiveFile(destination);
  QWLog::appendLog("Copying file %@ to %@", source, destination);
  Status copied = putInPlace(staged, source, destination);
  // What is in the way is there because it could not be trashed.
  if (!trashed) return copied ? copied : trashed.status();
  // Not over what has come there meanwhile, such as a copy that administrator rights made late.
  if (trashed->empty() || (!copied && QWFileManager::returnFile(*trashed, destination, kTimeout, report_)))
    return copied;
  report_.done(FileAction::Trash, destination, item_, *trashed);
  if (!copied)
    report_.remark(formatted("The previous \"%@\" lies in the Trash: %@", destination, *trashed));
  else if (link)
    report_.notice(formatted("%@ is a symbolic link to %@: a file of its own takes its place.", destination, *link));
  return copied;
}

// A lock is the user's wish about the path, whichever file lies there.
void ItemRestoring::replaceAndNote(const Staged& staged, const std::string& source, const std::string& destination) {
  const bool wasLocked = QWFileManager::isFileLocked(destination);
  note(destination, replace(staged, source, destination));
  if (wasLocked) lockAgain(destination);
}

// Whether it was locked. One that stays so keeps the copy from being made, which is told.
bool ItemRestoring::unlock(const std::string& folder) {
  if (!QWFileManager::isFileLocked(folder)) return false;
  QWLog::appendLog("Unlocking file %@", folder);
  if (!QWFileManager::unlockFile(folder)) return false;
  report_.noted(FileAction::Unlock, folder, item_);
  return true;
}

void ItemRestoring::lockAgain(const std::string& path) {
  if (QWFileManager::isMissingAtPath(path) || QWFileManager::isFileLocked(path)) return;
  report_.planned(FileAction::Lock, std::vector{path}, item_);
  QWLog::appendLog("Locking file %@", path);
  const Status locked = QWFileManager::lockFile(path);
  if (locked) return report_.noted(FileAction::Lock, path, item_);
  const Error& error = locked.error();
  report_.remark(
      formatted("The lock could not be set again: %@.%@", error.text, error.cure.empty() ? "" : " " + error.cure));
}

void ItemRestoring::restoreAll(std::vector<std::string> sources) {
  std::vector<Restorable> files;
  files.reserve(sources.size());
  for (std::string& source : sources) {
    auto place = livePathOf(source, backupPath_);
    files.push_back({std::move(source), std::move(place)});
  }
  plan(files);
  for (const Restorable& file : files) restore(file);
}

void ItemRestoring::plan(const std::vector<Restorable>& files) {
  std::vector<FilePlan> plans;
  plans.reserve(files.size());
  for (const Restorable& file : files)
    if (file.place) plans.push_back({.path = *file.place, .source = file.source});
  planUnlocking(plans);
  report_.planned(FileAction::Restore, plans, item_);
}

// Comes before all else, so that a task that was killed is taken back before its locks are set again.
void ItemRestoring::planUnlocking(const std::vector<FilePlan>& files) {
  std::set<std::string> locked;
  for (const FilePlan& file : files) locked.insert({paths::parent(file.path), file.path});
  std::erase_if(locked, [](const std::string& path) { return !QWFileManager::isFileLocked(path); });
  report_.planned(FileAction::Unlock, std::vector(locked.begin(), locked.end()), item_);
}

void ItemRestoring::restore(const Restorable& file) {
  const std::string& source = file.source;
  if (!file.place) {
    const Error nowhere = {std::errc::invalid_argument, source + " has no place on this system"};
    QWLog::appendLog("Copying file %@ to %@", source, source.substr(backupPath_.size()));
    logCause(nowhere.text);
    return note(source, nowhere);
  }
  const std::string& destination = *file.place;
  const Status allowed =
      rule_ ? checkRestoring(source, destination, backupPath_, rule_) : checkPlace(source, destination, rule_);
  if (!allowed) {
    QWLog::appendLog("Copying file %@ to %@", source, destination);
    logCause(allowed.error().text);
    return note(destination, allowed);
  }
  const std::string folder = paths::parent(destination);
  if (const Status made = makeFolder(folder); !made) {
    QWLog::appendLog("Copying file %@ to %@", source, destination);
    return note(destination, made);
  }
  const bool wasLocked = unlock(folder);
  restoreTo(destination, source);
  if (wasLocked) lockAgain(folder);
}

// The system's own word does not tell that it is a link that leads nowhere.
Status ItemRestoring::makeFolder(const std::string& folder) const {
  if (QWFileManager::fileExistsAtPath(folder)) return {};
  QWLog::appendLog("Creating destination folder %@", folder);
  Status made =
      rule_ ? QWFileManager::createDirectory(folder, false) : QWFileManager::createDirectory(folder, kTimeout);
  const auto target = Runtime::current().platform().metadata.linkTarget(folder);
  if (made || !target) return made;
  return Error{made.error().code, formatted("%@ is a symbolic link to %@, which is not there", folder, *target)};
}

void ItemRestoring::restoreTo(const std::string& destination, const std::string& source) {
  // The copy is finished, but for its name, before the live file is touched: a bad backup or a full disk costs nothing.
  Staged staged = QWFileManager::stageCopy({.source = source,
                                            .destination = destination,
                                            .sourceRoot = backupPath_,
                                            .links = Links::DoNotFollow,
                                            .checksum = CopyChecksum::Check,
                                            .mayBeProgram = !rule_});
  // With administrator rights it is made only after the live file has gone, so that whatever is wrong with it must show
  // before.
  const bool needsRights = !staged && !rule_ && areRightsMissingIn(paths::parent(destination), staged.error());
  Status sound = needsRights ? backup_->checkCopy(source) : withReason(staged.status(), source);
  if (sound) sound = checkKind(*backup_, source, destination);
  if (sound) return replaceAndNote(staged, source, destination);
  QWLog::appendLog("Copying file %@ to %@", source, destination);
  logCause(sound.error().text);
  note(destination, withCure(sound.error(), source));
}

void ItemRestoring::replaceContent(const std::string& path, std::string bytes, const FileInfo& known) {
  planUnlocking({{.path = path}});
  const std::string folder = paths::parent(path);
  const bool wasLocked = unlock(folder);
  putContent(path, std::move(bytes), known);
  if (wasLocked) lockAgain(folder);
}

// Finished first, like any copy that replaces something. What has changed since its content was read stays.
void ItemRestoring::putContent(const std::string& path, std::string bytes, const FileInfo& known) {
  const Staged staged = QWFileManager::stageCopy({.source = path, .destination = path, .content = std::move(bytes)});
  if (!staged) {
    logCause(staged.error().text);
    return note(path, staged.error());
  }
  const auto now = Runtime::current().platform().files.info(path, Links::Follow);
  if (!now || now->identity != known.identity || now->size != known.size || now->modified != known.modified)
    return note(path, Error{std::errc::device_or_resource_busy, path + ": another program has changed it meanwhile"});
  report_.planned(FileAction::Restore, std::vector{path}, item_);
  replaceAndNote(staged, path, path);
}

}  // namespace

Error withCureForDamage(Error cause, const BackupPlace& backup, const std::string& source, const std::string& task,
                        const std::string& operands) {
  if (cause.code != std::errc::bad_message) return cause;
  const auto older = backup.olderWithSoundCopy(source);
  if (!older)
    cause.cure = "No older backup of the library has it undamaged.";
  else if (QWCmdUtils::sharedController().hasGUI())
    cause.cure =
        formatted("The older backup \"%@\" has it undamaged: compare that in the Restore pane, and tick this file.",
                  paths::withoutExtension(paths::lastComponent(*older)));
  else
    cause.cure = formatted("An older backup has it undamaged: vantory %@ \"%@\" %@", task, *older, operands);
  return cause;
}

Status checkRestoring(const std::string& source, const std::string& destination, const std::string& backupPath,
                      const QWPrefItem::PlaceRule& rule) {
  if (Status direct = checkNoLink(source, backupPath); !direct) return direct;
  return checkPlace(source, destination, rule);
}

void restoreFile(const std::string& source, const BackupPlace& backup, const QWPrefItem& item, TaskReport& report) {
  ItemRestoring(&backup, item.key(), report, item.placeRule()).restoreAll({source});
}

void replaceContent(const std::string& path, std::string bytes, const FileInfo& known, const std::string& item,
                    TaskReport& report) {
  ItemRestoring(nullptr, item, report).replaceContent(path, std::move(bytes), known);
}

bool QWPrefItem::restoreCopies(const BackupPlace& backup, TaskReport& report) const {
  ItemRestoring restoring(&backup, key(), report, placeRule_);
  bool isAnyThere = false;
  for (const std::string& pattern : files()) {
    auto sources = matches(pattern, &report, &backup);
    std::erase_if(sources, [](const std::string& source) { return !QWFileManager::mayExistAtPath(source); });
    isAnyThere |= !sources.empty();
    restoring.restoreAll(std::move(sources));
  }
  return isAnyThere;
}

// The settings name an item because something was copied for it or one of its users. What cannot be listed, and
// what a rule left out, is told by itself.
void QWPrefItem::restoreFilesFromBackup(const BackupPlace& backup, TaskReport& report) {
  const std::size_t told = report.files().size();
  bool isAnyThere = restoreCopies(backup, report);
  // Those that are left out may be the ones.
  for (const auto& user : users_) isAnyThere |= user->selected() != On || user->restoreCopies(backup, report);
  if (isAnyThere || report.files().size() > told) return;
  const std::string root(paths::withoutTrailingSlashes(backup.path()));
  Error cause{std::errc::no_such_file_or_directory,
              formatted("%@ holds no file of \"%@\" (%@), which its settings name.", root, name(), key())};
  QWLog::appendLog("%@", cause.text);
  report.failed(FileAction::Restore, root, std::move(cause), key());
}

}  // namespace vantory
