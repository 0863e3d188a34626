#include "tests/support/SessionBus.h"

#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "services/Format.h"

namespace vantory::test {

namespace {

constexpr const char* kDaemon = "/usr/bin/dbus-daemon";
constexpr const char* kPython = "/usr/bin/python3";

constexpr const char* kConfiguration =
    "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\""
    " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
    "<busconfig><type>session</type><listen>unix:path=%@/bus</listen>"
    "<policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
    "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>\n";

pid_t started(const ChildProgram& program) {
  const Result<pid_t> child = startChild(program);
  if (!child) throw std::runtime_error(child.error().text);
  return *child;
}

void waitFor(const std::string& path) {
  for (int i = 0; i < 1000 && !exists(path); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  if (!exists(path)) throw std::runtime_error(path + " does not appear");
}

}  // namespace

std::string SessionBus::missing() {
  if (!exists(kDaemon)) return "dbus-daemon is not installed";
  const pid_t probe = started({.path = kPython, .arguments = {"-c", "import dbus, gi"}});
  int status = -1;
  waitpid(probe, &status, 0);
  return status == 0 ? "" : "Python's dbus or gi is not installed";
}

SessionBus::SessionBus() : address_("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (folder_ / "bus")) {
  writeFile(folder_ / "bus.conf", formatted(kConfiguration, folder_.path()));
  daemon_ = started({.path = kDaemon,
                     .arguments = {"--config-file=" + (folder_ / "bus.conf"), "--nofork", "--nopidfile"},
                     .environment = ownEnvironment()});
  waitFor(folder_ / "bus");
}

SessionBus::~SessionBus() {
  kill(daemon_, SIGKILL);
  waitpid(daemon_, nullptr, 0);
}

HelperProcess SessionBus::start(const std::string& script, std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), {"-B", std::string(VANTORY_PEERS) + "/" + script});
  Result<HelperProcess> peer =
      HelperProcess::start({.path = kPython, .arguments = std::move(arguments), .environment = ownEnvironment()});
  if (!peer) throw std::runtime_error(peer.error().text);
  if (heardBy(*peer) != Message{"ready"}) throw std::runtime_error(script + " does not start");
  return std::move(*peer);
}

void SessionBus::signal(int number) const {
  kill(daemon_, number);
}

Message heardBy(HelperProcess& peer, std::chrono::milliseconds limit) {
  Result<Message> message = peer.channel().receive(limit);
  return message ? std::move(*message) : Message{};
}

}  // namespace vantory::test
