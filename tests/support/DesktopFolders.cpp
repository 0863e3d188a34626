#include "tests/support/DesktopFolders.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <utility>

#include "platform/linux/ChildProgram.h"
#include "services/Format.h"

namespace vantory::test {

namespace fs = std::filesystem;

DesktopFolders::DesktopFolders() {
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

void DesktopFolders::declare(const std::string& identifier, const std::string& command, const std::string& lines) {
  writeFile(entry(identifier),
            formatted("[Desktop Entry]\nType=Application\nName=%@\nExec=%@\n%@", identifier, command, lines));
}

std::string DesktopFolders::entry(const std::string& identifier) const {
  return home_ / formatted(".local/share/applications/%@.desktop", identifier);
}

std::string DesktopFolders::program(const std::string& name) {
  const std::string path = home_ / name;
  fs::create_directories(fs::path(path).parent_path());
  fs::copy_file("/usr/bin/tail", path);
  return path;
}

std::string DesktopFolders::script(const std::string& name, const std::string& text) {
  writeFile(home_ / name, text);
  fs::permissions(home_ / name, fs::perms::owner_all);
  return home_ / name;
}

Running::Running(const std::string& program, std::vector<std::string> arguments) {
  const Result<pid_t> child =
      startChild({.path = program, .arguments = std::move(arguments), .environment = ownEnvironment()});
  if (!child) throw std::runtime_error(child.error().text);
  child_ = *child;
}

Running::~Running() {
  if (child_ < 0) return;
  kill(child_, SIGKILL);
  waitpid(child_, nullptr, 0);
}

bool Running::isAlive() {
  if (child_ < 0 || waitpid(child_, &status_, WNOHANG) != child_) return child_ >= 0;
  child_ = -1;
  return false;
}

bool Running::endsBy(int signal) {
  return soon([this] { return !isAlive(); }) && WIFSIGNALED(status_) && WTERMSIG(status_) == signal;
}

bool soon(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

}  // namespace vantory::test
