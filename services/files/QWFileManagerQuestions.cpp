// Questions about files, names for them, and their labels.
#include <algorithm>
#include <filesystem>
#include <optional>

#include "base/Format.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "platform/Clock.h"
#include "platform/FileMetadata.h"
#include "platform/Users.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/FolderWalk.h"
#include "services/files/Items.h"
#include "services/files/QWAuthorization.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

FileSystem& files() {
  return Runtime::current().platform().files;
}

FileMetadata& metadata() {
  return Runtime::current().platform().metadata;
}

constexpr std::size_t kFlagsOffset = 8;  // two bytes, the higher one first
constexpr std::uint16_t kLabelMask = 0x000E;

// The flags word of the Finder's information, which holds the label; 0 where that is too short.
std::uint16_t flagsOf(const std::string& finderInfo) {
  if (finderInfo.size() < kFlagsOffset + 2) return 0;
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(finderInfo[index]); };
  return static_cast<std::uint16_t>(byte(kFlagsOffset) << 8 | byte(kFlagsOffset + 1));
}

}  // namespace

bool QWFileManager::fileExistsAtPath(const std::string& path) {
  return files().info(path, Links::Follow).ok();
}

bool QWFileManager::mayExistAtPath(const std::string& path) {
  const auto info = files().info(path, Links::Follow);
  return info || !meansMissing(info.error());
}

bool QWFileManager::isDirectoryAtPath(const std::string& path) {
  const auto info = files().info(path, Links::Follow);
  return info && info->type == FileType::Folder;
}

bool QWFileManager::isSymbolicLinkAtPath(const std::string& path) {
  return metadata().linkTarget(path).ok();
}

std::optional<std::string> QWFileManager::linkOnTheWay(const std::string& folder, const std::string& root) {
  for (std::string path = folder; path.size() > root.size(); path = paths::parent(path))
    if (isSymbolicLinkAtPath(path)) return path;
  return std::nullopt;
}

Error QWFileManager::linkLeftOut(const std::string& path) {
  const auto target = metadata().linkTarget(path);
  return {std::errc::too_many_symbolic_link_levels,
          formatted("%@ is a symbolic link to %@ and was left out.", path, target ? *target : "an unknown place"),
          "Put the file itself in the place of the link, or see to it where it is."};
}

bool QWFileManager::isPackageAtPath(const std::string& path) {
  return metadata().isPackage(path);
}

bool QWFileManager::itemExistsAtPath(const std::string& path) {
  return itemExists(path);
}

bool QWFileManager::isSameItem(const std::string& path, const std::string& otherPath) {
  const auto one = files().info(path, Links::Follow);
  const auto other = files().info(otherPath, Links::Follow);
  return one && other && one->identity == other->identity;
}

bool QWFileManager::isLeftToOthers(const std::string& path) {
  if (!Runtime::current().leavesOthersAlone) return false;
  const auto shared = QWLocalPaths::sharedUsersDirectory();
  if (!shared || !paths::isWithin(path, *shared)) return false;
  const auto user = Runtime::current().platform().users.processUser();
  const auto info = files().info(path, Links::DoNotFollow);
  return user && info && info->owner && *info->owner != user->id;
}

bool QWFileManager::isWithin(const std::string& path, const std::string& folder) {
  return paths::isWithin(path, folder) || paths::isWithin(realPath(path), realPath(folder));
}

std::string QWFileManager::realPath(const std::string& path) {
  std::error_code failure;
  const auto real = std::filesystem::weakly_canonical(path, failure);
  return failure ? path : real.string();
}

bool QWFileManager::isMissingAtPath(const std::string& path) {
  return isItemMissing(path);
}

std::string QWFileManager::uniqueFilename(const std::string& path) {
  const std::string extension = paths::extension(path);
  const std::string suffix = extension.empty() ? "" : "." + extension;
  std::string candidate = path;
  for (int number = 2; itemExistsAtPath(candidate); ++number)
    candidate = formatted("%@ %i%@", paths::withoutExtension(path), number, suffix);
  return candidate;
}

std::string QWFileManager::validateFilename(const std::string& name) {
  if (name == ".") return "";
  std::string_view text = name;
  if (text.starts_with('.')) text.remove_prefix(1);
  std::string result(trimmed(text));
  std::erase_if(result, [](char character) { return character == '/' || character == ':'; });
  return result;
}

std::string QWFileManager::formatFileSize(double bytes) {
  constexpr double kKilobyte = 1024;
  constexpr double kMegabyte = kKilobyte * 1024;
  constexpr double kGigabyte = kMegabyte * 1024;
  if (bytes < kKilobyte) return formatted("%0.0f B", bytes);
  if (bytes < kMegabyte) return formatted("%0.2f KB", bytes / kKilobyte);
  if (bytes < kGigabyte) return formatted("%0.2f MB", bytes / kMegabyte);
  return formatted("%0.2f GB", bytes / kGigabyte);
}

bool QWFileManager::isFolderEmpty(const std::string& path) {
  return walkFolder(path, Detail::Names, Links::Follow, isHousekeepingEntry);
}

std::uint64_t QWFileManager::fileSize(const std::string& path) {
  if (!isDirectoryAtPath(path)) {
    const auto info = files().info(path, Links::DoNotFollow);
    return info ? info->size : 0;
  }
  return folderSize(path, Links::Follow);
}

std::vector<std::string> QWFileManager::contentsOfDirectory(const std::string& path) {
  return namesIn(path);
}

Status QWFileManager::touchFile(const std::string& path) {
  if (path.empty() || isMissingAtPath(path))
    return Error{std::errc::no_such_file_or_directory, path + " does not exist"};
  if (metadata().isWritable(path)) {
    // True for every file that may be written, whatever became of its date.
    const Timestamp now = Runtime::current().platform().clock.now();
    if (!metadata().setModified(path, now)) (void)metadata().setModified(path, std::nullopt);  // not its owner
    return {};
  }
  if (QWAuthorization::sharedController().authExecTask("/usr/bin/touch", {"-c", path}) == QWAuthorization::Success)
    return {};
  return Error{std::errc::permission_denied, path + " cannot be written to"};
}

std::uint16_t QWFileManager::finderColorIndexForPath(const std::string& path) {
  const auto info = metadata().finderInfo(path);
  return info ? flagsOf(*info) : 0;
}

void QWFileManager::setFinderColorIndex(std::uint16_t index, const std::string& forPath) {
  auto info = metadata().finderInfo(forPath);
  if (!info || info->size() < kFlagsOffset + 2) return;
  const unsigned flags = (index & kLabelMask) | (flagsOf(*info) & ~unsigned{kLabelMask});
  (*info)[kFlagsOffset] = static_cast<char>(flags >> 8);
  (*info)[kFlagsOffset + 1] = static_cast<char>(flags & 0xFF);
  (void)metadata().setFinderInfo(forPath, *info);
}

std::optional<QWFileManager::LabelColor> QWFileManager::finderColorForPath(const std::string& path) {
  static constexpr LabelColor kColors[] = {
      {0.0, 0.0, 0.72},      // grey
      {0.2056, 0.5, 0.85},   // green
      {0.7917, 0.26, 0.86},  // purple
      {0.5789, 0.56, 0.98},  // blue
      {0.1388, 0.54, 0.95},  // yellow
      {0.0083, 0.54, 1.0},   // red
      {0.0888, 0.52, 0.98},  // orange
  };
  // The word is not masked: with any other flag set an item shows no colour.
  const std::uint16_t index = finderColorIndexForPath(path);
  // The lowest bit is not the label's, so that each of the seven colours has two numbers.
  if (index < 2 || index > 15) return std::nullopt;
  return kColors[index / 2 - 1];
}

}  // namespace vantory
