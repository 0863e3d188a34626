// The rows that the outlines show: each stands for a record of the catalog or of the library.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "backups/QWBackup.h"
#include "backups/ui/OutlineView.h"
#include "catalog/QWApp.h"

namespace vantory {

class RecordRow : public OutlineItem {
 public:
  using Record = std::variant<std::shared_ptr<BackupNode>, std::shared_ptr<QWApp>, std::shared_ptr<QWPrefItem>>;

  // `above` is the row that this one lies in; null for an outermost one.
  explicit RecordRow(Record record, OutlineItemPointer above = nullptr)
      : record_(std::move(record)), above_(std::move(above)) {}

  // A backup is known by its path, so that it is the same after the library was listed anew; whatever lies in a row, by
  // its name or key there.
  std::string identity() const override;
  const Record& record() const { return record_; }
  const OutlineItemPointer& above() const { return above_; }

 private:
  const Record record_;
  const OutlineItemPointer above_;
};

using Rows = std::vector<OutlineItemPointer>;

// A row for each record of a list.
template <class List>
Rows rowsFor(const List& records, const OutlineItemPointer& above = nullptr) {
  Rows rows;
  rows.reserve(records.size());
  for (const auto& record : records) rows.push_back(std::make_shared<RecordRow>(record, above));
  return rows;
}

// The row's record; null when it is no T.
template <class T>
std::shared_ptr<T> rowAs(const OutlineItemPointer& item) {
  const auto* row = dynamic_cast<const RecordRow*>(item.get());
  if (!row) return nullptr;
  return std::visit([](const auto& record) { return std::dynamic_pointer_cast<T>(record); }, row->record());
}

// The row itself, or the nearest one around it, that stands for a T; null when there is none.
template <class T>
OutlineItemPointer rowAround(OutlineItemPointer item) {
  while (item && !rowAs<T>(item)) {
    const auto* row = dynamic_cast<const RecordRow*>(item.get());
    item = row ? row->above() : nullptr;
  }
  return item;
}

}  // namespace vantory
