#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>

#include "platform/linux/files/LinuxFileMetadata.h"
#include "platform/linux/files/LinuxFileSystem.h"
#include "platform/linux/schedule/LinuxJobControl.h"
#include "platform/posix/processes/HelperProgram.h"
#include "platform/posix/processes/PosixProcesses.h"
#include "tests/support/EnvironmentChange.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class JobControlTest : public ::testing::Test {
 protected:
  JobControlTest() {
    users_.process = users_.console = User{getuid(), getgid(), home_.path()};
    systemctlDoes("");
  }

  // Stands in for the tool: records its arguments, then does what the script says.
  void systemctlDoes(const std::string& script) {
    writeFile(tool_, "#!/bin/sh\necho \"$*\" >> " + calls_ + "\n" + script + "\n");
    chmod(tool_.c_str(), 0755);
  }
  std::string systemctlCalls() {
    const std::string calls = exists(calls_) ? readFile(calls_) : "";
    std::filesystem::remove(calls_);
    return calls;
  }
  LinuxJobControl control() {
    return LinuxJobControl(users_, files_, metadata_, UserManager(users_, tool_, milliseconds(300)));
  }
  // Everything that loading may have left in the home.
  std::vector<std::string> left() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home_.path()))
      if (!entry.is_directory()) names.push_back(entry.path());
    return names;
  }

  const EnvironmentChange config_{"XDG_CONFIG_HOME", std::nullopt};
  const EnvironmentChange state_{"XDG_STATE_HOME", std::nullopt};
  const EnvironmentChange data_{"XDG_DATA_HOME", std::nullopt};
  ScratchFolder home_;
  ScratchFolder tools_;
  const std::string tool_ = tools_ / "systemctl";
  const std::string calls_ = tools_ / "calls";
  const std::string stamp_ = home_ / ".local/state/com.example.Job.lastrun";
  FakeUsers users_;
  LinuxFileSystem disk_;
  FaultyFileSystem files_{disk_};
  LinuxFileMetadata metadata_;
  Job job_{.name = {"com.example.Job", "/Library/LaunchAgents/com.example.Job.plist"},
           .program = "/usr/bin/true",
           .arguments = {"Vantory", "-autobackup"},
           .interval = hours(24 * 7)};
};

TEST_F(JobControlTest, AFailureLeavesNothing) {
  systemctlDoes("echo 'Failed to connect to bus' >&2; echo more >&2; exit 1");
  const Status refused = control().load(job_);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().text, tool_ + ": Failed to connect to bus");
  EXPECT_THAT(left(), IsEmpty());

  systemctlDoes("exec sleep 60");
  const Status slow = control().load(job_);
  ASSERT_FALSE(slow);
  EXPECT_EQ(slow.error().code, std::errc::timed_out);
  EXPECT_THAT(left(), IsEmpty());

  systemctlDoes("");
  for (int call = 1; call <= 3; ++call) {
    files_.heal();
    files_.fail(Operation::Write, std::errc::no_space_on_device, call);
    EXPECT_FALSE(control().load(job_));
    EXPECT_THAT(left(), IsEmpty()) << call;
  }

  files_.heal();
  ASSERT_TRUE(control().load(job_));
  writeFile(home_ / ".config/systemd/user/timers.target.wants/com.example.Job.timer", "");  // by the tool
  const auto loaded = left();
  systemctlDoes("exit 1");
  EXPECT_FALSE(control().load(job_));
  EXPECT_EQ(left(), loaded) << "one that was loaded before stays";
}

TEST_F(JobControlTest, RefusesWhatIsNoUsersJob) {
  LinuxJobControl jobs = control();
  systemctlCalls();
  for (const char* label : {"", "../x", "a\nb", "-a", "a%i"}) {
    Job bad = job_;
    bad.name.label = label;
    EXPECT_FALSE(jobs.load(bad)) << label;
    EXPECT_TRUE(jobs.unload(bad.name));
    EXPECT_TRUE(jobs.remove(bad.name));
  }
  Job without = job_;
  without.interval = seconds(0);
  EXPECT_FALSE(jobs.load(without));
  Job machine = job_;
  machine.name.domain = JobName::Domain::Machine;
  EXPECT_THAT(jobs.load(machine).error().text, HasSubstr("not supported"));
  EXPECT_EQ(systemctlCalls(), "");
  ASSERT_TRUE(jobs.load(job_));
  EXPECT_TRUE(jobs.unload(machine.name));
  EXPECT_TRUE(jobs.remove(machine.name));
  EXPECT_EQ(left().size(), 3u) << "the user's job of the same label stays";
}

// Of the program that the service asks.
int answer(const std::vector<std::string>& arguments) {
  auto process = PosixProcesses().start(helperProgram("vantory-due"), arguments, Streams::Discarded);
  return process ? (*process)->wait() : -1;
}

TEST_F(JobControlTest, ARunThatKeepsFailingIsTriedAgainEverLater) {
  const auto isDue = [&] { return answer({stamp_, "604800", "1800"}) == 0; };
  const auto anHourLater = [&] {
    struct stat tries {};
    ASSERT_EQ(stat((stamp_ + ".tries").c_str(), &tries), 0);
    const timespec dates[] = {{tries.st_atime - 3600, 0}, {tries.st_mtime - 3600, 0}};
    utimensat(AT_FDCWD, (stamp_ + ".tries").c_str(), dates, 0);
  };
  writeFile(stamp_, "");
  ASSERT_TRUE(metadata_.setModified(stamp_, Timestamp{0, 0}));
  std::vector<int> hours;
  for (int hour = 0; hour < 100; ++hour, anHourLater())
    if (isDue()) hours.push_back(hour);
  EXPECT_THAT(hours, ElementsAre(0, 1, 3, 7, 15, 31, 55, 79));

  for (int hour = 0; hour < 24 * 7; ++hour) anHourLater();
  ASSERT_TRUE(metadata_.setModified(stamp_, Timestamp{std::time(nullptr) - 604800, 0}));
  EXPECT_TRUE(isDue() && isDue()) << "it succeeded meanwhile";
  ASSERT_TRUE(control().remove(job_.name));
  EXPECT_THAT(left(), IsEmpty());
}

TEST_F(JobControlTest, ARunIsDueOneIntervalAfterTheStamp) {
  const auto answerAt = [&](seconds age) {
    EXPECT_TRUE(metadata_.setModified(stamp_, Timestamp{std::time(nullptr) - age.count(), 0}));
    return answer({stamp_, "604800", "1800"});
  };
  std::filesystem::create_directories(home_ / ".local/state");
  EXPECT_EQ(answer({stamp_, "604800", "1800"}), 1) << "the first run comes after one interval";
  EXPECT_EQ(answerAt(seconds(604800)), 0);
  EXPECT_EQ(answerAt(seconds(603060)), 0);
  EXPECT_EQ(answerAt(seconds(602900)), 1);
  EXPECT_EQ(answerAt(-hours(24)), 1) << "the clock was set back a little";
  EXPECT_EQ(answerAt(-hours(24 * 365)), 0) << "the clock was wrong";
  EXPECT_EQ(answerAt(seconds(std::time(nullptr))), 0) << "1970";

  for (const std::vector<std::string>& wrong :
       std::vector<std::vector<std::string>>{{stamp_}, {stamp_, "9x", "0"}, {stamp_, "60", "60"}})
    EXPECT_EQ(answer(wrong), 255);
  EXPECT_EQ(answer({home_.path(), "60", "1"}), 255);
  std::filesystem::create_symlink(stamp_, home_ / "link");
  EXPECT_EQ(answer({home_ / "link", "60", "1"}), 255);
}

}  // namespace
}  // namespace vantory::test
