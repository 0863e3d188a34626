// A person before the window, for fixtures whose controllers ask and work on other threads.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "services/Runtime.h"
#include "services/messages/QWAlert.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"

namespace vantory::test {

class PersonAtWindow {
 protected:
  explicit PersonAtWindow(Runtime& runtime) {
    runtime.shared<MainThread>();
    QWAlert::sharedController().ask = [this](const AlertTexts& texts) {
      alerts_.push_back(texts.messageText);
      informative_ = texts.informativeText;
      for (const AlertRow& row : texts.rows) informative_ += "\n" + row.file + " " + row.event + ": " + row.cause;
      return onAlert_ ? onAlert_(texts) : answer_;
    };
  }
  ~PersonAtWindow() { finishWork(); }

  // Returns when what was started on other threads has ended.
  static void finishWork() { BackgroundThreads::shared().waitForAll(); }

  std::vector<std::string> alerts_;                // their messages
  std::string informative_;                        // of the last
  int answer_ = QWAlert::Default;                  // to every alert,
  std::function<int(const AlertTexts&)> onAlert_;  // unless this is set
};

}  // namespace vantory::test
