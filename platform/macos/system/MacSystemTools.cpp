// The command lines of the system's tools.
#include "platform/macos/system/MacSystemTools.h"

namespace vantory {

ToolCall MacSystemTools::zip(const std::string& item, const std::string& archive) const {
  return {"/usr/bin/ditto", {"-c", "-k", "--keepParent", item, archive}};
}

std::optional<ToolCall> MacSystemTools::registerApplication(const std::string& application) const {
  if (!application.ends_with(".app")) return std::nullopt;
  return ToolCall{
      "/System/Library/Frameworks/CoreServices.framework/Versions/A/Frameworks/LaunchServices.framework/"
      "Versions/A/Support/lsregister",
      {"-f", application}};
}

}  // namespace vantory
