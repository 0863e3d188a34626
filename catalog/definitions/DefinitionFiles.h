// The applications that catalog files of this machine and this user add to the built-in ones.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "catalog/Catalog.h"
#include "catalog/definitions/DefinitionReader.h"
#include "platform/TrustedFiles.h"

namespace vantory {

struct DefinedCatalog {
  AppList apps;                         // by name
  std::vector<std::string> complaints;  // sentences, with file and line: what is left out, hides two, means nothing
};

// Whose catalog files count in this process.
TrustedOwners ownersOfDefinitions();

// Reads the machine's files, then the user's; of the same identifier the later counts. In a process of the superuser
// only the machine's count. `keptOut` is what PatternRules take.
DefinedCatalog readDefinedCatalog(const std::vector<std::string>& keptOut);

// One file's definition by itself, or the complaint about it. What means nothing is added to the remarks.
std::variant<AppDefinition, std::string> readDefinitionFile(const std::string& path, std::string_view bytes,
                                                            const PatternRules& rules,
                                                            std::vector<std::string>& remarks);
// "FILE:LINE: reason", with the line where the text that the fault is about stands in one.
std::string complaintAbout(const std::string& path, std::string_view bytes, const DefinitionFault& fault);
// What is told of a file that takes the place of several.
std::string remarkOnTakenPlaces(const std::vector<std::string>& files);
// Whether two definitions are of the same application.
bool shareIdentifier(const AppDefinition& one, const AppDefinition& other);

// The definition as a record, its patterns resolved for the user; all lock states are due.
std::shared_ptr<QWApp> definedApp(const AppDefinition& definition, const PatternRules& rules);

}  // namespace vantory
