// Puts each wish to the tool that fulfils it.
#include "platform/macos/session/MacDesktop.h"

#include <algorithm>
#include <chrono>

#include "base/Text.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/session/DesktopTools.h"
#include "platform/macos/session/RunningApplications.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

using std::chrono::seconds;

constexpr seconds kPatience{10};
constexpr seconds kPatienceForMessage{4};

bool isAddress(std::string_view text) {
  return text.starts_with("https://") || text.starts_with("http://") || text.starts_with("mailto:");
}

// No option of a tool: it begins with a slash.
Status refuseRelative(const std::string& path) {
  return path.starts_with('/') ? Status() : Status(systemError(path, EINVAL));
}

}  // namespace

Result<std::vector<std::string>> MacWorkspace::copiesOf(const std::string& bundleIdentifier) const {
  const std::optional<User> user = users_.isSuperuser() ? users_.consoleUser() : users_.processUser();
  std::vector<std::string> texts;
  if (!user) return texts;
  const Result<std::vector<pid_t>> copies = runningCopies(files_, user->id, bundleIdentifier);
  if (!copies) return copies.error();
  for (const pid_t copy : *copies) texts.push_back(std::to_string(copy));
  return texts;
}

Result<bool> MacWorkspace::isRunning(const std::string& bundleIdentifier) const {
  const auto copies = copiesOf(bundleIdentifier);
  if (!copies) return copies.error();
  return !copies->empty();
}

// Whatever has a bundle takes the wish.
Result<bool> MacWorkspace::canBeAskedToQuit(const std::string& bundleIdentifier) const {
  const auto copies = copiesOf(bundleIdentifier);
  if (!copies) return copies.error();
  return true;
}

Status MacWorkspace::quitApplication(const std::string&, const std::string& bundleIdentifier) {
  const auto copies = copiesOf(bundleIdentifier);
  if (!copies || copies->empty()) return copies.status();
  daemon_.applicationEnds();
  const Result<std::string> asked = askDesktop("quit", *copies, kPatience);
  if (asked || asked.error().code == std::errc::timed_out) return asked.status();
  return Error{std::errc::operation_not_supported, asked.error().text};
}

std::optional<std::string> MacWorkspace::applicationPath(const std::string& bundleIdentifier) const {
  const Result<std::string> path = askDesktop("find", {bundleIdentifier}, kPatience);
  if (!path || path->empty()) return std::nullopt;
  return *path;
}

// One that starts reads its preferences.
Status MacWorkspace::launchApplication(const std::string& bundleIdentifier) {
  daemon_.forgetChanged();
  return openByTool({"-b", bundleIdentifier});
}

Status MacWorkspace::openFile(const std::string& path, const std::string& bundleIdentifier) {
  if (Status full = refuseRelative(path); !full) return full;
  daemon_.forgetChanged();
  return openByTool({"-b", bundleIdentifier, path});
}

// Opening one that does not run would start it.
Status MacWorkspace::activateApplication(const std::string& bundleIdentifier) {
  const Result<bool> runs = isRunning(bundleIdentifier);
  if (!runs) return runs.error();
  return *runs ? openByTool({"-b", bundleIdentifier})
               : errorWithText(std::errc::no_such_process, bundleIdentifier, "does not run");
}

Status MacWorkspace::runScript(const std::string& script) {
  return runDesktopScript(script, kPatience);
}

Status MacDocuments::open(const std::string& pathOrAddress) {
  if (!isAddress(pathOrAddress))
    if (Status full = refuseRelative(pathOrAddress); !full) return full;
  return openByTool({pathOrAddress});
}

Status MacDocuments::reveal(const std::vector<std::string>& paths) {
  std::vector<std::string> arguments = {"-R"};
  for (const std::string& path : paths) {
    if (Status full = refuseRelative(path); !full) return full;
    arguments.push_back(path);
  }
  return paths.empty() ? Status() : openByTool(arguments);
}

Status MacDocuments::mail(const std::string& path) {
  if (Status full = refuseRelative(path); !full) return full;
  const Result<std::string> program = askDesktop("mailProgram", {}, kPatience);
  if (!program) return program.error();
  if (program->empty()) return Error{std::errc::not_supported, "There is no mail program that takes files."};
  return openByTool({"-a", *program, path});
}

Result<std::string> MacDefaultHandlers::typeOfExtension(const std::string& extension) const {
  Result<std::string> type = askDesktop("type", {extension}, kPatience);
  if (type && type->empty()) return errorWithText(std::errc::invalid_argument, extension, "is no extension");
  return type;
}

// Of a type that no application declares, a "dyn." one, the launch services take no viewer.
Status MacDefaultHandlers::setDefaultViewer(const std::string& type, const std::string& bundleIdentifier) {
  return askDesktop("setViewer", {type, bundleIdentifier}, kPatience).status();
}

std::optional<std::string> MacDefaultHandlers::defaultViewer(const std::string& type) const {
  const Result<std::string> viewer = askDesktop("viewer", {type}, kPatience);
  if (!viewer || viewer->empty()) return std::nullopt;
  return lowerCased(*viewer);
}

// Without such a port, as usual, no tool is started.
Result<TaskClient::Answer> MacTaskClient::send(const std::string& service, const TaskMessage& message) {
  const std::string port = "com.quarrywell." + service;
  if (!darwin::hasMessagePort(port)) return Answer::NotRegistered;
  std::vector<std::string> arguments = {port, message.name};
  arguments.insert(arguments.end(), message.arguments.begin(), message.arguments.end());
  const Result<std::string> answer = askDesktop("tell", arguments, kPatienceForMessage);
  if (!answer) return answer.error();
  if (*answer == "nobody") return Answer::NotRegistered;
  return *answer == "unknown" ? Answer::NotUnderstood : Answer::Received;
}

Status MacDesktopNotifications::post(const std::string& title, const std::string& text, const std::string&) {
  return askDesktop("notify", {title, text}, kPatienceForMessage).status();
}

Status MacAnnouncements::announce(const std::string& name) {
  return askDesktop("announce", {name}, kPatienceForMessage).status();
}

}  // namespace vantory
