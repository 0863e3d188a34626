// The operating system's log.
#pragma once

#include <string_view>

namespace vantory {

class SystemLog {
 public:
  virtual ~SystemLog() = default;
  // Writes one message to the system's log and to standard error.
  virtual void write(std::string_view message) = 0;
  // Writes it to the system's log alone: it says nothing to who reads standard error.
  virtual void record(std::string_view message) = 0;
};

}  // namespace vantory
