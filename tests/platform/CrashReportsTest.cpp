// What is kept of crashes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <thread>

#include "platform/linux/files/LinuxFileSystem.h"
#include "platform/linux/system/LinuxCrashReports.h"
#include "platform/macos/system/MacCrashReports.h"
#include "platform/macos/system/MacStandardFolders.h"
#include "tests/platform/Systems.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

// Of each kind the names of two of the user's own, and of some that are not.
struct Names {
  const char* older;
  const char* newer;
  std::vector<const char*> foreign;
};

class NewestReportTest : public SystemTest {
 protected:
  std::string keep(const std::string& name, int age) const {
    writeFile(root_ / name, "");
    const auto now = std::filesystem::file_time_type::clock::now();
    std::filesystem::last_write_time(root_ / name, now - std::chrono::hours(age));
    return root_ / name;
  }
  std::unique_ptr<CrashReports> reports() {
    users_.process = User{1000, 1000, isMac ? root_.path() : "/home/anna"};
    if (isMac) return std::make_unique<MacCrashReports>(files_, users_, folders_);
    return std::make_unique<LinuxCrashReports>(files_, users_, root_.path());
  }

  const ScratchFolder root_;
  const LinuxFileSystem files_;
  const MacStandardFolders folders_;
  FakeUsers users_;
  const Names names_ =
      isMac ? Names{"Library/Logs/DiagnosticReports/vantory-window-2026-11-14-213517.ips",
                    "Library/Logs/DiagnosticReports/Retired/vantory-2026-11-14-213517.ips",
                    {"Library/Logs/DiagnosticReports/vantory-desktop-2026-11-14-213517.ips",
                     "Library/Logs/DiagnosticReports/vantory-.ips", "Library/Logs/DiagnosticReports/final-2026.ips"}}
            : Names{"var/lib/systemd/coredump/core.vantory-window.1000.a0b1.42.1700000000000000.zst",
                    "var/crash/_usr_local_bin_vantory.1000.crash",
                    {"var/lib/systemd/coredump/core.vantory-window.1001.a0b1.42.1700000000000000.zst",
                     "var/crash/_usr_bin_vantory-window.10000.crash", "var/crash/_usr_bin_gimp.1000.crash"}};
};

VANTORY_ON_EACH_SYSTEM(NewestReportTest);

TEST_P(NewestReportTest, IsOneOfTheUsersOwnOfThisProgram) {
  const auto reports = this->reports();
  for (const char* name : names_.foreign) keep(name, 1);
  EXPECT_EQ(reports->newestSince({}), std::nullopt);
  const std::string older = keep(names_.older, 3);
  EXPECT_EQ(reports->newestSince({}), older);
  EXPECT_EQ(reports->newestSince(files_.info(older, Links::Follow)->modified), std::nullopt);
  const std::string newer = keep(names_.newer, 2);
  EXPECT_EQ(reports->newestSince({}), newer);
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
