// Splits operands, and finds the items they name.
#include "tasks/KeyList.h"

#include <algorithm>
#include <unordered_set>

#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Spelling.h"
#include "base/Text.h"
#include "services/TaskReport.h"

namespace vantory {

namespace {

// Older than the keys, and still in scripts.
constexpr Alias kAliases[] = {
    {"fcp", "fcpPrefs,fcpBoris"},  {"fce", "fcePrefs"},
    {"stp", "stpPrefs"},           {"motion", "motionPrefs"},
    {"color", "colorPrefs"},       {"dvdsp", "dvdspPrefs"},
    {"livetype", "livetypePrefs"}, {"compressor", "compressorPrefs"},
    {"batchmon", "batchmonPrefs"}, {"ct", "ctPrefs"},
};

constexpr std::size_t kMostGuesses = 20;  // an operand may be as long as the system allows

std::vector<std::string> wordsForItems() {
  std::vector<std::string> words;
  for (const auto& app : QWDataController::sharedController().appArray())
    for (const auto& item : app->children()) words.push_back(item->key());
  for (const std::string_view word : {kAllPrefs, kAllFiles}) words.emplace_back(word);
  return words;
}

// Notes each key once that is not among the known ones; what lies between two commas is no key.
class UnknownKeys {
 public:
  UnknownKeys(TaskReport& report, const std::vector<UnknownPart>& parts) : report_(report), parts_(parts) {}

  void note(const std::string& key) {
    if (key.empty() || !noted_.insert(key).second) return;
    for (const UnknownPart& part : parts_)
      if (std::ranges::count(part.keys, key) > 0)
        return report_.unused(
            {.operand = key,
             .reason = formatted("\"%@\" of \"%@\" stays in the backup: %@.", key, part.name, part.reason)});
    if (QWDataController::sharedController().prefItemForKey(key))
      return report_.unused({.operand = key, .reason = formatted("The backup holds no item \"%@\".", key)});
    auto nearest = noted_.size() <= kMostGuesses ? nearestWord(key, wordsForItems()) : std::nullopt;
    if (nearest == key) nearest.reset();  // a word that other tasks know
    report_.unused({.operand = key,
                    .reason = nearest ? formatted("Unknown item \"%@\": did you mean \"%@\"?", key, *nearest)
                                      : formatted("Unknown item \"%@\". \"vantory --list-items\" lists the keys.", key),
                    .nearest = nearest.value_or("")});
  }

 private:
  TaskReport& report_;
  const std::vector<UnknownPart>& parts_;
  std::unordered_set<std::string> noted_;
};

}  // namespace

std::span<const Alias> aliasTable() {
  return kAliases;
}

KeyList splitKeys(std::string_view operand) {
  return split(operand, ',');
}

std::vector<std::shared_ptr<QWPrefItem>> itemsForOperand(std::string_view operand, const KeyList& keys,
                                                         TaskReport& report, const AppList& others,
                                                         const std::vector<UnknownPart>& unknownParts) {
  const QWDataController& controller = QWDataController::sharedController();
  std::vector<std::shared_ptr<QWPrefItem>> items;
  if (operand != kAllPrefs && operand != kAllFiles) {
    UnknownKeys unknown(report, unknownParts);
    for (const std::string& key : keys) {
      const auto item = controller.prefItemForKey(key);
      if (const auto found = item ? item : prefItemForKey(others, key))
        items.push_back(found);
      else
        unknown.note(key);
    }
    return items;
  }
  for (const auto& app : controller.appArray())
    for (const auto& item : app->children())
      if (operand == kAllFiles || item->isPreferences()) items.push_back(item);
  return items;
}

void noteUnknownKeys(const KeyList& keys, const QWBackup& backup, TaskReport& report) {
  std::unordered_set<std::string> held;
  for (const auto& app : backup.children())
    for (const auto& item : app->children()) held.insert(item->key());
  UnknownKeys unknown(report, backup.unknown());
  for (const std::string& key : keys)
    if (!held.contains(key)) unknown.note(key);
}

}  // namespace vantory
