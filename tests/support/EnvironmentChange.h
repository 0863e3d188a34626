// An environment variable that a test sets for a while.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace vantory::test {

// Sets the variable, or unsets it where no value is given; puts back what was there at the end.
class EnvironmentChange {
 public:
  EnvironmentChange(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str())) old_ = old;
    set(value);
  }
  ~EnvironmentChange() { set(old_); }
  EnvironmentChange(const EnvironmentChange&) = delete;
  EnvironmentChange& operator=(const EnvironmentChange&) = delete;

 private:
  void set(const std::optional<std::string>& value) const {
    if (value)
      setenv(name_.c_str(), value->c_str(), 1);
    else
      unsetenv(name_.c_str());
  }

  const std::string name_;
  std::optional<std::string> old_;
};

}  // namespace vantory::test
