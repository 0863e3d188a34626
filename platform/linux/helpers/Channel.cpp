// Frames messages on a socket.
#include "platform/linux/helpers/Channel.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

constexpr timeval kSendPatience{10, 0};  // seconds; the other end has stopped reading then

// Receives as recv() does. `sender` is 0 where the socket was not told to ask the kernel for it.
ssize_t receiveFrom(int socket, std::string& bytes, pid_t& sender) {
  iovec part{bytes.data(), bytes.size()};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(ucred))> control;
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  const ssize_t count = uninterrupted([&] { return recvmsg(socket, &message, MSG_TRUNC | MSG_CMSG_CLOEXEC); });
  sender = 0;
  if (count < 0) return count;
  for (const cmsghdr* each = CMSG_FIRSTHDR(&message); each; each = CMSG_NXTHDR(&message, const_cast<cmsghdr*>(each))) {
    if (each->cmsg_level != SOL_SOCKET || each->cmsg_type != SCM_CREDENTIALS) continue;
    ucred credentials;
    std::memcpy(&credentials, CMSG_DATA(each), sizeof credentials);
    sender = credentials.pid;
  }
  return count;
}

}  // namespace

// A kind of socket on which messages keep their borders.
Result<Channel::Ends> Channel::pair() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return systemError(kConversation);
  Ends both{Channel(Descriptor(ends[0])), Channel(Descriptor(ends[1]))};
  for (const int end : ends)
    if (setsockopt(end, SOL_SOCKET, SO_SNDTIMEO, &kSendPatience, sizeof kSendPatience) != 0)
      return systemError(kConversation);
  return both;
}

// A partner that has gone is one error, whichever way the kernel tells it.
Status Channel::send(const Message& message) {
  const Result<std::string> bytes = encodedMessage(message);
  if (!bytes) return bytes.error();
  const ssize_t sent =
      uninterrupted([&] { return ::send(socket_.get(), bytes->data(), bytes->size(), MSG_NOSIGNAL | MSG_EOR); });
  if (sent == static_cast<ssize_t>(bytes->size())) return {};
  if (sent < 0 && errno == EAGAIN) return systemError(kConversation, ETIMEDOUT);
  return systemError(kConversation, sent < 0 && errno != EPIPE && errno != ECONNRESET ? errno : ENOTCONN);
}

Status Channel::hearOnly(pid_t process) {
  constexpr int kOn = 1;
  partnerProcess_ = Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
  if (!partnerProcess_.valid()) return systemError(kConversation);
  if (setsockopt(socket_.get(), SOL_SOCKET, SO_PASSCRED, &kOn, sizeof kOn) != 0) return systemError(kConversation);
  partner_ = process;
  return {};
}

Result<Message> Channel::receive(std::optional<std::chrono::milliseconds> limit) {
  // poll() passes over the number of no descriptor.
  std::array<pollfd, 2> wanted{{{socket_.get(), POLLIN, 0}, {partnerProcess_.get(), POLLIN, 0}}};
  const int wait = limit ? static_cast<int>(std::max<std::chrono::milliseconds::rep>(limit->count(), 0)) : -1;
  const int ready = uninterrupted([&] { return poll(wanted.data(), wanted.size(), wait); });
  if (ready < 0) return systemError(kConversation);
  if (ready == 0) return systemError(kConversation, ETIMEDOUT);
  if (wanted[1].revents != 0) return systemError(kConversation, ENOTCONN);
  std::string bytes(kMaxMessageBytes, '\0');
  pid_t sender = 0;
  const ssize_t count = receiveFrom(socket_.get(), bytes, sender);
  // Nothing received is how the end of a conversation looks.
  if (count <= 0 || (partnerProcess_.valid() && sender != partner_)) return systemError(kConversation, ENOTCONN);
  if (static_cast<std::size_t>(count) > bytes.size()) return systemError(kConversation, EBADMSG);
  bytes.resize(static_cast<std::size_t>(count));
  return decodedMessage(bytes);
}

bool Channel::isOpen() const {
  std::array<pollfd, 2> ends{{{socket_.get(), 0, 0}, {partnerProcess_.get(), POLLIN, 0}}};
  return uninterrupted([&] { return poll(ends.data(), ends.size(), 0); }) == 0;
}

void Channel::end() {
  (void)shutdown(socket_.get(), SHUT_RDWR);
}

}  // namespace vantory
