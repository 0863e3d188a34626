// How a task's operand names preference items.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "backups/QWBackup.h"
#include "catalog/Catalog.h"

namespace vantory {

class TaskReport;

using KeyList = std::vector<std::string>;

// As a whole operand: every item that holds preferences proper, and every item.
inline constexpr std::string_view kAllPrefs = "-allprefs";
inline constexpr std::string_view kAllFiles = "-allfiles";

// A short name that scripts use with "-trash", as the whole operand, for an application's preferences.
struct Alias {
  std::string_view name;
  std::string_view keys;
};
std::span<const Alias> aliasTable();

// The keys between the commas; blanks stay, empty pieces too.
KeyList splitKeys(std::string_view operand);

// The catalog's items that the operand, split into `keys`, stands for: those of a selection word in catalog order, else
// those of the keys in their order; of the keys also items of `others`. Unknown keys stand for nothing, and are noted
// as unused; of those in `unknown` the reason is told.
std::vector<std::shared_ptr<QWPrefItem>> itemsForOperand(std::string_view operand, const KeyList& keys,
                                                         TaskReport& report, const AppList& others = {},
                                                         const std::vector<UnknownPart>& unknown = {});

// Notes the keys of which a backup, read or to be written, holds no item as unused.
void noteUnknownKeys(const KeyList& keys, const QWBackup& backup, TaskReport& report);

}  // namespace vantory
