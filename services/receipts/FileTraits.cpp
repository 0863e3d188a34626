// Looks at a file, or through a folder.
#include "services/receipts/FileTraits.h"

#include <algorithm>

#include "base/Paths.h"
#include "services/Runtime.h"
#include "services/files/FolderWalk.h"

namespace vantory {

namespace {

constexpr const char* kBackupExtension = "vnt";
constexpr const char* kBackupSettings = "Settings.plist";

Result<FileInfo> look(const std::string& path) {
  return Runtime::current().platform().files.info(path, Links::DoNotFollow);
}

}  // namespace

std::optional<FileTraits> ownTraitsOf(const std::string& path) {
  const auto info = look(path);
  if (!info) return std::nullopt;
  return FileTraits{info->identity, info->type == FileType::Folder ? 0 : info->size, info->modified};
}

std::optional<FileTraits> traitsOf(const std::string& path) {
  const auto info = look(path);
  if (!info) return std::nullopt;
  FileTraits traits{info->identity, info->size, info->modified};
  if (info->type != FileType::Folder) return traits;
  traits.size = 0;
  if (paths::extension(path) == kBackupExtension)
    if (const auto settings = look(paths::join(path, kBackupSettings))) {
      traits.size = settings->size;
      traits.modified = settings->modified;
      return traits;
    }
  const auto add = [&](const std::string& below, const DirectoryEntry&) {
    const auto entry = look(below);
    if (!entry) return false;
    traits.size += entry->size;
    traits.modified = std::max(traits.modified, entry->modified);
    return true;
  };
  if (!walkFolder(path, Detail::Names, Links::DoNotFollow, add, Unreadable::End)) return std::nullopt;
  return traits;
}

}  // namespace vantory
