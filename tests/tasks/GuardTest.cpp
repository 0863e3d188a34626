#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/LinuxFileMetadata.h"
#include "platform/linux/LinuxFileSystem.h"
#include "services/MainThread.h"
#include "services/QWAlert.h"
#include "services/QWCmdUtils.h"
#include "services/QWLog.h"
#include "services/Runtime.h"
#include "tasks/QWVantoryUtilities.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class GuardTest : public ::testing::Test {
 protected:
  GuardTest() {
    runtime_.shared<MainThread>();
    QWLog::createNewLog("Guard");
    fake_.workspace.running = {"other", "app", "app"};
  }

  GuardDecision decide(bool closeAutomatically, const std::string& bundleID = "app") {
    return guard_.checkRunningAppsForName("App", bundleID, closeAutomatically);
  }
  std::string log() {
    QWLog::finishWriting();
    return readFile(home_ / "Library/Logs/Quarrywell/Guard.1.log");
  }

  ScratchFolder home_;
  LinuxFileSystem files_;
  LinuxFileMetadata metadata_;
  FakePlatform fake_{files_, metadata_, home_.path(), home_.path()};
  Runtime runtime_{fake_.platform};
  QWVantoryUtilities guard_;
};

TEST_F(GuardTest, WithoutAWindowTheCallerDecides) {
  EXPECT_EQ(decide(true, "App"), GuardDecision::NotRunning);  // another identifier
  EXPECT_EQ(decide(false), GuardDecision::Skip);              // a user interface is claimed, but none is there to ask
  EXPECT_THAT(log(), HasSubstr("App is running - skipping app...\n"));

  QWCmdUtils::sharedController().setHasGUI(false);
  QWAlert::sharedController().ask = [](const AlertTexts&) { return QWAlert::Alternate; };
  EXPECT_EQ(decide(true), GuardDecision::CloseAndRelaunch);
  EXPECT_THAT(log(), HasSubstr("App is running - closing application...\n"));
  EXPECT_THAT(fake_.workspace.quitRequests, IsEmpty());
}

TEST_F(GuardTest, WithAWindowTheUserDecides) {
  AlertTexts shown;
  int button = QWAlert::Default;
  QWAlert::sharedController().ask = [&](const AlertTexts& texts) { return shown = texts, button; };
  EXPECT_EQ(decide(false), GuardDecision::CloseAndRelaunch);
  EXPECT_EQ(shown.messageText, "App is running");
  EXPECT_EQ(shown.defaultButton, "Close and Relaunch");
  EXPECT_EQ(shown.alternateButton, "Cancel");
  EXPECT_EQ(shown.otherButton, "Skip Application");
  EXPECT_EQ(shown.informativeText,
            "This task cannot complete while App is running. Do you want to cancel processing, skip all App tasks or "
            "close and relaunch App?");
  button = QWAlert::Alternate;
  EXPECT_EQ(decide(true), GuardDecision::Cancel);
  button = QWAlert::Other;
  EXPECT_EQ(decide(true), GuardDecision::Skip);
  button = 7;
  EXPECT_EQ(decide(true), GuardDecision::NotRunning);
  EXPECT_THAT(log(), HasSubstr("App is running - asking the user what to do...\n"));
}

TEST_F(GuardTest, ClosingWaitsForTheLastCopyWithinItsLimit) {
  fake_.workspace.onQuit = [](const std::string&) { return Error{std::errc::timed_out, "no answer"}; };
  EXPECT_FALSE(guard_.closeAppWithName("App", "app"));
  EXPECT_THAT(log(), HasSubstr("Unable to quit App application  - no answer\n"));

  fake_.workspace.onQuit = [this](const std::string&) { return fake_.workspace.running.pop_back(), Status(); };
  const Timestamp start = fake_.clock.now();
  EXPECT_FALSE(guard_.closeAppWithName("App", "app"));
  EXPECT_EQ(fake_.clock.now().seconds - start.seconds, 32);
  EXPECT_TRUE(guard_.closeAppWithName("App", "app"));
  EXPECT_EQ(fake_.clock.now().seconds - start.seconds, 34);
}

TEST_F(GuardTest, WhereNobodyCanTellATaskGoesOnButAWaitDoesNotEnd) {
  fake_.workspace.runningFailure = Error{std::errc::timed_out, "no answer"};
  EXPECT_EQ(decide(true), GuardDecision::NotRunning);
  EXPECT_THAT(log(), HasSubstr("Unable to tell whether App is running: no answer\n"));
  EXPECT_FALSE(guard_.closeAppWithName("App", "app"));
}

}  // namespace
}  // namespace vantory::test
