// Which application opens files of a kind.
#pragma once

#include <optional>
#include <string>

#include "base/Result.h"

namespace vantory {

// Works on the user's own settings. Any thread.
class DefaultHandlers {
 public:
  virtual ~DefaultHandlers() = default;

  // The identifier of the type that files with this extension have.
  virtual Result<std::string> typeOfExtension(const std::string& extension) const = 0;
  // Makes the application with this bundle identifier, in any case, the default viewer of the type, whoever made the
  // file. It may be installed later. A type of projects that the desktop does not know yet is declared to it.
  virtual Status setDefaultViewer(const std::string& type, const std::string& bundleIdentifier) = 0;
  // The bundle identifier, in lower case, of the application that opens files of the type now; none when none does, or
  // the one that the user chose is not installed.
  virtual std::optional<std::string> defaultViewer(const std::string& type) const = 0;
};

}  // namespace vantory
