// Reads backups from disk.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "backups/QWBackup.h"
#include "base/PropertyList.h"
#include "catalog/definitions/DefinitionReader.h"

namespace vantory {

// Whether a list of the settings, such as that of an application's items, holds the name.
bool holdsName(const PropertyListArray& list, const std::string& name);

// What backups are compared with (the catalog, the user's home folder, the default backup's name) is looked up once,
// so that a reader may serve a whole library.
class BackupReader {
 public:
  BackupReader();

  // The backup in that folder, whose date is known. Without readable settings it holds no applications. Those that it
  // carries a definition of are taken as that says; what it names beyond is unknown(). Sizes are measured when first
  // asked for.
  std::shared_ptr<QWBackup> read(const std::string& path, std::optional<Timestamp> date) const;

 private:
  void guardAgainst(QWApp& held) const;

  AppList catalog_;
  std::optional<std::string> home_;
  std::optional<std::string> defaultName_;
  PatternRules rules_;    // for the definitions that backups carry
  TakenNames installed_;  // by the catalog
};

}  // namespace vantory
