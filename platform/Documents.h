// Files in the hands of the user's other programs.
#pragma once

#include <string>
#include <vector>

#include "base/Result.h"

namespace vantory {

// Paths are full. Any thread. Each returns when the other program has taken over, after half a minute at most.
class Documents {
 public:
  virtual ~Documents() = default;

  // Opens a file, a folder or an address such as "https://…" with the application that is usual for it.
  virtual Status open(const std::string& pathOrAddress) = 0;
  // Shows files selected in the file manager; where it cannot select any, their folders.
  virtual Status reveal(const std::vector<std::string>& paths) = 0;
  // Begins a message with the file attached, in the user's mail program.
  virtual Status mail(const std::string& path) = 0;
};

}  // namespace vantory
