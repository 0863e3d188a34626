// Applications that a task closes before it touches their files, and starts again afterwards.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vantory {

class QWApp;
class TaskReport;

class ClosedApplications {
 public:
  // What the log says of each step; every kind of task has words of its own. Null for nothing.
  struct Words {
    const char* skipped;
    const char* toClose;
    const char* closed;
    const char* notClosed;
    const char* notRunning;
  };
  enum class Answer { Proceed, PassOver, Cancel };

  // The report outlives it. `isCancelled` is asked while an application takes its time to quit; `waitingFor` hears its
  // name before that, and an empty one afterwards. Either may be empty.
  ClosedApplications(const Words& words, TaskReport& report, std::function<bool()> isCancelled = {},
                     std::function<void(const std::string& name)> waitingFor = {})
      : words_(words), report_(report), isCancelled_(std::move(isCancelled)), waitingFor_(std::move(waitingFor)) {}

  // Asks the guard about the application, and closes it where that is the answer. One that is to be passed over, and a
  // cancel, are in the report then. May block for a person's answer.
  Answer makeWay(const QWApp& app, bool closeAutomatically);
  // Starts those that were closed again, after a second, in the order they were closed; `begin`, which may be empty, is
  // called first where there are any. One that does not start is told in the report.
  void relaunch(const std::function<void()>& begin = {});
  bool empty() const { return closed_.empty(); }

 private:
  Answer makeWay(const std::string& name, const std::string& identifier, bool closeAutomatically);
  Answer close(const std::string& name, const std::string& identifier);

  struct Closed {
    std::string name;
    std::string bundleID;
  };

  const Words words_;
  TaskReport& report_;
  const std::function<bool()> isCancelled_;
  const std::function<void(const std::string& name)> waitingFor_;
  std::vector<Closed> closed_;
  std::set<std::string> unknown_;  // names of those that may be running
};

}  // namespace vantory
