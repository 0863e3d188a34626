#include <future>
#include <unordered_set>

#include "backups/BackupFolder.h"
#include "backups/BackupNaming.h"
#include "backups/LibraryHold.h"
#include "backups/QWBackup.h"
#include "backups/QWDataController.h"
#include "base/Paths.h"
#include "base/PropertyList.h"
#include "platform/FileSystem.h"
#include "services/FailureTally.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/CopiesAhead.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

FileSystem& files() {
  return Runtime::current().platform().files;
}

// Takes the place of an older copy in one step, so that it stays until the new one is whole.
bool replaceCopy(const std::string& source, const std::string& copy) {
  QWFileManager::unlockFile(copy);
  auto staged = QWFileManager::stageCopy({.source = source, .destination = copy});
  const Status replaced = staged ? (*staged)->commit(StagedCopy::Existing::Replace) : Status(staged.error());
  if (replaced) return true;
  if (rightsCouldHelp(replaced.error())) return QWFileManager::copyFile(source, copy, 15s);
  QWLog::appendLog("Error copying file: %@. Authorizing...", replaced.error().text);
  return false;
}

// Copies the files of items into one backup.
class ItemCopier {
 public:
  ItemCopier(const std::string& backup, bool filesOnly) : place_(backup), filesOnly_(filesOnly) {}

  // Answers how many files were copied.
  std::size_t copyItem(const QWPrefItem& item);

 private:
  struct Target {
    std::string folder;
    std::string copy;
  };

  std::size_t copyFiles(const std::vector<std::string>& sources);
  bool copyFile(const std::string& source, const std::string& copy, std::unique_ptr<StagedCopy> staged);
  bool copyAvidFile(const std::string& source);
  bool isThere(const std::string& copy) const;
  // Where the file goes, its folder made; none for what is not copied.
  std::optional<Target> targetFor(const std::string& source);
  Target targetFor(const std::string& source, FileType type) const;
  std::vector<CopyRequest> requestsForFiles(const std::vector<std::string>& sources) const;
  bool prepareFolder(const std::string& folder);
  bool isReachedWithoutLinks(const std::string& folder) const;

  const BackupFolder place_;
  const bool filesOnly_;
  std::unordered_set<std::string> folders_;  // prepared in this run
  std::unordered_set<std::string> copies_;   // made in this run
};

// A source that has vanished since it was found is none that the backup lacks.
bool counted(bool copied, const std::string& source) {
  if (copied) return true;
  QWLog::appendLog("File copy failed");
  if (!QWFileManager::isMissingAtPath(source)) FailureTally::shared().add();
  return false;
}

std::size_t ItemCopier::copyItem(const QWPrefItem& item) {
  std::vector<std::string> sources;
  for (const std::string& pattern : item.files()) {
    auto matching = QWFileManager::filesMatchingWildcardPath(pattern);
    sources.insert(sources.end(), std::make_move_iterator(matching.begin()), std::make_move_iterator(matching.end()));
  }
  std::size_t count = copyFiles(sources);
  for (const auto& user : item.users())
    for (const std::string& pattern : user->files())
      for (const std::string& source : QWFileManager::filesMatchingWildcardPath(pattern)) count += copyAvidFile(source);
  return count;
}

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
    count += copyFile(sources[i], target->copy, std::move(staged));
  }
  return count;
}

std::vector<CopyRequest> ItemCopier::requestsForFiles(const std::vector<std::string>& sources) const {
  std::vector<CopyRequest> requests;
  requests.reserve(sources.size());
  for (const std::string& source : sources)
    requests.push_back({.source = source, .destination = targetFor(source, FileType::File).copy});
  return requests;
}

bool ItemCopier::copyFile(const std::string& source, const std::string& copy, std::unique_ptr<StagedCopy> staged) {
  const bool replaces = isThere(copy);
  if (replaces) QWLog::appendLog("Destination file %@ exists - removing...", copy);
  QWLog::appendLog("Copying %@ to %@", source, copy);
  if (!counted(replaces ? replaceCopy(source, copy) : QWFileManager::copyFile(source, copy, 15s, std::move(staged)),
               source))
    return false;
  copies_.insert(copy);
  return true;
}

// A new backup holds nothing but what this run put there.
bool ItemCopier::isThere(const std::string& copy) const {
  return filesOnly_ ? QWFileManager::itemExistsAtPath(copy) : copies_.contains(copy);
}

bool ItemCopier::copyAvidFile(const std::string& source) {
  const auto target = targetFor(source);
  if (!target) return false;
  QWLog::appendLog("Copying Avid user %@ to %@", source, target->copy);
  if (!counted(filesOnly_ ? replaceCopy(source, target->copy) : QWFileManager::copyFile(source, target->copy, 10s),
               source))
    return false;
  // Not the copy's path, and normally nobody's: the copy keeps the flag that it has.
  QWFileManager::unlockFile(paths::join(target->folder, source));
  return true;
}

std::optional<ItemCopier::Target> ItemCopier::targetFor(const std::string& source) {
  const auto info = files().info(source, Links::DoNotFollow);
  if (!info) {
    if (QWFileManager::meansMissing(info.error())) return std::nullopt;
    QWLog::appendLog("%@", info.error().text);
    counted(false, source);
    return std::nullopt;
  }
  if (info->type == FileType::SymbolicLink) return std::nullopt;
  if (info->type == FileType::Other) {
    QWLog::appendLog("Skipping %@: it is neither a file nor a folder", source);
    return std::nullopt;
  }
  Target target = targetFor(source, info->type);
  if (prepareFolder(target.folder)) return target;
  counted(false, source);
  return std::nullopt;
}

ItemCopier::Target ItemCopier::targetFor(const std::string& source, FileType type) const {
  const std::string safe = place_.safeUserPath(source);
  // A plain folder outside the home folder lands inside a folder of its own name.
  const bool nested = type == FileType::Folder && !place_.isInHome(source) && !QWFileManager::isPackageAtPath(source);
  Target target;
  target.folder = paths::join(place_.path(), nested ? safe : paths::parent(safe));
  target.copy = paths::join(target.folder, paths::lastComponent(source));
  return target;
}

bool ItemCopier::prepareFolder(const std::string& folder) {
  if (folders_.contains(folder)) return true;
  if (filesOnly_ && !isReachedWithoutLinks(folder)) {
    QWLog::appendLog("Nothing is written to %@: a symbolic link leads out of the backup", folder);
    return false;
  }
  if (!QWFileManager::createDirectory(folder)) return false;
  folders_.insert(folder);
  return true;
}

// An existing backup may come from elsewhere.
bool ItemCopier::isReachedWithoutLinks(const std::string& folder) const {
  const std::string backup = place_.path();
  for (std::string path = folder; path.size() > backup.size(); path = paths::parent(path)) {
    const auto info = files().info(path, Links::DoNotFollow);
    if (info && info->type == FileType::SymbolicLink) return false;
  }
  return true;
}

// Makes the folder of a new backup, what bore its name in the Trash, and takes hold of it.
Result<std::unique_ptr<FolderHold>> makeBackupFolder(const std::string& path, std::optional<FileIdentity>& created) {
  const std::string library = paths::parent(path);
  const Error failed = {std::errc::io_error, "The backup's folder could not be made: " + path};
  if (!QWFileManager::createDirectory(library)) return failed;
  // Held until the new folder is, so that of two processes one clears the path and the other finds the result.
  const auto libraryHold = holdBackupFolder(library);
  if (!libraryHold) return libraryHold.error();
  if (!clearBackupPath(path)) return failed;
  if (!QWFileManager::createDirectory(path)) return failed;
  if (const auto info = files().info(path, Links::DoNotFollow)) created = info->identity;
  return holdBackupFolder(path);
}

bool isPossiblePath(const std::string& path) {
  if (path.empty()) {
    QWLog::appendLog("There is no library to write the backup to");
    return false;
  }
  for (const std::string& folder : {paths::parent(path), QWLocalPaths::userDirectory().value_or("")}) {
    if (!QWFileManager::isWildcardPath(folder)) continue;
    QWLog::appendLog("No backup can be written: \"*\" in the name of a folder is not supported (%@)", folder);
    return false;
  }
  return true;
}

bool writeSettings(const std::string& backup, const PropertyListDictionary& settings) {
  QWLog::appendLog("Writing settings file...");
  const Status written = files().write(paths::join(backup, kBackupSettingsFile), writeXmlPropertyList(settings), {});
  if (!written) QWLog::appendLog("The settings file could not be written: %@", written.error().text);
  return written.ok();
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

}  // namespace

WriteResult QWBackup::writeData(bool filesOnly) {
  QWLog::appendLog("Writing backup data to disk for %@", path_);
  createdFolder_.reset();
  if (!isPossiblePath(path_)) return WriteResult::SettingsNotWritten;
  auto hold = filesOnly ? holdBackupFolder(path_) : makeBackupFolder(path_, createdFolder_);
  if (!hold) {
    QWLog::appendLog("Nothing was written: %@", hold.error().text);
    return WriteResult::SettingsNotWritten;
  }

  ItemCopier copier(path_, filesOnly);
  PropertyListDictionary settings = copyApps(children_, copier);
  if (!filesOnly) {
    if (settings.empty()) {
      QWLog::appendLog("Unable to create backup - no files to backup");
      return WriteResult::NoFiles;
    }
    if (!projects_.empty()) {
      settings.set("projectPath", textValue(projects_.front()));
      settings.set("projects", textArray(projects_));
    }
    // Written last: it marks the backup as complete.
    if (!writeSettings(path_, settings)) return WriteResult::SettingsNotWritten;
  }
  if (isDefault_) setDefault();
  // Waiting for the disk leaves time. Deferred where no thread is to be had.
  std::future<Status> sync = std::async([this] { return files().sync(path_); });
  QWLog::appendLog("Unlocking backup...");
  QWFileManager::unlockFolder(path_);
  QWFileManager::touchFile(path_);
  hold->reset();
  QWDataController::sharedController().populateBackups();
  if (const Status synced = sync.get(); !synced) {
    QWLog::appendLog("The backup may not be on disk: %@", synced.error().text);
    return WriteResult::SettingsNotWritten;
  }
  return WriteResult::Success;
}

void QWBackup::removeCreatedFolder() {
  if (!createdFolder_) return;
  // While the library is held nobody else can clear the path and make a folder of their own.
  const auto libraryHold = holdBackupFolder(paths::parent(path_));
  const auto info = files().info(path_, Links::DoNotFollow);
  if (!libraryHold || !info || info->identity != *createdFolder_) {
    QWLog::appendLog("%@ is left as it is: another process is working there", path_);
    return;
  }
  if (!QWFileManager::removeFile(path_, 10s)) FailureTally::shared().add();
  createdFolder_.reset();
}

}  // namespace vantory
