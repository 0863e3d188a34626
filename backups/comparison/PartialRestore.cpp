// Finds the files that keys are in, and restores what was chosen.
#include "backups/comparison/PartialRestore.h"

#include <algorithm>

#include "backups/BackupFolder.h"
#include "backups/QWBackup.h"
#include "backups/RestoreRun.h"
#include "base/Format.h"
#include "base/PropertyListBytes.h"
#include "base/PropertyListEditing.h"
#include "base/Spelling.h"
#include "base/Text.h"
#include "catalog/FileRestoring.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

const FileSystem& files() {
  return Runtime::current().platform().files;
}

std::optional<PropertyList> propertyListAt(const std::string& path) {
  const auto bytes = files().read(path);
  return bytes ? parsePropertyList(*bytes) : std::nullopt;
}

// What a key is in each file of an item that differs.
struct Candidate {
  const FileComparison* file;
  PropertyList before;
  PropertyList after;
};

std::vector<Candidate> candidatesIn(const ItemComparison& item) {
  std::vector<Candidate> candidates;
  for (const FileComparison& file : item.files) {
    if (file.keys.empty()) continue;
    auto before = propertyListAt(file.before);
    auto after = propertyListAt(file.after);
    if (before && after) candidates.push_back({&file, std::move(*before), std::move(*after)});
  }
  return candidates;
}

Error refusal(std::string sentence) {
  return {std::errc::invalid_argument, std::move(sentence)};
}

bool holdsKey(const std::string& path, const KeyPath& key) {
  const auto list = propertyListAt(path);
  return list && valueAt(*list, key);
}

// One whose keys could not be compared, for the reason that it carries.
bool mayHoldKeys(const FileComparison& file) {
  const bool differs = file.difference != Difference::Same && file.difference != Difference::Kept;
  return differs && file.keys.empty() && !file.remark.empty();
}

// The first of the keys that makes the edit impossible.
std::string nameOfHindrance(std::string_view bytes, const std::vector<KeyEdit>& edits) {
  for (const KeyEdit& edit : edits)
    if (!editedPropertyList(bytes, {edit}))
      return formatted("it has no place for \"%@\", or cannot hold it", keyPathText(edit.first));
  return "it cannot hold these keys together";
}

// Why a key is to be put back in no file.
Error absenceOf(const KeyPath& key, const ItemComparison& item, const std::vector<Candidate>& candidates) {
  const std::string name = keyPathText(key);
  std::vector<std::string> known;
  for (const Candidate& candidate : candidates) {
    if (valueAt(candidate.after, key))
      return refusal(formatted("\"%@\" is the same in the backup: there is nothing to put back.", name));
    if (valueAt(candidate.before, key))
      return refusal(formatted("The backup has no \"%@\": it cannot be put back.", name));
    for (const KeyChange& change : candidate.file->keys)
      if (change.after) known.push_back(keyPathText(change.path));
  }
  for (const FileComparison& file : item.files) {
    if (file.difference == Difference::Added && holdsKey(file.after, key))
      return refusal(file.path + " is not there: restore it as a whole, or take back what moved it away.");
    if (candidates.empty() && mayHoldKeys(file)) return refusal(formatted("%@: %@", file.path, file.remark));
  }
  const auto nearest = nearestWord(name, known);
  const std::string where = formatted("No property list of \"%@\" that differs has the key \"%@\"", item.key, name);
  return refusal(nearest ? formatted("%@: did you mean \"%@\"?", where, *nearest)
                         : where + ". \"vantory --compare\" lists the keys.");
}

// As they are to be typed behind an item.
std::string operandsFor(const std::vector<KeyPath>& keys) {
  std::string operands;
  for (const KeyPath& key : keys) {
    const std::string text = keyPathText(key);
    if (!standsInQuotes(text)) return " KEYPATH...";
    operands += " \"" + text + "\"";
  }
  return operands;
}

void restoreKeys(const FileChoice& choice, const BackupFolder& backup, const std::string& item, TaskReport& report) {
  const std::string& path = choice.file.path;
  const auto fail = [&](Error error) {
    QWLog::appendLog("The keys were not put back: %@", error.text);
    report.failed(FileAction::Restore, path, std::move(error), item);
  };
  const auto known = files().info(path, Links::Follow);
  if (!known) return fail(known.error());
  const auto bytes = files().read(path);
  if (!bytes) return fail(bytes.error());
  if (const Status sound = backup.checkCopy(choice.file.after); !sound)
    return fail(
        withCureForDamage(sound.error(), backup, choice.file.after, "--restore-keys", item + operandsFor(choice.keys)));
  const auto held = propertyListAt(choice.file.after);
  if (!held) return fail({std::errc::invalid_argument, choice.file.after + ": it is no property list any more"});
  std::vector<KeyEdit> edits;
  for (const KeyPath& key : choice.keys) {
    const PropertyList* value = valueAt(*held, key);
    if (!value) return fail({std::errc::invalid_argument, choice.file.after + ": it has no " + keyPathText(key)});
    QWLog::appendLog("Putting %@ back in %@", keyPathText(key), path);
    edits.emplace_back(key, *value);
  }
  auto edited = editedPropertyList(*bytes, edits);
  if (!edited)
    return fail({std::errc::invalid_argument,
                 formatted("%@: %@. None of the keys was put back", path, nameOfHindrance(*bytes, edits))});
  replaceContent(path, std::move(*edited), *known, item, report);
}

const ItemChoice* choiceFor(const std::vector<ItemChoice>& choices, const QWPrefItem& item) {
  const auto choice = std::ranges::find(choices, item.key(), &ItemChoice::key);
  return choice == choices.end() ? nullptr : &*choice;
}

void restoreItem(QWPrefItem& item, const ItemChoice& choice, const BackupFolder& place, TaskReport& report) {
  if (choice.files.empty()) item.restoreFilesFromBackup(place, report);
  for (const FileChoice& file : choice.files) {
    if (file.keys.empty())
      restoreFile(file.file.after, place, item, report);
    else
      restoreKeys(file, place, item.key(), report);
  }
}

}  // namespace

Result<std::vector<FileChoice>> filesWithKeys(const ItemComparison& item, const std::vector<KeyPath>& keys) {
  const std::vector<Candidate> candidates = candidatesIn(item);
  std::vector<FileChoice> choices;
  for (const KeyPath& key : keys) {
    std::vector<const FileComparison*> found;
    for (const Candidate& candidate : candidates) {
      const PropertyList* before = valueAt(candidate.before, key);
      const PropertyList* after = valueAt(candidate.after, key);
      if (after && (!before || *before != *after)) found.push_back(candidate.file);
    }
    if (found.empty()) return absenceOf(key, item, candidates);
    if (found.size() > 1)
      return refusal(formatted("\"%@\" is in %i files of \"%@\", such as %@ and %@: give the path of one for the item.",
                               keyPathText(key), found.size(), item.key, found[0]->path, found[1]->path));
    const auto known =
        std::ranges::find(choices, found[0]->path, [](const FileChoice& each) { return each.file.path; });
    FileChoice& choice = known == choices.end() ? choices.emplace_back(FileChoice{*found[0], {}}) : *known;
    choice.keys.push_back(key);
  }
  return choices;
}

void restorePartly(const std::shared_ptr<QWBackup>& backup, const std::vector<ItemChoice>& choices, TaskReport& report,
                   bool closeAutomatically) {
  const BackupFolder place(backup->path());
  RestoreRun run(closeAutomatically, report);
  for (const auto& app : backup->children()) {
    const bool isMeant =
        std::ranges::any_of(app->children(), [&](const auto& item) { return choiceFor(choices, *item) != nullptr; });
    const auto restoreFiles = [&] {
      for (const auto& item : app->children())
        if (const ItemChoice* choice = choiceFor(choices, *item)) restoreItem(*item, *choice, place, report);
    };
    if (isMeant && !run.restore(*app, restoreFiles)) break;
  }
  run.finish();
}

}  // namespace vantory
