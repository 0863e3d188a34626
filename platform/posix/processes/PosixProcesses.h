// Starts child processes.
#pragma once

#include <sys/types.h>

#include <mutex>
#include <optional>
#include <utility>

#include "platform/Processes.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/kernel/Kernel.h"

namespace vantory {

// One thread may read the streams while others wait for the program or end it.
class PosixProcess : public Process {
 public:
  // The reading ends of the child's streams where they are captured, and a pipe that ends the reading.
  struct Ends {
    Descriptor output;
    Descriptor errors;
    kernel::Pipe stop;
  };

  // A child that nobody else waits for.
  PosixProcess(pid_t child, Ends ends) : child_(child), ends_(std::move(ends)) {}
  ~PosixProcess() override;
  PosixProcess(const PosixProcess&) = delete;
  PosixProcess& operator=(const PosixProcess&) = delete;

  int wait() override;
  Output readAll() override;
  std::string readSome() override;
  void stopReading() override;
  bool isRunning() override;
  void terminate() override;

 private:
  // With the options of waitpid().
  void collect(int options);

  const pid_t child_;
  const Ends ends_;
  std::mutex mutex_;           // held while the child is collected or sent a signal: its number is its own until then
  std::optional<int> status_;  // none until collected
};

// Programs start with signals as by default, no open files but their streams (standard input is the null device), the
// working folder of this process, and an environment of PATH, LANG and, unless this is the superuser's process, the few
// variables that tools need to find the user's home, time zone and desktop session. Any thread.
class PosixProcesses : public Processes {
 public:
  Result<std::unique_ptr<Process>> start(const std::string& program, const std::vector<std::string>& arguments,
                                         Streams streams) override;
};

}  // namespace vantory
