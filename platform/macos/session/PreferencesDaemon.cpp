// Ends the daemon where the user's preferences are concerned.
#include "platform/macos/session/PreferencesDaemon.h"

#include <chrono>

#include "base/Paths.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/posix/processes/ToolRun.h"

namespace vantory {

namespace {

constexpr std::chrono::seconds kPatience{10};

}  // namespace

// Those of sandboxed applications lie in containers, laid out as a home is.
bool PreferencesDaemon::keeps(const std::string& path) const {
  const std::optional<User> user = users_.processUser();
  if (!user) return false;
  const std::string library = user->home + "/Library";
  if (paths::isWithin(path, library + "/Preferences")) return true;
  const bool isInContainer =
      paths::isWithin(path, library + "/Containers") || paths::isWithin(path, library + "/Group Containers");
  return isInContainer && path.find("/Library/Preferences", library.size()) != std::string::npos;
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
