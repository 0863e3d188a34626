// How a backup is written: files first, settings last, on disk before success is told.
#include <algorithm>
#include <future>
#include <unordered_map>
#include <unordered_set>

#include "backups/BackupFolder.h"
#include "backups/BackupLibrary.h"
#include "backups/BackupNaming.h"
#include "backups/DefaultBackup.h"
#include "backups/HeldFiles.h"
#include "backups/LibraryHold.h"
#include "backups/QWBackup.h"
#include "backups/ReplacedCopies.h"
#include "backups/SecretsNotice.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "catalog/definitions/DefinitionReader.h"
#include "platform/FileSystem.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/CopiesAhead.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

constexpr int kMostSeconds = 10;  // that an automatic backup looks for one without another

FileSystem& files() {
  return Runtime::current().platform().files;
}

// Takes the place of an older copy in one step, so that it stays until the new one is whole.
Status replaceCopy(const std::string& source, const std::string& copy, std::chrono::seconds timeout) {
  // A copy that stays locked refuses to be replaced.
  (void)QWFileManager::unlockFile(copy);
  auto staged = QWFileManager::stageCopy({.source = source, .destination = copy, .checksum = CopyChecksum::Make});
  const Status replaced = staged ? (*staged)->commit(StagedCopy::Existing::Replace) : Status(staged.error());
  if (replaced) return {};
  // With rights a copy would go into a folder that is there, and not take its place.
  if (rightsCouldHelp(replaced.error()) && !QWFileManager::isDirectoryAtPath(copy))
    return QWFileManager::copyFile(source, copy, timeout, nullptr, CopyChecksum::Make);
  QWLog::appendLog("Error copying file: %@. Authorizing...", replaced.error().text);
  return replaced;
}

// Why what matches a pattern is not backed up; none for files and folders.
std::optional<Error> leftOut(const std::string& source, FileType type) {
  if (type == FileType::SymbolicLink) return QWFileManager::linkLeftOut(source);
  if (type == FileType::Other)
    return Error{std::errc::invalid_argument, source + " is neither a file nor a folder and was left out."};
  return std::nullopt;
}

// Whether there is anything of an item that could be backed up. Notes what is left out, and what cannot be looked at.
bool hasFiles(const QWPrefItem& item, TaskReport& report) {
  for (const std::string& pattern : item.files())
    for (const std::string& source : item.matches(pattern, &report)) {
      const auto info = files().info(source, Links::DoNotFollow);
      if (!info) {
        if (!meansMissing(info.error())) report.failed(FileAction::Copy, source, info.error(), item.key());
        continue;
      }
      std::optional<Error> cause = leftOut(source, info->type);
      if (!cause) return true;
      report.skipped(FileAction::Copy, source, std::move(*cause), item.key());
    }
  return std::ranges::any_of(item.users(), [&](const auto& user) { return hasFiles(*user, report); });
}

// The same of all items; only where there is nothing the report hears of it.
bool haveFiles(const AppList& apps, TaskReport& report) {
  TaskReport found;
  for (const auto& app : apps)
    for (const auto& item : app->children())
      if (hasFiles(*item, found)) return true;
  report.take(std::move(found));
  return false;
}

// Copies the files of items into one backup.
class ItemCopier {
 public:
  ItemCopier(const std::string& backup, bool filesOnly, TaskReport& report)
      : place_(backup), filesOnly_(filesOnly), report_(report), replaced_(backup) {}

  // Answers how many files were copied.
  std::size_t copyItem(const QWPrefItem& item);
  // To be called when all items are.
  void trashReplaced() { replaced_.moveToTrash(report_); }
  // Of an update: whether what the backup holds has to be noted anew.
  bool tookNote() const { return tookNote_.value_or(false); }

 private:
  struct Target {
    std::string folder;
    std::string copy;
    FileType type;
  };
  // How a copy comes to its place.
  struct Manner {
    bool replaces;
    std::chrono::seconds timeout;
  };

  std::size_t copyFiles(const std::vector<std::string>& sources);
  bool copyFile(const std::string& source, const Target& target, std::unique_ptr<StagedCopy> staged);
  bool copyAvidFile(const std::string& source);
  bool put(const std::string& source, const Target& target, Manner manner, std::unique_ptr<StagedCopy> staged);
  Status write(const std::string& source, const std::string& copy, Manner manner, std::unique_ptr<StagedCopy> staged);
  Status update(const std::string& source, const std::string& copy, Manner manner);
  bool note(const std::string& source, const std::string& copy, const Status& copied);
  bool isThere(const Target& target) const;
  std::string madeWith(const std::string& copy) const;
  // Where the file goes, its folder made; none for what is not copied.
  std::optional<Target> targetFor(const std::string& source);
  Target targetFor(const std::string& source, FileType type) const;
  std::vector<CopyRequest> requestsForFiles(const std::vector<std::string>& sources) const;
  Status prepareFolder(const std::string& folder);
  Status checkReach(const std::string& folder) const;
  void dropUnreached(const std::string& folder);

  const BackupFolder place_;
  const bool filesOnly_;
  TaskReport& report_;
  ReplacedCopies replaced_;
  std::string item_;                                   // key of the item being copied
  std::unordered_set<std::string> folders_;            // prepared in this run
  std::unordered_set<std::string> copies_;             // made in this run
  std::vector<std::string> copiedFolders_;             // of those, the folders
  std::unordered_map<std::string, std::string> kept_;  // of an update: where what a copy replaced is kept
  std::optional<bool> tookNote_;                       // the same: none until anything is to be replaced
};

// A source that has vanished since it was found is none that the backup lacks.
bool ItemCopier::note(const std::string& source, const std::string& copy, const Status& copied) {
  if (!copied) QWLog::appendLog("File copy failed");
  if (!copied && QWFileManager::isMissingAtPath(source))
    report_.skipped(FileAction::Copy, source, copied.error(), item_);
  else
    report_.add(FileAction::Copy, source, copied, item_, copy);
  return copied.ok();
}

// The item's own files, then those of its users.
std::size_t ItemCopier::copyItem(const QWPrefItem& item) {
  item_ = item.key();
  std::vector<std::string> sources;
  for (const std::string& pattern : item.files()) {
    auto matching = item.matches(pattern, &report_);
    sources.insert(sources.end(), std::make_move_iterator(matching.begin()), std::make_move_iterator(matching.end()));
  }
  std::size_t count = copyFiles(sources);
  for (const auto& user : item.users()) {
    item_ = user->key();
    for (const std::string& pattern : user->files())
      for (const std::string& source : QWFileManager::filesMatchingWildcardPath(pattern, report_))
        count += copyAvidFile(source);
  }
  return count;
}

// Small files are staged by a second thread meanwhile, from the end of the list.
std::size_t ItemCopier::copyFiles(const std::vector<std::string>& sources) {
  std::optional<CopiesAhead> ahead;
  std::size_t count = 0;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    auto staged = ahead ? ahead->take(i) : nullptr;
    const auto target = staged ? targetFor(sources[i], FileType::File) : targetFor(sources[i]);
    if (!target) continue;
    // Now there is a folder to copy to, as a rule that of all others too. What another item has copied comes again
    // whole.
    if (!ahead && !filesOnly_ && !copies_.contains(target->copy)) ahead.emplace(requestsForFiles(sources), i + 1);
    count += copyFile(sources[i], *target, std::move(staged));
  }
  return count;
}

// As if each were a plain file; what is none is passed over by the second thread.
std::vector<CopyRequest> ItemCopier::requestsForFiles(const std::vector<std::string>& sources) const {
  std::vector<CopyRequest> requests;
  requests.reserve(sources.size());
  for (const std::string& source : sources)
    requests.push_back(
        {.source = source, .destination = targetFor(source, FileType::File).copy, .checksum = CopyChecksum::Make});
  return requests;
}

bool ItemCopier::copyFile(const std::string& source, const Target& target, std::unique_ptr<StagedCopy> staged) {
  const bool replaces = isThere(target);
  if (replaces) QWLog::appendLog("Destination file %@ exists - removing...", target.copy);
  QWLog::appendLog("Copying %@ to %@", source, target.copy);
  return put(source, target, {.replaces = replaces, .timeout = 15s}, std::move(staged));
}

// These have a log line, and a time-out, of their own.
bool ItemCopier::copyAvidFile(const std::string& source) {
  const auto target = targetFor(source);
  if (!target) return false;
  QWLog::appendLog("Copying Avid user %@ to %@", source, target->copy);
  if (!put(source, *target, {.replaces = isThere(*target), .timeout = 10s}, nullptr)) return false;
  // Not the copy's path, and normally nobody's: the copy keeps the flag that it has.
  (void)QWFileManager::unlockFile(paths::join(target->folder, source));
  return true;
}

bool ItemCopier::put(const std::string& source, const Target& target, Manner manner,
                     std::unique_ptr<StagedCopy> staged) {
  const std::string& copy = target.copy;
  const Status done = filesOnly_ ? update(source, copy, manner) : write(source, copy, manner, std::move(staged));
  if (!note(source, copy, done)) return false;
  copies_.insert(copy);
  if (target.type != FileType::Folder) return true;
  copiedFolders_.push_back(copy);
  std::erase_if(folders_, [&](const std::string& folder) { return paths::isWithin(folder, copy); });
  if (manner.replaces) dropUnreached(copy);
  return true;
}

// What came to the folder before it, through what is a link in it now.
void ItemCopier::dropUnreached(const std::string& folder) {
  std::erase_if(copies_, [&](const std::string& copy) {
    if (copy == folder || !paths::isWithin(copy, folder)) return false;
    const Status reached = checkReach(paths::parent(copy));
    if (!reached) report_.failed(FileAction::Copy, copy, reached.error(), item_);
    return !reached;
  });
}

Status ItemCopier::write(const std::string& source, const std::string& copy, Manner manner,
                         std::unique_ptr<StagedCopy> staged) {
  if (manner.replaces) return replaceCopy(source, copy, manner.timeout);
  return QWFileManager::copyFile(source, copy, manner.timeout, std::move(staged), CopyChecksum::Make);
}

// What is replaced can be taken back. What this run made itself is no loss; a folder of which a part comes again is
// noted as it is then.
Status ItemCopier::update(const std::string& source, const std::string& copy, Manner manner) {
  const std::string made = madeWith(copy);
  const std::string& changed = made.empty() ? copy : made;
  const bool keeps = made.empty() && manner.replaces;
  if (keeps) kept_[copy] = replaced_.placeFor(copy);
  const auto kept = kept_.find(changed);
  const std::string place = kept == kept_.end() ? "" : kept->second;
  if (changed == copy) report_.planned(FileAction::Replace, {{.path = copy, .source = source, .place = place}}, item_);
  // Only now: where it ends halfway, the receipt tells whose note is missing.
  if (!tookNote_) tookNote_ = takeNoteOfHeldFiles(place_.path());
  if (Status keeping = keeps ? ReplacedCopies::keep(copy, place) : Status(); !keeping) return keeping;
  Status done = write(source, copy, manner, nullptr);
  if (done)
    report_.noted(FileAction::Replace, changed, item_, place);
  else if (keeps)
    replaced_.drop(copy, place);
  return done;
}

// What this run made that is the copy or holds it; empty where there is no such thing.
std::string ItemCopier::madeWith(const std::string& copy) const {
  if (copies_.contains(copy)) return copy;
  const auto holds = [&](const std::string& folder) { return paths::isWithin(copy, folder); };
  const auto folder = std::ranges::find_if(copiedFolders_, holds);
  return folder == copiedFolders_.end() ? "" : *folder;
}

// A new backup holds nothing but what this run put there.
bool ItemCopier::isThere(const Target& target) const {
  if (filesOnly_ || target.type == FileType::Folder || !madeWith(target.copy).empty())
    return QWFileManager::itemExistsAtPath(target.copy);
  return false;
}

// A source that has vanished is left out without a word.
std::optional<ItemCopier::Target> ItemCopier::targetFor(const std::string& source) {
  const auto info = files().info(source, Links::DoNotFollow);
  if (!info) {
    if (meansMissing(info.error())) return std::nullopt;
    QWLog::appendLog("%@", info.error().text);
    note(source, {}, info.error());
    return std::nullopt;
  }
  if (std::optional<Error> cause = leftOut(source, info->type)) {
    QWLog::appendLog("%@", cause->text);
    report_.skipped(FileAction::Copy, source, std::move(*cause), item_);
    return std::nullopt;
  }
  Target target = targetFor(source, info->type);
  const Status prepared = prepareFolder(target.folder);
  if (prepared) return target;
  note(source, {}, prepared);
  return std::nullopt;
}

ItemCopier::Target ItemCopier::targetFor(const std::string& source, FileType type) const {
  const std::string copy = paths::join(place_.path(), place_.placeOf(source, type));
  return {.folder = paths::parent(copy), .copy = copy, .type = type};
}

// Once for each folder of a run.
Status ItemCopier::prepareFolder(const std::string& folder) {
  if (folders_.contains(folder)) return {};
  if (Status reached = filesOnly_ || !madeWith(folder).empty() ? checkReach(folder) : Status(); !reached)
    return reached;
  Status made = QWFileManager::createDirectory(folder);
  if (made) folders_.insert(folder);
  return made;
}

// An existing backup may come from elsewhere, and a copied folder may hold links.
Status ItemCopier::checkReach(const std::string& folder) const {
  if (!QWFileManager::linkOnTheWay(folder, place_.path())) return {};
  QWLog::appendLog("Nothing is written to %@: a symbolic link leads out of the backup", folder);
  return Error{std::errc::too_many_symbolic_link_levels, folder + ": a symbolic link leads out of the backup"};
}

// Moves what bears the path of a new backup to the Trash, and says where it is.
Result<std::string> clearPath(const std::string& path, TaskReport& report) {
  if (!QWFileManager::isMissingAtPath(path)) report.planned(FileAction::Trash, std::vector{path});
  auto place = clearBackupPath(path);
  if (place) noteCleared(path, *place, report);
  return place;
}

// Checked before anything is made: a star would have the path taken for a pattern.
Status possiblePath(const std::string& path) {
  if (path.empty()) return Error{std::errc::no_such_file_or_directory, "There is no library to write the backup to"};
  for (const std::string& folder : {paths::parent(path), QWLocalPaths::userDirectory().value_or("")})
    if (QWFileManager::isWildcardPath(folder))
      return Error{std::errc::invalid_argument,
                   formatted("No backup can be written: \"*\" in the name of a folder is not supported (%@)", folder)};
  return {};
}

Status writeSettings(const std::string& file, const PropertyListDictionary& settings) {
  QWLog::appendLog("Writing settings file...");
  Status written = files().write(file, writeXmlPropertyList(settings), {});
  if (!written) QWLog::appendLog("The settings file could not be written: %@", written.error().text);
  return written;
}

PropertyListArray textArray(const std::vector<std::string>& texts) {
  PropertyListArray array;
  for (const std::string& text : texts) array.push_back(textValue(text));
  return array;
}

// Copies everything; answers which items of which applications are in the backup now.
PropertyListDictionary copyApps(const AppList& apps, ItemCopier& copier) {
  PropertyListDictionary held;
  for (const auto& app : apps) {
    PropertyListArray names;
    for (const auto& item : app->children())
      if (copier.copyItem(*item) > 0) names.push_back(textValue(item->name()));
    if (!names.empty()) held.set(app->name(), std::move(names));
  }
  return held;
}

// Of the applications that are in the backup those that no built-in table knows, so that it can be restored anywhere.
PropertyListArray definitionsOf(const AppList& apps, const PropertyListDictionary& held) {
  PropertyListArray definitions;
  for (const auto& app : apps)
    if (app->defined() && held.find(app->name())) definitions.push_back(propertyListOf(*app->defined()));
  return definitions;
}

// A person who finds no new backup should know what became of the one before.
void remarkOnEarlier(const std::string& path, TaskReport& report) {
  for (const FileReport& file : report.files())
    if (file.action == FileAction::Trash && file.outcome == FileReport::Outcome::Done && file.path == path)
      return report.remark(formatted("The earlier backup is in the Trash: %@", file.place));
}

}  // namespace

// What bore the name goes to the Trash.
Result<std::unique_ptr<FolderHold>> QWBackup::makeFolder(TaskReport& report) {
  const std::string library = paths::parent(path_);
  if (const Status made = QWFileManager::createDirectory(library); !made) return made.error();
  // Held until the new folder is, so that of two processes one clears the path and the other finds the result.
  auto libraryHold = holdBackupFolder(library);
  for (int seconds = 0; libraryHold && isNamedByTheClock_ && !QWFileManager::isMissingAtPath(path_); ++seconds) {
    if (seconds == kMostSeconds) return Error{std::errc::file_exists, formatted("%@ is there already", path_)};
    libraryHold->reset();
    takeNextSecond();
    libraryHold = holdBackupFolder(library);
  }
  if (!libraryHold) return libraryHold.error();
  auto earlier = clearPath(path_, report);
  if (!earlier) return earlier.error();
  earlier_ = std::move(*earlier);
  report.planned(FileAction::Create, std::vector{path_});
  if (const Status made = QWFileManager::createDirectory(path_); !made) return made.error();
  if (const auto info = files().info(path_, Links::DoNotFollow)) createdFolder_ = info->identity;
  report.noted(FileAction::Create, path_);
  return holdBackupFolder(path_);
}

WriteResult QWBackup::writeData(TaskReport& report, bool filesOnly) {
  const WriteResult result = write(report, filesOnly);
  if (result != WriteResult::Success && createdFolder_) report.noted(FileAction::Create, path_);  // as it was left
  const bool isAsWanted = result == WriteResult::Success && report.isWhole() && report.unusedOperands().empty();
  if (!isAsWanted) remarkOnEarlier(path_, report);
  return result;
}

WriteResult QWBackup::write(TaskReport& report, bool filesOnly) {
  QWLog::appendLog("Writing backup data to disk for %@", path_);
  createdFolder_.reset();
  earlier_.clear();
  const auto refuse = [&](const Error& cause) {
    report.failed(FileAction::Write, path_, cause);
    return WriteResult::SettingsNotWritten;
  };
  if (const Status possible = possiblePath(path_); !possible) {
    QWLog::appendLog("%@", possible.error().text);
    return refuse(possible.error());
  }
  // With nothing to copy the earlier backup would make way for nothing.
  const bool isFirst = filesOnly || QWFileManager::isMissingAtPath(path_);
  if ((!filesOnly && children_.empty()) || (!isFirst && !haveFiles(children_, report))) {
    QWLog::appendLog("Unable to create backup - no files to backup");
    if (!isFirst)
      report.remark(formatted("%@: the earlier backup stays as it is.", children_.empty() ? "No item was chosen"
                                                                        : report.hasFailures()
                                                                            ? "Nothing could be backed up"
                                                                            : "There are no files to back up"));
    return WriteResult::NoFiles;
  }
  const bool inheritsDefault = !filesOnly && !isDefault_ && wouldInheritDefault(path_);
  auto hold = filesOnly ? holdBackupFolder(path_) : makeFolder(report);
  if (!hold) {
    QWLog::appendLog("Nothing was written: %@", hold.error().text);
    returnEarlier(report);
    return refuse(hold.error());
  }

  ItemCopier copier(path_, filesOnly, report);
  PropertyListDictionary settings = copyApps(children_, copier);
  copier.trashReplaced();
  if (filesOnly)
    for (const UnknownPart& part : unknown_)
      report.passedOver(part.name, formatted("Files of \"%@\" stay as they are: %@.", part.name, part.reason));
  if (!filesOnly) {
    if (settings.empty()) {
      QWLog::appendLog("Unable to create backup - no files to backup");
      hold->reset();
      returnEarlier(report);
      return WriteResult::NoFiles;
    }
    if (!projects_.empty()) {
      settings.set("projectPath", textValue(projects_.front()));
      settings.set("projects", textArray(projects_));
    }
    if (auto definitions = definitionsOf(children_, settings); !definitions.empty())
      settings.set(kDefinitionsKey, std::move(definitions));
    noticeSecrets(children_, settings, path_, report);
    // Written last: it marks the backup as complete.
    if (const Status written = writeSettings(paths::join(path_, kBackupSettingsFile), settings); !written) {
      hold->reset();
      returnEarlier(report);
      return refuse(written.error());
    }
  }
  if (!filesOnly || copier.tookNote()) noteHeldFiles(path_);
  if (const Status kept = isDefault_ ? setDefault() : Status(); !kept)
    report.remark(formatted("It could not be made the default backup. %@", kept.error().text));
  // Waiting for the disk leaves time. Deferred where no thread is to be had. A new backup may be on its way to the
  // others of its kind meanwhile; the library's folder stays where it is.
  std::future<Status> sync =
      std::async([path = filesOnly ? path_ : paths::parent(path_)] { return files().sync(path); });
  QWLog::appendLog("Unlocking backup...");
  QWFileManager::unlockFolder(path_);
  if (const Status touched = QWFileManager::touchFile(path_); !touched)
    QWLog::appendLog("The backup keeps its old date: %@", touched.error().text);
  if (!filesOnly) report.noted(FileAction::Create, path_);
  hold->reset();
  BackupLibrary::current().populateBackups();
  if (const Status synced = sync.get(); !synced) {
    QWLog::appendLog("The backup may not be on disk: %@", synced.error().text);
    report.failed(FileAction::Sync, path_, synced.error());
    returnEarlier(report);
    return WriteResult::SettingsNotWritten;
  }
  if (inheritsDefault) noteInheritedDefault(path_, report);
  return WriteResult::Success;
}

void QWBackup::returnEarlier(TaskReport& report) {
  if (earlier_.empty()) return;
  removeCreatedFolder(report);
  const auto libraryHold = holdBackupFolder(paths::parent(path_));
  if (!libraryHold || !QWFileManager::returnFile(earlier_, path_, 10s, report)) return;
  report.returned(path_, earlier_);
  report.remark("Nothing could be backed up: the earlier backup stays as it is.");
}

void QWBackup::removeCreatedFolder(TaskReport& report) {
  if (!createdFolder_) return;
  // While the library is held nobody else can clear the path and make a folder of their own.
  const auto libraryHold = holdBackupFolder(paths::parent(path_));
  if (!libraryHold) {
    QWLog::appendLog("%@ is left as it is: %@", path_, libraryHold.error().text);
    return report.failed(FileAction::Remove, path_, libraryHold.error());
  }
  const auto info = files().info(path_, Links::DoNotFollow);
  if (!info || info->identity != *createdFolder_) {
    QWLog::appendLog("%@ is left as it is: another process is working there", path_);
    return;
  }
  if (const Status removed = QWFileManager::removeFile(path_, 10s); !removed)
    report.failed(FileAction::Remove, path_, removed.error());
  else
    report.noted(FileAction::Remove, path_);
  createdFolder_.reset();
}

void QWBackup::dropUnwritten(TaskReport& report) {
  removeCreatedFolder(report);
  BackupLibrary::current().populateBackups();
}

}  // namespace vantory
