// How old the last complete backup is, and whether the scheduled ones happen.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "backups/QWAutosaveHeader.h"

namespace vantory {

struct BackupAge {
  std::shared_ptr<QWBackup> lastGood;  // the newest that is complete; null when there is none
  std::string text;                    // a sentence on that
  // That automatic backups are scheduled and do not happen, with the reason where it is known: a sentence or two. None
  // where the last is younger than two intervals, or nothing is scheduled.
  std::optional<std::string> overdue;
};

// Of these backups, as they were listed.
BackupAge ageOf(const BackupList& backups);

}  // namespace vantory
