// Makes the rows, keeps their ticks together, and reads from them what is to be restored.
#include "backups/ui/ComparisonRows.h"

#include <algorithm>
#include <tuple>

#include "base/Format.h"
#include "base/Paths.h"

namespace vantory {

namespace {

using Row = std::shared_ptr<ComparisonRow>;

constexpr const char* kNothing = "–";
constexpr std::size_t kMostBelow = 1000;  // keys or lines of one file

Row addBelow(ComparisonRows& rows, const Row& above, std::string title) {
  auto row = std::make_shared<ComparisonRow>();
  row->id = (above ? above->id + "\n" : "") + title;
  row->title = std::move(title);
  row->above = above;
  rows.push_back(row);
  return row;
}

// Tells that there are more than can be shown.
bool isFull(const Row& file, std::size_t all) {
  if (file->below.size() < kMostBelow) return false;
  addBelow(file->below, file, formatted("... and %i more", all - kMostBelow));
  return true;
}

void addKeys(const Row& file) {
  for (const KeyChange& change : file->file->keys) {
    if (isFull(file, file->file->keys.size())) return;
    const Row row = addBelow(file->below, file, keyPathInWords(change.path));
    row->key = &change;
    if (change.before && change.after)
      std::tie(row->now, row->inBackup) = valuesInShort(change);
    else
      (change.before ? row->now : row->inBackup) = valueInShort(change.before ? *change.before : *change.after);
    for (std::string* value : {&row->now, &row->inBackup})
      if (value->empty()) *value = kNothing;
    row->canBeTicked = change.after && !change.path.empty();
  }
}

void addLines(const Row& file) {
  for (const LineChange& change : file->file->lines) {
    if (isFull(file, file->file->lines.size())) return;
    const Row row = addBelow(file->below, file, formatted("Line %i%@", change.number, change.added ? " added" : ""));
    (change.added ? row->inBackup : row->now) = change.line;
  }
}

// A line that is another counts once, though one goes and one comes.
std::string differenceInWords(const FileComparison& file) {
  const auto differ = [](std::size_t number, const char* what) {
    return counted(number, what) + (number == 1 ? " differs" : " differ");
  };
  if (!file.keys.empty()) return differ(file.keys.size(), "key");
  const auto added = static_cast<std::size_t>(std::ranges::count_if(file.lines, &LineChange::added));
  if (!file.lines.empty()) return differ(std::max(added, file.lines.size() - added), "line");
  return "differs";
}

void describe(ComparisonRow& row) {
  row.remark = row.file->remark;
  switch (row.file->difference) {
    case Difference::Same:
    case Difference::Different:
      row.now = differenceInWords(*row.file);
      break;
    case Difference::Added:
      row.now = kNothing;
      row.inBackup = "there";
      break;
    case Difference::Kept:
    case Difference::Removed:
      row.now = "there";
      row.inBackup = kNothing;
      row.remark = row.file->difference == Difference::Kept ? "stays" : "goes with its folder";
      break;
    case Difference::Refused:
      row.inBackup = "is not restored";
      break;
    case Difference::Unreadable:
      row.now = "cannot be compared";
      break;
  }
  row.canBeTicked = row.file->difference == Difference::Different || row.file->difference == Difference::Added;
}

void addFiles(const Row& item) {
  for (const FileComparison& file : item->item->files) {
    const Row row = addBelow(item->below, item, paths::lastComponent(file.path));
    row->id = item->id + "\n" + file.path;
    if (item->item->files.size() > 1)
      row->title = paths::join(paths::lastComponent(paths::parent(file.path)), row->title);
    row->file = &file;
    describe(*row);
    addKeys(row);
    addLines(row);
    item->canBeTicked |= row->canBeTicked;
  }
}

void setAll(ComparisonRow& row, State state) {
  row.state = state;
  for (const Row& below : row.below) setAll(*below, state);
}

State stateOf(const ComparisonRows& rows) {
  const auto are = [&](State state) {
    return std::ranges::all_of(rows, [state](const Row& row) { return row->state == state; });
  };
  return are(On) ? On : are(Off) ? Off : Mixed;
}

// All its keys, or the file as a whole.
FileChoice choiceOf(const ComparisonRow& file) {
  FileChoice choice{*file.file, {}};
  if (file.state == On) return choice;
  for (const Row& key : file.below)
    if (key->canBeTicked && key->state == On) choice.keys.push_back(key->key->path);
  return choice;
}

}  // namespace

ComparisonRows comparisonRows(const Comparison& comparison) {
  ComparisonRows applications;
  for (const ItemComparison& item : comparison.items) {
    if (item.files.empty()) continue;
    if (applications.empty() || applications.back()->title != item.application)
      addBelow(applications, nullptr, item.application);
    const Row& application = applications.back();
    const Row row = addBelow(application->below, application, item.name);
    row->id = item.key;
    row->item = &item;
    addFiles(row);
    application->canBeTicked |= row->canBeTicked;
  }
  return applications;
}

void tickRow(ComparisonRow& row, State state) {
  setAll(row, state);
  for (Row above = row.above.lock(); above; above = above->above.lock()) above->state = stateOf(above->below);
}

std::vector<ItemChoice> tickedChoices(const ComparisonRows& applications) {
  std::vector<ItemChoice> choices;
  for (const Row& application : applications)
    for (const Row& item : application->below) {
      if (item->state == Off || !item->canBeTicked) continue;
      ItemChoice choice{item->item->key, {}};
      if (item->state == Mixed)
        for (const Row& file : item->below) {
          if (file->state == Off || !file->canBeTicked) continue;
          FileChoice chosen = choiceOf(*file);
          if (file->state == On || !chosen.keys.empty()) choice.files.push_back(std::move(chosen));
        }
      if (item->state == On || !choice.files.empty()) choices.push_back(std::move(choice));
    }
  return choices;
}

}  // namespace vantory
