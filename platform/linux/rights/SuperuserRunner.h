// Administrator rights of a process that has them already.
#pragma once

#include <optional>

#include "platform/PrivilegedRunner.h"
#include "platform/linux/rights/AdministratorTools.h"

namespace vantory {

class SuperuserRunner : public PrivilegedRunner {
 public:
  // For the user at the console; with nobody there every request fails.
  SuperuserRunner(const std::optional<User>& user, const StandardFolders& standard,
                  std::vector<std::string> otherFolders);

  bool authorize() override { return true; }
  void release() override {}
  bool isAuthorized() const override { return true; }
  bool knows(const std::string& tool) const override { return AdministratorTools::knows(tool); }
  int run(const std::string& tool, const std::vector<std::string>& arguments) override;

 private:
  std::optional<AdministratorTools> tools_;
};

}  // namespace vantory
