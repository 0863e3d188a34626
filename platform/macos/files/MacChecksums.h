// The checksums of files, through the calls of macOS.
#pragma once

#include "platform/Checksums.h"

namespace vantory {

// With the process's own rights.
class MacChecksums : public Checksums {
 public:
  Result<std::unique_ptr<FolderChecksums>> ofFolder(const std::string& folder) const override;
  Result<std::optional<std::string>> held(const std::string& path) const override;
  Status setHeld(const std::string& path, const std::optional<std::string>& held) override;
};

namespace macos {

// The value of a short attribute of an open file; none when it has none, or its volume knows no attributes. What is too
// long or cannot be read is nothing that could be right: an empty text.
std::optional<std::string> carriedText(int file, const char* attribute);

}  // namespace macos
}  // namespace vantory
