// The steps of a move by copying, on macOS.
#include "platform/macos/files/Moving.h"

#include <sys/stat.h>

#include "platform/macos/files/Copying.h"
#include "platform/macos/files/Items.h"
#include "platform/macos/files/Staging.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/Moving.h"

namespace vantory::macos {

namespace {

class MacMovingCalls : public MovingCalls {
 public:
  MacMovingCalls(const std::string& source, const std::string& destination, const Rights& rights)
      : source_(source), destination_(destination), rights_(rights) {}

  int look(int folder, const std::string& name, ItemLook& look) const override {
    darwin::ItemStatus status;
    const int looked = darwin::statusAt(folder, name.c_str(), darwin::AtEnd::KeepLink, status);
    status.isLocked = (status.flags & darwin::kLocks) != 0;
    look = status;
    return looked;
  }
  Descriptor openFolder(int folder, const std::string& name) const override {
    return Descriptor(darwin::openAt(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
  }
  Result<std::vector<DirectoryEntry>> entries(int folder, const std::string& path) const override {
    return readFolder(folder, path, Detail::Names);
  }
  int renameKeeping(int folder, const std::string& from, const std::string& to) const override {
    return macos::renameKeeping(folder, from, folder, to);
  }
  Status remove(int folder, const std::string& name, const std::string& path,
                const RemovalCheck& check) const override {
    return removeItem(folder, name, path, check);
  }
  Status sync(const Place& item, const std::string& path) const override {
    const Descriptor opened(
        darwin::openAt(item.at(), item.folder.valid() ? "." : item.name.c_str(), O_RDONLY | O_NONBLOCK));
    if (!opened.valid() || darwin::flushVolume(opened.get()) != 0) return systemError(path);
    return {};
  }
  Result<Notes> copy(const Place& from, const Place& to, const ItemLook& item, CopiedItems& items) const override {
    CopyReport report(items, rights_, to.isInHome);
    if (!S_ISLNK(item.mode)) return stageAndName(from, to, report);
    if (Status copied = copyLink(from.at(), from.name, to, source_, report); !copied) return copied.error();
    return report.takeNotes();
  }

 private:
  Result<Notes> stageAndName(const Place& from, const Place& to, CopyReport& report) const;

  const std::string& source_;
  const std::string& destination_;
  const Rights& rights_;
};

Result<Notes> MacMovingCalls::stageAndName(const Place& from, const Place& to, CopyReport& report) const {
  const Descriptor source = openSource(from.at(), from.name, Links::DoNotFollow);
  darwin::ItemStatus status;
  if (!source.valid() || darwin::statusOf(source.get(), status) != 0) return systemError(source_);
  if (!S_ISREG(status.mode) && !S_ISDIR(status.mode))
    return errorWithText(std::errc::not_supported, source_, "a special file cannot be moved to another disk");
  if (!rights_.mayHandOn(status)) return systemError(source_, EPERM);
  Place twin = twinOf(to);
  if (to.folder.valid() && !twin.folder.valid()) return systemError(destination_);
  const auto staged = stage(source, status, {.source = source_, .destination = destination_}, std::move(twin), report);
  if (!staged) return staged.error();
  if (Status named = (*staged)->commit(StagedCopy::Existing::Keep); !named) return named.error();
  return (*staged)->notes();
}

}  // namespace

Result<Notes> moveByCopying(const std::string& source, const std::string& destination, const Rights& rights) {
  const Result<Place> from = rights.locateInFolder(source);
  if (!from) return from.error();
  const Result<Place> to = rights.locateInFolder(destination);
  if (!to) return to.error();
  return vantory::moveByCopying(MacMovingCalls(source, destination, rights), *from, *to, source, destination);
}

}  // namespace vantory::macos
