// The command lines of the system's tools.
#include "platform/macos/system/MacSystemTools.h"

#include "platform/macos/darwin/Darwin.h"

namespace vantory {

ToolCall MacSystemTools::zip(const std::string& item, const std::string& archive) const {
  return {darwin::toolPath("/usr/bin/ditto"), {"-c", "-k", "--keepParent", item, archive}};
}

std::optional<ToolCall> MacSystemTools::registerApplication(const std::string& application) const {
  if (!application.ends_with(".app")) return std::nullopt;
  return ToolCall{darwin::toolPath("/System/Library/Frameworks/CoreServices.framework/Versions/A/Frameworks/"
                                   "LaunchServices.framework/Versions/A/Support/lsregister"),
                  {"-f", application}};
}

// The item is no part of the script.
std::optional<ToolCall> MacSystemTools::refreshView(const std::string& item) const {
  constexpr const char* kScript =
      "on run arguments\n"
      "set changed to POSIX file (item 1 of arguments) as alias\n"
      "ignoring application responses\n"
      "tell application id \"com.apple.finder\" to update changed\n"
      "end ignoring\n"
      "end run";
  return ToolCall{darwin::toolPath("/usr/bin/osascript"), {"-e", kScript, item}};
}

}  // namespace vantory
