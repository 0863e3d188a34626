// Records what administrator rights would do.
#include "platform/overlay/OverlayRunner.h"

#include "platform/ToolCopy.h"

namespace vantory {

// Rights do not stand in the way meanwhile.
int OverlayRunner::run(const std::string& tool, const std::vector<std::string>& arguments) {
  files_.setUnlimited(true);
  const Status applied = apply(tool, arguments);
  files_.setUnlimited(false);
  return applied ? kDone : kFailed;
}

// The tools' paths are their last arguments.
Status OverlayRunner::apply(const std::string& tool, const std::vector<std::string>& arguments) {
  if (arguments.size() < 2) return Error{std::errc::invalid_argument, tool};
  const std::string& last = arguments.back();
  const std::string& beforeLast = arguments[arguments.size() - 2];
  if (tool == "/bin/cp") return copy(beforeLast, last);
  if (tool == "/bin/mv") return files_.move(beforeLast, last).status();
  if (tool == "/bin/rm") return files_.remove(last);
  if (tool == "/bin/mkdir") return files_.makeFolder(last);
  if (tool == "/usr/bin/chattr") return metadata_.setLocked(last, beforeLast == "+i");
  if (tool == "/usr/bin/touch") return metadata_.setModified(last, std::nullopt);
  return Error{std::errc::not_supported, tool};
}

Status OverlayRunner::copy(const std::string& source, const std::string& destination) {
  const auto item = files_.info(source, Links::DoNotFollow);
  if (!item) return item.error();
  return copyAsTool(files_, source, item->type, destination, CopyChecksum::Keep);
}

}  // namespace vantory
