// syslog, and standard error.
#pragma once

#include <functional>
#include <utility>

#include "platform/SystemLog.h"

namespace vantory {

// Messages go to syslog under the name "Vantory" and to standard error as "Vantory: <message>", one line each: line
// ends inside a message become blanks. Writing never fails, and connects to syslog with the first message only. Any
// thread.
class PosixSystemLog : public SystemLog {
 public:
  PosixSystemLog();
  void write(std::string_view message) override;
  void record(std::string_view message) override;
  // Called before each line on standard error; set before anything is written.
  void setBeforeLine(std::function<void()> action) { beforeLine_ = std::move(action); }

 private:
  // Asked once: a descriptor 2 that is opened later is some file that must not be written to.
  const bool hasStandardError_;
  std::function<void()> beforeLine_ = [] {};
};

}  // namespace vantory
