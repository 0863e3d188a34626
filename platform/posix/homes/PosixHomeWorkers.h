// A copy of this process for each, which becomes the owner before it looks into the home.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "platform/HomeWorkers.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/processes/PosixTerminationSignals.h"

namespace vantory {

struct HomeWork {
  // Done in each home by a process of the owner, whose HOME it is. Answers what came of it but for home and owner.
  std::function<HomeResult()> run;
  // Asked first, by the same process: a file there that shows that somebody works in the home. Null to pass over none.
  std::function<std::optional<std::string>(const std::string& home)> busyFile = {};
  // Whether it changes files: then an ordinary user begins nothing in the home of another that they may not write to.
  bool changesFiles = false;
  // How long a home may take to be found, because its file system may be dead, and how long the work there may stand
  // still.
  std::chrono::milliseconds patience = std::chrono::seconds(30);
  std::chrono::milliseconds patienceWithWork = std::chrono::minutes(5);
  // How long one home may take in all, and how long those in hand may when the program is asked to end.
  std::chrono::milliseconds longest = std::chrono::hours(1);
  std::chrono::milliseconds patienceAtEnd = std::chrono::minutes(5);
};

// While this exists the process has one thread only.
class PosixHomeWorkers : public HomeWorkers {
 public:
  explicit PosixHomeWorkers(HomeWork work);

  Result<std::vector<std::string>> homesMatching(const std::string& pattern) override;
  Status start(const std::string& home) override;
  std::optional<HomeResult> next() override;

 private:
  // The process of a home while it runs.
  struct Worker {
    std::string home;
    pid_t process;
    Descriptor answer;                               // what it says
    std::chrono::steady_clock::time_point deadline;  // by when it must have got on
    std::chrono::steady_clock::time_point latest;    // by when it must have ended
    std::string said = {};
    std::string work = {};  // what the kernel said of its work at the last deadline
    bool isAtEnd = false;
  };

  void listen();
  void read(Worker& worker);
  // What came of it, where it has ended or is given up.
  std::optional<HomeResult> resultOf(Worker& worker);
  bool standsStill(Worker& worker) const;
  [[noreturn]] void workIn(const std::string& home, Descriptor answer) const;

  const HomeWork work_;
  std::list<Worker> workers_;
  PosixTerminationSignals signals_;
  bool isReporting_ = false;
  int endRequest_ = -1;  // until the first home is begun, and when it was heard
};

}  // namespace vantory
