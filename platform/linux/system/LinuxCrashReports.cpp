#include "platform/linux/system/LinuxCrashReports.h"

#include <utility>
#include <vector>

namespace vantory {

namespace {

constexpr const char* kPrograms[] = {"vantory", "vantory-window"};

// "core.PROGRAM.USER.BOOT.PROCESS.TIME", with the ending of its compression.
bool isMemoryDump(const std::string& name, const std::string& user) {
  for (const std::string program : kPrograms)
    if (name.starts_with("core." + program + "." + user + ".")) return true;
  return false;
}

// "_usr_bin_PROGRAM.USER.crash"
bool isReport(const std::string& name, const std::string& user) {
  for (const std::string program : kPrograms)
    if (name.ends_with("_" + program + "." + user + ".crash")) return true;
  return false;
}

struct Place {
  const char* folder;
  bool (*holds)(const std::string& name, const std::string& user);
};

constexpr Place kPlaces[] = {{"/var/lib/systemd/coredump", isMemoryDump}, {"/var/crash", isReport}};

}  // namespace

LinuxCrashReports::LinuxCrashReports(const FileSystem& files, const Users& users, std::string root)
    : files_(files), users_(users), root_(std::move(root)) {}

std::optional<std::string> LinuxCrashReports::newestSince(Timestamp moment) const {
  const auto user = users_.isSuperuser() ? users_.consoleUser() : users_.processUser();
  if (!user) return std::nullopt;
  std::optional<std::string> newest;
  for (const Place& place : kPlaces) {
    const std::string folder = root_ + place.folder;
    const auto entries = files_.list(folder, Detail::Names);
    if (!entries) continue;
    for (const DirectoryEntry& entry : *entries) {
      if (!place.holds(entry.name, std::to_string(user->id))) continue;
      const std::string path = folder + "/" + entry.name;
      const auto info = files_.info(path, Links::DoNotFollow);
      if (!info || info->type != FileType::File || info->modified <= moment) continue;
      moment = info->modified;
      newest = path;
    }
  }
  return newest;
}

}  // namespace vantory
