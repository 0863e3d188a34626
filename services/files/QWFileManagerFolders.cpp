// Work on all that a folder holds.
#include "base/Paths.h"
#include "base/Text.h"
#include "services/Runtime.h"
#include "services/files/FolderWalk.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

// One that cannot be trashed is logged, and among the answer all the same.
std::vector<std::string> trashMatchingFiles(const std::string& folder,
                                            const std::function<bool(const std::string& name)>& matches) {
  std::vector<std::string> found;
  walkFolder(folder, Detail::Names, Links::Follow, [&](const std::string& path, const DirectoryEntry& entry) {
    if (matches(entry.name)) {
      (void)QWFileManager::trashFile(path);
      found.push_back(path);
    }
    return true;
  });
  return found;
}

}  // namespace

Status QWFileManager::copyContentsOfDirectory(const std::string& source, const std::string& toPath,
                                              std::chrono::seconds timeout) {
  for (const std::string& name : contentsOfDirectory(source)) {
    Status copied = copyFile(paths::join(source, name), paths::join(toPath, name), timeout);
    if (!copied) return copied;
  }
  return {};
}

std::string QWFileManager::createDirectoryStructure(const std::string& path, const std::string& destination) {
  const bool isFolder = isDirectoryAtPath(path) && !isPackageAtPath(path);
  std::string target = paths::join(destination, isFolder ? path : paths::parent(path));
  if (!fileExistsAtPath(target)) (void)createDirectory(target);
  return target;
}

Status QWFileManager::removeFolderIfEmpty(const std::string& path) {
  const auto info = Runtime::current().platform().files.info(path, Links::DoNotFollow);
  if (!info) return meansMissing(info.error()) ? Status() : info.error();
  if (info->type != FileType::Folder) return Error{std::errc::not_a_directory, path + " is no folder"};
  // A folder that cannot be read counts as empty elsewhere, but removing opens it up and would delete what it holds.
  const bool isSurelyEmpty = walkFolder(path, Detail::Names, Links::Follow, isHousekeepingEntry, Unreadable::End);
  if (!isSurelyEmpty) return Error{std::errc::directory_not_empty, path + " is not empty"};
  return removeFile(path, false);
}

Status QWFileManager::trashDirectoryContents(const std::string& path, bool shouldAuth) {
  Status first;
  for (const std::string& name : contentsOfDirectory(path)) {
    const auto place = trashFile(paths::join(path, name), shouldAuth);
    if (!place && first) first = place.error();
  }
  return first;
}

std::vector<std::string> QWFileManager::trashFilesNamed(const std::string& name, const std::string& inFolder) {
  return trashMatchingFiles(inFolder, [&](const std::string& candidate) { return candidate == name; });
}

std::vector<std::string> QWFileManager::trashFilesOfType(const std::string& extension, const std::string& inFolder) {
  return trashMatchingFiles(inFolder, [&](const std::string& candidate) {
    return compareIgnoringCase(paths::extension(candidate), extension) == 0;
  });
}

}  // namespace vantory
