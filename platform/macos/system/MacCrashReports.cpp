// Looks for reports by their names.
#include "platform/macos/system/MacCrashReports.h"

#include <cctype>
#include <string_view>

namespace vantory {

namespace {

// "PROGRAM-YYYY-MM-DD-HHMMSS.ips": a digit behind the name tells the program from its helpers.
bool isReport(std::string_view name) {
  for (const std::string_view program : {"vantory-", "vantory-window-"})
    if (name.starts_with(program) && name.ends_with(".ips") &&
        std::isdigit(static_cast<unsigned char>(name[program.size()])) != 0)
      return true;
  return false;
}

}  // namespace

// Each that is newer is the mark for the next. Those that were sent to the system's maker are in a folder of their own.
std::optional<std::string> MacCrashReports::newestSince(Timestamp moment) const {
  const auto user = users_.isSuperuser() ? users_.consoleUser() : users_.processUser();
  const auto library = user ? folders_.userFolder(StandardFolder::Library, user->home) : std::nullopt;
  if (!library) return std::nullopt;
  std::optional<std::string> newest;
  for (const char* below : {"/Logs/DiagnosticReports", "/Logs/DiagnosticReports/Retired"}) {
    const std::string folder = *library + below;
    const auto entries = files_.list(folder, Detail::Names);
    if (!entries) continue;
    for (const DirectoryEntry& entry : *entries) {
      const std::string path = folder + "/" + entry.name;
      if (!isReport(entry.name)) continue;
      const auto info = files_.info(path, Links::DoNotFollow);
      if (!info || info->type != FileType::File || info->modified <= moment) continue;
      moment = info->modified;
      newest = path;
    }
  }
  return newest;
}

}  // namespace vantory
