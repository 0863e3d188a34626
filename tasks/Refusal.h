// How a line that was not understood is answered.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace vantory {

struct QuestionContext;

// Writes the reason, a sentence or two, to `errors`, and to `output` as a JSON object where the line asks for JSON.
// Answers the exit code.
int refuseLine(const std::string& reason, const std::vector<std::string>& arguments, std::ostream& output,
               std::ostream& errors);

// The same for a question that cannot be answered.
int refuseQuestion(const std::string& reason, const QuestionContext& context);
// Where the person was told the reason already.
int refuseToldQuestion(const std::string& reason, const QuestionContext& context);

}  // namespace vantory
