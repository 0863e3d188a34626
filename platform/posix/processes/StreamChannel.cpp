// Frames messages on a stream.
#include "platform/posix/processes/StreamChannel.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/posix/files/Errors.h"
#include "platform/posix/files/OpenFiles.h"

namespace vantory {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

using Length = std::uint32_t;

// The length goes with the file, which travels with a byte.
ssize_t sendLength(int stream, Length length, int file) {
  if (file < 0) return uninterrupted([&] { return write(stream, &length, sizeof length); });
  iovec part{&length, sizeof length};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof file)> control{};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  cmsghdr* const header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof file);
  std::memcpy(CMSG_DATA(header), &file, sizeof file);
  return uninterrupted([&] { return sendmsg(stream, &message, 0); });
}

// As recvmsg(); what comes along is not handed down to programs that are started.
ssize_t receiveWithFile(int stream, char* bytes, std::size_t size, Descriptor& file) {
  iovec part{bytes, size};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  const ssize_t count = uninterrupted([&] { return recvmsg(stream, &message, 0); });
  const cmsghdr* const header = count > 0 ? CMSG_FIRSTHDR(&message) : nullptr;
  if (!header || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) return count;
  int number = -1;
  std::memcpy(&number, CMSG_DATA(header), sizeof number);
  file = Descriptor(number);
  fcntl(number, F_SETFD, FD_CLOEXEC);
  return count;
}

Error theEnd() {
  return systemError(kConversation, ENOTCONN);
}

}  // namespace

Result<StreamChannel::Ends> StreamChannel::pair() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) return systemError(kConversation);
  Ends both{StreamChannel(Descriptor(ends[0])), StreamChannel(Descriptor(ends[1]))};
  for (const int end : ends)
    if (fcntl(end, F_SETFD, FD_CLOEXEC) != 0) return systemError(kConversation);
  return both;
}

Status StreamChannel::send(const Message& message, int file) {
  const Result<std::string> bytes = encodedMessage(message);
  if (!bytes) return bytes.error();
  if (sendLength(stream_.get(), static_cast<Length>(bytes->size()), file) != sizeof(Length)) return theEnd();
  std::string_view left = *bytes;
  return writeAll(stream_.get(), left, kConversation) ? Status() : theEnd();
}

Result<Message> StreamChannel::receive(std::optional<milliseconds> limit, Descriptor* file) {
  std::optional<steady_clock::time_point> end;
  if (limit) end = steady_clock::now() + *limit;
  Length length = 0;
  if (Status read = readAll(reinterpret_cast<char*>(&length), sizeof length, end, file); !read) return read.error();
  if (length > kMaxMessageBytes) return systemError(kConversation, EMSGSIZE);
  std::string bytes(length, '\0');
  if (Status read = readAll(bytes.data(), bytes.size(), end, nullptr); !read) return read.error();
  return decodedMessage(bytes);
}

bool StreamChannel::isOpen() const {
  pollfd end{stream_.get(), 0, 0};
  return uninterrupted([&] { return poll(&end, 1, 0); }) == 0;
}

Status StreamChannel::readAll(char* bytes, std::size_t size, std::optional<steady_clock::time_point> end,
                              Descriptor* file) {
  while (size > 0) {
    const auto left = end ? std::chrono::ceil<milliseconds>(*end - steady_clock::now()) : milliseconds();
    pollfd wanted{stream_.get(), POLLIN, 0};
    const int wait = end ? static_cast<int>(std::max(left, milliseconds()).count()) : -1;
    const int ready = uninterrupted([&] { return poll(&wanted, 1, wait); });
    if (ready == 0) return systemError(kConversation, ETIMEDOUT);
    const ssize_t count = file ? receiveWithFile(stream_.get(), bytes, size, *file)
                               : uninterrupted([&] { return read(stream_.get(), bytes, size); });
    if (ready < 0 || count <= 0) return theEnd();
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
  return {};
}

}  // namespace vantory
