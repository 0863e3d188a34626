// "--restore-keys": puts single keys of a backup back into a present property list.

#include <algorithm>

#include "backups/comparison/PartialRestore.h"
#include "base/Format.h"
#include "services/TaskReport.h"
#include "tasks/AppController.h"
#include "tasks/KeyList.h"
#include "tasks/NamedBackup.h"
#include "tasks/TaskCommand.h"

namespace vantory {

namespace {

int refuse(const CommandContext& context, const std::string& reason) {
  return context.refuse({.text = "Vantory: " + reason, .title = "Vantory", .description = reason, .console = reason});
}

// Why the backup is not known to hold it.
std::string unknownItem(const std::string& key, const QWBackup& backup) {
  TaskReport unknown;
  noteUnknownKeys({key}, backup, unknown);
  return unknown.unusedOperands().empty() ? "An empty word names no item." : unknown.unusedOperands().front().reason;
}

// The item that is meant by its key, or by the path of one of its files, to which the comparison is reduced then.
Result<ItemComparison> itemMeant(Comparison comparison, const std::string& operand) {
  const auto unknown = [&](const char* reason) {
    return Error{std::errc::invalid_argument, formatted(reason, operand)};
  };
  if (operand.find('/') == std::string::npos) {
    if (comparison.items.empty()) return unknown("The backup holds no item \"%@\".");
    return std::move(comparison.items.front());
  }
  for (ItemComparison& item : comparison.items) {
    std::erase_if(item.files, [&](const FileComparison& file) { return file.path != operand; });
    if (!item.files.empty()) return std::move(item);
  }
  return unknown("%@ does not differ from the backup, or is not in it.");
}

Result<std::vector<KeyPath>> keysIn(const CommandContext& context, std::size_t first, std::size_t last) {
  std::vector<KeyPath> keys;
  for (std::size_t i = first; i <= last; ++i) {
    const auto key = parseKeyPath(*context.operand(i));
    if (!key)
      return Error{std::errc::invalid_argument,
                   formatted("\"%@\" is no key path, such as \"Timeline.Tracks[2].Name\".", *context.operand(i))};
    if (std::ranges::find(keys, *key) == keys.end()) keys.push_back(*key);
  }
  return keys;
}

}  // namespace

int restoreKeysCommand(const CommandContext& context) {
  const std::size_t count = context.ownOperandCount();
  if (count < 3) return context.refuseWithoutOperand();
  const std::string operand = *context.operand(2);
  const bool isPath = operand.find('/') != std::string::npos;
  const auto keys = keysIn(context, 3, count);
  if (!keys) return refuse(context, keys.error().text);
  QWDataController& library = QWDataController::sharedController();
  library.populateApps();
  library.populateBackups();
  const auto backup = backupToRead(*context.operand(1));
  if (!backup) return refuse(context, backup.error().text);
  if (!isPath && !library.prefItemForKey(operand) && !prefItemForKey((*backup)->children(), operand))
    return refuse(context, unknownItem(operand, **backup));
  ComparisonRequest request{.after = *backup};
  if (!isPath) request.items = {operand};
  const auto item = itemMeant(compareBackups(request), isPath ? context.pathOperand(2) : operand);
  if (!item) return refuse(context, item.error().text);
  const auto files = filesWithKeys(*item, *keys);
  if (!files) return refuse(context, files.error().text);
  restorePartly(*backup, {{item->key, *files}}, context.report);
  context.report.summarize(formatted("Put %@ of \"%@\" back.", counted(keys->size(), "key"), (*backup)->name()));
  return 0;
}

}  // namespace vantory
