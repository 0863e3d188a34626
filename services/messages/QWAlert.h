// Questions to the person at the window.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace vantory {

// The window that an alert belongs to.
enum class AlertParent { MainWindow, BackupDialog, SettingsWindow, ComparisonWindow };

// What became of one file, for an alert that lists several.
struct AlertRow {
  std::string file;   // or the name of an application
  std::string event;  // "not restored"
  std::string cause;  // a sentence or two
};

// An alert's texts; a button without a title is not shown.
struct AlertTexts {
  std::string messageText;
  std::string defaultButton;
  std::string alternateButton = {};
  std::string otherButton = {};
  std::string informativeText = {};
  AlertParent parentWindow = AlertParent::MainWindow;
  // The answer where nobody gave one, because the program ends.
  int unanswered = -1;
  // After so long it answers itself with the default button; never when zero.
  std::chrono::seconds interval{0};
  // Whether closing the alert, as Escape does, stands for the default button and not for the second one.
  bool isDismissedByDefault = false;
  // Listed below the texts; then the person can have the files and the log shown, too.
  std::vector<AlertRow> rows = {};
};

class QWAlert {
 public:
  enum Button : int { Default = 1, Alternate = 0, Other = -1 };

  static QWAlert& sharedController();

  // Shows the alert, blocks until it is answered, and answers the button's code; Other at once without a window, and
  // where nobody answers, unless the texts say otherwise. Any thread.
  static int alertSheetWithMessageText(const AlertTexts& texts);
  // Shows a message with the default button only and blocks until it is answered. Nothing without a window. Any thread.
  static void alertSheetWithMessageText(const std::string& messageText, const std::string& informativeText,
                                        AlertParent parentWindow = AlertParent::MainWindow);

  // Shows the alert on its window, blocks until it is answered, and answers the button's code. Set once by the front
  // end that has a window, called from any thread; empty when there is none.
  std::function<int(const AlertTexts&)> ask;
};

}  // namespace vantory
