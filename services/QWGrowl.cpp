#include "services/QWGrowl.h"

#include "platform/Messaging.h"
#include "services/GlobalSettings.h"
#include "services/QWLog.h"
#include "services/Runtime.h"

namespace vantory {

void QWGrowl::postGrowlNotification(const std::string& title, const std::string& description) {
  if (globalSwitch("growlDisabled")) return;
  const Status posted = Runtime::current().platform().notifications.post(title, description, "");
  if (!posted) QWLog::appendLog("Unable to show the notification \"%@\": %@", title, posted.error().text);
}

}  // namespace vantory
