// Everything of the system that a preview leaves in peace: each answers as on a machine where nobody is there to hear.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/CrashReports.h"
#include "platform/DefaultHandlers.h"
#include "platform/Documents.h"
#include "platform/JobControl.h"
#include "platform/Messaging.h"
#include "platform/Processes.h"
#include "platform/SystemInfo.h"
#include "platform/SystemLog.h"
#include "platform/Workspace.h"

namespace vantory {

inline Error leftInPeace() {
  return {std::errc::operation_not_supported, "This is a preview."};
}

class StillProcesses : public Processes {
 public:
  Result<std::unique_ptr<Process>> start(const std::string&, const std::vector<std::string>&, Streams) override {
    return leftInPeace();
  }
};

// Looks at the desktop and leaves it as it is.
class StillWorkspace : public Workspace {
 public:
  explicit StillWorkspace(const Workspace& desktop) : desktop_(desktop) {}
  Result<bool> isRunning(const std::string& bundleIdentifier) const override {
    return desktop_.isRunning(bundleIdentifier);
  }
  Result<bool> canBeAskedToQuit(const std::string&) const override { return false; }
  Status quitApplication(const std::string&, const std::string&) override { return leftInPeace(); }
  std::optional<std::string> applicationPath(const std::string&) const override { return std::nullopt; }
  Status launchApplication(const std::string&) override { return leftInPeace(); }
  Status openFile(const std::string&, const std::string&) override { return leftInPeace(); }
  Status activateApplication(const std::string&) override { return leftInPeace(); }
  Status runScript(const std::string&) override { return leftInPeace(); }

 private:
  const Workspace& desktop_;
};

class StillDocuments : public Documents {
 public:
  Status open(const std::string&) override { return leftInPeace(); }
  Status reveal(const std::vector<std::string>&) override { return leftInPeace(); }
  Status mail(const std::string&) override { return leftInPeace(); }
};

class StillDefaultHandlers : public DefaultHandlers {
 public:
  Result<std::string> typeOfExtension(const std::string&) const override { return leftInPeace(); }
  Status setDefaultViewer(const std::string&, const std::string&) override { return leftInPeace(); }
  std::optional<std::string> defaultViewer(const std::string&) const override { return std::nullopt; }
};

class StillTaskClient : public TaskClient {
 public:
  Result<Answer> send(const std::string&, const TaskMessage&) override { return Answer::NotRegistered; }
};

// Takes every message and shows none.
class StillNotifications : public DesktopNotifications {
 public:
  Status post(const std::string&, const std::string&, const std::string&) override { return {}; }
  void listen(Listener) override {}
};

class StillAnnouncements : public Announcements {
 public:
  Status announce(const std::string&) override { return {}; }
};

class StillCrashReports : public CrashReports {
 public:
  std::optional<std::string> newestSince(Timestamp) const override { return std::nullopt; }
};

// Tells of the runs that there were.
class StillJobControl : public JobControl {
 public:
  explicit StillJobControl(const JobControl& jobs) : jobs_(jobs) {}
  Status load(const Job&) override { return leftInPeace(); }
  Status unload(const JobName&) override { return leftInPeace(); }
  Status remove(const JobName&) override { return leftInPeace(); }
  std::optional<Timestamp> lastRun(const JobName& job) const override { return jobs_.lastRun(job); }
  std::optional<Timestamp> lastTry(const JobName& job) const override { return jobs_.lastTry(job); }
  Status runSucceeded() override { return {}; }

 private:
  const JobControl& jobs_;
};

// Says on a stream what the system's log would be told.
class StreamLog : public SystemLog {
 public:
  explicit StreamLog(std::ostream& stream) : stream_(stream) {}
  void write(std::string_view message) override { stream_ << "Vantory: " << message << '\n'; }
  void record(std::string_view) override {}

 private:
  std::ostream& stream_;
};

// The system's own answers, but for the command line.
class OtherArguments : public SystemInfo {
 public:
  OtherArguments(const SystemInfo& system, std::vector<std::string> arguments)
      : system_(system), arguments_(std::move(arguments)) {}
  std::string systemName() const override { return system_.systemName(); }
  std::string kernelName() const override { return system_.kernelName(); }
  std::string fileSystemOf(const std::string& path) const override { return system_.fileSystemOf(path); }
  int processorCount() const override { return system_.processorCount(); }
  std::uint64_t memoryBytes() const override { return system_.memoryBytes(); }
  std::string executablePath() const override { return system_.executablePath(); }
  std::string resourcePath(const std::string& name) const override { return system_.resourcePath(name); }
  const std::vector<std::string>& arguments() const override { return arguments_; }
  std::string workingDirectory() const override { return system_.workingDirectory(); }
  bool hasTerminal() const override { return system_.hasTerminal(); }
  bool hasReader() const override { return system_.hasReader(); }
  std::string uniqueString() const override { return system_.uniqueString(); }

 private:
  const SystemInfo& system_;
  const std::vector<std::string> arguments_;
};

}  // namespace vantory
