// Which homes a pattern stands for.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "base/Result.h"

namespace vantory {

// As HomeWorkers::homesMatching(). The folder above the homes is listed by a process of its own: where that has not
// answered within the time, the error's code is std::errc::timed_out. While the process has one thread only.
Result<std::vector<std::string>> listHomes(const std::string& pattern, std::chrono::milliseconds patience);

}  // namespace vantory
