// Sums up the automatic backups for their row.
#include "backups/QWAutosaveHeader.h"

#include <algorithm>

#include "base/Text.h"

namespace vantory {

std::shared_ptr<QWAutosaveHeader> QWAutosaveHeader::autosaveHeaderWithChildren(BackupList children) {
  auto header = std::make_shared<QWAutosaveHeader>();
  header->setChildren(std::move(children));
  return header;
}

std::optional<Timestamp> QWAutosaveHeader::date() const {
  std::optional<Timestamp> latest;
  for (const auto& backup : children_) latest = std::max(latest, backup->date());
  return latest;
}

std::uint64_t QWAutosaveHeader::size() const {
  std::uint64_t total = 0;
  for (const auto& backup : children_) total += backup->size();
  return total;
}

bool QWAutosaveHeader::isMeasured() const {
  return std::ranges::all_of(children_, [](const auto& backup) { return backup->isMeasured(); });
}

int QWAutosaveHeader::nameCompare(const BackupNode& other) const {
  return compareNames(name(), other.name());
}

}  // namespace vantory
