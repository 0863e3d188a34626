// The copies of a backup that newer ones replace: they go to the Trash together.
#pragma once

#include <string>

#include "base/Result.h"

namespace vantory {

class TaskReport;

// Keeps what is about to be replaced in a folder beside the backup, made when it is first needed.
class ReplacedCopies {
 public:
  explicit ReplacedCopies(const std::string& backup) : backup_(backup) {}

  // Where the file or folder, which lies in the backup, is to be kept until all are; another place each time.
  std::string placeFor(const std::string& path);
  // Keeps a copy of the file or folder at that place, and leaves it as it is.
  static Status keep(const std::string& path, const std::string& place);
  // What was not replaced after all need not be kept.
  void drop(const std::string& path, const std::string& place);
  // Moves what was kept to the Trash, under one name, and says where it is. It stays beside the backup where that
  // fails.
  void moveToTrash(TaskReport& report);
  // Moves what a task that was killed has kept beside the backup to the Trash, where it was to go.
  static void tidy(const std::string& backup);

 private:
  std::string newFolder() const;

  const std::string backup_;
  std::string folder_;  // empty while nothing is kept
};

}  // namespace vantory
