// What was typed where no task, question or file was understood.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vantory {

// A line that names the task or option that was probably meant, for arguments that begin with none, with no question
// and with no file that is there; none where they may be for the window.
std::optional<std::string> whatWasMeant(const std::vector<std::string>& arguments);

}  // namespace vantory
