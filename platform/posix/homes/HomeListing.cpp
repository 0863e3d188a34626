// Lists the folder above homes, which may be dead.
#include "platform/posix/homes/HomeListing.h"

#include <dirent.h>
#include <fnmatch.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <memory>
#include <string_view>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/kernel/Kernel.h"
#include "platform/posix/processes/ProcessCalls.h"

namespace vantory {

namespace {

using Steady = std::chrono::steady_clock;
using namespace std::chrono_literals;

// The copy of the process: writes the names, a zero byte behind each, and ends with the number of the error. Nothing in
// the folder is looked at: that may be dead too, or somebody's trap.
[[noreturn]] void tellNames(const std::string& folder, const std::string& pattern, int answer) noexcept {
  const std::unique_ptr<DIR, int (*)(DIR*)> list(opendir(folder.c_str()), closedir);
  if (!list) _exit(errno);
  std::string names;
  while (const dirent* entry = readdir(list.get())) {
    const bool mayBeHome = entry->d_type == DT_DIR || entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN;
    if (mayBeHome && fnmatch(pattern.c_str(), entry->d_name, FNM_PERIOD) == 0) names.append(entry->d_name) += '\0';
  }
  for (std::string_view left = names; !left.empty();) {
    const ssize_t written = uninterrupted([&] { return write(answer, left.data(), left.size()); });
    if (written <= 0) _exit(EIO);
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  _exit(0);
}

// Whether it said all it had to say by then.
bool hear(int answer, Steady::time_point deadline, std::string& said) {
  while (true) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Steady::now());
    pollfd source{answer, POLLIN, 0};
    if (left <= 0ms || poll(&source, 1, static_cast<int>(left.count())) == 0) return false;
    if (source.revents == 0) continue;
    std::array<char, 65536> bytes;
    const ssize_t length = uninterrupted([&] { return read(answer, bytes.data(), bytes.size()); });
    if (length <= 0) return true;
    said.append(bytes.data(), static_cast<std::size_t>(length));
  }
}

Result<std::vector<std::string>> namesIn(const std::string& folder, const std::string& pattern,
                                         std::chrono::milliseconds patience) {
  const auto deadline = Steady::now() + patience;
  kernel::Pipe pipe;
  if (const int failure = kernel::openPipe(pipe); failure != 0) return systemError(folder, failure);
  const pid_t process = fork();
  if (process < 0) return systemError(folder);
  if (process == 0) tellNames(folder, pattern, pipe.writeEnd.get());
  pipe.writeEnd = {};
  std::string said;
  const bool hasAnswered = hear(pipe.readEnd.get(), deadline, said);
  if (!hasAnswered) kill(process, SIGKILL);
  const auto code = waitForChild(process, hasAnswered ? 2s : 100ms);
  if (!hasAnswered) return Error{std::errc::timed_out, folder + " does not answer: the file system may be dead."};
  if (code != 0) return systemError(folder, code.value_or(EIO));
  std::vector<std::string> names = split(said, '\0');
  std::erase(names, "");
  std::ranges::sort(names);
  return names;
}

}  // namespace

Result<std::vector<std::string>> listHomes(const std::string& pattern, std::chrono::milliseconds patience) {
  const std::string path = paths::normalized(pattern);
  const std::string folder = paths::parent(path), name = paths::lastComponent(path);
  constexpr const char* kPatterns = "*?[";
  if (folder.find_first_of(kPatterns) != std::string::npos)
    return Error{
        std::errc::invalid_argument,
        pattern + ": Only the last part of a path can be a pattern. The shell knows others: leave out the quotes."};
  if (name.find_first_of(kPatterns) == std::string::npos) return std::vector{path};
  auto homes = namesIn(folder, name, patience);
  if (homes)
    for (std::string& home : *homes) home = paths::join(folder, home);
  return homes;
}

}  // namespace vantory
