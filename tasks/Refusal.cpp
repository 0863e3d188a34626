// One sentence for a person, one object for a script.
#include "tasks/Refusal.h"

#include <algorithm>
#include <ostream>

#include "base/ExitCodes.h"
#include "base/Json.h"
#include "base/Text.h"
#include "tasks/Question.h"
#include "tasks/TaskOptions.h"

namespace vantory {

namespace {

void writeRefusal(const std::string& reason, std::ostream& output) {
  PropertyListDictionary refusal;
  refusal.append("exitCode", kNotBegun);
  refusal.append("error", reason);
  output << writeJson(std::move(refusal)) << '\n';
}

}  // namespace

int refuseLine(const std::string& reason, const std::vector<std::string>& arguments, std::ostream& output,
               std::ostream& errors) {
  errors << "Vantory: " << printable(reason) << '\n';
  if (std::ranges::count(arguments, kJson) > 0) writeRefusal(reason, output);
  return kNotBegun;
}

int refuseQuestion(const std::string& reason, const QuestionContext& context) {
  context.errors << "Vantory: " << printable(reason) << '\n';
  return refuseToldQuestion(reason, context);
}

int refuseToldQuestion(const std::string& reason, const QuestionContext& context) {
  if (context.form == AnswerForm::Json) writeRefusal(reason, context.output);
  return kNotBegun;
}

}  // namespace vantory
