#include "platform/linux/system/LinuxSystemTools.h"

namespace vantory {

namespace {

struct Parts {
  std::string folder;
  std::string name;
};

Parts split(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  const std::size_t slash = path.find_last_of('/');
  return {path.substr(0, slash + 1), path.substr(slash + 1)};
}

}  // namespace

ToolCall LinuxSystemTools::zip(const std::string& item, const std::string& archive) const {
  const auto [folder, name] = split(item);
  // Written as "./name", lest a name that begins with "@" or "-" means something else; that component is then dropped.
  return {"/usr/bin/bsdtar",
          {"-c", "-H", "-f", archive, "--format", "zip", "--options", "hdrcharset=UTF-8", "--strip-components", "1",
           "-C", folder, "--", "./" + name}};
}

std::optional<ToolCall> LinuxSystemTools::registerApplication(const std::string& application) const {
  if (!application.ends_with(".desktop")) return std::nullopt;
  return ToolCall{"/usr/bin/update-desktop-database", {split(application).folder}};
}

}  // namespace vantory
