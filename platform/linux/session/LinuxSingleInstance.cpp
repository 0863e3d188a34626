// Binds the socket, or hands files to whoever has it.
#include "platform/linux/session/LinuxSingleInstance.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>

#include "platform/posix/processes/HandedOver.h"

namespace vantory {

namespace {

constexpr int kWaitingCopies = 64;

struct Address {
  sockaddr_un address{};
  socklen_t length = 0;

  const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address); }
};

// A name that begins with NUL lies in no folder.
Address addressOf(const std::string& name) {
  Address result;
  result.address.sun_family = AF_UNIX;
  std::memcpy(result.address.sun_path + 1, name.data(), name.size());
  result.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
  return result;
}

Descriptor newSocket() {
  return Descriptor(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
}

// Anybody can take any name there.
bool isSameUser(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == getuid();
}

// A partner that does not read holds nobody up for long.
bool limitWaiting(int socket) {
  constexpr timeval kLimit{5, 0};  // seconds
  return setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &kLimit, sizeof kLimit) == 0;
}

}  // namespace

// A hash, because such a name is short.
LinuxSingleInstance::LinuxSingleInstance(const std::string& home, const std::string& display)
    : name_("com.quarrywell.Vantory/" + std::to_string(getuid()) + "/" +
            std::to_string(std::hash<std::string>()(home + '\0' + display))) {}

// Of two copies that start at once the name decides: one gets it.
bool LinuxSingleInstance::listen(Receiver receive) {
  Descriptor socket = newSocket();
  const Address address = addressOf(name_);
  if (bind(socket.get(), address.get(), address.length) != 0 || ::listen(socket.get(), kWaitingCopies) != 0)
    return false;
  listener_ = std::move(socket);
  thread_ = std::thread([this, receive = std::move(receive)] { serve(receive); });
  return true;
}

// The thread sleeps in accept4(), which the shutdown ends.
void LinuxSingleInstance::stopListening() {
  if (!thread_.joinable()) return;
  (void)shutdown(listener_.get(), SHUT_RDWR);
  thread_.join();
  listener_ = Descriptor();
}

// One copy after the other; another user's is not answered.
void LinuxSingleInstance::serve(const Receiver& receive) const {
  for (;;) {
    Descriptor socket(uninterrupted([&] { return accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC); }));
    if (!socket.valid() && errno != ECONNABORTED) return;
    if (!socket.valid() || !isSameUser(socket.get()) || !limitWaiting(socket.get())) continue;
    handover::serve(Channel(std::move(socket)), receive);
  }
}

SingleInstance::HandOver LinuxSingleInstance::handOver(const OpenRequest& request) {
  Descriptor socket = newSocket();
  const Address address = addressOf(name_);
  if (!limitWaiting(socket.get())) return HandOver::Refused;
  if (uninterrupted([&] { return connect(socket.get(), address.get(), address.length); }) != 0)
    return errno == ECONNREFUSED ? HandOver::Nobody : HandOver::Refused;
  if (!isSameUser(socket.get())) return HandOver::Refused;
  return handover::send(Channel(std::move(socket)), request);
}

std::string displayOfSession() {
  for (const char* variable : {"WAYLAND_DISPLAY", "DISPLAY"}) {
    const char* value = std::getenv(variable);
    if (value && *value != '\0') return value;
  }
  return {};
}

}  // namespace vantory
