// A process as the kernel shows it below /proc.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "platform/posix/files/Descriptor.h"

namespace vantory {

// Keeps to the process it was opened for, also when its number is given to another one later; all answers are empty
// then, as they are for what the process's owner may not see.
class ProcessView {
 public:
  // `processes` is an open folder like /proc.
  ProcessView(int processes, pid_t number);

  pid_t number() const { return number_; }
  // True when the process exists, belongs to the user and has not ended; one that waits to be collected has.
  bool isAliveFor(uid_t user) const;
  // 0 when unknown.
  pid_t parent() const;

  std::string controlGroups() const { return content("cgroup", kLargestText); }
  // Its argument list, its name first.
  std::vector<std::string> arguments() const;
  // Empty when it is not set.
  std::string variable(const std::string& name) const;
  // The identity that a Flatpak sandbox gives to what runs in it; empty outside of one.
  std::string flatpakApplication() const;

  std::string workingFolder() const { return linkText("cwd"); }
  // Where its program's file lies, or lay.
  std::string program() const;
  // True when it runs that file, or one that was removed from there.
  bool runs(const std::string& program) const;

 private:
  static constexpr std::size_t kLargestText = 64 * 1024;
  static constexpr std::size_t kLargestEnvironment = 512 * 1024;

  std::string content(const char* file, std::size_t limit) const;
  std::string linkText(const char* link) const;
  // The fields of its state, beginning with the letter for the state itself.
  std::vector<std::string> state() const;
  bool belongsTo(uid_t user) const;

  pid_t number_;
  Descriptor folder_;
};

}  // namespace vantory
