// What would be done to files.
#pragma once

#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "base/Result.h"

namespace vantory {

struct Change {
  enum class Kind { Trash, Copy, Move, Remove, Write, CreateFolder, Lock, Unlock };

  Kind kind;
  std::string path;                         // absolute: what it is done to
  std::string destination = {};             // of a copy or move, absolute
  std::optional<std::string> refusal = {};  // why it would fail; none when it would not
};

// In the order in which they would be done. Things that are made and removed again leave no trace here.
class Changes {
 public:
  const std::vector<Change>& all() const { return changes_; }

  // Takes the place of refusals of the same, if there were any before.
  void add(Change change);
  // Answers the error that the change would meet.
  Error refuse(Change change, std::errc code);

  // Something that was made lies elsewhere from now on.
  void renameMade(const std::string& path, const std::string& destination);
  // A folder that was made goes to the Trash: to whoever looks, what was copied into it to be kept does.
  void trashCopiesIn(const std::string& folder);
  // Something that was made is gone, with all that was made inside it.
  void dropMade(const std::string& path);

 private:
  std::vector<Change> changes_;
  std::unordered_set<std::string> refused_;  // paths of changes that were refused at some time
};

}  // namespace vantory
