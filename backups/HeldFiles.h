// What lies in the folder of a backup, and the note that its settings file carries of that.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/FileSystem.h"

namespace vantory {

struct HeldFile {
  std::string path;  // in the backup, without a slash at its beginning
  FileType type = FileType::File;
};

// All that is no folder, but for the settings file itself, as docs/backup-format.md describes it.
struct HeldFiles {
  std::vector<HeldFile> files;    // folder by folder
  std::vector<Error> unreadable;  // folders

  // How many there are, and one checksum over their paths.
  std::string note() const;
};

HeldFiles listHeldFiles(const std::string& backup);

// Whether the note says that other files were backed up than those that are there. Where there is none nothing is
// known.
bool holdsOtherFiles(const std::string& backup);

// To be called before what the backup holds is changed: takes the note away, so that none is wrong where that ends
// halfway. False where the note is wrong already; then it stays, and no other is due.
bool takeNoteOfHeldFiles(const std::string& backup);

// Notes what the backup holds now. Where its file system cannot keep that, the log says so.
void noteHeldFiles(const std::string& backup);

}  // namespace vantory
