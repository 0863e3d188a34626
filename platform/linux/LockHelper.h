// The lock helper, seen from the program it works for.
#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "platform/Result.h"
#include "platform/linux/HelperProcess.h"

namespace vantory {

// Started when it is first needed, and kept from then on. Any thread.
class LockHelper {
 public:
  // How it is started; without a path, the installed one, looked for when it is needed.
  explicit LockHelper(ChildProgram program = {}) : program_(std::move(program)) {}

  // Locks or unlocks a file or folder of the user's own. `path` is absolute and free of symbolic links. None where no
  // helper serves: none is installed, it lacks its capability, or it is gone.
  std::optional<Status> setLocked(const std::string& path, bool locked);

 private:
  void start();
  std::optional<Message> ask(const Message& request);

  ChildProgram program_;
  std::mutex mutex_;
  bool tried_ = false;
  std::optional<HelperProcess> process_;
};

}  // namespace vantory
