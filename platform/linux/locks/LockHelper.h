// The lock helper, seen from the program it works for.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/linux/helpers/HelperProcess.h"

namespace vantory {

// Started when it is first needed, and kept from then on. Any thread.
class LockHelper {
 public:
  // How it is started; without a path, the installed one, looked for when it is needed.
  explicit LockHelper(ChildProgram program = {}) : program_(std::move(program)) {}

  // Locks or unlocks files and folders of the user's own, and answers for each in that order: 0, or the errno that says
  // why not. ELOOP where a symbolic link is on the way; EPERM where no helper serves: none is installed, it lacks its
  // capability, or it is gone. The paths are absolute.
  std::vector<int> setLocked(const std::vector<std::string>& paths, bool locked);

  // Whether it has been started and serves.
  bool isRunning();

  // What the machine's administrator can do so that it serves; empty where nothing is missing.
  std::string cure();

 private:
  void start();
  bool hasCapability() const;
  bool ask(const Message& request, std::vector<int>& numbers);

  ChildProgram program_;
  std::mutex mutex_;
  bool tried_ = false;
  bool wasCapable_ = false;  // when it was tried
  std::optional<HelperProcess> process_;
};

}  // namespace vantory
