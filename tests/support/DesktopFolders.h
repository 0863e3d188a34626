// A desktop of a test's own: where applications and defaults are declared, and programs to declare.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/EnvironmentChange.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {

// While it exists, this process and what it starts have no other home, data folders and settings, and no session bus.
class DesktopFolders {
 public:
  DesktopFolders();

  const std::string& home() const { return home_.path(); }
  // The full path of something in the home.
  std::string operator/(std::string_view relative) const { return home_ / relative; }

  // Declares "IDENTIFIER.desktop" with these further lines, for this user.
  void declare(const std::string& identifier, const std::string& command, const std::string& lines = "");
  std::string entry(const std::string& identifier) const;
  // A program in the home that waits until it is ended.
  std::string program(const std::string& name);
  // An executable text file in the home.
  std::string script(const std::string& name, const std::string& text);

 private:
  ScratchFolder home_;
  std::vector<std::unique_ptr<EnvironmentChange>> variables_;
};

// A child that is ended, at the latest, with this.
class Running {
 public:
  explicit Running(const std::string& program, std::vector<std::string> arguments = {});
  ~Running();
  Running(const Running&) = delete;

  pid_t number() const { return child_; }
  // True when it ends by that signal within ten seconds.
  bool endsBy(int signal);
  bool isAlive();

 private:
  pid_t child_;
  int status_ = 0;
};

// True when the condition comes true within ten seconds.
bool soon(const std::function<bool()>& condition);

}  // namespace vantory::test
