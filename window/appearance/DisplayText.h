// Text of the program's own, which is bytes, as a window shows it.
#pragma once

#include <QString>
#include <string>

namespace vantory {

// The text on one line; line ends and other control characters, and bytes that are no UTF-8, as "\n" and "\xff".
QString displayText(const std::string& bytes);

}  // namespace vantory
