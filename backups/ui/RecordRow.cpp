// Makes rows for records and knows them again.
#include "backups/ui/RecordRow.h"

namespace vantory {

namespace {

// What tells the record from its neighbours.
std::string nameOf(const std::shared_ptr<BackupNode>& entry) {
  const auto backup = std::dynamic_pointer_cast<QWBackup>(entry);
  return backup ? backup->path() : entry->name();
}

std::string nameOf(const std::shared_ptr<QWApp>& app) {
  return app->name();
}

std::string nameOf(const std::shared_ptr<QWPrefItem>& item) {
  return item->key();
}

}  // namespace

std::string RecordRow::identity() const {
  std::string name = std::visit([](const auto& record) { return nameOf(record); }, record_);
  return above_ ? above_->identity() + "\n" + name : name;
}

}  // namespace vantory
