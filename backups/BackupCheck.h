// Whether a backup is what it was when it was made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vantory {

class QWBackup;

struct BackupFault {
  enum class Kind { Settings, Missing, Paths, Damaged, Unreadable, LeadsOut, Special };

  Kind kind;
  std::string path;  // in the backup; empty for the whole of it
  std::string text;  // a sentence without its full stop
};

// As scripts read it, such as "damaged".
const char* nameOf(BackupFault::Kind kind);

struct BackupCheck {
  std::size_t files = 0;    // that were read
  std::uint64_t bytes = 0;  // of those
  std::size_t withoutChecksum = 0;
  bool isHeldKnown = false;  // whether the settings file says how many files there are
  std::vector<BackupFault> faults;
  // No damage: links that lead out of the backup from inside of a folder, and are kept.
  std::vector<BackupFault> remarks;

  bool isSound() const { return faults.empty(); }
};

// Reads all of it, with two threads, and changes nothing.
BackupCheck checkBackup(const QWBackup& backup);

}  // namespace vantory
