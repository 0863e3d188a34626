#include "platform/overlay/OverlayPlatform.h"

#include <utility>

namespace vantory {

OverlayPlatform::OverlayPlatform(const Platform& real, std::vector<std::string> arguments, std::ostream& errors)
    : files_(real.files, real.metadata, tree_, changes_),
      metadata_(real.metadata, files_, tree_, changes_),
      privileged_(real.privileged, files_, metadata_),
      systemLog_(errors),
      system_(real.system, std::move(arguments)),
      platform_{real.clock,     real.users,     real.folders, files_,     metadata_,    files_,           processes_,
                privileged_,    systemLog_,     system_,      workspace_, documents_,   defaultHandlers_, taskClient_,
                notifications_, announcements_, jobs_,        real.tools, crashReports_} {}

}  // namespace vantory
