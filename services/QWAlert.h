// Questions to the person at the window.
#pragma once

#include <functional>
#include <string>

namespace vantory {

// An alert's texts; a button without a title is not shown.
struct AlertTexts {
  std::string messageText;
  std::string defaultButton;
  std::string alternateButton = {};
  std::string otherButton = {};
  std::string informativeText = {};
};

class QWAlert {
 public:
  enum Button : int { Default = 1, Alternate = 0, Other = -1 };

  static QWAlert& sharedController();

  // Shows the alert on the main window, blocks until it is answered, and answers the button's code. Set once by the
  // front end that has a window, called from any thread; empty when there is none.
  std::function<int(const AlertTexts&)> ask;
};

}  // namespace vantory
