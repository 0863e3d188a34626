// Splits operands, and finds the items they name.
#include "tasks/KeyList.h"

#include "backups/QWDataController.h"
#include "base/Text.h"

namespace vantory {

namespace {

constexpr Alias kAliases[] = {
    {"fcp", "fcpPrefs,fcpBoris"},  {"fce", "fcePrefs"},
    {"stp", "stpPrefs"},           {"motion", "motionPrefs"},
    {"color", "colorPrefs"},       {"dvdsp", "dvdspPrefs"},
    {"livetype", "livetypePrefs"}, {"compressor", "compressorPrefs"},
    {"batchmon", "batchmonPrefs"}, {"ct", "ctPrefs"},
};

}  // namespace

std::span<const Alias> aliasTable() {
  return kAliases;
}

KeyList splitKeys(std::string_view operand) {
  return split(operand, ',');
}

std::vector<std::shared_ptr<QWPrefItem>> itemsForOperand(std::string_view operand, const KeyList& keys) {
  const QWDataController& controller = QWDataController::sharedController();
  std::vector<std::shared_ptr<QWPrefItem>> items;
  if (operand != kAllPrefs && operand != kAllFiles) {
    for (const std::string& key : keys)
      if (const auto item = controller.prefItemForKey(key)) items.push_back(item);
    return items;
  }
  for (const auto& app : controller.appArray())
    for (const auto& item : app->children())
      if (operand == kAllFiles || item->isPreferences()) items.push_back(item);
  return items;
}

}  // namespace vantory
