// Messages as bytes.
#include "platform/posix/processes/Message.h"

#include <cerrno>

#include "platform/posix/files/Errors.h"

namespace vantory {

Result<std::string> encodedMessage(const Message& message) {
  std::string bytes;
  for (const std::string& text : message) {
    if (text.find('\0') != std::string::npos) return systemError(kConversation, EINVAL);
    bytes.append(text).push_back('\0');
  }
  if (bytes.empty()) return systemError(kConversation, EINVAL);
  if (bytes.size() > kMaxMessageBytes) return systemError(kConversation, EMSGSIZE);
  return bytes;
}

Result<Message> decodedMessage(std::string_view bytes) {
  if (!bytes.ends_with('\0')) return systemError(kConversation, EBADMSG);
  Message message;
  while (!bytes.empty()) {
    const std::size_t end = bytes.find('\0');
    message.emplace_back(bytes.substr(0, end));
    bytes.remove_prefix(end + 1);
  }
  return message;
}

}  // namespace vantory
