// What restoring a backup would change, or what differs between two backups.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/LineChanges.h"
#include "base/PropertyListChanges.h"
#include "base/Result.h"

namespace vantory {

class QWBackup;

enum class Difference {
  Same,
  Different,
  Added,    // there is none yet: a restore adds it
  Kept,     // only among the present files: a restore leaves it
  Removed,  // lies in a folder that is replaced as a whole, and not in the backup; or only in the first of two backups
  Refused,  // a restore does not put it in its place
  Unreadable  // could not be compared
};

// As scripts read it, such as "different".
const char* nameOf(Difference difference);

// One file, or link, that is not the same.
struct FileComparison {
  std::string path;    // where it lies, or would lie, on this system
  std::string before;  // where that lies which it is compared with; the same path for a present file
  std::string after;   // its place in the backup
  Difference difference = Difference::Different;
  std::string remark = {};             // what to know about it, such as why it could not be compared; empty for nothing
  std::vector<KeyChange> keys = {};    // of property lists
  std::vector<LineChange> lines = {};  // of short texts that are no property lists
};

struct ItemComparison {
  std::string application;
  std::string name;
  std::string key;
  std::vector<FileComparison> files;  // that are not the same, by path
  std::size_t same = 0;               // how many are
};

struct Comparison {
  std::vector<ItemComparison> items;  // in the catalog's order; each that either side holds
  bool isWhole = true;                // false where it was ended early

  std::size_t count(Difference difference) const;
};

struct ComparisonRequest {
  // What is there before; null for the present files.
  std::shared_ptr<const QWBackup> before = {};
  std::shared_ptr<const QWBackup> after;
  // The keys of the items; none for all.
  std::optional<std::vector<std::string>> items = {};
  // Hears after each file how many were compared; false ends the comparison. May be empty.
  std::function<bool(std::size_t files)> observer = {};
};

// Files of one size and one time of change are taken to be the same; else their content is compared. No link inside of
// a backup is followed. Reads only; any thread.
Comparison compareBackups(const ComparisonRequest& request);

}  // namespace vantory
