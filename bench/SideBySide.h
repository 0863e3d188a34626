// Two ways of doing one job, timed in turns and compared by their medians.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vantory::bench {

// One timed run, and whether it did what it should. A run that failed ends the benchmark: its time says nothing.
struct Run {
  std::function<void()> action;
  std::function<bool()> succeeded;
  bool isCold = false;  // nothing of any file is in memory when it begins
};

// Whether the system's caches can be emptied: by the superuser, or through the pipe that VANTORY_BENCH_DROP names.
bool canRunCold();

// Makes the files for one run. Not timed; what it wrote is on disk before the clock starts.
using Preparation = std::function<Run()>;

struct Medians {
  double ours;  // milliseconds
  double peer;
};

// Ours, the peer, ours, the peer ... `rounds` times each.
Medians measure(const Preparation& ours, const Preparation& peer, int rounds);
// The same for one side.
double medianOf(const Preparation& preparation, int rounds);

struct Comparison {
  std::string name;
  double goal;  // the largest ratio of ours to the peer that is wanted
  int rounds;
  Preparation ours;
  Preparation peer;
};

// Measures and prints "NAME: ours X ms, peer Y ms, ratio Z (goal G)".
void compare(const Comparison& comparison);

using Command = std::vector<std::string>;  // the program, found by PATH, and its arguments

// Runs the commands one after the other with this HOME, a clean environment and no output. Ends the benchmark with a
// message when one fails.
void runCommands(const std::vector<Command>& commands, const std::string& home);
// False when the command failed.
bool tryCommand(const Command& command, const std::string& home);

// A program that was built beside the benchmarks.
std::string builtProgram(const std::string& name);

// Homes for the runs. All stay until the end, since creating files soon after a mass deletion is slow. With
// VANTORY_BENCH_PREFIX in the environment their paths begin with it, and whoever set it removes them.
class ScratchHomes {
 public:
  ScratchHomes();
  ~ScratchHomes();
  ScratchHomes(const ScratchHomes&) = delete;
  ScratchHomes& operator=(const ScratchHomes&) = delete;

  // A new, empty home of the form "/tmp/NAME".
  std::string create();

 private:
  std::string prefix_;
  bool remove_;
  std::vector<std::string> homes_;
};

}  // namespace vantory::bench
