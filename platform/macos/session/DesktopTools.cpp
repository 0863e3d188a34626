// Starts the tools of the desktop and reads what they say.
#include "platform/macos/session/DesktopTools.h"

#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/session/DesktopScript.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/ToolRun.h"

namespace vantory {

namespace {

using std::chrono::seconds;

constexpr seconds kPatienceForStart{30};

Result<std::string> ask(const std::string& tool, std::vector<std::string> arguments, seconds patience) {
  const Result<ToolEnd> end = runTool(
      {.path = darwin::toolPath(tool), .arguments = std::move(arguments), .environment = cleanEnvironment()}, patience);
  if (!end) return end.error();
  if (end->status != 0) return errorWithText(std::errc::io_error, tool, faultOf(*end));
  std::string answer = end->output;
  if (answer.ends_with('\n')) answer.pop_back();
  return answer;
}

}  // namespace

Status openByTool(const std::vector<std::string>& arguments) {
  return ask("/usr/bin/open", arguments, kPatienceForStart).status();
}

Status runDesktopScript(const std::string& script, seconds patience) {
  return ask("/usr/bin/osascript", {"-e", script}, patience).status();
}

// The question's name comes first, so that no argument of it is taken for an option.
Result<std::string> askDesktop(const std::string& question, const std::vector<std::string>& arguments,
                               seconds patience) {
  std::vector<std::string> all = {"-l", "JavaScript", "-e", kDesktopScript, question};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return ask("/usr/bin/osascript", std::move(all), patience);
}

}  // namespace vantory
