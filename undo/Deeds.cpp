// Compares what was planned with what is there.
#include "undo/Deeds.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

#include "backups/DefaultBackup.h"
#include "base/Paths.h"
#include "services/files/FolderWalk.h"
#include "services/files/QWFileManager.h"
#include "undo/TrashContents.h"
#include "undo/TrashIndex.h"

namespace vantory {

namespace {

// By how much the times of files and of the Trash may differ from a receipt's: what is restored is staged before its
// receipt is begun, and clocks tick apart.
constexpr std::int64_t kSlack = 2;  // seconds

// What comes from the Trash leaves nothing behind.
bool isFrom(const ReceiptStep& step, const FileTraits& present) {
  const auto source = traitsOf(step.source);
  return source ? isCopyOf(present, *source) : step.action == FileAction::PutBack;
}

// By what a receipt is known together with the other attempts at the same, which are taken back with it.
std::string takenBackWith(const Receipt& receipt) {
  return receipt.undoes.empty() ? receipt.name : "undo " + receipt.undoes;
}

// What came back out of the Trash, each path beside what put it there: another may lie in its place since.
std::set<std::pair<std::string, std::string>> putBackBy(const std::vector<Receipt>& all) {
  std::set<std::pair<std::string, std::string>> putBack;
  for (const Receipt& undo : all) {
    const auto undone = std::ranges::find(all, undo.undoes, &Receipt::name);
    if (undone == all.end()) continue;
    for (const ReceiptStep& step : undo.steps)
      if (step.isDone && step.action == FileAction::PutBack) putBack.emplace(takenBackWith(*undone), step.path);
  }
  return putBack;
}

// Looks what became of the steps that nothing is known of.
class Inspection {
 public:
  Inspection(const Receipt& receipt, const std::vector<Receipt>& all)
      : begun_(receipt.begun), dates_(trashDates(receipt.begun, receipt.ended)) {
    const std::set<std::pair<std::string, std::string>> putBack = putBackBy(all);
    std::optional<Timestamp> next;  // a killed task did nothing any more when a later one began
    for (const Receipt& each : all) {
      const TrashDates dates = trashDates(each.begun, each.ended ? each.ended : next);
      next = Timestamp{each.begun.seconds - 2 * kSlack, 0};
      for (const ReceiptStep& step : each.steps) {
        if (!step.isDone || step.action != FileAction::Trash) continue;
        if (!putBack.contains({takenBackWith(each), step.path})) trash_.leaveOut(step.place, dates);
        if (each.name == receipt.name) trashed_.insert(step.path);
        if (each.name > receipt.name && step.traits) claimed_.insert(step.traits->identity.number);
      }
    }
    // What lies still where it was to be put back from is not what the task trashed itself.
    for (const ReceiptStep& step : receipt.steps) {
      if (step.isDone || step.action != FileAction::PutBack) continue;
      const auto item = trashedItemAt(step.source);
      if (item && item->path == step.path) trash_.leaveOut(step.source, {item->date, item->date});
    }
  }

  // Adds what was done of it.
  void look(ReceiptStep step, std::vector<ReceiptStep>& deeds);

 private:
  bool lookForTrashed(const ReceiptStep& step, std::vector<ReceiptStep>& deeds);
  std::optional<std::string> takeFromTrash(const ReceiptStep& step);
  void lookForCopy(ReceiptStep step, std::vector<ReceiptStep>& deeds);
  static void lookForReplacement(ReceiptStep step, std::vector<ReceiptStep>& deeds);

  const Timestamp begun_;
  const TrashDates dates_;
  TrashContents trash_;
  TrashIndex index_;
  std::set<std::uint64_t> claimed_;  // items of a Trash without notes, by their numbers
  std::set<std::string> trashed_;    // what is known to have been
};

void Inspection::look(ReceiptStep step, std::vector<ReceiptStep>& deeds) {
  step.isDone = true;
  switch (step.action) {
    case FileAction::Trash:
      lookForTrashed(step, deeds);
      break;
    case FileAction::Restore:
    case FileAction::PutBack:
      lookForCopy(std::move(step), deeds);
      break;
    case FileAction::Lock:
    case FileAction::Unlock:
      if (QWFileManager::isFileLocked(step.path) == (step.action == FileAction::Lock)) deeds.push_back(std::move(step));
      break;
    case FileAction::Create:
      // Had anything been put into it, that would be known.
      if (!QWFileManager::isDirectoryAtPath(step.path) || !QWFileManager::isFolderEmpty(step.path)) break;
      step.traits = traitsOf(step.path);
      deeds.push_back(std::move(step));
      break;
    case FileAction::Replace:
      lookForReplacement(std::move(step), deeds);
      break;
    case FileAction::Default:
      if (placeOfDefault() == step.path) deeds.push_back(std::move(step));
      break;
    case FileAction::Move:
      if (!QWFileManager::isMissingAtPath(step.path) || !QWFileManager::itemExistsAtPath(step.place)) break;
      step.traits = traitsOf(step.place);
      deeds.push_back(std::move(step));
      break;
    default:
      break;
  }
}

bool Inspection::lookForTrashed(const ReceiptStep& step, std::vector<ReceiptStep>& deeds) {
  const auto place = takeFromTrash(step);
  if (!place) return false;
  ReceiptStep trashed = step;
  trashed.action = FileAction::Trash;
  trashed.place = *place;
  trashed_.insert(step.path);
  deeds.push_back(std::move(trashed));
  return true;
}

// By its note; where there are none by what the plan says of it. Each is answered once.
std::optional<std::string> Inspection::takeFromTrash(const ReceiptStep& step) {
  if (const auto item = trash_.take(step.path, dates_)) return item->place;
  if (!step.traits || claimed_.contains(step.traits->identity.number)) return std::nullopt;
  for (const std::string& trash : trashesWithoutNotes(step.path)) {
    const auto place = index_.find(trash, paths::lastComponent(step.path), *step.traits);
    if (!place) continue;
    claimed_.insert(step.traits->identity.number);
    return *place;
  }
  return std::nullopt;
}

// What was in the way went to the Trash first; until then the file in its place is the user's own, even where the
// backup holds the same.
void Inspection::lookForCopy(ReceiptStep step, std::vector<ReceiptStep>& deeds) {
  if (step.wasThere && !trashed_.contains(step.path) && !lookForTrashed(step, deeds)) return;
  const auto present = traitsOf(step.path);
  if (!present) return;
  if (step.source.empty() ? present->modified.seconds < begun_.seconds - kSlack : !isFrom(step, *present)) return;
  step.traits = present;
  deeds.push_back(std::move(step));
}

void Inspection::lookForReplacement(ReceiptStep step, std::vector<ReceiptStep>& deeds) {
  step.traits = traitsOf(step.path);
  if (step.traits && isFrom(step, *step.traits)) deeds.push_back(std::move(step));
}

bool holdsNothingNewer(const std::string& folder, Timestamp time) {
  const auto isOld = [&](const std::string& path, const DirectoryEntry&) {
    const auto traits = ownTraitsOf(path);
    return traits && traits->modified <= time;
  };
  return walkFolder(folder, Detail::Names, Links::DoNotFollow, isOld, Unreadable::End);
}

// What taking it back does.
FileAction inverseOf(FileAction action) {
  switch (action) {
    case FileAction::Trash:
      return FileAction::PutBack;
    case FileAction::Lock:
      return FileAction::Unlock;
    case FileAction::Unlock:
      return FileAction::Lock;
    case FileAction::Move:
    case FileAction::Replace:
    case FileAction::Default:
      return action;
    default:
      return FileAction::Trash;
  }
}

}  // namespace

std::vector<ReceiptStep> deedsOf(const Receipt& receipt, const std::vector<Receipt>& all) {
  std::vector<ReceiptStep> deeds;
  Inspection inspection(receipt, all);
  // What was noted came first: of what is looked for nothing was noted any more.
  std::ranges::copy_if(receipt.steps, std::back_inserter(deeds), &ReceiptStep::isDone);
  for (const ReceiptStep& step : receipt.steps)
    if (!step.isDone) inspection.look(step, deeds);
  return deeds;
}

Receipt withEarlierAttempts(const Receipt& receipt, const std::vector<Receipt>& all) {
  Receipt whole = receipt;
  if (receipt.undoes.empty()) return whole;
  whole.steps = deedsOf(receipt, all);
  for (const Receipt& other : all) {
    if (other.undoes != receipt.undoes || other.undone || other.isRunning || other.name >= receipt.name) continue;
    const std::vector<ReceiptStep> deeds = deedsOf(other, all);
    whole.steps.insert(whole.steps.begin(), deeds.begin(), deeds.end());
    whole.begun = other.begun;
  }
  return whole;
}

// One that took it back in part, and was not taken back itself, has left its own deeds.
std::vector<ReceiptStep> deedsLeftOf(const Receipt& receipt, const std::vector<Receipt>& all) {
  std::multiset<std::pair<FileAction, std::string>> takenBack;
  for (const Receipt& other : all)
    if (other.undoes == receipt.name && !other.undone)
      for (const ReceiptStep& deed : deedsOf(other, all)) takenBack.emplace(deed.action, deed.path);
  std::vector<ReceiptStep> deeds = deedsOf(receipt, all);
  std::vector<ReceiptStep> left;
  for (auto deed = deeds.rbegin(); deed != deeds.rend(); ++deed) {
    const bool goesBack = deed->action == FileAction::Move || deed->action == FileAction::Default;
    const auto found = takenBack.find({inverseOf(deed->action), goesBack ? deed->place : deed->path});
    if (found == takenBack.end())
      left.push_back(std::move(*deed));
    else
      takenBack.erase(found);
  }
  std::ranges::reverse(left);
  return left;
}

std::optional<bool> isUnchanged(const ReceiptStep& deed, const Receipt& receipt) {
  const auto present = traitsOf(deed.path);
  if (!present) return std::nullopt;
  if (!deed.traits) return false;
  if (deed.action == FileAction::Create && !receipt.ended) return present->isSameItem(*deed.traits);
  // Another file where a later update was taken back, but the same copy. It is kept in the Trash anyway.
  if (deed.action != FileAction::Replace && !present->isSameItem(*deed.traits)) return false;
  if (isCopyOf(*present, *deed.traits)) return true;
  // A folder in which the task itself put a file anew has another time since, but that file has not.
  const bool wasWorkedIn = std::ranges::any_of(receipt.steps, [&](const ReceiptStep& step) {
    return step.isDone && step.path != deed.path && paths::isWithin(step.path, deed.path);
  });
  return wasWorkedIn && present->size == deed.traits->size && holdsNothingNewer(deed.path, deed.traits->modified);
}

}  // namespace vantory
