// Gives up what the helper does not need.
#include "programs/vantory-lock-helper/Confinement.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>

#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

constexpr std::string_view kAbout = "vantory-lock-helper";
constexpr std::uint64_t kOnlyCapability = std::uint64_t{1} << CAP_LINUX_IMMUTABLE;

// Capabilities come in two halves of 32 bits.
using Halves = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

__user_cap_header_struct ownHeader() {
  return {_LINUX_CAPABILITY_VERSION_3, 0};
}

// Neither the superuser is served, nor anybody under another identity than their own.
Status checkIdentity() {
  uid_t user, effectiveUser, savedUser;
  gid_t group, effectiveGroup, savedGroup;
  if (getresuid(&user, &effectiveUser, &savedUser) != 0 || getresgid(&group, &effectiveGroup, &savedGroup) != 0)
    return systemError(kAbout);
  if (user == 0 || user != effectiveUser || user != savedUser || group != effectiveGroup || group != savedGroup)
    return errorWithText(std::errc::operation_not_permitted, kAbout, "serves an ordinary user's own process only");
  return {};
}

Status keepOnlyCapability() {
  auto header = ownHeader();
  Halves held{};
  if (syscall(SYS_capget, &header, held.data()) != 0) return systemError(kAbout);
  const std::uint64_t permitted = held[0].permitted | std::uint64_t{held[1].permitted} << 32;
  if (permitted != kOnlyCapability)
    return errorWithText(std::errc::operation_not_permitted, kAbout, "needs the capability cap_linux_immutable alone");
  constexpr auto kLowHalf = static_cast<std::uint32_t>(kOnlyCapability);
  const Halves kept{{{kLowHalf, kLowHalf, 0}, {0, 0, 0}}};
  if (syscall(SYS_capset, &header, kept.data()) != 0) return systemError(kAbout);
  return {};
}

// No new rights, no look into the process, and nothing of the caller's surroundings.
Status closeWays() {
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) != 0 || clearenv() != 0 ||
      chdir("/") != 0)
    return systemError(kAbout);
  return {};
}

// A file opened later must not become one of the standard streams.
Status settleDescriptors() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDWR) != stream) return systemError(kAbout);
  if (syscall(SYS_close_range, STDERR_FILENO + 1U, ~0U, 0) != 0) return systemError(kAbout);
  return {};
}

}  // namespace

Status confine() {
  for (const auto step : {settleDescriptors, checkIdentity, keepOnlyCapability, closeWays})
    if (Status done = step(); !done) return done;
  return {};
}

}  // namespace vantory
