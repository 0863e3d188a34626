// Keeps the machine's log, and has it kept.
#include "platform/macos/rights/MachineLog.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "base/Paths.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/OpenFiles.h"

namespace vantory {

namespace {

constexpr const char* kMakeFolder = "make-folder";
constexpr const char* kWrite = "write";
constexpr const char* kRemove = "remove";
constexpr const char* kMove = "move";
constexpr const char* kOpen = "open";

// A name, and not a way to somewhere else.
bool isLogName(std::string_view name) {
  return name.find('/') == std::string_view::npos && (name.ends_with(".log") || name.ends_with(".new"));
}

Error refusal(const std::string& about) {
  return errorWithText(std::errc::operation_not_permitted, about, "is no log of ours");
}

}  // namespace

std::string machineLogFolder(const StandardFolders& standard) {
  return standard.localFolder(StandardFolder::Library).value_or("") + "/Logs/Quarrywell";
}

Status MachineLog::perform(const Message& request, Descriptor& file) {
  const auto is = [&](const char* verb, std::size_t size) { return request.size() == size && request[1] == verb; };
  if (is(kMakeFolder, 4)) return files_.makeFolder(folder_);
  if (request.size() != 4 || !isLogName(request[2])) return refusal(request.back());
  const std::string path = paths::join(folder_, request[2]);
  if (is(kWrite, 4)) return files_.write(path, request[3], {});
  if (is(kRemove, 4)) return files_.remove(path);
  if (is(kMove, 4) && isLogName(request[3])) return files_.move(path, paths::join(folder_, request[3])).status();
  return is(kOpen, 4) ? open(path, file) : refusal(request[1]);
}

// A FIFO in its place is refused instead of waited for.
Status MachineLog::open(const std::string& path, Descriptor& file) const {
  const Result<Place> place = rights_.locate(path);
  if (!place) return place.error();
  Descriptor opened(darwin::openAt(place->at(), place->name.c_str(),
                                   O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK, S_IRUSR | S_IWUSR));
  darwin::ItemStatus status;
  if (!opened.valid() || darwin::statusOf(opened.get(), status) != 0) return systemError(path);
  if (!S_ISREG(status.mode) || !rights_.mayServe(status)) return systemError(path, EPERM);
  file = std::move(opened);
  return {};
}

Status MachineLogFiles::ask(const std::string& verb, const std::string& path, const std::string& more,
                            Descriptor* file) {
  if (verb != kMakeFolder && paths::parent(path) != folder_) return refusal(path);
  return superuser_.ask({kMachineLog, verb, paths::lastComponent(path), more}, file);
}

Status MachineLogFiles::makeFolder(const std::string& path) {
  return path == folder_ ? ask(kMakeFolder, path) : refusal(path);
}

Status MachineLogFiles::write(const std::string& path, std::string_view bytes, WriteOptions) {
  return ask(kWrite, path, std::string(bytes));
}

Status MachineLogFiles::remove(const std::string& path) {
  return ask(kRemove, path);
}

Result<Notes> MachineLogFiles::move(const std::string& source, const std::string& destination) {
  if (paths::parent(destination) != folder_) return refusal(destination);
  const Status moved = ask(kMove, source, paths::lastComponent(destination));
  return moved ? Result<Notes>(Notes()) : moved.error();
}

Result<std::unique_ptr<AppendFile>> MachineLogFiles::openForAppending(const std::string& path) {
  Descriptor file;
  if (const Status opened = ask(kOpen, path, "", &file); !opened) return opened.error();
  if (!file.valid()) return systemError(path, EBADF);
  return std::unique_ptr<AppendFile>(std::make_unique<OpenAppendFile>(std::move(file), path));
}

}  // namespace vantory
