// The one row of the library that stands for all automatic backups.
#pragma once

#include <memory>
#include <vector>

#include "backups/BackupNaming.h"
#include "backups/QWBackup.h"

namespace vantory {

using BackupList = std::vector<std::shared_ptr<QWBackup>>;

class QWAutosaveHeader : public BackupNode {
 public:
  static std::shared_ptr<QWAutosaveHeader> autosaveHeaderWithChildren(BackupList children);

  const BackupList& children() const { return children_; }
  // Before other threads know it.
  void setChildren(BackupList children) { children_ = std::move(children); }

  std::string name() const override { return kAutosavesFolder; }
  // Of the latest backup; none without backups.
  std::optional<Timestamp> date() const override;
  // Of all backups together.
  std::uint64_t size() const override;
  bool isMeasured() const override;
  int nameCompare(const BackupNode& other) const override;
  // The header stands apart from the sorted backups: always before them.
  int dateCompare(const BackupNode&) const override { return -1; }
  int sizeCompare(const BackupNode&) const override { return -1; }
  // Nothing to do: the group is never the default.
  void updateDefault() override {}

 private:
  BackupList children_;
};

}  // namespace vantory
