// Looks for helper programs from where this one lies.
#include "platform/posix/processes/HelperProgram.h"

#include <unistd.h>

#include <filesystem>

#include "platform/posix/kernel/Kernel.h"

namespace vantory {

// Those beside the program go first, so that one that is not installed finds its own.
std::string helperProgram(const std::string& name) {
  namespace fs = std::filesystem;
  const fs::path own = fs::path(kernel::ownPath()).parent_path();
  for (const fs::path& folder : {own, own / VANTORY_LIBEXEC_FROM_BIN, fs::path(VANTORY_LIBEXEC)}) {
    const fs::path path = (folder / name).lexically_normal();
    if (path.is_absolute() && access(path.c_str(), X_OK) == 0) return path;
  }
  return {};
}

}  // namespace vantory
