// Looks for dumps and reports, and writes reports of this process.
#include "platform/linux/system/LinuxCrashReports.h"

#include <execinfo.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>
#include <ctime>
#include <utility>
#include <vector>

#include "base/Format.h"
#include "platform/posix/system/PosixSystemInfo.h"

namespace vantory {

namespace {

constexpr const char* kPrograms[] = {"vantory", "vantory-window"};

// "core.PROGRAM.USER.BOOT.PROCESS.TIME", with the ending of its compression.
bool isMemoryDump(const std::string& name, const std::string& user) {
  for (const char* program : kPrograms)
    if (name.starts_with(formatted("core.%@.%@.", program, user))) return true;
  return false;
}

// "_usr_bin_PROGRAM.USER.crash"
bool isReport(const std::string& name, const std::string& user) {
  for (const char* program : kPrograms)
    if (name.ends_with(formatted("_%@.%@.crash", program, user))) return true;
  return false;
}

struct Place {
  const char* folder;
  bool (*holds)(const std::string& name, const std::string& user);
};

constexpr Place kPlaces[] = {{"/var/lib/systemd/coredump", isMemoryDump}, {"/var/crash", isReport}};

struct Report {
  std::string folder;
  std::string path;
  std::string about;
};

// All that a signal handler may use is made before.
const Report* report = nullptr;

std::string textOf(std::time_t time, const char* format) {
  std::tm parts = {};
  localtime_r(&time, &parts);
  char text[64];
  return std::string(text, std::strftime(text, sizeof text, format, &parts));
}

// Put together at the start, while everything works.
Report reportOf(const std::string& folder, const std::string& program) {
  const PosixSystemInfo system({});
  const std::time_t now = std::time(nullptr);
  const std::string process = std::to_string(getpid());
  Report made;
  made.folder = folder;
  made.path = folder + "/" + program + textOf(now, "_%Y-%m-%d-%H%M%S_") + process + ".crash";
  made.about = "Program: " + program + " " VANTORY_VERSION "\nPath: " + system.executablePath() +
               "\nProcess: " + process + "\nStarted: " + textOf(now, "%Y-%m-%d %H:%M:%S %z") +
               "\nSystem: " + system.systemName() + "\nReason: ";
  return made;
}

// What cannot be written is lost: nobody is left to be told.
void write(int file, const char* text) {
  (void)!::write(file, text, std::strlen(text));
}

// Calls only what a signal handler may, but for backtrace(): should that hang or crash, the process ends all the same.
void writeReport(int signalNumber, siginfo_t* signalInfo, void*) {
  signal(SIGALRM, SIG_DFL);
  alarm(5);
  mkdir(report->folder.c_str(), 0700);
  const int file = open(report->path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file >= 0) {
    write(file, report->about.c_str());
    write(file, sigdescr_np(signalNumber));
    write(file, "\n\n");
    std::array<void*, 64> frames;
    backtrace_symbols_fd(frames.data(), backtrace(frames.data(), frames.size()), file);
    close(file);
  }
  // A fault of the processor comes again by itself, with its address for a memory dump. What was sent must be sent
  // again.
  if (signalInfo->si_code <= 0) raise(signalNumber);
}

// A stack that is full has no room for the handler.
void giveHandlerAStack() {
  static std::array<char, 64 * 1024> memory;
  stack_t stack = {};
  stack.ss_sp = memory.data();
  stack.ss_size = memory.size();
  sigaltstack(&stack, nullptr);
}

}  // namespace

LinuxCrashReports::LinuxCrashReports(const FileSystem& files, const Users& users, std::string root)
    : files_(files), users_(users), root_(std::move(root)) {}

// Each that is newer is the mark for the next.
std::optional<std::string> LinuxCrashReports::newestSince(Timestamp moment) const {
  const auto user = users_.isSuperuser() ? users_.consoleUser() : users_.processUser();
  if (!user) return std::nullopt;
  std::optional<std::string> newest;
  for (const Place& place : kPlaces) {
    const std::string folder = root_ + place.folder;
    const auto entries = files_.list(folder, Detail::Names);
    if (!entries) continue;
    for (const DirectoryEntry& entry : *entries) {
      if (!place.holds(entry.name, std::to_string(user->id))) continue;
      const std::string path = folder + "/" + entry.name;
      const auto info = files_.info(path, Links::DoNotFollow);
      if (!info || info->type != FileType::File || info->modified <= moment) continue;
      moment = info->modified;
      newest = path;
    }
  }
  return newest;
}

// What the handler needs lives as long as the process.
void writeCrashReports(const std::string& folder, const std::string& program) {
  static const Report made = reportOf(folder, program);
  report = &made;
  void* frame = nullptr;
  backtrace(&frame, 1);  // loads what it needs, which the handler must not
  giveHandlerAStack();
  struct sigaction action = {};
  action.sa_sigaction = writeReport;
  action.sa_flags = static_cast<int>(SA_SIGINFO | SA_ONSTACK | SA_RESETHAND);
  for (const int crash : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) sigaction(crash, &action, nullptr);
}

}  // namespace vantory
