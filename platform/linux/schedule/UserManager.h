// The service manager of the user whose files are handled.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/posix/processes/ChildProgram.h"

namespace vantory {

class Users;

// Speaks to it by the tool systemctl. The superuser's process is refused there; for it a child speaks that is the user
// at the console for good, with nothing of the superuser's environment.
class UserManager {
 public:
  // The users outlive it. `tool` is an absolute path.
  explicit UserManager(const Users& users, std::string tool = "/usr/bin/systemctl",
                       std::chrono::milliseconds limit = std::chrono::seconds(10));

  // Runs the tool to its end; one that takes longer than the limit is killed (timed_out). The error's text is what the
  // tool said.
  Status run(const std::vector<std::string>& arguments) const;

 private:
  Result<ChildProgram> program(const std::vector<std::string>& arguments) const;

  const Users& users_;
  const std::string tool_;
  const std::chrono::milliseconds limit_;
};

}  // namespace vantory
