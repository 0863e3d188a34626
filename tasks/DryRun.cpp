// Sets up a runtime on the recording platform.
#include "tasks/DryRun.h"

#include <ostream>
#include <utility>

#include "base/Text.h"
#include "services/QWLocalPaths.h"
#include "services/threads/MainThread.h"
#include "tasks/HomeCheck.h"

namespace vantory {

// The order counts: what is made after the runtime works on the recording platform.
DryRun::DryRun(std::vector<std::string> arguments, std::ostream& errors)
    : errors_(errors),
      overlay_(Runtime::current().platform(), std::move(arguments), errors),
      runtime_(overlay_.platform()) {
  runtime_.shared<MainThread>();
  runtime_.guard = &guard_;
  controller_.initForDryRun();
}

// The same checks as before a real task.
Status DryRun::begin(bool usesBackups) {
  const auto home = QWLocalPaths::userDirectory();
  if (const auto reason = reasonToRefuse(home, usesBackups)) {
    overlay_.platform().systemLog.write(printable(*reason));
    return Error{std::errc::no_such_file_or_directory, *reason};
  }
  for (const std::string& remark :
       {remarkOnMissingHome(*home), remarkOnOtherHome(*home), usesBackups ? remarkOnHome(*home) : ""})
    if (!remark.empty()) errors_ << "Vantory: " << printable(remark) << '\n';
  return {};
}

}  // namespace vantory
