// Writes to open files, and holds them.
#include "platform/posix/files/OpenFiles.h"

#include <sys/file.h>
#include <unistd.h>

#include <thread>

#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

// A network file system may know no locks on folders; there each process is on its own.
bool cannotLock() {
  return errno == EBADF || errno == EINVAL || errno == ENOLCK || errno == ENOTSUP || errno == EOPNOTSUPP;
}

class OpenFolderHold : public FolderHold {
 public:
  explicit OpenFolderHold(Descriptor folder) : folder_(std::move(folder)) {}

 private:
  Descriptor folder_;
};

}  // namespace

Status writeAll(int file, std::string_view& bytes, const std::string& path) {
  while (!bytes.empty()) {
    const ssize_t count = uninterrupted([&] { return ::write(file, bytes.data(), bytes.size()); });
    if (count < 0) return systemError(path);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return {};
}

Result<std::unique_ptr<FolderHold>> holdOpen(Descriptor item, const std::string& path, std::chrono::milliseconds wait) {
  constexpr std::chrono::milliseconds kPause{20};
  while (flock(item.get(), LOCK_EX | LOCK_NB) != 0 && !cannotLock()) {
    if (errno != EWOULDBLOCK && errno != EINTR) return systemError(path);
    if (wait <= std::chrono::milliseconds::zero())
      return errorWithText(std::errc::timed_out, path, "another process is working here");
    std::this_thread::sleep_for(kPause);
    wait -= kPause;
  }
  return std::unique_ptr<FolderHold>(std::make_unique<OpenFolderHold>(std::move(item)));
}

}  // namespace vantory
