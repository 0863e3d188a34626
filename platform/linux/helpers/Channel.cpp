#include "platform/linux/helpers/Channel.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

constexpr std::string_view kAbout = "the conversation with a helper program";
constexpr timeval kSendPatience{10, 0};  // seconds; the other end has stopped reading then

// Each text is followed by a NUL.
Result<std::string> encoded(const Message& message) {
  std::string bytes;
  for (const std::string& text : message) {
    if (text.find('\0') != std::string::npos) return systemError(kAbout, EINVAL);
    bytes.append(text).push_back('\0');
  }
  if (bytes.empty()) return systemError(kAbout, EINVAL);
  if (bytes.size() > kMaxMessageBytes) return systemError(kAbout, EMSGSIZE);
  return bytes;
}

Message decoded(std::string_view bytes) {
  Message message;
  while (!bytes.empty()) {
    const std::size_t end = bytes.find('\0');
    message.emplace_back(bytes.substr(0, end));
    bytes.remove_prefix(end + 1);
  }
  return message;
}

}  // namespace

Result<Channel::Ends> Channel::pair() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return systemError(kAbout);
  Ends both{Channel(Descriptor(ends[0])), Channel(Descriptor(ends[1]))};
  for (const int end : ends)
    if (setsockopt(end, SOL_SOCKET, SO_SNDTIMEO, &kSendPatience, sizeof kSendPatience) != 0) return systemError(kAbout);
  return both;
}

Status Channel::send(const Message& message) {
  const Result<std::string> bytes = encoded(message);
  if (!bytes) return bytes.error();
  const ssize_t sent =
      uninterrupted([&] { return ::send(socket_.get(), bytes->data(), bytes->size(), MSG_NOSIGNAL | MSG_EOR); });
  if (sent == static_cast<ssize_t>(bytes->size())) return {};
  if (sent < 0 && errno == EAGAIN) return systemError(kAbout, ETIMEDOUT);
  return systemError(kAbout, sent < 0 && errno != EPIPE && errno != ECONNRESET ? errno : ENOTCONN);
}

Result<Message> Channel::receive(std::optional<std::chrono::milliseconds> limit) {
  pollfd wanted{socket_.get(), POLLIN, 0};
  const int wait = limit ? static_cast<int>(std::max<std::chrono::milliseconds::rep>(limit->count(), 0)) : -1;
  const int ready = uninterrupted([&] { return poll(&wanted, 1, wait); });
  if (ready < 0) return systemError(kAbout);
  if (ready == 0) return systemError(kAbout, ETIMEDOUT);
  std::string bytes(kMaxMessageBytes, '\0');
  const ssize_t count = uninterrupted([&] { return recv(socket_.get(), bytes.data(), bytes.size(), MSG_TRUNC); });
  if (count <= 0) return systemError(kAbout, ENOTCONN);
  if (static_cast<std::size_t>(count) > bytes.size()) return systemError(kAbout, EBADMSG);
  bytes.resize(static_cast<std::size_t>(count));
  if (bytes.back() != '\0') return systemError(kAbout, EBADMSG);
  return decoded(bytes);
}

void Channel::end() {
  (void)shutdown(socket_.get(), SHUT_RDWR);
}

}  // namespace vantory
