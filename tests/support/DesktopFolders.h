// A desktop of a test's own: where applications and defaults are declared, and programs to declare.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/Format.h"
#include "platform/posix/processes/ChildProgram.h"
#include "tests/support/EnvironmentChange.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {

// While it exists, this process and what it starts have no other home, data folders and settings, and no session bus.
class DesktopFolders {
 public:
  DesktopFolders() {
    const std::vector<std::pair<std::string, std::optional<std::string>>> variables = {
        {"HOME", home_.path()},
        {"XDG_DATA_HOME", home_ / ".local/share"},
        {"XDG_DATA_DIRS", home_ / "machine" + ":/usr/share"},
        {"XDG_CONFIG_HOME", home_ / ".config"},
        {"XDG_CONFIG_DIRS", home_ / "machine-config"},
        {"XDG_RUNTIME_DIR", home_ / "run"},
        {"XDG_CURRENT_DESKTOP", std::nullopt},
        {"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
        {"DISPLAY", std::nullopt},
        {"PATH", home_ / "bin" + ":/usr/bin:/bin"}};
    for (const auto& [name, value] : variables) variables_.push_back(std::make_unique<EnvironmentChange>(name, value));
    for (const char* folder : {"run", "bin", "machine", ".config", ".local/share/applications"})
      makeFolders(home_ / folder);
  }

  const std::string& home() const { return home_.path(); }
  // The full path of something in the home.
  std::string operator/(std::string_view relative) const { return home_ / relative; }

  // Declares "IDENTIFIER.desktop" with these further lines, for this user.
  void declare(const std::string& identifier, const std::string& command, const std::string& lines = "") {
    writeFile(entry(identifier),
              formatted("[Desktop Entry]\nType=Application\nName=%@\nExec=%@\n%@", identifier, command, lines));
  }
  std::string entry(const std::string& identifier) const {
    return home_ / formatted(".local/share/applications/%@.desktop", identifier);
  }
  // A program in the home that waits until it is ended.
  std::string program(const std::string& name) {
    const std::string path = home_ / name;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::filesystem::copy_file("/usr/bin/tail", path);
    return path;
  }
  // An executable text file in the home.
  std::string script(const std::string& name, const std::string& text) {
    writeFile(home_ / name, text);
    std::filesystem::permissions(home_ / name, std::filesystem::perms::owner_all);
    return home_ / name;
  }

 private:
  ScratchFolder home_;
  std::vector<std::unique_ptr<EnvironmentChange>> variables_;
};

// True when the condition comes true within ten seconds.
inline bool soon(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

// A child that is ended, at the latest, with this.
class Running {
 public:
  explicit Running(const std::string& program, std::vector<std::string> arguments = {}) {
    const Result<pid_t> child =
        startChild({.path = program, .arguments = std::move(arguments), .environment = ownEnvironment()});
    if (!child) throw std::runtime_error(child.error().text);
    child_ = *child;
  }
  ~Running() {
    if (child_ < 0) return;
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }
  Running(const Running&) = delete;

  pid_t number() const { return child_; }
  // True when it ends by that signal within ten seconds.
  bool endsBy(int signal) {
    return soon([this] { return !isAlive(); }) && WIFSIGNALED(status_) && WTERMSIG(status_) == signal;
  }
  bool isAlive() {
    if (child_ < 0 || waitpid(child_, &status_, WNOHANG) != child_) return child_ >= 0;
    child_ = -1;
    return false;
  }

 private:
  pid_t child_;
  int status_ = 0;
};

}  // namespace vantory::test
