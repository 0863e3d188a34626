// Asks the desktop's helper, each question with its patience.
#include "platform/linux/session/LinuxDesktop.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "base/Text.h"
#include "platform/Users.h"
#include "platform/linux/files/FileRights.h"
#include "platform/linux/helpers/DesktopHelper.h"
#include "platform/linux/session/DataFolders.h"
#include "platform/linux/session/DesktopSession.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

using std::chrono::seconds;

// The helper program has limits of its own; these are for one that hangs.
constexpr seconds kPatienceForQuestion{5};
constexpr seconds kPatience{10};
constexpr seconds kPatienceForMessage{4};
// For an application that the bus has to start, a browser, or types that have to be declared first.
constexpr seconds kPatienceForStart{30};

Status statusOf(const Result<Message>& answer) {
  if (!answer) return answer.error();
  return {};
}

Error noSession() {
  return {std::errc::no_such_device_or_address, "There is no desktop session."};
}

}  // namespace

Result<bool> LinuxWorkspace::isRunning(const std::string& bundleIdentifier) const {
  if (!mayRun(bundleIdentifier)) return false;
  const Result<Message> copies = helper_.ask({"count-copies", bundleIdentifier}, kPatienceForQuestion);
  if (!copies) return copies.error();
  return *copies != Message{"0"};
}

Result<bool> LinuxWorkspace::canBeAskedToQuit(const std::string& bundleIdentifier) const {
  const Result<Message> answer = helper_.ask({"can-quit", bundleIdentifier}, kPatience);
  if (!answer) return answer.error();
  return *answer != Message{"0"};
}

// The identifier alone finds all copies.
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

Status LinuxWorkspace::runScript(const std::string&) {
  return Error{std::errc::not_supported, "This desktop knows no scripts."};
}

// Where nothing can run, the helper need not be started.
bool LinuxWorkspace::mayRun(const std::string& bundleIdentifier) const {
  const std::optional<User> user = users_.isSuperuser() ? users_.consoleUser() : users_.processUser();
  if (!user) return false;
  if (hasSessionBus(users_)) return true;
  const std::vector<std::string> folders = dataFolders(user->home, !users_.isSuperuser());
  const FileRights rights = users_.isSuperuser() ? FileRights::ofUser(*user) : FileRights::own();
  const FileRights::Scope scope(rights);
  return std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
    struct stat status;
    return stat((folder + "/applications/" + bundleIdentifier + ".desktop").c_str(), &status) == 0;
  });
}

Status LinuxDocuments::open(const std::string& pathOrAddress) {
  return ask({"open", pathOrAddress});
}

Status LinuxDocuments::reveal(const std::vector<std::string>& paths) {
  std::vector<std::string> request = {"reveal"};
  request.insert(request.end(), paths.begin(), paths.end());
  return ask(request);
}

Status LinuxDocuments::mail(const std::string& path) {
  return ask({"mail", path});
}

Status LinuxDocuments::ask(const std::vector<std::string>& request) {
  const Result<Message> answer = helper_.ask(request, kPatienceForStart);
  if (!answer) return answer.error();
  return {};
}

LinuxDefaultHandlers::LinuxDefaultHandlers(const Users& users) : users_(users) {}

LinuxDefaultHandlers::~LinuxDefaultHandlers() = default;

Result<std::string> LinuxDefaultHandlers::typeOfExtension(const std::string& extension) const {
  const std::lock_guard lock(mutex_);
  const Result<Message> type = helper().ask({"find-type", extension}, kPatienceForStart);
  if (!type) return type.error();
  if (type->empty()) return systemError(extension, EBADMSG);
  return type->front();
}

Status LinuxDefaultHandlers::setDefaultViewer(const std::string& type, const std::string& bundleIdentifier) {
  const std::lock_guard lock(mutex_);
  // Also where it fails: something may have been written by then.
  changed_ = true;
  const Result<Message> set = helper().ask({"set-default-viewer", type, bundleIdentifier}, kPatienceForStart);
  if (!set) return set.error();
  return {};
}

std::optional<std::string> LinuxDefaultHandlers::defaultViewer(const std::string& type) const {
  const std::lock_guard lock(mutex_);
  const Result<Message> viewer = helperThatSeesChanges().ask({"default-viewer", type}, kPatienceForStart);
  if (!viewer || viewer->empty()) return std::nullopt;
  return lowerCased(viewer->front());
}

DesktopHelper& LinuxDefaultHandlers::helper() const {
  if (!helper_) helper_ = std::make_unique<DesktopHelper>([this] { return desktopHelperProgram(users_); });
  return *helper_;
}

// A new process reads the list anew.
DesktopHelper& LinuxDefaultHandlers::helperThatSeesChanges() const {
  if (changed_) helper_.reset();
  changed_ = false;
  return helper();
}

// A tool that is gone, or does not know the message, is no failure.
Result<TaskClient::Answer> LinuxTaskClient::send(const std::string& service, const TaskMessage& message) {
  if (!hasSessionBus(users_)) return Answer::NotRegistered;
  Message request = {"tell-client", service, message.name};
  request.insert(request.end(), message.arguments.begin(), message.arguments.end());
  const Result<Message> sent = helper_.ask(request, kPatienceForMessage);
  if (sent) return Answer::Received;
  if (sent.error().code == std::errc::no_such_device_or_address) return Answer::NotRegistered;
  if (sent.error().code == std::errc::function_not_supported) return Answer::NotUnderstood;
  return sent.error();
}

Status LinuxDesktopNotifications::post(const std::string& title, const std::string& text, const std::string& context) {
  if (!hasSessionBus(users_)) return noSession();
  const Result<Message> posted = helper_.ask({"notify", title, text, context}, kPatienceForMessage);
  if (!posted) return posted.error();
  return {};
}

void LinuxDesktopNotifications::listen(Listener listener) {
  const auto handler = [&listener](Outcome outcome) -> DesktopHelper::EventHandler {
    if (!listener) return nullptr;
    return [listener, outcome](const Message& values) {
      if (!values.empty()) listener(outcome, values.front());
    };
  };
  helper_.handle("clicked", handler(Outcome::Clicked));
  helper_.handle("expired", handler(Outcome::TimedOut));
}

Status LinuxAnnouncements::announce(const std::string& name) {
  if (!hasSessionBus(users_)) return noSession();
  const Result<Message> announced = helper_.ask({"announce", name}, kPatienceForMessage);
  if (!announced) return announced.error();
  return {};
}

}  // namespace vantory
