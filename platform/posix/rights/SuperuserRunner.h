// Administrator rights of a process that has them already.
#pragma once

#include <memory>
#include <utility>

#include "platform/PrivilegedRunner.h"
#include "platform/posix/rights/AdministratorTools.h"

namespace vantory {

class SuperuserRunner : public PrivilegedRunner {
 public:
  // Without tools every request fails.
  explicit SuperuserRunner(std::unique_ptr<AdministratorTools> tools) : tools_(std::move(tools)) {}

  bool authorize() override { return true; }
  void release() override {}
  bool isAuthorized() const override { return true; }
  bool knows(const std::string& tool) const override { return AdministratorTools::knows(tool); }
  int run(const std::string& tool, const std::vector<std::string>& arguments) override {
    return tools_ && tools_->perform(tool, arguments) ? kDone : kFailed;
  }

 private:
  const std::unique_ptr<AdministratorTools> tools_;
};

}  // namespace vantory
