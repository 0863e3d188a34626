// Passes questions to the front end that has a window.
#include "services/messages/QWAlert.h"

#include "services/Runtime.h"

namespace vantory {

QWAlert& QWAlert::sharedController() {
  return Runtime::current().shared<QWAlert>();
}

// Without a window nobody has chosen anything.
int QWAlert::alertSheetWithMessageText(const AlertTexts& texts) {
  const QWAlert& alert = sharedController();
  return alert.ask ? alert.ask(texts) : Other;
}

void QWAlert::alertSheetWithMessageText(const std::string& messageText, const std::string& informativeText,
                                        AlertParent parentWindow) {
  alertSheetWithMessageText({.messageText = messageText,
                             .defaultButton = "OK",
                             .informativeText = informativeText,
                             .parentWindow = parentWindow});
}

}  // namespace vantory
