// Tells of an exception in the log.
#include "services/log/QWException.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <system_error>
#include <typeinfo>

#include "base/Text.h"
#include "platform/SystemLog.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

// As it is written in the source, such as "std::runtime_error".
std::string className(const std::exception& exception) {
  const char* encoded = typeid(exception).name();
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(encoded, nullptr, nullptr, &status),
                                                         &std::free);
  return name ? name.get() : encoded;
}

}  // namespace

// Only exceptions that carry an error number can tell.
bool QWException::didTimeout(const std::exception& exception) {
  const auto* failure = dynamic_cast<const std::system_error*>(&exception);
  return failure && failure->code() == std::errc::timed_out;
}

std::string QWException::logException(const std::exception& exception, const char* method) {
  const std::string text = formatted("Exception in %s. %@ - %@.", method, className(exception), exception.what());
  QWLog::appendLog("%@", text);
  Runtime::current().platform().systemLog.write(printable(text));
  return text;
}

}  // namespace vantory
