// Administrator rights, which this platform does not obtain yet.
#pragma once

#include "platform/PrivilegedRunner.h"
#include "platform/SystemLog.h"

namespace vantory {

// Never grants the right, and says so: what needs it fails as after a refused password.
class MacPrivilegedRunner : public PrivilegedRunner {
 public:
  // The log outlives it.
  explicit MacPrivilegedRunner(SystemLog& log) : log_(log) {}

  bool authorize() override {
    log_.write("Administrator rights cannot be obtained on macOS yet.");
    return false;
  }
  void release() override {}
  bool isAuthorized() const override { return false; }
  bool knows(const std::string&) const override { return false; }
  int run(const std::string&, const std::vector<std::string>&) override { return kFailed; }

 private:
  SystemLog& log_;
};

}  // namespace vantory
