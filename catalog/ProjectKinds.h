// The kinds of project files that editing applications write.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/Catalog.h"

namespace vantory {

struct ProjectKind {
  std::string_view extension;    // without the dot
  std::string_view application;  // the bundle identifier of the application that writes such projects
};

inline constexpr std::array<ProjectKind, 8> kProjectKinds = {{{"fcp", "com.apple.FinalCutPro"},
                                                              {"stap", "com.apple.soundtrackpro"},
                                                              {"stmp", "com.apple.soundtrackpro"},
                                                              {"motn", "com.apple.motion"},
                                                              {"ipr", "com.apple.LiveType"},
                                                              {"dspproj", "com.apple.dvdstudiopro"},
                                                              {"compressor", "com.apple.Compressor.compressor"},
                                                              {"colorproj", "com.apple.color"}}};

// The kind of a file, told by its extension in any case; null for one that is no project.
const ProjectKind* projectKindOf(const std::string& path);
// The identifiers of the application that opens projects of that kind, the one that was meant first; none for a file
// that is no project, also to no application that is defined beside the built-in ones.
std::vector<std::string> applicationsOfProject(const std::string& path, const AppList& apps);
// The extensions of all kinds, those of these applications included.
std::vector<std::string> projectExtensions(const AppList& apps);

}  // namespace vantory
