// Drops capabilities.
#include "programs/vantory-root-helper/linux/Capabilities.h"

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdint>

namespace vantory {
namespace {

// All of them are in the lower half of the 64.
constexpr std::uint32_t kKept = 1U << CAP_CHOWN | 1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH |
                                1U << CAP_FOWNER | 1U << CAP_FSETID | 1U << CAP_LINUX_IMMUTABLE |
                                // to work with the user's rights for a moment
                                1U << CAP_SETUID | 1U << CAP_SETGID;

}  // namespace

bool keepOnlyFileCapabilities() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> held{};
  if (syscall(SYS_capget, &header, held.data()) != 0) return false;
  const std::uint32_t kept = held[0].permitted & kKept;
  held = {{{kept, kept, 0}, {0, 0, 0}}};
  return syscall(SYS_capset, &header, held.data()) == 0 && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
}

}  // namespace vantory
