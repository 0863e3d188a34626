// What POSIX leaves to each system. The sources lie in a folder for each of them.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/types.h>

#include <csignal>
#include <cstdint>
#include <span>
#include <string>

#include "platform/posix/files/Descriptor.h"

namespace vantory::kernel {

// How a folder is opened that is only passed on the way to others.
#ifdef O_PATH
inline constexpr int kPassOnly = O_PATH;
#else
inline constexpr int kPassOnly = O_RDONLY;
#endif

struct Pipe {
  Descriptor readEnd;
  Descriptor writeEnd;
};

// A pipe that no program gets which is started. Answers 0 or the error's number.
int openPipe(Pipe& pipe);

// Has a child begin without any descriptor from `first` on that its actions do not name. Called when all of them are
// named; adds to the flags of its attributes. Answers 0 or the error's number.
int closeOthers(posix_spawn_file_actions_t& actions, short& flags, int first);
// Blocks until a child has ended, and does not collect it.
void awaitEnd(pid_t child);
// What every program is started with, as "NAME=value", and the variables that it gets from this process.
std::span<const char* const> fixedEnvironment();
std::span<const char* const> inheritedVariables();

// Closes every descriptor of this process from `first` on.
void closeFrom(int first);
// For the superuser's process with one thread: from now on it is that user's for good, and no process of the user's
// may look into it. Groups beside the first are the caller's matter. False, with errno, where it was not possible.
bool becomeUser(uid_t user, gid_t group);
// What changes whenever a process of ours has used a processor; empty where that cannot be told.
std::string workOf(pid_t process);

// Takes one of these signals, which are blocked, off this thread where one is pending.
void takePending(const sigset_t& set);

// The file that this process runs: its path without links, empty where the kernel does not tell.
std::string ownPath();
// For people, such as "Debian GNU/Linux 12 (bookworm)".
std::string systemName();
// The kind of file system that an item lies on, such as "ext4"; empty where the kernel does not tell.
std::string fileSystemOf(const std::string& path);
// What the machine has; 0 where that is not told.
std::uint64_t memoryBytes();
// From the kernel's own source; fewer than 256.
void fillRandomly(std::span<unsigned char> bytes);

}  // namespace vantory::kernel
