// The command lines of the system's tools.
#include "platform/linux/system/LinuxSystemTools.h"

#include "base/Paths.h"

namespace vantory {

ToolCall LinuxSystemTools::zip(const std::string& item, const std::string& archive) const {
  // Written as "./name", lest a name that begins with "@" or "-" means something else; that component is then dropped.
  return {"/usr/bin/bsdtar",
          {"-c", "-H", "-f", archive, "--format", "zip", "--options", "hdrcharset=UTF-8", "--strip-components", "1",
           "-C", paths::parent(item), "--", "./" + paths::lastComponent(item)}};
}

std::optional<ToolCall> LinuxSystemTools::registerApplication(const std::string& application) const {
  if (!application.ends_with(".desktop")) return std::nullopt;
  return ToolCall{"/usr/bin/update-desktop-database", {paths::parent(application)}};
}

}  // namespace vantory
