// Which files the items of a catalog file may name.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vantory {

// For the user whose files are handled. May be shared by threads.
class PatternRules {
 public:
  // Beyond the places that are kept out for everyone: folders, by their full paths, that no pattern may reach.
  explicit PatternRules(const std::vector<std::string>& keptOut);

  // Why the pattern is refused, as the end of a sentence; empty where it may stand.
  std::string faultOf(const std::string& pattern) const;
  // The pattern as an absolute one; none where the user has no folder for it. It must be without fault.
  std::optional<std::string> resolve(const std::string& pattern) const;

 private:
  using Components = std::vector<std::string>;  // of a pattern as it is written

  std::string faultOfPlace(const Components& pattern) const;
  std::string faultOfFolder(const Components& pattern, const Components& folder) const;
  bool isKeptOut(const Components& pattern) const;
  std::string written(const std::string& path) const;

  std::optional<std::string> home_;
  std::optional<std::string> shared_;  // the folder that all users share
  std::vector<Components> roots_;      // the home and that folder
  std::vector<Components> sharedFolders_;
  std::vector<Components> keptOut_;
};

}  // namespace vantory
