// Reads small files whole, and assignments in them.
#include "platform/posix/files/SmallFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

constexpr std::size_t kLargestFile = 64 * 1024;
constexpr std::string_view kBlanks = " \t\r";

// Never waits, also where the name is a FIFO's.
std::string beginningOf(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file.valid()) return {};
  std::string text;
  struct stat info {};
  if (fstat(file.get(), &info) == 0 && S_ISREG(info.st_mode)) {
    text.resize(kLargestFile);
    std::size_t size = 0;
    while (size < text.size()) {
      const ssize_t count = uninterrupted([&] { return read(file.get(), text.data() + size, text.size() - size); });
      if (count <= 0) break;
      size += static_cast<std::size_t>(count);
    }
    text.resize(size);
  }
  return text;
}

// As a shell would: a backslash counts everywhere but in single quotes.
std::string unquoted(std::string_view value) {
  std::string result;
  char quote = '\0';
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (c == '\\' && quote != '\'' && i + 1 < value.size()) {
      result += value[++i];
    } else if (quote != '\0' ? c == quote : c == '"' || c == '\'') {
      quote = quote != '\0' ? '\0' : c;
    } else {
      result += c;
    }
  }
  return result;
}

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

// The size that the system tells is not believed: a file of /proc has none.
Result<std::string> readSmallFile(const std::string& path, std::size_t limit) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  if (!file.valid() || fstat(file.get(), &status) != 0) return systemError(path);
  if (!S_ISREG(status.st_mode)) return systemError(path, EINVAL);
  std::string text;
  char buffer[4096];
  for (;;) {
    const ssize_t count = uninterrupted([&] { return read(file.get(), buffer, sizeof buffer); });
    if (count < 0) return systemError(path);
    if (count == 0) return text;
    text.append(buffer, static_cast<std::size_t>(count));
    if (text.size() > limit) return systemError(path, EFBIG);
  }
}

std::optional<std::string> assignedValue(const std::string& path, std::string_view key) {
  return assignedValueIn(beginningOf(path), key);
}

std::optional<std::string> assignedValueIn(std::string_view text, std::string_view key) {
  std::optional<std::string> value;
  for (std::size_t start = 0, end = 0; start < text.size(); start = end + 1) {
    end = std::min(text.find('\n', start), text.size());
    const std::string_view line = withoutBlanks(text.substr(start, end - start));
    if (line.starts_with(key) && line.substr(key.size()).starts_with('='))
      value = unquoted(line.substr(key.size() + 1));
  }
  return value;
}

}  // namespace vantory
