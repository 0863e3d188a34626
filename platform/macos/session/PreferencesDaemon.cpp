// Ends the daemon where the user's preferences are concerned.
#include "platform/macos/session/PreferencesDaemon.h"

#include <fcntl.h>

#include <chrono>
#include <optional>

#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/posix/processes/ToolRun.h"

namespace vantory {

namespace {

constexpr std::chrono::seconds kPatience{10};

std::optional<FileIdentity> identityOf(const std::string& path) {
  darwin::ItemStatus status;
  if (darwin::statusAt(AT_FDCWD, path.c_str(), darwin::AtEnd::FollowLink, status) != 0) return std::nullopt;
  return FileIdentity{status.device, status.number};
}

// By what the folders above it are: a volume finds a name in any case and normal form. Of a folder that is missing the
// text tells.
bool liesIn(const std::string& path, const std::string& folder) {
  if (paths::isWithin(path, folder)) return true;
  const auto wanted = identityOf(folder);
  for (std::string above = path; wanted && above.size() > 1; above = paths::parent(above))
    if (identityOf(above) == wanted) return true;
  return false;
}

// In whatever folder that is laid out as a home.
bool liesInPreferences(const std::string& path) {
  for (std::string above = paths::parent(path); above.size() > 1; above = paths::parent(above))
    if (liesIn(path, above + "/Library/Preferences")) return true;
  return false;
}

}  // namespace

// Those of sandboxed applications lie in containers, laid out as a home is.
bool PreferencesDaemon::keeps(const std::string& path) const {
  const std::optional<User> user = users_.processUser();
  if (!user) return false;
  const std::string library = user->home + "/Library";
  if (liesIn(path, library + "/Preferences")) return true;
  const bool isInContainer = liesIn(path, library + "/Containers") || liesIn(path, library + "/Group Containers");
  return isInContainer && liesInPreferences(path);
}

void PreferencesDaemon::beforeReading(const std::string& path) {
  if (!keeps(path)) return;
  const std::lock_guard lock(mutex_);
  if (!wroteAll_) end();
  wroteAll_ = true;
}

void PreferencesDaemon::beforeChange(const std::string& path) {
  if (!keeps(path)) return;
  beforeReading(path);
  const std::lock_guard lock(mutex_);
  changed_ = true;
}

void PreferencesDaemon::applicationEnds() {
  const std::lock_guard lock(mutex_);
  wroteAll_ = false;
}

void PreferencesDaemon::forgetChanged() {
  const std::lock_guard lock(mutex_);
  if (changed_) end();
  changed_ = false;
}

// The system's own, another user's, goes on. That none runs is as good.
void PreferencesDaemon::end() const {
  const std::optional<User> user = users_.processUser();
  if (!user) return;
  (void)runTool({.path = darwin::toolPath("/usr/bin/killall"),
                 .arguments = {"-u", users_.nameOf(*user), "cfprefsd"},
                 .environment = cleanEnvironment()},
                kPatience);
}

}  // namespace vantory
