// Reports to the companion tool that started a task.
#pragma once

#include <string>

namespace vantory {

// A message that was received is followed by a pause of 15 milliseconds, so that a process that ends right afterwards
// does not cut it off. Nobody listening is normal and passes without a pause; a failure is logged. Any thread.
class QWTaskNotification {
 public:
  static void postTaskErrorString(const std::string& text);
  static void postTaskError(const std::string& error);
  static void postTaskFinished();
  static void postIncrementProgress();
  static void postDisconnect();
};

}  // namespace vantory
