// Writes a file beside the old one and renames it.
#include "programs/vantory-desktop/WholeFile.h"

#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "platform/linux/session/GLibPointers.h"
#include "platform/posix/files/Errors.h"

namespace vantory::desktop {

Status writeWhole(const std::string& path, std::string_view bytes, int mode) {
  std::error_code failure;
  const std::string target = std::filesystem::weakly_canonical(path, failure);
  if (failure) return systemError(path, failure.value());
  struct stat status {};
  const bool exists = stat(target.c_str(), &status) == 0;
  // A rename would replace a write-protected file all the same.
  if (exists && access(target.c_str(), W_OK) != 0) return systemError(target);
  GError* error = nullptr;
  constexpr auto kFlags =
      static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE);
  if (g_file_set_contents_full(target.c_str(), bytes.data(), static_cast<gssize>(bytes.size()), kFlags,
                               exists ? static_cast<int>(status.st_mode & 07777U) : mode, &error))
    return {};
  const ErrorPointer owner(error);
  return errorWithText(std::errc::io_error, target, error->message);
}

}  // namespace vantory::desktop
