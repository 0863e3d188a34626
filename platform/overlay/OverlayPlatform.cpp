// Puts recording parts before those of the real platform.
#include "platform/overlay/OverlayPlatform.h"

#include <utility>

namespace vantory {

OverlayPlatform::OverlayPlatform(const Platform& real, std::vector<std::string> arguments, std::ostream& errors)
    : files_(real.files, real.metadata, tree_, changes_),
      metadata_(real.metadata, files_, tree_, changes_),
      checksums_(real.checksums, tree_),
      privileged_(real.privileged, files_, metadata_),
      systemLog_(errors),
      system_(real.system, std::move(arguments)),
      workspace_(real.workspace),
      jobs_(real.jobs),
      platform_{
          .clock = real.clock,
          .users = real.users,
          .folders = real.folders,
          .files = files_,
          .metadata = metadata_,
          .checksums = checksums_,
          .machineFiles = files_,
          .trustedFiles = real.trustedFiles,
          .processes = processes_,
          .privileged = privileged_,
          .systemLog = systemLog_,
          .system = system_,
          .workspace = workspace_,
          .documents = documents_,
          .defaultHandlers = defaultHandlers_,
          .taskClient = taskClient_,
          .notifications = notifications_,
          .announcements = announcements_,
          .jobs = jobs_,
          .tools = real.tools,
          .crashReports = crashReports_,
      } {}

}  // namespace vantory
