// Administrator rights for an ordinary user's process.
#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <string>

#include "platform/PrivilegedRunner.h"
#include "platform/linux/helpers/HelperProcess.h"

namespace vantory {

// Has one helper program of the superuser's do the work. pkexec starts it once the person at the screen has given an
// administrator's password; it then serves requests until the right is given up or this process ends, so that a task
// asks once for all its files.
class PkexecRunner : public PrivilegedRunner {
 public:
  // Waits ten minutes for the person. At once false without pkexec or the helper, and as soon as pkexec gives up.
  bool authorize() override;
  void release() override;
  bool isAuthorized() const override { return authorized_; }
  bool knows(const std::string& tool) const override;
  // A helper that has died has taken the right with it.
  int run(const std::string& tool, const std::vector<std::string>& arguments) override;

 private:
  void letGo();

  std::mutex mutex_;  // one request at a time
  std::optional<HelperProcess> helper_;
  std::atomic<bool> authorized_ = false;
};

}  // namespace vantory
