// Asks the system for names, sizes and paths.
#include "platform/posix/system/PosixSystemInfo.h"

#include <poll.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/posix/kernel/Kernel.h"

namespace vantory {

PosixSystemInfo::PosixSystemInfo(std::vector<std::string> arguments, std::string startedProgram)
    : arguments_(std::move(arguments)), startedProgram_(std::move(startedProgram)) {}

std::string PosixSystemInfo::systemName() const {
  return kernel::systemName();
}

std::string PosixSystemInfo::kernelName() const {
  utsname name;
  if (uname(&name) != 0) return "";
  return std::string(name.sysname) + " " + name.release + " " + name.machine;
}

std::string PosixSystemInfo::fileSystemOf(const std::string& path) const {
  return kernel::fileSystemOf(path);
}

int PosixSystemInfo::processorCount() const {
  return static_cast<int>(std::max(sysconf(_SC_NPROCESSORS_ONLN), 1L));
}

std::uint64_t PosixSystemInfo::memoryBytes() const {
  return kernel::memoryBytes();
}

// The program that the person started, also where another became this one.
std::string PosixSystemInfo::executablePath() const {
  std::string path = kernel::ownPath();
  if (startedProgram_.empty() || path.empty()) return path;
  return (std::filesystem::path(path).parent_path() / startedProgram_).native();
}

// From where the program lies: an installation may have been moved.
std::string PosixSystemInfo::resourcePath(const std::string& name) const {
  std::error_code failure;
  const std::filesystem::path own = std::filesystem::path(executablePath()).parent_path();
  for (const std::filesystem::path& folder : {own, own / VANTORY_DATA_FROM_BIN}) {
    const std::filesystem::path path = (folder / name).lexically_normal();
    if (path.is_absolute() && std::filesystem::exists(path, failure)) return path.native();
  }
  return (std::filesystem::path(VANTORY_DATA) / name).native();
}

std::string PosixSystemInfo::workingDirectory() const {
  std::error_code failure;
  return std::filesystem::current_path(failure).native();
}

bool PosixSystemInfo::hasTerminal() const {
  return isatty(STDERR_FILENO) == 1;
}

bool PosixSystemInfo::hasReader() const {
  pollfd output{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
  return poll(&output, 1, 0) != 1 || (output.revents & (POLLERR | POLLHUP)) == 0;
}

// A random UUID in capitals.
std::string PosixSystemInfo::uniqueString() const {
  std::array<unsigned char, 16> bytes{};
  kernel::fillRandomly(bytes);
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // version: random
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);  // variant
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0x0F];
  }
  return text;
}

}  // namespace vantory
