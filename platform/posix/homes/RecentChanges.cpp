// Looks at the dates of files where applications keep their preferences.
#include "platform/posix/homes/RecentChanges.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/posix/files/Descriptor.h"

namespace vantory {

namespace {

// Where an application that runs, or a Mac whose user is logged in, writes every now and then.
struct Place {
  const char* folder;
  int levels;
};
constexpr Place kPlaces[] = {
    {"", 1}, {"/Library/Preferences", 3}, {"/Library/Application Support", 3}, {"/.config", 3}};
constexpr int kMostFiles = 20'000;
constexpr int kMostLevels = 16;  // of a folder that is named itself

bool isOurs(std::string_view name) {
  return name.starts_with("com.quarrywell.") || name == "Quarrywell";
}

class Search {
 public:
  explicit Search(std::chrono::seconds within) : within_(within.count()), now_(std::time(nullptr)) {}

  std::optional<std::string> in(const std::string& path, int levels) {
    return in(AT_FDCWD, path.c_str(), path, levels);
  }
  std::optional<std::string> at(const std::string& path) {
    return ++looked_ > kMostFiles ? std::nullopt : at(AT_FDCWD, path.c_str(), path, kMostLevels);
  }

 private:
  std::optional<std::string> in(int above, const char* name, const std::string& path, int levels) {
    Descriptor folder(openat(above, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!folder.valid()) return std::nullopt;
    const std::unique_ptr<DIR, int (*)(DIR*)> list(fdopendir(folder.get()), closedir);
    if (!list) return std::nullopt;
    const int number = folder.release();
    while (const dirent* entry = readdir(list.get())) {
      const std::string_view each = entry->d_name;
      if (each == "." || each == ".." || isOurs(each)) continue;
      if (++looked_ > kMostFiles) return std::nullopt;
      if (auto found = at(number, entry->d_name, path + "/" + entry->d_name, levels - 1)) return found;
    }
    return std::nullopt;
  }

  // Dates of the future, but for those of a clock that is a little fast, say nothing. A link counts as the file that it
  // leads to, where that is the user's too: what others write elsewhere is none of this home's.
  std::optional<std::string> at(int folder, const char* name, const std::string& path, int levels) {
    struct stat status {};
    if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    if (S_ISLNK(status.st_mode) &&
        (fstatat(folder, name, &status, 0) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid()))
      return std::nullopt;
    if (S_ISREG(status.st_mode) && std::abs(now_ - status.st_mtime) < within_) return path;
    return S_ISDIR(status.st_mode) && levels > 0 ? in(folder, name, path, levels) : std::nullopt;
  }

  const std::time_t within_;
  const std::time_t now_;
  int looked_ = 0;
};

}  // namespace

std::optional<std::string> recentlyChangedFile(const std::string& home, std::chrono::seconds within) {
  for (const Place& place : kPlaces)
    if (auto found = Search(within).in(home + place.folder, place.levels)) return found;
  return std::nullopt;
}

std::optional<std::string> recentlyChangedFile(const std::vector<std::string>& paths, std::chrono::seconds within) {
  Search search(within);
  for (const std::string& path : paths)
    if (auto found = search.at(path)) return found;
  return std::nullopt;
}

}  // namespace vantory
