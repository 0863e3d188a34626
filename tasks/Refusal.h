// How a line that was not understood is answered.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace vantory {

// Writes the reason, a sentence or two, to `errors`, and to `output` as a JSON object where the line asks for JSON.
// Answers the exit code.
int refuseLine(const std::string& reason, const std::vector<std::string>& arguments, std::ostream& output,
               std::ostream& errors);

}  // namespace vantory
