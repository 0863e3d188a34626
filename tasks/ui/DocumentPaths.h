// The files that the program opens, and how a command line names them.
#pragma once

#include <string>
#include <vector>

namespace vantory {

// A backup or a project of the catalog's applications, told by the extension.
bool isKnownDocument(const std::string& path);

// The full paths that arguments name: paths, relative ones too, and "file:" addresses. What begins with a dash is an
// option and no path, unless "--" stands before it.
std::vector<std::string> documentPaths(const std::vector<std::string>& arguments, const std::string& workingDirectory);

}  // namespace vantory
