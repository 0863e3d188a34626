// Jobs handed to the scheduler, and whether a run is due.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <memory>

#include "base/Paths.h"
#include "platform/linux/files/LinuxFileMetadata.h"
#include "platform/linux/files/LinuxFileSystem.h"
#include "platform/linux/schedule/LinuxJobControl.h"
#include "platform/macos/schedule/MacJobControl.h"
#include "platform/posix/processes/HelperProgram.h"
#include "platform/posix/processes/PosixProcesses.h"
#include "tests/platform/StandInTools.h"
#include "tests/platform/Systems.h"
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
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// What hands jobs to a system's scheduler, with a stand-in for the scheduler's tool.
class JobControlTest : public SystemTest {
 protected:
  JobControlTest() {
    users_.process = users_.console = User{getuid(), getgid(), home_.path()};
    toolDoes(kLoads);
  }

  // The tool does what the script says.
  void toolDoes(const std::string& script) { tools_.put(isMac ? "/bin/launchctl" : "/systemctl", script); }
  std::unique_ptr<JobControl> control(milliseconds limit = seconds(10)) {
    if (isMac)
      return std::make_unique<MacJobControl>(users_, files_, metadata_, LaunchControl(milliseconds(200), limit));
    UserManager manager(users_, tools_ / "systemctl", limit);
    return std::make_unique<LinuxJobControl>(users_, files_, metadata_, std::move(manager));
  }
  // Everything that loading may have left in the home.
  std::vector<std::string> left() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home_.path()))
      if (!entry.is_directory()) names.push_back(entry.path());
    return names;
  }
  // Whether the scheduler of a Mac has it.
  bool isLoaded(const std::string& label) const { return exists(tools_ / label); }

  // Launchd keeps a file for each job that is loaded; "running" says that one runs. Systemd takes every wish.
  static constexpr const char* kLoads = R"(
      label=${2##*/}
      case $1 in
        bootstrap) label=${3##*/} label=${label%.plist}
                   [ ! -e $label ] || { echo 'Bootstrap failed: 5: Input/output error' >&2; exit 5; }
                   : >$label ;;
        bootout) [ -e $label ] || exit 3; rm $label ;;
        print) [ -e $label ] || exit 113
               printf '%s = {\n\tstate = waiting\n\tendpoints = {\n\t\tpid = 1\n\t}\n' $label
               [ ! -e running ] || printf '\tpid = 7\n'; echo '}' ;;
      esac)";

  const EnvironmentChange config_{"XDG_CONFIG_HOME", std::nullopt};
  const EnvironmentChange state_{"XDG_STATE_HOME", std::nullopt};
  const EnvironmentChange data_{"XDG_DATA_HOME", std::nullopt};
  StandInTools tools_;
  ScratchFolder home_;
  const std::string stamp_ =
      home_ / (isMac ? "Library/Application Support/Vantory/" : ".local/state/") + "com.example.Job.lastrun";
  FakeUsers users_;
  LinuxFileSystem disk_;
  FaultyFileSystem files_{disk_};
  LinuxFileMetadata metadata_;
  Job job_{.name = {"com.example.Job", "/Library/LaunchAgents/com.example.Job.plist"},
           .program = "/usr/bin/true",
           .arguments = {"Vantory", "-autobackup"},
           .interval = hours(24 * 7)};
};

VANTORY_ON_EACH_SYSTEM(JobControlTest);

TEST_P(JobControlTest, AFailureLeavesNothing) {
  toolDoes("[ $1 = print ] && exit 113; echo 'Failed to connect' >&2; echo more >&2; exit 1");
  const Status refused = control()->load(job_);
  ASSERT_FALSE(refused);
  EXPECT_THAT(refused.error().text, EndsWith(": Failed to connect"));
  EXPECT_THAT(left(), IsEmpty());

  toolDoes(kLoads);
  int writes = 0;
  for (bool fails = true; fails; ++writes) {
    files_.heal();
    files_.fail(Operation::Write, std::errc::no_space_on_device, writes + 1);
    fails = !control()->load(job_);
    EXPECT_TRUE(!fails || left().empty()) << writes;
  }
  EXPECT_GE(writes, 3);
  files_.heal();
  if (!isMac) writeFile(home_ / ".config/systemd/user/timers.target.wants/com.example.Job.timer", "");  // by the tool
  const auto loaded = left();
  toolDoes("exit 1");
  EXPECT_FALSE(control()->load(job_));
  EXPECT_EQ(left(), loaded) << "one that was loaded before stays";
  for (const char* hangs : {"exec sleep 60", "exec >&- 2>&- sleep 60"}) {
    toolDoes(hangs);
    EXPECT_EQ(control(milliseconds(300))->load(job_).error().code, std::errc::timed_out) << hangs;
    EXPECT_EQ(left(), loaded) << hangs;
  }
}

TEST_P(JobControlTest, RefusesWhatIsNoUsersJob) {
  const auto jobs = control();
  for (const char* label : {"", "../x", "a\nb", "-a", "a%i"}) {
    Job bad = job_;
    bad.name.label = label;
    EXPECT_FALSE(jobs->load(bad)) << label;
    EXPECT_TRUE(jobs->unload(bad.name));
    EXPECT_TRUE(jobs->remove(bad.name));
  }
  Job without = job_;
  without.interval = seconds(0);
  EXPECT_FALSE(jobs->load(without));
  Job machine = job_;
  machine.name.domain = JobName::Domain::Machine;
  EXPECT_THAT(jobs->load(machine).error().text, HasSubstr("not supported"));
  EXPECT_EQ(tools_.calls(), "");
  ASSERT_TRUE(jobs->load(job_));
  const auto loaded = left();
  EXPECT_TRUE(jobs->unload(machine.name));
  EXPECT_TRUE(jobs->remove(machine.name));
  EXPECT_EQ(left(), loaded) << "the user's job of the same label stays";
}

TEST_P(JobControlTest, IsReplacedByTheOneOfItsNameAndLeavesNothing) {
  job_.lastRun = Timestamp{1000, 0};
  const auto jobs = control();
  for (int time = 0; time < 2; ++time) ASSERT_TRUE(jobs->load(job_));
  EXPECT_EQ(jobs->lastRun(job_.name)->seconds, 1000);
  EXPECT_EQ(jobs->lastTry(job_.name), std::nullopt);
  for (int time = 0; time < 2; ++time) ASSERT_TRUE(jobs->unload(job_.name));
  ASSERT_TRUE(jobs->remove(job_.name));
  EXPECT_THAT(left(), IsEmpty());
  EXPECT_EQ(jobs->lastRun(job_.name), std::nullopt);
}

TEST_P(JobControlTest, OnlyARunOfTheJobSetsItsStamp) {
  job_.lastRun = Timestamp{1000, 0};
  const auto jobs = control();
  ASSERT_TRUE(jobs->load(job_));
  const char* variable = isMac ? "XPC_SERVICE_NAME" : "VANTORY_SCHEDULE_STAMP";
  for (const char* name : {"0", "../com.example.Job", "com.example.Other"}) {
    const EnvironmentChange job(variable, name);
    EXPECT_TRUE(jobs->runSucceeded());
  }
  EXPECT_EQ(jobs->lastRun(job_.name)->seconds, 1000);
  const EnvironmentChange job(variable, isMac ? "com.example.Job" : stamp_);
  EXPECT_TRUE(jobs->runSucceeded());
  EXPECT_GT(jobs->lastRun(job_.name)->seconds, 1000);
  ASSERT_TRUE(jobs->remove(job_.name));
  EXPECT_TRUE(jobs->runSucceeded());
  EXPECT_FALSE(exists(stamp_));
}

class MacJobControlTest : public JobControlTest {};
INSTANTIATE_TEST_SUITE_P(Its, MacJobControlTest, testing::Values(System::Mac));

// What catches up with missed runs is an agent of its own.
TEST_P(MacJobControlTest, LoadsTwoAgentsIntoTheSessionAndCutsNoRunOff) {
  const auto jobs = control();
  ASSERT_TRUE(jobs->load(job_));
  EXPECT_TRUE(isLoaded("com.example.Job") && isLoaded("com.example.Job.catchup"));
  const std::string session = "gui/" + std::to_string(getuid());
  EXPECT_THAT(tools_.calls(), HasSubstr("launchctl bootstrap " + session + " " + job_.name.file + "\n"));
  const std::string agent = readFile(home_ / "Library/LaunchAgents/com.example.Job.catchup.plist");
  for (const std::string& word : {stamp_, std::string("604800"), session + "/com.example.Job"})
    EXPECT_THAT(agent, HasSubstr("<string>" + word + "</string>"));

  writeFile(tools_ / "running", "");
  EXPECT_EQ(jobs->unload(job_.name).error().code, std::errc::device_or_resource_busy);
  EXPECT_FALSE(jobs->load(job_));
  EXPECT_TRUE(isLoaded("com.example.Job") && exists(stamp_));
  std::filesystem::remove(tools_ / "running");
  ASSERT_TRUE(jobs->unload(job_.name));
  EXPECT_FALSE(isLoaded("com.example.Job") || isLoaded("com.example.Job.catchup"));
}

// Of the program that the service asks.
int answer(const std::vector<std::string>& arguments) {
  auto process = PosixProcesses().start(helperProgram("vantory-due"), arguments, Streams::Discarded);
  return process ? (*process)->wait() : -1;
}

TEST_P(JobControlTest, ARunThatKeepsFailingIsTriedAgainEverLater) {
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
  ASSERT_TRUE(control()->remove(job_.name));
  EXPECT_THAT(left(), IsEmpty());
}

TEST_P(JobControlTest, ARunIsDueOneIntervalAfterTheStamp) {
  const auto answerAt = [&](seconds age) {
    EXPECT_TRUE(metadata_.setModified(stamp_, Timestamp{std::time(nullptr) - age.count(), 0}));
    return answer({stamp_, "604800", "1800"});
  };
  makeFolders(paths::parent(stamp_));
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
