#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "platform/posix/processes/PosixProcesses.h"
#include "tests/support/DesktopFolders.h"

namespace vantory::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::unique_ptr<Process> startShell(const std::string& script) {
  auto process = PosixProcesses().start("/bin/sh", {"-c", script}, Streams::Captured);
  if (!process) throw std::runtime_error(process.error().text);
  return std::move(*process);
}

TEST(ProcessesTest, SaysWhyAProgramCannotStart) {
  PosixProcesses processes;
  const auto missing = processes.start("/missing/tool", {}, Streams::Captured);
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.error().code, std::errc::no_such_file_or_directory);
  EXPECT_THAT(missing.error().text, HasSubstr("/missing/tool"));
  EXPECT_EQ(processes.start("/etc/passwd", {}, Streams::Discarded).error().code, std::errc::permission_denied);
  EXPECT_FALSE(processes.start("true", {}, Streams::Discarded)) << "found by a search";
  EXPECT_FALSE(processes.start("/bin/echo", {std::string("/a\0b", 4)}, Streams::Discarded)) << "cut short";
}

TEST(ProcessesTest, ReadsBothStreamsWhateverTheirOrder) {
  constexpr std::size_t kMegabyte = 1 << 20;
  const auto process =
      startShell("head -c 1048576 /dev/zero >&2; head -c 1048576 /dev/zero; head -c 1048576 /dev/zero >&2; exit 3");
  const Process::Output streams = process->readAll();
  EXPECT_EQ(streams.output.size(), kMegabyte);
  EXPECT_EQ(streams.errors.size(), 2 * kMegabyte);
  EXPECT_EQ(process->wait(), 3);
}

TEST(ProcessesTest, HandsDownNothingButWhatToolsNeed) {
  const EnvironmentChange secret("VANTORY_SECRET", "x");
  const EnvironmentChange library("LD_LIBRARY_PATH", "/tmp/library");
  const EnvironmentChange path("PATH", "/tmp/evil:/usr/bin:/bin");
  const EnvironmentChange home("HOME", "/tmp/somewhere");
  const int inheritable = dup(STDERR_FILENO);
  const std::string environment = startShell("env")->readAll().output;
  const std::string open = "[ -e /proc/$$/fd/" + std::to_string(inheritable) + " ]";
  EXPECT_EQ(startShell(open)->wait(), 1);
  close(inheritable);
  EXPECT_THAT(environment, HasSubstr("PATH=/usr/bin:/bin\n"));
  EXPECT_THAT(environment, HasSubstr("LANG=C.UTF-8\n"));
  EXPECT_THAT(environment, Not(HasSubstr("VANTORY_SECRET")));
  EXPECT_THAT(environment, Not(HasSubstr("LD_LIBRARY_PATH")));
  EXPECT_EQ(environment.find("HOME=/tmp/somewhere") == std::string::npos, getuid() == 0);
}

TEST(ProcessesTest, AProgramThatIsLetGoRunsOnAndLeavesNoZombie) {
  auto process = startShell("echo $$; exec sleep 60");
  const pid_t child = std::stoi(process->readSome());
  process.reset();
  ASSERT_EQ(kill(child, SIGKILL), 0);
  EXPECT_TRUE(soon([child] { return kill(child, 0) != 0 && errno == ESRCH; }));
}

}  // namespace
}  // namespace vantory::test
