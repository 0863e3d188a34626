// What lies in the user's Trash, by the notes beside it.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/Result.h"
#include "base/Timestamp.h"

namespace vantory {

// An item of the Trash.
struct TrashedItem {
  std::string place;  // where it lies
  std::string path;   // where it lay
  std::string date;   // local, when it was trashed, such as "2026-11-14T21:35:17"
};

// The first and last date that the notes of the Trash can have of what was trashed between these moments: their clock
// is another, of whole seconds. Without an end there is no last one.
struct TrashDates {
  std::string first;
  std::optional<std::string> last;

  bool hold(const std::string& date) const { return date >= first && (!last || date <= *last); }
};
TrashDates trashDates(Timestamp begun, std::optional<Timestamp> ended);
// Whether the folder is a Trash of the user's, with or without notes.
bool isUsersTrash(const std::string& folder);
// The Trashes without notes that an item at the path may have been moved to; none on a system whose have notes.
std::vector<std::string> trashesWithoutNotes(const std::string& path);
// What the note says of the item at this place. Fails with no_such_file_or_directory where there is no item, no note
// that can be understood, or the place is in no Trash of the user's.
Result<TrashedItem> trashedItemAt(const std::string& place);

// Looks for what a task that was killed moved to the Trash. Each Trash is gone through once.
class TrashContents {
 public:
  // The first item that lay at the path and was trashed then; each is answered once.
  std::optional<TrashedItem> take(const std::string& path, const TrashDates& dates);
  // What was trashed to that place then is known otherwise. Another may have its name since.
  void leaveOut(const std::string& place, const TrashDates& dates) { taken_.emplace(place, dates); }

 private:
  void goThrough(const std::string& trash);
  bool isTaken(const TrashedItem& item) const;

  std::set<std::string> known_;  // the folders of each Trash
  std::multimap<std::string, TrashedItem> items_;
  std::multimap<std::string, TrashDates> taken_;  // by place
};

}  // namespace vantory
