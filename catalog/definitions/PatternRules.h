// Which files the items of a catalog file may name.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantory {

class RealPaths;

// Characters that a reader does not see or takes for others: blanks other than the space, marks that turn the text
// round or join the letter before them, private ones.
bool holdsDeceivingCharacters(std::string_view text);

// For the user whose files are handled. May be shared by threads.
class PatternRules {
 public:
  // Beyond the places that are kept out for everyone: folders, by their full paths, that no pattern may reach.
  explicit PatternRules(const std::vector<std::string>& keptOut);

  // Why the pattern is refused to an application of these identifiers, as the end of a sentence; empty where it may
  // stand.
  std::string faultOf(const std::string& pattern, const std::vector<std::string>& identifiers) const;
  // The same of the path of what a pattern has found, there or in a backup, whatever characters its name has and
  // wherever links lead: of a catalog file's, and of one that nothing but a backup names.
  std::string faultOfMatch(const std::string& path, const std::string& found,
                           const std::vector<std::string>& identifiers, RealPaths& realPaths) const;
  std::string faultOfPath(const std::string& path, const std::string& found,
                          const std::vector<std::string>& identifiers, RealPaths& realPaths) const;
  // The pattern as an absolute one; none where the user has no folder for it. It must be without fault.
  std::optional<std::string> resolve(const std::string& pattern) const;

 private:
  using Components = std::vector<std::string>;  // of a pattern, folded

  std::string faultOfPlace(Components pattern, bool isShared, const std::vector<std::string>& identifiers) const;
  static std::string faultInHome(const Components& pattern);
  static std::string faultInDocuments(const Components& pattern);
  static std::string faultOfNames(const Components& pattern, std::size_t first);
  std::string faultOfShared(const Components& pattern) const;
  bool isKeptOut(const Components& pattern) const;
  std::string written(const std::string& path) const;

  std::optional<std::string> home_;
  std::optional<std::string> realHome_;
  std::optional<std::string> shared_;  // the folder that all users share
  std::vector<Components> keptOut_;
};

}  // namespace vantory
