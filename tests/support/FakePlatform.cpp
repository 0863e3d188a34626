#include "tests/support/FakePlatform.h"

#include <utility>

namespace vantory::test {

namespace {

// Plays one scripted run.
class FakeProcess : public Process {
 public:
  explicit FakeProcess(FakeProcesses::Run run) : run_(std::move(run)), running_(run_.untilTerminated) {}

  int wait() override {
    waitForEnd();
    return run_.status;
  }
  Output readAll() override {
    waitForEnd();
    return {run_.output, run_.errors};
  }
  std::string readSome() override {
    const std::lock_guard lock(mutex_);
    return std::exchange(run_.output, {});
  }
  bool isRunning() override {
    const std::lock_guard lock(mutex_);
    return running_;
  }
  void terminate() override {
    const std::lock_guard lock(mutex_);
    if (!running_) return;
    running_ = false;
    run_.status = 128 + 15;
    ended_.notify_all();
  }

 private:
  void waitForEnd() {
    std::unique_lock lock(mutex_);
    ended_.wait(lock, [this] { return !running_; });
  }

  std::mutex mutex_;
  std::condition_variable ended_;
  FakeProcesses::Run run_;
  bool running_;
};

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;

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
  switch (folder) {
    case StandardFolder::Applications:
      return home + "/Applications";
    case StandardFolder::AdministrationApplications:
      return home + "/Applications/Utilities";
    case StandardFolder::Documents:
      return home + "/Documents";
    case StandardFolder::Library:
      return home + "/Library";
    case StandardFolder::Caches:
      return home + "/Library/Caches";
    case StandardFolder::ApplicationSupport:
      return home + "/Library/Application Support";
    case StandardFolder::Desktop:
      return home + "/Desktop";
    case StandardFolder::Documentation:
      return home + "/Library/Documentation";
    case StandardFolder::Trash:
      return home + "/.local/share/Trash/files";
    case StandardFolder::SharedUsers:
    case StandardFolder::Volumes:
      break;
  }
  return std::nullopt;
}

std::optional<std::string> FakeFolders::localFolder(StandardFolder folder) const {
  switch (folder) {
    case StandardFolder::Applications:
      return root_ + "/Applications";
    case StandardFolder::AdministrationApplications:
      return root_ + "/Applications/Utilities";
    case StandardFolder::Library:
      return root_ + "/Library";
    case StandardFolder::Caches:
      return root_ + "/Library/Caches";
    case StandardFolder::ApplicationSupport:
      return root_ + "/Library/Application Support";
    case StandardFolder::Documentation:
      return root_ + "/Library/Documentation";
    case StandardFolder::SharedUsers:
      return root_ + "/Users/Shared";
    case StandardFolder::Volumes:
      return root_ + "/Volumes";
    case StandardFolder::Documents:
    case StandardFolder::Desktop:
    case StandardFolder::Trash:
      break;
  }
  return std::nullopt;
}

Status FakeMetadata::setLocked(const std::string& path, bool lock) {
  if (lock)
    locked.insert(path);
  else
    locked.erase(path);
  return {};
}

Status FakeMetadata::setModified(const std::string& path, Timestamp time) {
  modified[path] = time;
  return {};
}

Result<std::string> FakeMetadata::linkTarget(const std::string& path) const {
  return Error{std::errc::invalid_argument, path + ": no link"};
}

Result<std::string> FakeMetadata::finderInfo(const std::string& path) const {
  const auto known = finderInfos.find(path);
  return known == finderInfos.end() ? std::string(32, '\0') : known->second;
}

Status FakeMetadata::setFinderInfo(const std::string& path, const std::string& bytes) {
  finderInfos[path] = bytes;
  return {};
}

void RecordingSystemLog::write(std::string_view message) {
  const std::lock_guard lock(mutex_);
  messages_.emplace_back(message);
}

std::vector<std::string> RecordingSystemLog::messages() const {
  const std::lock_guard lock(mutex_);
  return messages_;
}

Result<std::unique_ptr<Process>> FakeProcesses::start(const std::string& program,
                                                      const std::vector<std::string>& arguments, Streams streams) {
  const Call call{program, arguments, streams};
  {
    const std::lock_guard lock(mutex_);
    calls_.push_back(call);
  }
  Run run = behaviour(call);
  if (run.failure) return *run.failure;
  return std::unique_ptr<Process>(std::make_unique<FakeProcess>(std::move(run)));
}

std::vector<FakeProcesses::Call> FakeProcesses::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
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

Status FakeWorkspace::quitApplication(const std::string&, const std::string& bundleIdentifier) {
  quitRequests.push_back(bundleIdentifier);
  return onQuit(bundleIdentifier);
}

Status FakeWorkspace::launchApplication(const std::string& bundleIdentifier) {
  launched.push_back(bundleIdentifier);
  running.push_back(bundleIdentifier);
  return {};
}

Status FakeTaskClient::send(const std::string& message, const std::vector<std::string>& arguments) {
  sent.push_back({message, arguments});
  return {};
}

Status FakeNotifications::post(const std::string& title, const std::string& text) {
  posted.push_back({title, text});
  return {};
}

FakePlatform::FakePlatform(FileSystem& files, FileMetadata& metadata, const std::string& root, const std::string& home)
    : folders(root), platform{clock,      users,     folders, files,     metadata,   files,        processes,
                              privileged, systemLog, system,  workspace, taskClient, notifications} {
  users.process = users.console = User{"anna", 1000, 1000, home};
}

}  // namespace vantory::test
