// What a backup needs of the library that lists it.
#pragma once

#include "catalog/Catalog.h"

namespace vantory {

// QWDataController is the process's one.
class BackupLibrary {
 public:
  virtual ~BackupLibrary() = default;

  static BackupLibrary& current();

  // The live catalog.
  virtual AppList appArray() const = 0;
  // Lists all backups anew.
  virtual void populateBackups() = 0;
};

}  // namespace vantory
