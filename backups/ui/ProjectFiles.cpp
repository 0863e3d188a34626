// Tells which files are projects.
#include "backups/ui/ProjectFiles.h"

#include "backups/BackupLibrary.h"
#include "catalog/ProjectKinds.h"
#include "platform/FileMetadata.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

constexpr const char* kProjectType = "FCPF";

// The code in the first four bytes of a file's Finder information, by which old projects are known.
bool hasProjectType(const std::string& path) {
  const auto info = Runtime::current().platform().metadata.finderInfo(path);
  return info && info->starts_with(kProjectType);
}

}  // namespace

std::optional<std::string> reasonNotToLink(const std::string& path) {
  if (!QWFileManager::fileExistsAtPath(path))
    return "is not there under the name that was chosen. Names that are no text cannot be chosen.";
  if (applicationsOfProject(path, BackupLibrary::current().appArray()).empty() && !hasProjectType(path))
    return "is no project file.";
  return std::nullopt;
}

}  // namespace vantory
