// Makes a definition of an application out of a property list, or says why it is none.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "base/PropertyList.h"
#include "catalog/AppDefinition.h"
#include "catalog/definitions/PatternRules.h"

namespace vantory {

inline constexpr std::size_t kLargestDefinition = 64 * 1024;  // bytes of a file
inline constexpr std::size_t kMostDefinitions = 100;          // of a catalog, or that a backup carries

struct DefinitionFault {
  std::string reason;   // a sentence
  std::string at = {};  // the text that it is about; may be empty
};

// A definition that may be used by itself, and what in it means nothing.
struct ReadDefinition {
  AppDefinition definition;
  std::vector<DefinitionFault> remarks = {};
};

// Checks everything but what other definitions say.
std::variant<ReadDefinition, DefinitionFault> readDefinition(const PropertyList& value, const PatternRules& rules);
// The reverse; without the source.
PropertyList propertyListOf(const AppDefinition& definition);

struct TakenKey {
  std::string application;  // its name
  std::string source;       // the file that has it
};

struct TakenPattern {
  std::vector<std::string> components;  // folded
  std::string application;              // its name
};

// What has been taken in a catalog, at first by the built-in table, and how much it may hold. Letters of either case
// are alike.
class TakenNames {
 public:
  TakenNames();
  // Why the definition cannot stand beside the others; an empty reason where it can.
  DefinitionFault faultOf(const AppDefinition& definition) const;
  // The same of its keys or patterns alone; those of the other applications of these names are no fault.
  DefinitionFault faultOfKeys(const AppDefinition& definition, const std::vector<std::string>& except = {}) const;
  DefinitionFault faultOfPatterns(const AppDefinition& definition, const std::vector<std::string>& except = {}) const;
  void take(const AppDefinition& definition);
  void release(const AppDefinition& definition);

 private:
  // With the file that has each; empty for what is built in or reserved.
  std::map<std::string, std::string> names_;
  std::map<std::string, TakenKey> keys_;
  std::map<std::string, std::string> projects_;
  std::vector<TakenPattern> patterns_;  // but for the built-in ones
  std::size_t count_ = 0;
  std::size_t deep_ = 0;  // patterns with several wildcards
};

}  // namespace vantory
