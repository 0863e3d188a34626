// What the program and its helper programs tell each other.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"

namespace vantory {

// What travels: a list of texts of any bytes but NUL. The list is never empty; what the texts mean is agreed on by the
// two programs. At most kMaxMessageBytes in all.
using Message = std::vector<std::string>;

constexpr std::size_t kMaxMessageBytes = 64 * 1024;

inline constexpr const char* kConversation = "the conversation with a helper program";  // for errors

// A message as bytes, each text ended by a NUL. Fails where it cannot travel (invalid_argument, message_size).
Result<std::string> encodedMessage(const Message& message);
// Fails for what is no message (bad_message).
Result<Message> decodedMessage(std::string_view bytes);

}  // namespace vantory
