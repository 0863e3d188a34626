// Reads names, versions, paths and random numbers from the system.
#include "platform/linux/system/LinuxSystemInfo.h"

#include <sys/random.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/SmallFiles.h"

namespace vantory {

namespace {

// For a system that does not say what it is called.
std::string kernelName() {
  utsname name{};
  uname(&name);
  return std::string(name.sysname) + " " + name.release;
}

}  // namespace

LinuxSystemInfo::LinuxSystemInfo(std::vector<std::string> arguments, std::string startedProgram)
    : arguments_(std::move(arguments)), startedProgram_(std::move(startedProgram)) {}

// The second file is the distribution's own, which the first may replace.
std::string LinuxSystemInfo::systemName() const {
  for (const char* file : {"/etc/os-release", "/usr/lib/os-release"}) {
    const std::optional<std::string> name = assignedValue(file, "PRETTY_NAME");
    if (name && !name->empty()) return *name;
  }
  return kernelName();
}

int LinuxSystemInfo::processorCount() const {
  return static_cast<int>(std::max(sysconf(_SC_NPROCESSORS_ONLN), 1L));
}

std::uint64_t LinuxSystemInfo::memoryBytes() const {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long pageSize = sysconf(_SC_PAGESIZE);
  if (pages < 0 || pageSize < 0) return 0;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

// The program that the person started, also where another became this one.
std::string LinuxSystemInfo::executablePath() const {
  std::error_code failure;
  std::string path = std::filesystem::read_symlink("/proc/self/exe", failure).native();
  // What an update that replaced the running program leaves: its path still names the program.
  constexpr std::string_view kReplaced = " (deleted)";
  if (path.ends_with(kReplaced) && !std::filesystem::exists(path, failure)) path.resize(path.size() - kReplaced.size());
  if (startedProgram_.empty() || path.empty()) return path;
  return (std::filesystem::path(path).parent_path() / startedProgram_).native();
}

// From where the program lies: an installation may have been moved.
std::string LinuxSystemInfo::resourcePath(const std::string& name) const {
  std::error_code failure;
  const std::filesystem::path own = std::filesystem::path(executablePath()).parent_path();
  for (const std::filesystem::path& folder : {own, own / VANTORY_DATA_FROM_BIN}) {
    const std::filesystem::path path = (folder / name).lexically_normal();
    if (path.is_absolute() && std::filesystem::exists(path, failure)) return path.native();
  }
  return (std::filesystem::path(VANTORY_DATA) / name).native();
}

std::string LinuxSystemInfo::workingDirectory() const {
  std::error_code failure;
  return std::filesystem::current_path(failure).native();
}

bool LinuxSystemInfo::hasTerminal() const {
  return isatty(STDERR_FILENO) == 1;
}

// A random UUID in capitals.
std::string LinuxSystemInfo::uniqueString() const {
  std::array<unsigned char, 16> bytes{};
  uninterrupted([&] { return getrandom(bytes.data(), bytes.size(), 0); });
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
