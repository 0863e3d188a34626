#include "tests/support/SessionBus.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "base/Format.h"

namespace vantory::test {

namespace {

constexpr const char* kDaemon = "/usr/bin/dbus-daemon";
constexpr const char* kPython = "/usr/bin/python3";

constexpr const char* kConfiguration =
    "<busconfig><type>session</type><listen>unix:path=%@/bus</listen>"
    "<policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
    "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy><servicedir>%@</servicedir></busconfig>\n";

}  // namespace

std::string SessionBus::missing() {
  if (!exists(kDaemon)) return "dbus-daemon is not installed";
  return std::system("/usr/bin/python3 -c 'import dbus, gi'") == 0 ? "" : "Python's dbus or gi is not installed";
}

SessionBus::SessionBus(const std::string& services)
    : address_("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (folder_ / "bus")) {
  const std::string configuration = folder_ / "bus.conf";
  writeFile(configuration, formatted(kConfiguration, folder_.path(), services));
  daemon_.emplace(kDaemon, std::vector<std::string>{"--config-file=" + configuration, "--nofork", "--nopidfile"});
  if (!soon([this] { return exists(folder_ / "bus"); })) throw std::runtime_error("no bus appears");
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
  kill(daemon_->number(), number);
}

Message heardBy(HelperProcess& peer, std::chrono::milliseconds limit) {
  Result<Message> message = peer.channel().receive(limit);
  return message ? std::move(*message) : Message{};
}

}  // namespace vantory::test
