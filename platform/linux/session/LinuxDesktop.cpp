#include "platform/linux/session/LinuxDesktop.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "platform/Users.h"
#include "platform/linux/helpers/DesktopHelper.h"
#include "platform/linux/session/DataFolders.h"
#include "platform/linux/session/DesktopSession.h"

namespace vantory {

namespace {

using std::chrono::seconds;

// The helper program has limits of its own; these are for one that hangs.
constexpr seconds kPatienceForQuestion{5};
constexpr seconds kPatience{10};
// For an application that the bus has to start.
constexpr seconds kPatienceForStart{30};

Status statusOf(const Result<Message>& answer) {
  if (!answer) return answer.error();
  return {};
}

}  // namespace

Result<bool> LinuxWorkspace::isRunning(const std::string& bundleIdentifier) const {
  if (!mayRun(bundleIdentifier)) return false;
  const Result<Message> copies = helper_.ask({"count-copies", bundleIdentifier}, kPatienceForQuestion);
  if (!copies) return copies.error();
  return *copies != Message{"0"};
}

Status LinuxWorkspace::quitApplication(const std::string&, const std::string& bundleIdentifier) {
  return statusOf(helper_.ask({"quit", bundleIdentifier}, kPatience));
}

std::optional<std::string> LinuxWorkspace::applicationPath(const std::string& bundleIdentifier) const {
  const Result<Message> path = helper_.ask({"find-application", bundleIdentifier}, kPatienceForQuestion);
  if (!path || path->empty()) return std::nullopt;
  return path->front();
}

Status LinuxWorkspace::launchApplication(const std::string& bundleIdentifier) {
  return statusOf(helper_.ask({"launch", bundleIdentifier}, kPatienceForStart));
}

Status LinuxWorkspace::openFile(const std::string& path, const std::string& bundleIdentifier) {
  return statusOf(helper_.ask({"open-with", bundleIdentifier, path}, kPatienceForStart));
}

Status LinuxWorkspace::activateApplication(const std::string& bundleIdentifier) {
  return statusOf(helper_.ask({"activate", bundleIdentifier}, kPatience));
}

bool LinuxWorkspace::mayRun(const std::string& bundleIdentifier) const {
  const std::optional<User> user = users_.isSuperuser() ? users_.consoleUser() : users_.processUser();
  if (!user) return false;
  if (hasSessionBus(users_)) return true;
  const std::vector<std::string> folders = dataFolders(user->home, !users_.isSuperuser());
  return std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
    return access((folder + "/applications/" + bundleIdentifier + ".desktop").c_str(), F_OK) == 0;
  });
}

}  // namespace vantory
