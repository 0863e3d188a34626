#include "tests/support/FakePlatform.h"

#include <algorithm>
#include <map>
#include <set>

namespace vantory::test {

namespace {

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;

const std::map<StandardFolder, std::string> kFolders = {
    {StandardFolder::Applications, "/Applications"},
    {StandardFolder::AdministrationApplications, "/Applications/Utilities"},
    {StandardFolder::Documents, "/Documents"},
    {StandardFolder::Library, "/Library"},
    {StandardFolder::Caches, "/Library/Caches"},
    {StandardFolder::ApplicationSupport, "/Library/Application Support"},
    {StandardFolder::Desktop, "/Desktop"},
    {StandardFolder::Documentation, "/Library/Documentation"},
    {StandardFolder::Trash, "/.local/share/Trash/files"},
    {StandardFolder::SharedUsers, "/Users/Shared"},
    {StandardFolder::Volumes, "/Volumes"}};

const std::set<StandardFolder> kUsersOnly = {StandardFolder::Documents, StandardFolder::Desktop, StandardFolder::Trash};
const std::set<StandardFolder> kMachineOnly = {StandardFolder::SharedUsers, StandardFolder::Volumes};

}  // namespace

Timestamp FakeClock::now() const {
  const std::lock_guard lock(mutex_);
  return now_;
}

void FakeClock::sleep(std::chrono::microseconds duration) {
  const std::lock_guard lock(mutex_);
  const std::int64_t micros = now_.nanoseconds / 1000 + duration.count();
  now_.seconds += micros / kMicrosecondsPerSecond;
  now_.nanoseconds = static_cast<std::int32_t>(micros % kMicrosecondsPerSecond * 1000);
}

void FakeClock::set(Timestamp time) {
  const std::lock_guard lock(mutex_);
  now_ = time;
}

std::optional<std::string> FakeFolders::userFolder(StandardFolder folder, const std::string& home) const {
  if (kMachineOnly.contains(folder)) return std::nullopt;
  return home + kFolders.at(folder);
}

std::optional<std::string> FakeFolders::localFolder(StandardFolder folder) const {
  if (kUsersOnly.contains(folder)) return std::nullopt;
  return root_ + kFolders.at(folder);
}

void RecordingSystemLog::write(std::string_view message) {
  const std::lock_guard lock(mutex_);
  messages_.emplace_back(message);
}

std::vector<std::string> RecordingSystemLog::messages() const {
  const std::lock_guard lock(mutex_);
  return messages_;
}

bool FakePrivilegedRunner::authorize() {
  ++requests;
  authorized = grants;
  return authorized;
}

int FakePrivilegedRunner::run(const std::string& tool, const std::vector<std::string>& arguments) {
  calls.push_back({tool, arguments});
  return behaviour(calls.back());
}

Result<bool> FakeWorkspace::isRunning(const std::string& bundleIdentifier) const {
  if (runningFailure) return *runningFailure;
  return std::find(running.begin(), running.end(), bundleIdentifier) != running.end();
}

Status FakeWorkspace::quitApplication(const std::string&, const std::string& bundleIdentifier) {
  quitRequests.push_back(bundleIdentifier);
  return onQuit(bundleIdentifier);
}

Status FakeWorkspace::launchApplication(const std::string& bundleIdentifier) {
  launched.push_back(bundleIdentifier);
  running.push_back(bundleIdentifier);
  return {};
}

std::optional<std::string> FakeWorkspace::applicationPath(const std::string& bundleIdentifier) const {
  const auto known = paths.find(bundleIdentifier);
  return known == paths.end() ? std::nullopt : std::optional(known->second);
}

Status FakeWorkspace::openFile(const std::string& path, const std::string& bundleIdentifier) {
  opened.emplace_back(path, bundleIdentifier);
  return {};
}

Status FakeWorkspace::activateApplication(const std::string& bundleIdentifier) {
  activated.push_back(bundleIdentifier);
  return {};
}

Result<std::string> FakeDefaultHandlers::typeOfExtension(const std::string& extension) const {
  if (unknownExtensions.contains(extension)) return Error{std::errc::no_such_file_or_directory, extension};
  std::string type = "type/";
  return type += extension;
}

Status FakeDefaultHandlers::setDefaultViewer(const std::string& type, const std::string& bundleIdentifier) {
  viewers[type] = bundleIdentifier;
  return {};
}

std::optional<std::string> FakeDefaultHandlers::defaultViewer(const std::string& type) const {
  const auto known = viewers.find(type);
  return known == viewers.end() ? std::nullopt : std::optional(known->second);
}

Result<TaskClient::Answer> FakeTaskClient::send(const std::string& service, const TaskMessage& message) {
  if (!services.contains(service)) return Answer::NotRegistered;
  if (!understood.contains(message.name)) return Answer::NotUnderstood;
  if (!failure) return failure.error();
  sent.push_back(message);
  return Answer::Received;
}

Status FakeNotifications::post(const std::string& title, const std::string& text, const std::string&) {
  posted.push_back({title, text});
  return answer;
}

Status FakeJobControl::load(const Job& job) {
  loaded.push_back(job);
  return onCall("load");
}

Status FakeJobControl::unload(const JobName&) {
  return onCall("unload");
}

Status FakeJobControl::remove(const JobName& job) {
  removed.push_back(job);
  return onCall("remove");
}

FakePlatform::FakePlatform(FileSystem& files, FileMetadata& metadata, const std::string& root, const std::string& home)
    : folders(root), platform{clock,         users,     folders,         files,       metadata,
                              files,         processes, privileged,      systemLog,   system,
                              workspace,     documents, defaultHandlers, taskClient,  notifications,
                              announcements, jobs,      tools,           crashReports} {
  users.process = users.console = User{1000, 1000, home};
}

}  // namespace vantory::test
