#include "platform/linux/processes/LinuxProcesses.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/linux/processes/ChildProgram.h"
#include "platform/linux/processes/LinuxProcess.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

struct Pipe {
  Descriptor readEnd;
  Descriptor writeEnd;
};

// 0, or the error's number.
int openPipe(Pipe& pipe) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return errno;
  pipe.readEnd = Descriptor(ends[0]);
  pipe.writeEnd = Descriptor(ends[1]);
  return 0;
}

int openEventCounter(Descriptor& counter) {
  counter = Descriptor(eventfd(0, EFD_CLOEXEC));
  return counter.valid() ? 0 : errno;
}

}  // namespace

Result<std::unique_ptr<Process>> LinuxProcesses::start(const std::string& program,
                                                       const std::vector<std::string>& arguments, Streams streams) {
  Pipe output;
  Pipe errors;
  Descriptor stop;
  int number = streams != Streams::Discarded ? openPipe(output) : 0;
  if (number == 0 && streams != Streams::Discarded) number = openEventCounter(stop);
  if (number == 0 && streams == Streams::Captured) number = openPipe(errors);
  if (number != 0) return systemError(program, number);
  const Result<pid_t> child = startChild({.path = program,
                                          .arguments = arguments,
                                          .environment = cleanEnvironment(),
                                          .output = output.writeEnd.get(),
                                          .errors = errors.writeEnd.get()});
  if (!child) return child.error();
  return std::unique_ptr<Process>(std::make_unique<LinuxProcess>(
      *child, LinuxProcess::Ends{std::move(output.readEnd), std::move(errors.readEnd), std::move(stop)}));
}

}  // namespace vantory
