// Writes job files and the machine's setting as root.
#include "platform/posix/rights/MachineWideFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <string_view>

#include "base/Paths.h"
#include "platform/OneItem.h"
#include "platform/PrivilegedRunner.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/SettingsText.h"

namespace vantory {
namespace {

constexpr std::chrono::seconds kWaitForOthers{2};
constexpr mode_t kReadableForAll = 0644;

// A file with a second name could be anybody's.
Result<Descriptor> openOnlyFile(const Result<Place>& place, const std::string& path) {
  if (!place) return place.error();
  Descriptor file(uninterrupted([&] {
    return openat(place->at(), place->name.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC);
  }));
  struct stat status;
  if (!file.valid() || fstat(file.get(), &status) != 0) return systemError(path);
  if (!S_ISREG(status.st_mode) || status.st_nlink != 1)
    return errorWithText(std::errc::operation_not_permitted, path, "is no file of its own");
  return file;
}

}  // namespace

// Directly in the folder, and called as the maker's jobs are.
bool isJobFileIn(const std::string& folder, const std::string& path) {
  if (!path.starts_with(folder + "/")) return false;
  const std::string_view name = std::string_view(path).substr(folder.size() + 1);
  return name.starts_with("com.quarrywell.") && name.ends_with(".plist") && name.find('/') == std::string_view::npos;
}

Status makeReadableForAll(const Result<Place>& place, const std::string& path) {
  const Result<Descriptor> file = openOnlyFile(place, path);
  if (!file) return file.error();
  if (fchmod(file->get(), kReadableForAll) != 0) return systemError(path);
  return {};
}

bool MachineWideFiles::isJobFolder(const std::string& path) const {
  if (!disk_.takesMachineJobs()) return false;
  const auto library = standard_.localFolder(StandardFolder::Library);
  return library && (leadToOneItem(files_, path, *library + "/LaunchDaemons") ||
                     leadToOneItem(files_, path, *library + "/LaunchAgents"));
}

bool MachineWideFiles::isJob(const std::string& path) const {
  const std::string folder = paths::parent(path);
  return isJobFolder(folder) && isJobFileIn(folder, path);
}

// A new file of the superuser's takes the place of the user's, who may still hold that one open for writing.
Status MachineWideFiles::install(const std::string& source, const std::string& job) {
  FileSystem& usersFiles = disk_.usersFiles();
  const Result<std::string> bytes = usersFiles.read(source);
  if (!bytes) return bytes.error();
  const Result<FileInfo> there = files_.info(job, Links::DoNotFollow);
  if (there || !meansMissing(there.error())) return there ? systemError(job, EEXIST) : there.error();
  if (Status written = files_.write(job, *bytes, {.durable = true}); !written) return written;
  const Status removed = usersFiles.remove(source);
  if (removed || removed.error().code == std::errc::no_such_file_or_directory) return {};
  (void)files_.remove(job);  // half a move is none
  return removed;
}

Status MachineWideFiles::giveToSuperuser(const std::string& job) const {
  const Result<Descriptor> file = openOnlyFile(disk_.locateOnMachine(job), job);
  if (!file) return file.error();
  if (fchown(file->get(), 0, 0) != 0) return systemError(job);
  return {};
}

Status MachineWideFiles::makeReadable(const std::string& path) const {
  return makeReadableForAll(disk_.locateOnMachine(path), path);
}

// Under the lock that all changes of settings take; whatever else the file holds stays.
Status MachineWideFiles::requireAdministrator(bool required) {
  const std::string folder = standard_.localFolder(StandardFolder::Library).value_or("") + "/Preferences";
  const std::string path = paths::join(folder, kSettingsFile);
  if (Status made = files_.makeFolder(folder); !made) return made;
  const auto hold = files_.holdFolder(folder, kWaitForOthers);
  if (!hold) return hold.error();
  const Result<std::string> present = files_.read(path);
  if (!present && present.error().code != std::errc::no_such_file_or_directory) return present.error();
  const Result<std::string> changed =
      withSetting(present ? *present : "", kAdministratorSetting, required ? 1 : 0, path);
  if (!changed) return changed.error();
  if (Status written = files_.write(path, *changed, {.durable = true}); !written) return written;
  return makeReadable(path);
}

}  // namespace vantory
