// Work in many homes at once, each by a process of its owner.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"

namespace vantory {

// What came of one home.
struct HomeResult {
  // Files.
  struct Counts {
    std::size_t done = 0;
    std::size_t skipped = 0;
    std::size_t failed = 0;
  };

  std::string home;                   // as it was given
  std::string owner;                  // a name; empty where it is not known
  int exitCode = 0;                   // as a task's with "--strict"
  std::string why = {};               // a sentence; empty where there is nothing to tell
  std::optional<Counts> counts = {};  // none for what is no task, or was not begun
  std::string output = {};
};

// One thread's.
class HomeWorkers {
 public:
  virtual ~HomeWorkers() = default;

  // The homes that a path with a pattern in its last part stands for, in order; a path without one stands for itself.
  virtual Result<std::vector<std::string>> homesMatching(const std::string& pattern) = 0;
  // Begins the work in a home, as its owner where the process is the superuser's.
  virtual Status start(const std::string& home) = 0;
  // Blocks until the work in one of the homes has ended. None, once, when the program is asked to end. At least one
  // must have been started that was not answered.
  virtual std::optional<HomeResult> next() = 0;
};

}  // namespace vantory
