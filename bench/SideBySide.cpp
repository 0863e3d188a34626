#include "bench/SideBySide.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace vantory::bench {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& text) {
  std::fflush(stdout);
  std::fprintf(stderr, "%s\n", text.c_str());
  std::exit(1);
}

// Else a run would pay for the files that were made for it.
void settle() {
  const int folder = open("/tmp", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0 || syncfs(folder) != 0) fail("/tmp could not be synced.");
  close(folder);
}

constexpr const char* kDropCaches = "/proc/sys/vm/drop_caches";

void dropCaches() {
  const char* pipe = std::getenv("VANTORY_BENCH_DROP");
  std::ofstream(pipe ? pipe : kDropCaches) << "3\n";
  std::string done;
  if (pipe && !std::getline(std::ifstream(std::string(pipe) + ".done"), done)) fail("The caches were not dropped.");
}

double timedRun(const Preparation& preparation) {
  const Run run = preparation();
  settle();
  if (run.isCold) dropCaches();
  const auto start = std::chrono::steady_clock::now();
  run.action();
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
  if (!run.succeeded()) fail("A run did not do what it should; its time was not counted.");
  return time.count();
}

double median(std::vector<double> times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> list;
  for (std::string& text : texts) list.push_back(text.data());
  list.push_back(nullptr);
  return list;
}

pid_t spawn(Command arguments, const std::string& home) {
  std::vector<std::string> environment{"HOME=" + home, "PATH=/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin",
                                       "LANG=C.UTF-8", "GIO_USE_VFS=local"};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int error = posix_spawnp(&child, arguments[0].c_str(), &actions, nullptr, pointers(arguments).data(),
                                 pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) fail(arguments[0] + " could not be started: " + std::strerror(error));
  return child;
}

}  // namespace

bool canRunCold() {
  return std::getenv("VANTORY_BENCH_DROP") || access(kDropCaches, W_OK) == 0;
}

Medians measure(const Preparation& ours, const Preparation& peer, int rounds) {
  std::vector<double> oursTimes;
  std::vector<double> peerTimes;
  for (int round = 0; round < rounds; ++round) {
    oursTimes.push_back(timedRun(ours));
    peerTimes.push_back(timedRun(peer));
  }
  return {median(oursTimes), median(peerTimes)};
}

double medianOf(const Preparation& preparation, int rounds) {
  std::vector<double> times;
  for (int round = 0; round < rounds; ++round) times.push_back(timedRun(preparation));
  return median(times);
}

void compare(const Comparison& comparison) {
  const Medians times = measure(comparison.ours, comparison.peer, comparison.rounds);
  std::printf("%s: ours %.2f ms, peer %.2f ms, ratio %.2f (goal %.2f)\n", comparison.name.c_str(), times.ours,
              times.peer, times.ours / times.peer, comparison.goal);
  std::fflush(stdout);
}

bool tryCommand(const Command& command, const std::string& home) {
  int status = 0;
  return waitpid(spawn(command, home), &status, 0) > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void runCommands(const std::vector<Command>& commands, const std::string& home) {
  for (const Command& command : commands)
    if (!tryCommand(command, home)) fail(command[0] + " failed.");
}

std::string builtProgram(const std::string& name) {
  return fs::read_symlink("/proc/self/exe").parent_path() / name;
}

ScratchHomes::ScratchHomes() : prefix_("/tmp/vantory-bench-"), remove_(true) {
  if (const char* prefix = std::getenv("VANTORY_BENCH_PREFIX")) {
    prefix_ = prefix;
    remove_ = false;
  }
}

ScratchHomes::~ScratchHomes() {
  if (!remove_) return;
  std::error_code ignored;
  for (const std::string& home : homes_) fs::remove_all(home, ignored);
}

std::string ScratchHomes::create() {
  std::string path = prefix_ + "XXXXXX";
  if (!mkdtemp(path.data())) fail("No scratch home could be made in /tmp.");
  homes_.push_back(path);
  return path;
}

}  // namespace vantory::bench
