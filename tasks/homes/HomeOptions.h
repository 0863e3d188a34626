// Whose home, or homes, a command line is for.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantory {

inline constexpr std::string_view kHome = "--home";
inline constexpr std::string_view kHomes = "--homes";
inline constexpr std::string_view kJobs = "--jobs";
inline constexpr std::string_view kBusy = "--busy";

// With one of these options the line is for another home than the environment's, or for many.
struct HomeOptions {
  std::vector<std::string> arguments;  // the line without these options
  std::optional<std::string> home;     // as it was given
  std::vector<std::string> patterns;   // of homes; "-" stands for lines of standard input
  std::optional<std::size_t> jobs;     // how many homes at once
  bool busy = false;                   // also homes that somebody works in
  std::optional<std::string> fault;    // a sentence; then nothing must be done

  bool isForMany() const { return !patterns.empty(); }
};

// They stand before the task, among its own options; what follows the first other argument is the task's.
HomeOptions readHomeOptions(const std::vector<std::string>& arguments);

}  // namespace vantory
