#include "services/QWAlert.h"

#include "services/Runtime.h"

namespace vantory {

QWAlert& QWAlert::sharedController() {
  return Runtime::current().shared<QWAlert>();
}

void QWAlert::alertSheetWithMessageText(const std::string& messageText, const std::string& informativeText,
                                        AlertParent parentWindow) {
  const QWAlert& alert = sharedController();
  if (!alert.ask) return;
  alert.ask({.messageText = messageText,
             .defaultButton = "OK",
             .informativeText = informativeText,
             .parentWindow = parentWindow});
}

}  // namespace vantory
