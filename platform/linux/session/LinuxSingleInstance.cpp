// Binds the socket, or hands files to whoever has it.
#include "platform/linux/session/LinuxSingleInstance.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <utility>

namespace vantory {

namespace {

using namespace std::chrono_literals;
using Time = std::chrono::steady_clock;

// What is handed over: {"file", PATH} for each file, then {"open", ACTIVATION-TOKEN}; the answer is {"taken"}.
constexpr const char* kFile = "file";
constexpr const char* kOpen = "open";
constexpr const char* kTaken = "taken";

constexpr std::size_t kMostFiles = 10'000;
constexpr auto kPatienceForRequest = 2s;
constexpr auto kPatienceForAnswer = 5s;
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

// None when the other end says something else, too much or too slowly.
std::optional<OpenRequest> receiveRequest(Channel& channel) {
  OpenRequest request;
  const auto end = Time::now() + kPatienceForRequest;
  while (request.files.size() <= kMostFiles) {
    auto message = channel.receive(std::chrono::duration_cast<std::chrono::milliseconds>(end - Time::now()));
    if (!message || message->size() != 2) return std::nullopt;
    if (message->front() == kOpen) {
      request.activationToken = std::move(message->back());
      return request;
    }
    if (message->front() != kFile) return std::nullopt;
    request.files.push_back(std::move(message->back()));
  }
  return std::nullopt;
}

bool sendRequest(Channel& channel, const OpenRequest& request) {
  for (const std::string& file : request.files)
    if (!channel.send({kFile, file})) return false;
  return channel.send({kOpen, request.activationToken}).ok();
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
    Channel channel(std::move(socket));
    auto request = receiveRequest(channel);
    // Whoever no longer waits for the answer does its work itself.
    if (request && channel.send({kTaken})) receive(std::move(*request));
  }
}

// Nobody has taken it only where that is certain: otherwise two copies would do the work.
SingleInstance::HandOver LinuxSingleInstance::handOver(const OpenRequest& request) {
  Descriptor socket = newSocket();
  const Address address = addressOf(name_);
  if (!limitWaiting(socket.get())) return HandOver::Refused;
  if (uninterrupted([&] { return connect(socket.get(), address.get(), address.length); }) != 0)
    return errno == ECONNREFUSED ? HandOver::Nobody : HandOver::Refused;
  if (!isSameUser(socket.get())) return HandOver::Refused;
  Channel channel(std::move(socket));
  if (!sendRequest(channel, request)) return HandOver::Nobody;
  const auto answer = channel.receive(kPatienceForAnswer);
  if (answer) return *answer == Message{kTaken} ? HandOver::Taken : HandOver::Refused;
  return answer.error().code == std::errc::not_connected ? HandOver::Nobody : HandOver::Refused;
}

std::string displayOfSession() {
  for (const char* variable : {"WAYLAND_DISPLAY", "DISPLAY"}) {
    const char* value = std::getenv(variable);
    if (value && *value != '\0') return value;
  }
  return {};
}

}  // namespace vantory
