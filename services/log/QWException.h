// Errors that were thrown and caught inside an operation.
#pragma once

#include <exception>
#include <string>

namespace vantory {

class QWException {
 public:
  // True when the exception stands for a peer that did not answer in time.
  static bool didTimeout(const std::exception& exception);
  // Writes "Exception in %s. %@ - %@." (method, name, reason) to the application's and the system's log, and answers
  // it.
  static std::string logException(const std::exception& exception, const char* method);
};

}  // namespace vantory
