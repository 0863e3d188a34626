#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "platform/linux/files/LinuxFileSystem.h"
#include "platform/linux/system/LinuxCrashReports.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

TEST(CrashReportsTest, FindsTheNewestOfTheUsersOwn) {
  const ScratchFolder root;
  const LinuxFileSystem files;
  FakeUsers users;
  users.process = User{1000, 1000, "/home/anna"};
  const LinuxCrashReports reports(files, users, root.path());
  EXPECT_EQ(reports.newestSince({}), std::nullopt);
  const auto keep = [&](const std::string& name, int age) {
    writeFile(root / name, "");
    const auto now = std::filesystem::file_time_type::clock::now();
    std::filesystem::last_write_time(root / name, now - std::chrono::hours(age));
    return root / name;
  };
  const std::string dump = keep("var/lib/systemd/coredump/core.vantory-window.1000.a0b1.42.1700000000000000.zst", 3);
  keep("var/lib/systemd/coredump/core.vantory-window.1001.a0b1.42.1700000000000000.zst", 1);
  keep("var/crash/_usr_bin_vantory-window.10000.crash", 1);
  keep("var/crash/_usr_bin_gimp.1000.crash", 1);
  EXPECT_EQ(reports.newestSince({}), dump);
  EXPECT_EQ(reports.newestSince(files.info(dump, Links::Follow)->modified), std::nullopt);
  const std::string report = keep("var/crash/_usr_local_bin_vantory.1000.crash", 2);
  EXPECT_EQ(reports.newestSince({}), report);
}

[[noreturn]] void sendSegmentationFault() {
  std::raise(SIGSEGV);
  std::_Exit(0);
}

// On a thread that is not the first.
[[noreturn]] void writeToWhatCannotBeWritten() {
  std::thread([] {
    void* page = mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    *static_cast<volatile char*>(page) = 1;
  }).join();
  std::_Exit(0);
}

TEST(CrashReportsTest, ACrashLeavesAReportAndEndsTheProcessAllTheSame) {
  const ScratchFolder logs;
  const auto expectReport = [&logs](const std::string& name, void (*crash)(), int signal) {
    const std::string folder = logs / name;
    EXPECT_EXIT(
        {
          writeCrashReports(folder, "Vantory");
          crash();
        },
        testing::KilledBySignal(signal), "");
    const std::filesystem::directory_iterator report(folder);
    EXPECT_TRUE(report->path().filename().native().starts_with("Vantory_"));
    EXPECT_THAT(readFile(report->path()), testing::ContainsRegex("\nReason: [SA][^\n]*\n\n.*platform_tests"));
  };
  expectReport("sent", sendSegmentationFault, SIGSEGV);
  expectReport("aborted", std::abort, SIGABRT);
  expectReport("fault", writeToWhatCannotBeWritten, SIGSEGV);
}

}  // namespace
}  // namespace vantory::test
