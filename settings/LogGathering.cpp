// Copies logs, reports and settings into one folder, and packs it.
#include "settings/LogGathering.h"

#include <utility>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/FileSystem.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/LogFile.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

// More than five generations of every log, and little enough to be sent.
constexpr std::uint64_t kMostBytes = 256 * 1024 * 1024;

FileSystem& files() {
  return Runtime::current().platform().files;
}

std::string withoutBlanks(std::string name) {
  std::erase(name, ' ');
  return name;
}

}  // namespace

LogGathering::LogGathering(std::string folder) : folder_(std::move(folder)), room_(kMostBytes) {}

LogGathering::~LogGathering() {
  // What stays is in the way of the next gathering, which tells of it.
  (void)files().remove(folder_);
}

// A gathering that was killed may have left its folder.
Status LogGathering::begin() {
  if (QWFileManager::itemExistsAtPath(folder_)) {
    if (Status removed = files().remove(folder_); !removed) {
      QWLog::appendLogAndPrint("Error removing existing folder: %@", removed.error().text);
      return removed;
    }
  }
  Status made = files().makeFolder(folder_);
  if (!made) QWLog::appendLogAndPrint("Error creating temp folder: %@", made.error().text);
  return made;
}

// Of the preference files the first that there is: the maker's programs spell their names in two ways.
void LogGathering::addProgram(const std::string& name) {
  if (name.empty()) return;
  for (const bool user : {true, false}) {
    if (const auto logs = logFolder(user)) addMatching(*logs, name, ".log");
    if (const auto logs = QWLocalPaths::logDirectory(user))
      addMatching(paths::join(*logs, "CrashReporter"), name + "_", ".crash");
  }
  const auto preferences = QWLocalPaths::prefsDirectory(true);
  if (!preferences) return;
  for (const std::string& spelling : {withoutBlanks(name), lowerCased(withoutBlanks(name))}) {
    const std::string path = paths::join(*preferences, formatted("com.quarrywell.%@.plist", spelling));
    if (QWFileManager::fileExistsAtPath(path)) return add(path, "Unable to copy file: %@");
  }
}

void LogGathering::addFile(const std::string& path) {
  add(path, "Unable to copy file: %@");
}

Status LogGathering::packInto(const std::string& archive) const {
  return QWFileManager::compressFile(folder_, archive);
}

void LogGathering::addMatching(const std::string& folder, const std::string& prefix, const std::string& suffix) {
  for (const std::string& name : QWFileManager::contentsOfDirectory(folder)) {
    if (!name.starts_with(prefix) || !name.ends_with(suffix)) continue;
    const std::string path = paths::join(folder, name);
    // A folder is no log, and a link to one may lead to anything.
    if (!QWFileManager::isDirectoryAtPath(path)) add(path, "Unable to copy log: %@");
  }
}

void LogGathering::add(const std::string& path, const char* complaint) {
  const Status copied = copy(path);
  ++(copied ? copied_ : failed_);
  if (!copied) QWLog::appendLogAndPrint(complaint, copied.error().text);
}

// Below the gathering's folder by its full path, so that support sees where it lay. What is there already stays.
Status LogGathering::copy(const std::string& path) {
  const std::string target = paths::join(folder_, path);
  if (!paths::isWithin(target, folder_)) return Error{std::errc::invalid_argument, path + ": not a full path"};
  const auto info = files().info(path, Links::Follow);
  if (!info) return info.error();
  if (info->type == FileType::Other) return Error{std::errc::not_supported, path + ": neither a file nor a folder"};
  if (QWFileManager::itemExistsAtPath(target)) return {};
  const std::uint64_t size = info->type == FileType::Folder ? QWFileManager::fileSize(path) : info->size;
  if (size > room_) return Error{std::errc::file_too_large, path + ": too large to be sent"};
  if (Status made = files().makeFolder(paths::parent(target)); !made) return made;
  const auto staged = QWFileManager::stageCopy({.source = path, .destination = target});
  if (!staged) return staged.error();
  room_ -= size;
  return (*staged)->commit(StagedCopy::Existing::Keep);
}

}  // namespace vantory
