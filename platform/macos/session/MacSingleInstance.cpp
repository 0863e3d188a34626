// Listens at the socket, or hands files to whoever does.
#include "platform/macos/session/MacSingleInstance.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <optional>
#include <utility>

#include "base/Paths.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/posix/processes/HandedOver.h"
#include "platform/posix/processes/StreamChannel.h"

namespace vantory {

namespace {

constexpr int kWaitingCopies = 64;

// None where the path is longer than an address can be.
std::optional<sockaddr_un> addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return std::nullopt;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

Descriptor newSocket() {
  Descriptor made(socket(AF_UNIX, SOCK_STREAM, 0));
  if (made.valid()) fcntl(made.get(), F_SETFD, FD_CLOEXEC);
  return made;
}

// A partner that does not read holds nobody up for long.
bool limitWaiting(int socket) {
  constexpr timeval kLimit{5, 0};  // seconds
  return setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &kLimit, sizeof kLimit) == 0;
}

bool isSameUser(int socket) {
  return darwin::userBehind(socket) == getuid();
}

}  // namespace

// A hash, because such a path is short.
MacSingleInstance::MacSingleInstance(const std::string& folder, const std::string& home)
    : socket_(paths::join(folder, "vantory-" + std::to_string(std::hash<std::string>()(home)) + ".socket")) {}

// Of two copies that start at once the lock decides; then nobody is at what lies at the socket's path.
bool MacSingleInstance::listen(Receiver receive) {
  const auto address = addressOf(socket_);
  Descriptor lock(open((socket_ + ".lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!address || !lock.valid() || flock(lock.get(), LOCK_EX | LOCK_NB) != 0) return false;
  Descriptor socket = newSocket();
  (void)unlink(socket_.c_str());
  if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0 ||
      chmod(socket_.c_str(), S_IRUSR | S_IWUSR) != 0 || ::listen(socket.get(), kWaitingCopies) != 0 ||
      fcntl(socket.get(), F_SETFL, O_NONBLOCK) != 0 || kernel::openPipe(end_) != 0)
    return false;
  lock_ = std::move(lock);
  listener_ = std::move(socket);
  thread_ = std::thread([this, receive = std::move(receive)] { serve(receive); });
  return true;
}

// The path goes before the lock does: the next copy's is not to be taken away.
void MacSingleInstance::stopListening() {
  if (!thread_.joinable()) return;
  end_.writeEnd = Descriptor();
  thread_.join();
  (void)unlink(socket_.c_str());
  listener_ = Descriptor();
  lock_ = Descriptor();
}

// One copy after the other; another user's is not answered. What is accepted may wait as the listener does not.
void MacSingleInstance::serve(const Receiver& receive) const {
  for (;;) {
    pollfd wanted[] = {{listener_.get(), POLLIN, 0}, {end_.readEnd.get(), POLLIN, 0}};
    if (uninterrupted([&] { return poll(wanted, 2, -1); }) < 0 || wanted[1].revents != 0) return;
    Descriptor socket(uninterrupted([&] { return accept(listener_.get(), nullptr, nullptr); }));
    if (!socket.valid() || fcntl(socket.get(), F_SETFD, FD_CLOEXEC) != 0 || fcntl(socket.get(), F_SETFL, 0) != 0)
      continue;
    if (isSameUser(socket.get()) && limitWaiting(socket.get()))
      handover::serve(StreamChannel(std::move(socket)), receive);
  }
}

SingleInstance::HandOver MacSingleInstance::handOver(const OpenRequest& request) {
  const auto address = addressOf(socket_);
  Descriptor socket = newSocket();
  if (!address || !limitWaiting(socket.get())) return HandOver::Refused;
  if (uninterrupted(
          [&] { return connect(socket.get(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address); }) != 0)
    return errno == ECONNREFUSED || errno == ENOENT ? HandOver::Nobody : HandOver::Refused;
  if (!isSameUser(socket.get())) return HandOver::Refused;
  return handover::send(StreamChannel(std::move(socket)), request);
}

}  // namespace vantory
