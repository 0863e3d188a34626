// A platform of fakes but for its folders, processes and tools: time stands still, nobody is asked, nothing outside the
// given folders is touched.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Clock.h"
#include "platform/CrashReports.h"
#include "platform/DefaultHandlers.h"
#include "platform/Documents.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "platform/JobControl.h"
#include "platform/Messaging.h"
#include "platform/Platform.h"
#include "platform/PrivilegedRunner.h"
#include "platform/SystemInfo.h"
#include "platform/SystemLog.h"
#include "platform/Users.h"
#include "platform/Workspace.h"
#include "platform/linux/files/LinuxChecksums.h"
#include "platform/linux/system/LinuxStandardFolders.h"
#include "platform/linux/system/LinuxSystemTools.h"
#include "platform/posix/processes/PosixProcesses.h"
#include "platform/posix/system/PosixTrustedFiles.h"

namespace vantory::test {

// Stands still at 2026-11-14 21:35:17 UTC until set; sleeping moves it on at once. Any thread.
class FakeClock : public Clock {
 public:
  Timestamp now() const override {
    const std::int64_t micros = micros_;
    return {micros / kSecond, static_cast<std::int32_t>(micros % kSecond * 1000)};
  }
  void sleep(std::chrono::microseconds duration) override { micros_ += duration.count(); }
  void advance(std::chrono::microseconds duration) { sleep(duration); }
  void set(Timestamp time) { micros_ = time.seconds * kSecond + time.nanoseconds / 1000; }

 private:
  static constexpr std::int64_t kSecond = 1'000'000;
  std::atomic<std::int64_t> micros_ = 1794692117 * kSecond;
};

class FakeUsers : public Users {
 public:
  bool isSuperuser() const override { return superuser; }
  void becomeSuperuser() override {}
  std::optional<User> processUser() const override { return process; }
  std::optional<User> consoleUser() const override { return console; }
  std::optional<std::string> disregardedHome() const override { return disregarded; }
  std::string nameOf(const User&) const override { return "anna"; }

  bool superuser = false;
  std::optional<User> process;
  std::optional<User> console;
  std::optional<std::string> disregarded;
};

// Any thread.
class RecordingSystemLog : public SystemLog {
 public:
  void write(std::string_view message) override {
    const std::lock_guard lock(mutex_);
    messages_.emplace_back(message);
  }
  void record(std::string_view message) override { write(message); }
  std::vector<std::string> messages() const {
    const std::lock_guard lock(mutex_);
    return messages_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> messages_;
};

class FakeSystemInfo : public SystemInfo {
 public:
  std::string systemName() const override { return "Test System 1.0"; }
  std::string kernelName() const override { return "Test 1.0 none"; }
  std::string fileSystemOf(const std::string&) const override { return "testfs"; }
  int processorCount() const override { return 4; }
  std::uint64_t memoryBytes() const override { return std::uint64_t{16} << 30; }
  std::string executablePath() const override { return "/opt/vantory/vantory"; }
  std::string resourcePath(const std::string& name) const override { return resources + "/" + name; }
  const std::vector<std::string>& arguments() const override { return argumentList; }
  std::string workingDirectory() const override { return directory; }
  bool hasTerminal() const override { return isInTerminal; }
  bool hasReader() const override { return true; }
  std::string uniqueString() const override { return "unique-" + std::to_string(++count_); }

  std::vector<std::string> argumentList = {"vantory"};
  std::string directory = "/";
  bool isInTerminal = false;
  std::string resources = "/opt/vantory/resources";

 private:
  mutable std::atomic<int> count_ = 0;
};

// Records each call and answers what `behaviour` does; nothing is changed on disk.
class FakePrivilegedRunner : public PrivilegedRunner {
 public:
  struct Call {
    std::string tool;
    std::vector<std::string> arguments;
    bool operator==(const Call&) const = default;
  };

  bool authorize() override {
    ++requests;
    return authorized = grants;
  }
  void release() override { authorized = false; }
  bool isAuthorized() const override { return authorized; }
  bool knows(const std::string& tool) const override {
    return hasTools && (tool == kMachineSettingTool || tool.starts_with("/usr/sbin/"));
  }
  int run(const std::string& tool, const std::vector<std::string>& arguments) override {
    calls.push_back({tool, arguments});
    return behaviour(calls.back());
  }

  bool hasTools = true;
  bool grants = true;  // the answer to the next request
  bool authorized = false;
  int requests = 0;
  std::vector<Call> calls;
  std::function<int(const Call&)> behaviour = [](const Call&) { return 0; };
};

// What a map holds of that key.
template <class Key, class Value>
std::optional<Value> found(const std::map<Key, Value>& values, const Key& key) {
  const auto known = values.find(key);
  return known == values.end() ? std::nullopt : std::optional(known->second);
}

class FakeWorkspace : public Workspace {
 public:
  Result<bool> isRunning(const std::string& identifier) const override {
    if (runningFailure) return *runningFailure;
    return std::find(running.begin(), running.end(), identifier) != running.end();
  }
  Result<bool> canBeAskedToQuit(const std::string&) const override { return canBeAsked; }
  // Recorded, then handed to `onQuit`.
  Status quitApplication(const std::string&, const std::string& identifier) override {
    quitRequests.push_back(identifier);
    return onQuit(identifier);
  }
  // Recorded; the application runs from then on.
  Status launchApplication(const std::string& identifier) override {
    launched.push_back(identifier);
    running.push_back(identifier);
    return Status();
  }
  std::optional<std::string> applicationPath(const std::string& identifier) const override {
    return found(paths, identifier);
  }
  Status openFile(const std::string& path, const std::string& identifier) override {
    opened.emplace_back(path, identifier);
    return Status();
  }
  Status activateApplication(const std::string& identifier) override {
    activated.push_back(identifier);
    return Status();
  }
  Status runScript(const std::string& script) override {
    scripts.push_back(script);
    return scriptAnswer;
  }

  std::vector<std::string> running;     // one entry for each copy
  std::optional<Error> runningFailure;  // why it cannot be told what runs
  bool canBeAsked = true;               // to quit
  std::vector<std::string> activated;
  std::vector<std::string> scripts;
  Status scriptAnswer = Error{std::errc::not_supported, "no scripts"};
  std::map<std::string, std::string> paths;                 // of installed applications, by bundle identifier
  std::vector<std::pair<std::string, std::string>> opened;  // path and bundle identifier
  std::vector<std::string> quitRequests;                    // bundle identifiers
  std::vector<std::string> launched;
  // By default every copy of the application quits at once.
  std::function<Status(const std::string&)> onQuit = [this](const std::string& identifier) {
    std::erase(running, identifier);
    return Status();
  };
};

// Records what it is given.
class FakeDocuments : public Documents {
 public:
  Status open(const std::string& pathOrAddress) override {
    opened.push_back(pathOrAddress);
    return answer;
  }
  Status reveal(const std::vector<std::string>& paths) override {
    revealed = paths;
    return answer;
  }
  Status mail(const std::string& path) override {
    mailed.push_back(path);
    return answer;
  }

  std::vector<std::string> opened;
  std::vector<std::string> revealed;
  std::vector<std::string> mailed;
  Status answer;
};

// Every extension has the type "type/EXTENSION".
class FakeDefaultHandlers : public DefaultHandlers {
 public:
  Result<std::string> typeOfExtension(const std::string& extension) const override {
    return std::string("type/").append(extension);
  }
  Status setDefaultViewer(const std::string& type, const std::string& identifier) override {
    viewers[type] = identifier;
    return Status();
  }
  std::optional<std::string> defaultViewer(const std::string& type) const override { return found(viewers, type); }

  std::map<std::string, std::string> viewers;  // by type
};

class FakeTaskClient : public TaskClient {
 public:
  Result<Answer> send(const std::string& service, const TaskMessage& message) override {
    if (!services.contains(service)) return Answer::NotRegistered;
    if (!understood.contains(message.name)) return Answer::NotUnderstood;
    sent.push_back(message);
    return Answer::Received;
  }

  std::set<std::string> services;    // registered ones
  std::set<std::string> understood;  // messages
  std::vector<TaskMessage> sent;
};

class FakeNotifications : public DesktopNotifications {
 public:
  struct Note {
    std::string title;
    std::string text;
    bool operator==(const Note&) const = default;
  };

  Status post(const std::string& title, const std::string& text, const std::string&) override {
    posted.push_back({title, text});
    return answer;
  }
  void listen(Listener newListener) override { listener = std::move(newListener); }

  std::vector<Note> posted;
  Listener listener;
  Status answer;
};

class FakeAnnouncements : public Announcements {
 public:
  Status announce(const std::string& name) override {
    announced.push_back(name);
    return Status();
  }

  std::vector<std::string> announced;
};

// Records each call ("load", "unload", "remove") by way of `onCall`; nothing is scheduled.
class FakeJobControl : public JobControl {
 public:
  Status load(const Job& job) override {
    loaded.push_back(job);
    return onCall("load");
  }
  Status unload(const JobName&) override { return onCall("unload"); }
  Status remove(const JobName& job) override {
    removed.push_back(job);
    return onCall("remove");
  }
  std::optional<Timestamp> lastRun(const JobName&) const override { return stamp; }
  std::optional<Timestamp> lastTry(const JobName&) const override { return tries; }
  Status runSucceeded() override { return ++goodRuns, Status(); }

  int goodRuns = 0;
  std::optional<Timestamp> tries;
  std::vector<Job> loaded;
  std::vector<JobName> removed;
  std::optional<Timestamp> stamp;
  std::function<Status(const std::string& call)> onCall = [](const std::string&) { return Status(); };
};

class FakeCrashReports : public CrashReports {
 public:
  std::optional<std::string> newestSince(Timestamp) const override { return report; }

  std::optional<std::string> report;
};

// All of them. The file system is the test's choice; the ordinary user "anna", who is also at the console, lives in
// `home`, the machine-wide folders lie below `root`; the environment moves no folder.
class FakePlatform {
 public:
  FakePlatform(FileSystem& files, FileMetadata& metadata, const std::string& root, const std::string& home)
      : folders(root, true),
        platform{
            .clock = clock,
            .users = users,
            .folders = folders,
            .files = files,
            .metadata = metadata,
            .checksums = checksums,
            .machineFiles = files,
            .trustedFiles = trustedFiles,
            .processes = processes,
            .privileged = privileged,
            .systemLog = systemLog,
            .system = system,
            .workspace = workspace,
            .documents = documents,
            .defaultHandlers = defaultHandlers,
            .taskClient = taskClient,
            .notifications = notifications,
            .announcements = announcements,
            .jobs = jobs,
            .tools = tools,
            .crashReports = crashReports,
        } {
    users.process = users.console = User{1000, 1000, home};
  }

  FakeClock clock;
  FakeUsers users;
  LinuxChecksums checksums;
  LinuxStandardFolders folders;
  PosixTrustedFiles trustedFiles;
  PosixProcesses processes;
  FakePrivilegedRunner privileged;
  RecordingSystemLog systemLog;
  FakeSystemInfo system;
  FakeWorkspace workspace;
  FakeDocuments documents;
  FakeDefaultHandlers defaultHandlers;
  FakeTaskClient taskClient;
  FakeNotifications notifications;
  FakeAnnouncements announcements;
  FakeJobControl jobs;
  LinuxSystemTools tools;
  FakeCrashReports crashReports;
  Platform platform;
};

}  // namespace vantory::test
