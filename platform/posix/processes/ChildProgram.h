// Starting another program with nothing of this one's but what is named.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "base/Result.h"

namespace vantory {

// A program to start. It begins with signals as by default, this process's working folder, and no open files but its
// three standard streams.
struct ChildProgram {
  static constexpr int kNullDevice = -1;

  std::string path;                           // absolute
  std::vector<std::string> arguments = {};    // its own name not among them
  std::vector<std::string> environment = {};  // "NAME=value"
  // Descriptors of this process that become the child's streams; they stay open here.
  int input = kNullDevice;
  int output = kNullDevice;
  int errors = kNullDevice;
  // In a session of its own, without this process's terminal, and in the root folder: for what somebody else may look
  // into, who must reach neither that terminal nor that folder.
  bool isApart = false;
};

// Answers the child's process number; the caller waits for it. Any thread.
Result<pid_t> startChild(const ChildProgram& program);

// PATH, LANG and, unless this is the superuser's process, the few variables that tools need to find the user's home,
// time zone and desktop session.
std::vector<std::string> cleanEnvironment();
// All of this process's variables.
std::vector<std::string> ownEnvironment();

}  // namespace vantory
