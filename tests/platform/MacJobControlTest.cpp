#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "platform/macos/files/MacFileMetadata.h"
#include "platform/macos/files/MacFileSystem.h"
#include "platform/macos/schedule/MacJobControl.h"
#include "tests/platform/MacTools.h"
#include "tests/support/FakePlatform.h"

namespace vantory::test {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

class MacJobControlTest : public ::testing::Test {
 protected:
  MacJobControlTest() {
    users_.process = User{getuid(), getgid(), home_.path()};
    writeFile(job_.name.file, "");
    // Keeps a file for each job that is loaded; "running" says that one runs.
    tools_.put("/bin/launchctl", R"(
      label=${2##*/}
      case $1 in
        bootstrap) label=${3##*/} label=${label%.plist}
                   [ ! -e $label ] || { echo 'Bootstrap failed: 5: Input/output error' >&2; exit 5; }
                   : >$label ;;
        bootout) [ -e $label ] || exit 3; rm $label ;;
        print) [ -e $label ] || exit 113
               printf '%s = {\n\tstate = waiting\n\tendpoints = {\n\t\tpid = 1\n\t}\n' $label
               [ ! -e running ] || printf '\tpid = 7\n'; echo '}' ;;
      esac)");
  }
  bool isLoaded(const std::string& label) const { return exists(tools_ / label); }

  MacTools tools_;
  ScratchFolder home_;
  FakeUsers users_;
  MacFileSystem files_;
  MacFileMetadata metadata_;
  const std::string stamp_ = home_ / "Library/Application Support/Vantory/com.example.Job.lastrun";
  const std::string agent_ = home_ / "Library/LaunchAgents/com.example.Job.catchup.plist";
  Job job_{.name = {"com.example.Job", home_ / "Library/LaunchAgents/com.example.Job.plist"},
           .program = "/usr/bin/true",
           .arguments = {"Vantory"},
           .interval = 24h};
  MacJobControl jobs_{users_, files_, metadata_, LaunchControl(200ms)};
};

TEST_F(MacJobControlTest, LoadsTheJobAndWhatCatchesUpWithIt) {
  job_.lastRun = Timestamp{1000, 0};
  ASSERT_TRUE(jobs_.load(job_));
  ASSERT_TRUE(jobs_.load(job_)) << "in place of the one before";
  EXPECT_TRUE(isLoaded("com.example.Job") && isLoaded("com.example.Job.catchup"));
  EXPECT_EQ(jobs_.lastRun(job_.name)->seconds, 1000);
  const std::string session = "gui/" + std::to_string(getuid());
  EXPECT_THAT(tools_.calls(), HasSubstr("launchctl bootstrap " + session + " " + job_.name.file + "\n"));
  const std::string agent = readFile(agent_);
  for (const std::string& word : {stamp_, std::string("86400"), session + "/com.example.Job"})
    EXPECT_THAT(agent, HasSubstr("<string>" + word + "</string>"));

  ASSERT_TRUE(jobs_.unload(job_.name));
  ASSERT_TRUE(jobs_.unload(job_.name));
  ASSERT_TRUE(jobs_.remove(job_.name));
  EXPECT_FALSE(isLoaded("com.example.Job") || isLoaded("com.example.Job.catchup") || exists(stamp_) || exists(agent_));
}

TEST_F(MacJobControlTest, ARunIsNotCutOff) {
  ASSERT_TRUE(jobs_.load(job_));
  writeFile(tools_ / "running", "");
  EXPECT_EQ(jobs_.unload(job_.name).error().code, std::errc::device_or_resource_busy);
  EXPECT_FALSE(jobs_.load(job_));
  EXPECT_TRUE(isLoaded("com.example.Job") && exists(stamp_));
}

TEST_F(MacJobControlTest, AFailureLeavesNothingOfANewJob) {
  tools_.put("/bin/launchctl", "[ $1 = print ] && exit 113; echo 'Bootstrap failed: 125: no session' >&2; exit 125");
  EXPECT_THAT(jobs_.load(job_).error().text, HasSubstr("125: no session"));
  EXPECT_FALSE(exists(stamp_) || exists(agent_));
  job_.name.label = "../x";
  EXPECT_FALSE(jobs_.load(job_));
  job_.name = {"com.example.Job", "/x", JobName::Domain::Machine};
  EXPECT_FALSE(jobs_.load(job_));
}

TEST_F(MacJobControlTest, OnlyARunOfTheJobSetsItsStamp) {
  job_.lastRun = Timestamp{1000, 0};
  ASSERT_TRUE(jobs_.load(job_));
  for (const char* name : {"0", "../com.example.Job", "com.example.Other"}) {
    const EnvironmentChange job("XPC_SERVICE_NAME", name);
    EXPECT_TRUE(jobs_.runSucceeded());
  }
  EXPECT_EQ(jobs_.lastRun(job_.name)->seconds, 1000);
  const EnvironmentChange job("XPC_SERVICE_NAME", "com.example.Job");
  EXPECT_TRUE(jobs_.runSucceeded());
  EXPECT_GT(jobs_.lastRun(job_.name)->seconds, 1000);
  ASSERT_TRUE(jobs_.remove(job_.name));
  EXPECT_TRUE(jobs_.runSucceeded());
  EXPECT_FALSE(exists(stamp_));
}

}  // namespace
}  // namespace vantory::test
