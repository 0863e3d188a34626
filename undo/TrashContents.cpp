// Reads the notes of the Trash.
#include "undo/TrashContents.h"

#include <algorithm>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/FileSystem.h"
#include "platform/TrashLayout.h"
#include "platform/Users.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

Platform& platform() {
  return Runtime::current().platform();
}

// The Trash that a place is in: above the folder of its items.
std::string trashOf(const std::string& place) {
  return paths::parent(paths::parent(place));
}

std::string userNumber() {
  const Users& users = platform().users;
  const auto user = users.isSuperuser() ? users.consoleUser() : users.processUser();
  return user ? std::to_string(user->id) : "";
}

std::string homeTrash() {
  const auto items = QWLocalPaths::trashDirectory();
  if (!items) return "";
  return hasTrashNotes(*items) ? paths::parent(*items) : *items;
}

// Where relative paths in the notes of a Trash begin.
std::string topOf(const std::string& trash) {
  const std::string above = paths::parent(trash);
  return paths::lastComponent(above) == ".Trash" ? paths::parent(above) : above;
}

// Bytes written as "%41" stand for themselves again.
std::string withoutEscapes(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::size_t high = text[i] == '%' && i + 2 < text.size() ? 1 : 0;
    constexpr std::string_view kDigits = "0123456789ABCDEFabcdef";
    const auto digit = [&](std::size_t at) {
      const std::size_t value = kDigits.find(text[at]);
      return value > 15 && value != std::string_view::npos ? value - 6 : value;
    };
    if (high == 1 && digit(i + 1) <= 15 && digit(i + 2) <= 15) {
      bytes += static_cast<char>(digit(i + 1) * 16 + digit(i + 2));
      i += 2;
    } else {
      bytes += text[i];
    }
  }
  return bytes;
}

std::optional<TrashedItem> itemIn(const std::string& note, const std::string& place) {
  TrashedItem item{.place = place, .path = {}, .date = {}};
  for (const std::string& line : split(note, '\n')) {
    if (line.starts_with("Path=")) item.path = withoutEscapes(std::string_view(line).substr(5));
    if (line.starts_with("DeletionDate=")) item.date = line.substr(13);
  }
  if (item.path.empty() || item.date.empty()) return std::nullopt;
  if (!item.path.starts_with('/')) item.path = paths::join(topOf(trashOf(place)), item.path);
  return item;
}

}  // namespace

// A file system's own Trash is named after its user.
bool isUsersTrash(const std::string& folder) {
  const std::string name = paths::lastComponent(folder);
  const std::string above = paths::lastComponent(paths::parent(folder));
  const std::string number = userNumber();
  return folder == homeTrash() || name == ".Trash-" + number ||
         (name == number && (above == ".Trash" || above == ".Trashes"));
}

std::vector<std::string> trashesWithoutNotes(const std::string& path) {
  const auto items = QWLocalPaths::trashDirectory();
  if (!items || hasTrashNotes(*items)) return {};
  std::vector<std::string> trashes = {*items};
  for (std::string folder = paths::parent(path);; folder = paths::parent(folder)) {
    trashes.push_back(paths::join(folder, ".Trashes/" + userNumber()));
    if (folder.size() <= 1) return trashes;
  }
}

TrashDates trashDates(Timestamp begun, std::optional<Timestamp> ended) {
  constexpr std::int64_t kTolerance = 2;  // seconds
  const auto date = [](std::int64_t second) { return localTimeText({second, 0}, "%Y-%m-%dT%H:%M:%S"); };
  TrashDates dates{.first = date(begun.seconds - kTolerance), .last = {}};
  if (ended) dates.last = date(ended->seconds + kTolerance);
  return dates;
}

Result<TrashedItem> trashedItemAt(const std::string& place) {
  const Error missing{std::errc::no_such_file_or_directory, place + " is not in the Trash."};
  if (!hasTrashNotes(paths::parent(place)) || !isUsersTrash(trashOf(place))) return missing;
  if (QWFileManager::isMissingAtPath(place)) return missing;
  const auto note = platform().files.read(trashNotePath(place));
  if (!note) return note.error();
  auto item = itemIn(*note, place);
  if (!item) return missing;
  return std::move(*item);
}

// The user's own, and one at the top of any file system that the path might lie on.
std::optional<TrashedItem> TrashContents::take(const std::string& path, const TrashDates& dates) {
  goThrough(homeTrash());
  for (std::string folder = paths::parent(path);; folder = paths::parent(folder)) {
    goThrough(paths::join(folder, ".Trash-" + userNumber()));
    goThrough(paths::join(folder, ".Trash/" + userNumber()));
    if (folder.size() <= 1) break;
  }
  const auto [begin, end] = items_.equal_range(path);
  std::optional<TrashedItem> first;
  for (auto found = begin; found != end; ++found) {
    const TrashedItem& item = found->second;
    if (dates.hold(item.date) && !isTaken(item) && (!first || item.date < first->date)) first = item;
  }
  if (first) leaveOut(first->place, dates);
  return first;
}

bool TrashContents::isTaken(const TrashedItem& item) const {
  const auto [begin, end] = taken_.equal_range(item.place);
  return std::any_of(begin, end, [&](const auto& taken) { return taken.second.hold(item.date); });
}

void TrashContents::goThrough(const std::string& trash) {
  if (!known_.insert(trash).second) return;
  const std::string items = paths::join(trash, kTrashItemsFolder);
  const auto entries = platform().files.list(items, Detail::Names);
  if (!entries) return;
  for (const DirectoryEntry& entry : *entries)
    if (auto item = trashedItemAt(paths::join(items, entry.name))) items_.emplace(item->path, std::move(*item));
}

}  // namespace vantory
