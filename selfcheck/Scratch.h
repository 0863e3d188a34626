// The folder that the self-check works in.
#pragma once

#include <memory>
#include <string>

#include "base/Result.h"

namespace vantory {

class FolderHold;
struct Platform;

// What a run that was killed has left is cleared by the next one.
class Scratch {
 public:
  // A new one in this folder, which exists. Clears those there that no process holds.
  static Result<Scratch> make(Platform& platform, const std::string& parent);

  const std::string& folder() const { return folder_; }
  // Removes it with all it holds, once. Fails with what could not be removed.
  Status clear();

 private:
  Scratch(Platform& platform, std::string folder, std::unique_ptr<FolderHold> hold);

  Platform& platform_;
  std::string folder_;
  std::unique_ptr<FolderHold> hold_;
};

}  // namespace vantory
