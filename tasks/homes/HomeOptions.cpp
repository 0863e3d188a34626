// Reads the options that say whose home a task is for.
#include "tasks/homes/HomeOptions.h"

#include <algorithm>
#include <charconv>

#include "tasks/TaskOptions.h"

namespace vantory {

namespace {

constexpr std::size_t kMostJobs = 64;

bool asksAboutProgram(std::string_view argument) {
  return argument == "--version" || argument == "--help" || argument == "-h";
}

// Goes through the arguments once.
class Reading {
 public:
  explicit Reading(const std::vector<std::string>& arguments) : arguments_(arguments) {}

  HomeOptions options() {
    if (!arguments_.empty()) options_.arguments.push_back(arguments_.front());
    while (next_ < arguments_.size() && readOption()) ++next_;
    options_.arguments.insert(options_.arguments.end(), arguments_.begin() + static_cast<std::ptrdiff_t>(next_),
                              arguments_.end());
    if (!options_.fault) options_.fault = faultOfAll();
    // These are the same in every home.
    if (!options_.fault && next_ < arguments_.size() && asksAboutProgram(arguments_[next_])) {
      options_.home.reset();
      options_.patterns.clear();
    }
    return std::move(options_);
  }

 private:
  // Whether the next argument is an option that stands before a task.
  bool readOption() {
    const std::string& argument = arguments_[next_];
    if (isTaskOption(argument)) {
      options_.arguments.push_back(argument);
      return true;
    }
    if (argument == kHome)
      readHome();
    else if (argument == kHomes)
      readPatterns();
    else if (argument == kJobs)
      readJobs();
    else if (argument == kBusy)
      options_.busy = true;
    else
      return false;
    return !options_.fault;
  }

  // The operand of the present option.
  std::optional<std::string> operand(bool mayBeDash = false) {
    if (next_ + 1 == arguments_.size()) return std::nullopt;
    const std::string& argument = arguments_[next_ + 1];
    const bool isOption = argument.starts_with('-') && !(mayBeDash && argument == "-");
    if (argument.empty() || isOption) return std::nullopt;
    ++next_;
    return argument;
  }

  void readHome() {
    if (options_.home) options_.fault = "--home is given twice: \"--homes DIR DIR\" is for several.";
    options_.home = operand();
    if (!options_.home) options_.fault = "--home needs the path of a home folder.";
  }

  void readPatterns() {
    while (auto pattern = operand(true)) options_.patterns.push_back(std::move(*pattern));
    if (options_.patterns.empty())
      options_.fault = "--homes needs the paths of home folders, or \"-\" to read them from standard input.";
  }

  void readJobs() {
    std::size_t jobs = 0;
    const std::string digits = operand().value_or("");
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), jobs);
    if (failure != std::errc() || end != digits.data() + digits.size() || jobs < 1 || jobs > kMostJobs)
      options_.fault = "--jobs needs a number from 1 to " + std::to_string(kMostJobs) + ".";
    else
      options_.jobs = jobs;
  }

  std::optional<std::string> faultOfAll() const {
    // The task would be done elsewhere than was meant.
    for (std::size_t i = next_; i < arguments_.size(); ++i)
      if (arguments_[i] == kHome || arguments_[i] == kHomes) return arguments_[i] + " goes before the task.";
    if (options_.home && options_.isForMany()) return "--home and --homes exclude each other.";
    if ((options_.jobs || options_.busy) && !options_.isForMany()) return "--jobs and --busy go with --homes only.";
    if ((options_.home || options_.isForMany()) && next_ == arguments_.size())
      return std::string(options_.home ? kHome : kHomes) + " needs a task or a question behind it.";
    return std::nullopt;
  }

  const std::vector<std::string>& arguments_;
  std::size_t next_ = 1;
  HomeOptions options_;
};

}  // namespace

HomeOptions readHomeOptions(const std::vector<std::string>& arguments) {
  return Reading(arguments).options();
}

}  // namespace vantory
