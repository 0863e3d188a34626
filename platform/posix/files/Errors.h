// Errors of system calls as the program's own.
#pragma once

#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>

#include "base/Result.h"

namespace vantory {

// The error that errno holds, about this path, with the cure where there is one that always helps.
Error systemError(std::string_view path, int number = errno);

inline Error errorWithText(std::errc code, std::string_view path, std::string_view reason) {
  return {code, std::string(path) + ": " + std::string(reason)};
}

}  // namespace vantory
