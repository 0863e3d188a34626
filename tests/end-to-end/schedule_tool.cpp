// Schedules a job as the program does, for the end-to-end tests: schedule_tool start LABEL SECONDS PROGRAM NAME
// [ARGUMENT...], or schedule_tool remove LABEL. Ends with 0, with 1 when the job's file could not be written, or with 2
// when called otherwise.

#include <charconv>
#include <string>
#include <vector>

#include "backups/QWLaunchd.h"
#include "platform/linux/LinuxPlatform.h"
#include "services/MainThread.h"
#include "services/QWAuthorization.h"
#include "services/QWCmdUtils.h"
#include "services/QWLog.h"
#include "services/Runtime.h"

namespace {

using namespace vantory;

bool start(const std::vector<std::string>& arguments) {
  std::int64_t interval = 0;
  std::from_chars(arguments[3].data(), arguments[3].data() + arguments[3].size(), interval);
  PropertyListDictionary job;
  job.set("Label", arguments[2]);
  job.set("Program", textValue(arguments[4]));
  PropertyListArray names;
  for (std::size_t i = 5; i < arguments.size(); ++i) names.push_back(textValue(arguments[i]));
  job.set("ProgramArguments", names);
  job.set("StartInterval", interval);
  return QWLaunchd::startLaunchAgent(arguments[2], job, true);
}

}  // namespace

int main(int argumentCount, char** argumentList) {
  const std::vector<std::string> arguments(argumentList, argumentList + argumentCount);
  LinuxPlatform platform(arguments);
  Runtime runtime(platform.platform());
  runtime.shared<MainThread>();
  QWCmdUtils::sharedController().setHasGUI(false);
  QWLog::createNewLog("Schedule");
  QWAuthorization::sharedController(false);
  if (arguments.size() >= 6 && arguments[1] == "start") return start(arguments) ? 0 : 1;
  if (arguments.size() != 3 || arguments[1] != "remove") return 2;
  QWLaunchd::removeLaunchAgent(arguments[2], true);
  return 0;
}
