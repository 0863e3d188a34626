// Shows the program's alerts on its windows.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "services/messages/QWAlert.h"
#include "window/dialogs/AlertDialog.h"

class QWidget;

namespace vantory {

// Made on the main thread; outlives whoever may ask.
class AlertSheets {
 public:
  // Tells the window of a parent; null when it is not there. Called on the main thread.
  explicit AlertSheets(std::function<QWidget*(AlertParent)> windowOf) : windowOf_(std::move(windowOf)) {}

  // Shows the alert and waits for its answer, any thread. The main thread goes on with its events meanwhile. "Other"
  // once the program is ending.
  int ask(const AlertTexts& texts);
  // What alerts with a list can have shown. Main thread.
  void setShows(AlertDialog::Shows shows) { shows_ = std::move(shows); }
  // Takes all alerts off the screen, as if dismissed, and shows no more. Main thread.
  void refuse();

 private:
  struct Answer;

  void show(const AlertTexts& texts, const std::shared_ptr<Answer>& answer);

  const std::function<QWidget*(AlertParent)> windowOf_;
  AlertDialog::Shows shows_;
  std::vector<AlertDialog*> shown_;
  bool refusing_ = false;
};

}  // namespace vantory
