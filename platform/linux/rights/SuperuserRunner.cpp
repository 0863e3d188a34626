// Does administrator work in this process.
#include "platform/linux/rights/SuperuserRunner.h"

namespace vantory {

SuperuserRunner::SuperuserRunner(const std::optional<User>& user, const StandardFolders& standard,
                                 std::vector<std::string> otherFolders) {
  if (user) tools_.emplace(*user, standard, std::move(otherFolders));
}

int SuperuserRunner::run(const std::string& tool, const std::vector<std::string>& arguments) {
  return tools_ && tools_->perform(tool, arguments) ? kDone : kFailed;
}

}  // namespace vantory
