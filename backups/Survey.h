// What of the catalog is on disk now, and whether the newest backup of it still has it as it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/Timestamp.h"
#include "catalog/Catalog.h"

namespace vantory {

// What was found of an item, an application, or several of them.
struct Standing {
  // How the newest complete backup that holds it has it.
  enum class Kept {
    Nothing,    // there is nothing, and no backup has anything of it
    NotAtAll,   // it is there, and in no backup
    InPart,     // some of it is in no backup, the rest is as it was
    AsItIs,     // by size and date of every file
    Otherwise,  // something was changed, added or removed since
  };

  std::size_t files = 0;  // links count too
  std::uint64_t bytes = 0;
  std::optional<Timestamp> changed;  // the newest file's; none without files
  Kept kept = Kept::Nothing;

  // Becomes what both are together, where they have no file in common.
  void add(const Standing& other);
};

// Never changes once it is made. What it was not made for stands as nothing.
class Survey {
 public:
  Standing of(const QWApp& app) const;
  // Of the items that hold the application's preferences proper.
  Standing ofPreferences(const QWApp& app) const;
  // Of an item with its users, or of a user.
  Standing of(const QWPrefItem& item) const;
  // Of several together: a file that more than one of them has counts once.
  Standing of(const std::vector<const QWPrefItem*>& items) const;
  // Of everything.
  const Standing& total() const { return total_; }

 private:
  friend class SurveyRequest;

  struct SharedFile {
    std::string place;
    std::uint64_t bytes = 0;
  };
  // Of an item without its users, or of a user.
  struct Part {
    Standing standing;
    std::vector<SharedFile> shared;  // those of its files that others have too
  };

  std::unordered_map<std::string, Part> parts_;  // by key
  Standing total_;
};

// What is to be looked at. Made on the main thread; carried out on any other.
class SurveyRequest {
 public:
  // Of the catalog and the library as they are listed now.
  static SurveyRequest forEverything();

  // Looks at all files, which takes its time; null as soon as `isStale`, asked between two files, answers true.
  std::shared_ptr<const Survey> carryOut(const std::function<bool()>& isStale) const;

 private:
  AppList apps_;
  std::unordered_map<std::string, std::string> backups_;  // by an item's key: the newest complete backup that holds it
};

// The folders in which the applications' files are looked for, each once, in the catalog's order.
std::vector<std::string> foldersLookedAt(const AppList& apps);

}  // namespace vantory
