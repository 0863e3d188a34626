// Puts the numbers of the system into words.
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

const char* cureFor(int number) {
  switch (number) {
    case ENOSPC:
    case EDQUOT:
      return "Make room there, then try again.";
    case EROFS:
      return "Mount it for writing, then try again.";
    case EMFILE:
    case ENFILE:
      return "Allow more open files (\"ulimit -n\"), then try again.";
    default:
      return "";
  }
}

}  // namespace

Error systemError(std::string_view path, int number) {
  return {static_cast<std::errc>(number), std::string(path) + ": " + std::generic_category().message(number),
          cureFor(number)};
}

}  // namespace vantory
