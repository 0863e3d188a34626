// A child process.
#pragma once

#include <sys/types.h>

#include <mutex>
#include <optional>

#include "platform/Processes.h"
#include "platform/linux/Descriptor.h"

namespace vantory {

// One thread may read the streams while others wait for the program or end it.
class LinuxProcess : public Process {
 public:
  // A child that nobody else waits for, and the reading ends of its streams where they are captured.
  LinuxProcess(pid_t child, Descriptor output, Descriptor errors);
  ~LinuxProcess() override;
  LinuxProcess(const LinuxProcess&) = delete;
  LinuxProcess& operator=(const LinuxProcess&) = delete;

  int wait() override;
  Output readAll() override;
  std::string readSome() override;
  bool isRunning() override;
  void terminate() override;

 private:
  void collectIfEnded();

  const pid_t child_;
  const Descriptor output_;
  const Descriptor errors_;
  std::mutex mutex_;           // held while the child is collected or sent a signal: its number is its own until then
  std::optional<int> status_;  // none until collected
};

}  // namespace vantory
