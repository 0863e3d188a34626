// How replaced copies are kept until all are.
#include "backups/ReplacedCopies.h"

#include <chrono>

#include "base/Format.h"
#include "base/Paths.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

using namespace std::chrono_literals;

namespace {

std::string folderBeside(const std::string& backup) {
  return paths::withoutExtension(backup) + " (replaced copies)";
}

}  // namespace

std::string ReplacedCopies::placeFor(const std::string& path) {
  if (folder_.empty()) folder_ = newFolder();
  // Of a folder something may be kept that was replaced before it.
  const std::string below = path.substr(backup_.size());
  std::string place = paths::join(folder_, below);
  for (int number = 2; QWFileManager::itemExistsAtPath(place); ++number)
    place = paths::join(paths::join(folder_, std::to_string(number)), below);
  return place;
}

Status ReplacedCopies::keep(const std::string& path, const std::string& place) {
  if (Status made = QWFileManager::createDirectory(paths::parent(place)); !made) return made;
  auto copy = QWFileManager::stageCopy({.source = path, .destination = place, .links = Links::DoNotFollow});
  return copy ? (*copy)->commit(StagedCopy::Existing::Keep) : copy.error();
}

void ReplacedCopies::drop(const std::string& path, const std::string& place) {
  if (QWFileManager::isMissingAtPath(path)) return;  // what is kept is the only one
  std::string kept = place;
  bool isGone = QWFileManager::removeFile(kept, false).ok();
  while (isGone && (kept = paths::parent(kept)).size() > folder_.size())
    isGone = QWFileManager::removeFolderIfEmpty(kept).ok();
}

void ReplacedCopies::tidy(const std::string& backup) {
  const std::string folder = folderBeside(backup);
  if (QWFileManager::isMissingAtPath(folder)) return;
  if (const auto place = QWFileManager::trashFile(folder, 10s))
    QWLog::appendLog("The copies that an earlier update replaced are in the Trash: %@", *place);
}

std::string ReplacedCopies::newFolder() const {
  tidy(backup_);
  return QWFileManager::uniqueFilename(folderBeside(backup_));
}

// A folder that no copy came to is removed for good.
void ReplacedCopies::moveToTrash(TaskReport& report) {
  if (folder_.empty() || QWFileManager::removeFolderIfEmpty(folder_)) return;
  report.planned(FileAction::Trash, std::vector{folder_});
  const auto place = QWFileManager::trashFile(folder_, 10s, report);
  if (!place) {
    Error cause = place.error();
    cause.text += ". It holds the copies that were replaced, and stays beside the backup for now";
    return report.failed(FileAction::Trash, folder_, std::move(cause));
  }
  const std::string told = formatted("The copies that were replaced are in the Trash: %@", *place);
  QWLog::appendLog("%@", told);
  if (!report.isWhole()) report.remark(told);
  report.done(FileAction::Trash, folder_, {}, *place);
}

}  // namespace vantory
