// Starting other programs.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"

namespace vantory {

// A started program. Destroying it leaves the program running but reaps it when it ends. Its functions may be called
// from several threads.
class Process {
 public:
  virtual ~Process() = default;

  struct Output {
    std::string output;
    std::string errors;
  };

  // Blocks until the program has ended; answers its exit status, or 128 plus the signal that ended it.
  virtual int wait() = 0;
  // Blocks until both streams are at their end; empty where they went to the null device.
  virtual Output readAll() = 0;
  // Blocks until standard output has bytes or ends; empty at the end.
  virtual std::string readSome() = 0;
  // Ends readAll(), with what is there to be read, and readSome(), now and from now on: the program's own children may
  // hold its streams open for long.
  virtual void stopReading() = 0;
  virtual bool isRunning() = 0;
  // Asks the program to end.
  virtual void terminate() = 0;
};

enum class Streams { Discarded, Captured, OutputCaptured };

class Processes {
 public:
  virtual ~Processes() = default;

  // Starts the program at an absolute path with these arguments (its own name not among them), a clean environment and
  // no open files but its standard streams.
  virtual Result<std::unique_ptr<Process>> start(const std::string& program, const std::vector<std::string>& arguments,
                                                 Streams streams) = 0;
};

}  // namespace vantory
