// Programs that the operating system starts by itself, again and again.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/Clock.h"

namespace vantory {

// Which job is meant.
struct JobName {
  std::string label;  // "com.example.Job"
  std::string file;   // the full path of the property list that describes it
  enum class Domain { User, Machine } domain = Domain::User;
};

struct Job {
  JobName name;
  std::string program;                 // absolute
  std::vector<std::string> arguments;  // the name that the program is started under first
  std::chrono::seconds interval{};     // from one run to the next
  // Where the job's interval began when it had been loaded before; without it, at the loading.
  std::optional<Timestamp> lastRun = {};
};

// A user's jobs run while that user is logged in. A run that was missed because the machine was off or asleep is made
// up for once, soon after; one that failed is tried again before long, then ever later, up to a
// day. Every call is bounded in time.
class JobControl {
 public:
  virtual ~JobControl() = default;

  // Hands the job to the scheduler, in place of the one of that name. The first run comes one interval after `lastRun`.
  // Where it fails a job that was loaded before stays, at the latest from the next login on; of a new one nothing is
  // left but its file.
  virtual Status load(const Job& job) = 0;
  // Takes the job back from the scheduler; a run in progress goes on to its end. One that is not loaded is success.
  virtual Status unload(const JobName& job) = 0;
  // Removes everything that loading has left, but for the job's file. Nothing there is success.
  virtual Status remove(const JobName& job) = 0;
  // When the job's interval last began: at its last run, or when it was first loaded. None when that is not known.
  virtual std::optional<Timestamp> lastRun(const JobName& job) const = 0;
  // When it was last started, however that run ended; none when that is not known.
  virtual std::optional<Timestamp> lastTry(const JobName& job) const = 0;
  // Tells the scheduler that the run of a job which this process is has done its work; without that it counts as
  // failed, whatever its exit code. Nothing where this process is no such run.
  virtual Status runSucceeded() = 0;
};

}  // namespace vantory
