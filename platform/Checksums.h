// Checksums that the files of a backup carry in extended attributes, beside their content.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/Result.h"

namespace vantory {

// What of its content a copy carries, as base/Checksum.h writes it.
inline constexpr const char* kChecksumAttribute = "user.vantory.xxh128";
// What a backup's settings file carries of all paths in the backup.
inline constexpr const char* kHeldAttribute = "user.vantory.held";

struct FileChecksum {
  std::uint64_t bytes = 0;             // as many as were read
  std::string content;                 // of those
  std::optional<std::string> carried;  // whatever the file says; none when it carries none

  // What carries none is not known to be.
  bool isDamaged() const { return carried && *carried != content; }
};

// Of a copy whose content is not what its checksum says.
inline Error damagedCopy(const std::string& path) {
  return {std::errc::bad_message, path + ": it is damaged: its content is not what its checksum says"};
}

// An open folder, of whose files the checksums are wanted. Any thread, and several at once.
class FolderChecksums {
 public:
  virtual ~FolderChecksums() = default;

  // Reads a regular file that lies below the folder, at a path from there that passes no link. A FIFO or device is
  // refused, never waited for.
  virtual Result<FileChecksum> ofFile(const std::string& pathBelow) const = 0;
};

// Any thread, and several at once.
class Checksums {
 public:
  virtual ~Checksums() = default;

  // Outlives what it answers.
  virtual Result<std::unique_ptr<FolderChecksums>> ofFolder(const std::string& folder) const = 0;

  // What a settings file carries; none when that is nothing.
  virtual Result<std::optional<std::string>> held(const std::string& path) const = 0;
  // Nothing stands for none. Fails with operation_not_supported where the file system knows no such attributes.
  virtual Status setHeld(const std::string& path, const std::optional<std::string>& held) = 0;
};

}  // namespace vantory
