#include "platform/FileMetadata.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

constexpr std::size_t kFlagsOffset = 8;  // two bytes, the higher one first
constexpr std::uint16_t kLabelMask = 0x000E;

FileMetadata& metadata() {
  return Runtime::current().platform().metadata;
}

std::uint16_t flagsOf(const std::string& finderInfo) {
  if (finderInfo.size() < kFlagsOffset + 2) return 0;
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(finderInfo[index]); };
  return static_cast<std::uint16_t>(byte(kFlagsOffset) << 8 | byte(kFlagsOffset + 1));
}

}  // namespace

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
  if (index < 2 || index > 15) return std::nullopt;
  return kColors[index / 2 - 1];
}

}  // namespace vantory
