// The maker's pages on the web.
#pragma once

#include <string>

namespace vantory::pages {

inline constexpr const char* kMaker = "https://www.quarrywell.com/";
inline constexpr const char* kMaintenanceTools = "https://www.quarrywell.com/gearwright/";
inline constexpr const char* kProgram = "https://www.quarrywell.com/vantory/";

// The page's query tells the program and its version.
std::string bugReport(const std::string& version);
// The page's query tells the program.
std::string featureRequest();

}  // namespace vantory::pages
