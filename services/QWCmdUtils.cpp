// Keeps whether there is a user interface.
#include "services/QWCmdUtils.h"

#include "platform/SystemInfo.h"
#include "services/Runtime.h"

namespace vantory {

QWCmdUtils& QWCmdUtils::sharedController() {
  return Runtime::current().shared<QWCmdUtils>();
}

std::string QWCmdUtils::applicationPath() {
  return Runtime::current().platform().system.workingDirectory();
}

}  // namespace vantory
