// Makes scratch folders, and clears those that nobody uses any more.
#include "selfcheck/Scratch.h"

#include <utility>

#include "base/Paths.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SystemInfo.h"

namespace vantory {

namespace {

constexpr const char* kName = "vantory-self-check-";

// A check that was killed may have left items locked.
void unlockAll(Platform& platform, const std::string& folder) {
  const auto entries = platform.files.list(folder, Detail::Names);
  if (!entries) return;
  for (const DirectoryEntry& entry : *entries) {
    const std::string path = paths::join(folder, entry.name);
    const Result<FileInfo> info = platform.files.info(path, Links::DoNotFollow);
    if (info && info->locked) (void)platform.metadata.setLocked(path, false);
    if (info && info->type == FileType::Folder) unlockAll(platform, path);
  }
}

Status removeAll(Platform& platform, const std::string& folder) {
  unlockAll(platform, folder);
  return platform.files.remove(folder);
}

// Who cannot be told to use one no more keeps it.
void clearUnused(Platform& platform, const std::string& parent) {
  const auto entries = platform.files.list(parent, Detail::Names);
  if (!entries) return;
  for (const DirectoryEntry& entry : *entries) {
    const std::string folder = paths::join(parent, entry.name);
    if (!entry.name.starts_with(kName) || !platform.metadata.isWritable(folder)) continue;
    const Result<FileInfo> info = platform.files.info(folder, Links::DoNotFollow);
    if (!info || info->type != FileType::Folder) continue;
    if (platform.files.holdFolder(folder, std::chrono::milliseconds(0))) (void)removeAll(platform, folder);
  }
}

}  // namespace

Result<Scratch> Scratch::make(Platform& platform, const std::string& parent) {
  const Result<FileInfo> there = platform.files.info(parent, Links::Follow);
  if (!there) return there.error();
  // Until the new one is held nobody else may take it for one that is used no more.
  const auto clearing = platform.files.holdFolder(parent, std::chrono::seconds(2));
  clearUnused(platform, parent);
  std::string folder = paths::join(parent, kName + platform.system.uniqueString());
  if (const Status made = platform.files.makeFolder(folder); !made) return made.error();
  auto hold = platform.files.holdFolder(folder, std::chrono::milliseconds(0));
  if (!hold) {
    (void)platform.files.remove(folder);
    return hold.error();
  }
  return Scratch(platform, std::move(folder), std::move(*hold));
}

Scratch::Scratch(Platform& platform, std::string folder, std::unique_ptr<FolderHold> hold)
    : platform_(platform), folder_(std::move(folder)), hold_(std::move(hold)) {}

Status Scratch::clear() {
  Status removed = removeAll(platform_, folder_);
  hold_.reset();
  return removed;
}

}  // namespace vantory
