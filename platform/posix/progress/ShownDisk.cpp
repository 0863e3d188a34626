// Puts what draws the line before the disk.
#include "platform/posix/progress/ShownDisk.h"

namespace vantory {

void ShownDisk::show() {
  line_ = ProgressLine::onStandardError();
  if (line_)
    watched_.reset(
        new Watched{.files = {files_, *line_}, .metadata = {metadata_, *line_}, .checksums = {checksums_, *line_}});
}

}  // namespace vantory
