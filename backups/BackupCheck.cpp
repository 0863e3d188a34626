// Compares a backup's files with their checksums, and what it holds with what its settings say.
#include "backups/BackupCheck.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <iterator>
#include <memory>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

#include "backups/BackupFolder.h"
#include "backups/BackupNaming.h"
#include "backups/HeldFiles.h"
#include "backups/QWBackup.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "platform/Checksums.h"
#include "platform/FileMetadata.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

using Kind = BackupFault::Kind;

Platform& platform() {
  return Runtime::current().platform();
}

// Without the path, which is told beside it.
std::string reasonIn(const Error& error, const std::string& path) {
  return error.text.starts_with(path + ": ") ? error.text.substr(path.size() + 2) : error.text;
}

// Reads the files of one backup, which two threads share.
class FileChecks {
 public:
  FileChecks(const std::string& backup, const std::vector<HeldFile>& files, const std::set<std::string>& copies)
      : backup_(backup), files_(files), copies_(copies), folder_(platform().checksums.ofFolder(backup)) {}
  ~FileChecks() { join(); }
  FileChecks(const FileChecks&) = delete;
  FileChecks& operator=(const FileChecks&) = delete;

  // On a second thread, which goes on while this one does something else.
  void begin();
  // Here too, until all are read; what came of that.
  BackupCheck finish();

 private:
  void join();
  void work() noexcept;
  void check(const HeldFile& file);
  void checkLink(const HeldFile& link);
  void checkContent(const HeldFile& file);
  void fault(Kind kind, const std::string& path, std::string text);

  const std::string& backup_;
  const std::vector<HeldFile>& files_;
  const std::set<std::string>& copies_;
  const Result<std::unique_ptr<FolderChecksums>> folder_;
  std::atomic<std::size_t> next_ = 0;
  std::mutex mutex_;
  BackupCheck result_;
  std::thread second_;
};

void FileChecks::begin() {
  try {
    if (files_.size() > 1) second_ = std::thread([this] { work(); });
  } catch (const std::system_error&) {
    // This one does it all.
  }
}

void FileChecks::join() {
  if (second_.joinable()) second_.join();
}

BackupCheck FileChecks::finish() {
  work();
  join();
  return std::move(result_);
}

// An exception that left the thread would end the program.
void FileChecks::work() noexcept {
  try {
    for (std::size_t i = next_++; i < files_.size(); i = next_++) check(files_[i]);
  } catch (const std::exception&) {
    fault(Kind::Unreadable, {}, "out of memory");
  }
}

void FileChecks::check(const HeldFile& file) {
  if (file.type == FileType::SymbolicLink) return checkLink(file);
  if (file.type == FileType::File) return checkContent(file);
  fault(Kind::Special, file.path, "is neither a file nor a folder");
}

void FileChecks::fault(Kind kind, const std::string& path, std::string text) {
  const std::lock_guard lock(mutex_);
  result_.faults.push_back({kind, path, std::move(text)});
}

// Decided by the link's text: where it leads to may hold links of its own, or nothing. Inside of a folder it is the
// user's own, which comes back as a link; what a restore takes by a pattern is never one.
void FileChecks::checkLink(const HeldFile& link) {
  const auto target = platform().metadata.linkTarget(paths::join(backup_, link.path));
  if (!target)
    return fault(Kind::Unreadable, link.path,
                 "cannot be read: " + reasonIn(target.error(), paths::join(backup_, link.path)));
  const std::string aim = paths::absolute(*target, paths::parent(paths::join(backup_, link.path)));
  if (!target->starts_with('/') && aim.starts_with(backup_ + "/")) return;
  const bool isCopy = copies_.contains(paths::join(backup_, link.path));
  const std::lock_guard lock(mutex_);
  (isCopy ? result_.faults : result_.remarks)
      .push_back({Kind::LeadsOut, link.path, "is a link that leads out of the backup, to " + *target});
}

void FileChecks::checkContent(const HeldFile& file) {
  const auto checksum = folder_ ? (*folder_)->ofFile(file.path) : folder_.error();
  if (!checksum)
    return fault(Kind::Unreadable, file.path,
                 "cannot be read: " + reasonIn(checksum.error(), paths::join(backup_, file.path)));
  if (checksum->isDamaged()) fault(Kind::Damaged, file.path, "is damaged: its content is not what its checksum says");
  const std::lock_guard lock(mutex_);
  ++result_.files;
  result_.bytes += checksum->bytes;
  if (!checksum->carried) ++result_.withoutChecksum;
}

// Adds what a restore would take for the item; false where the backup holds nothing of it.
bool addCopies(std::set<std::string>& copies, const QWPrefItem& item, const BackupFolder& place) {
  TaskReport leftOut;  // by a rule; what cannot be read is a fault already
  bool isThere = false;
  for (const std::string& pattern : item.files())
    for (std::string& path : item.matches(pattern, &leftOut, &place)) {
      if (QWFileManager::isMissingAtPath(path)) continue;
      copies.insert(std::move(path));
      isThere = true;
    }
  return isThere || !leftOut.files().empty();
}

// An item is named by the settings because one file at least was copied for it. Answers all that a restore would take.
std::set<std::string> checkItems(const QWBackup& backup, const std::string& folder, BackupCheck& result) {
  const BackupFolder place(folder);
  std::set<std::string> copies;
  for (const auto& app : backup.children())
    for (const auto& item : app->children()) {
      bool isThere = addCopies(copies, *item, place);
      for (const auto& user : item->users()) isThere |= addCopies(copies, *user, place);
      if (!isThere)
        result.faults.push_back(
            {Kind::Missing, {}, formatted("no file is there of %@: %@", app->name(), item->name())});
    }
  return copies;
}

void checkHeld(const std::string& backup, const HeldFiles& held, BackupCheck& result) {
  const auto noted = platform().checksums.held(paths::join(backup, kBackupSettingsFile));
  result.isHeldKnown = noted && *noted;
  if (!result.isHeldKnown || **noted == held.note()) return;
  const std::string count = (*noted)->substr(0, (*noted)->find(' '));
  const bool isNumber = !count.empty() && count.find_first_not_of("0123456789") == std::string::npos;
  std::string text = "not the files that were backed up: some are missing, were added or renamed";
  if (isNumber && count != std::to_string(held.files.size()))
    text = formatted("%@ %@ backed up, %i %@ there", count, count == "1" ? "file was" : "files were", held.files.size(),
                     held.files.size() == 1 ? "is" : "are");
  result.faults.push_back({Kind::Paths, {}, std::move(text)});
}

}  // namespace

const char* nameOf(BackupFault::Kind kind) {
  switch (kind) {
    case Kind::Settings:
      return "settings";
    case Kind::Missing:
      return "missing";
    case Kind::Paths:
      return "paths";
    case Kind::Damaged:
      return "damaged";
    case Kind::Unreadable:
      return "unreadable";
    case Kind::LeadsOut:
      return "leadsOut";
    case Kind::Special:
      break;
  }
  return "special";
}

BackupCheck checkBackup(const QWBackup& backup) {
  const std::string folder(paths::withoutTrailingSlashes(backup.path()));
  const HeldFiles held = listHeldFiles(folder);
  BackupCheck result;
  if (!backup.isComplete())
    result.faults.push_back({Kind::Settings, kBackupSettingsFile, "is missing or cannot be read: it is incomplete"});
  for (const Error& error : held.unreadable) result.faults.push_back({Kind::Unreadable, {}, error.text});
  BackupCheck items;
  const std::set<std::string> copies = checkItems(backup, folder, items);
  FileChecks content(folder, held.files, copies);
  content.begin();
  checkHeld(folder, held, result);
  BackupCheck read = content.finish();
  result.files = read.files;
  result.bytes = read.bytes;
  result.withoutChecksum = read.withoutChecksum;
  result.remarks = std::move(read.remarks);
  for (BackupCheck* part : {&items, &read}) std::ranges::move(part->faults, std::back_inserter(result.faults));
  for (auto* told : {&result.faults, &result.remarks}) std::ranges::stable_sort(*told, {}, &BackupFault::path);
  return result;
}

}  // namespace vantory
