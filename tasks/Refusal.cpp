// One sentence for a person, one object for a script.
#include "tasks/Refusal.h"

#include <algorithm>
#include <ostream>

#include "base/ExitCodes.h"
#include "base/Json.h"
#include "base/Text.h"
#include "tasks/TaskOptions.h"

namespace vantory {

int refuseLine(const std::string& reason, const std::vector<std::string>& arguments, std::ostream& output,
               std::ostream& errors) {
  errors << "Vantory: " << printable(reason) << '\n';
  if (std::ranges::count(arguments, kJson) > 0) {
    PropertyListDictionary refusal;
    refusal.append("exitCode", kNotBegun);
    refusal.append("error", reason);
    output << writeJson(std::move(refusal)) << '\n';
  }
  return kNotBegun;
}

}  // namespace vantory
