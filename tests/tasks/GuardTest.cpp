#include "services/QWCmdUtils.h"
#include "services/messages/QWAlert.h"
#include "services/threads/MainThread.h"
#include "tasks/QWVantoryUtilities.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using testing::Contains;
using testing::IsEmpty;

class GuardTest : public ServicesTest {
 protected:
  GuardTest() {
    runtime_.shared<MainThread>();
    fakes_.workspace.running = {"other", "app", "app"};
  }

  GuardDecision decide(bool closeAutomatically, const std::string& bundleID = "app") {
    return guard_.checkRunningAppsForName("App", bundleID, closeAutomatically);
  }

  QWVantoryUtilities guard_;
};

TEST_F(GuardTest, WithoutAWindowTheCallerDecides) {
  EXPECT_EQ(decide(true, "App"), GuardDecision::NotRunning);  // another identifier
  EXPECT_EQ(decide(false), GuardDecision::Skip);              // a user interface is claimed, but none is there to ask
  EXPECT_THAT(logged(), Contains("App is running - skipping app..."));

  QWCmdUtils::sharedController().setHasGUI(false);
  QWAlert::sharedController().ask = [](const AlertTexts&) { return QWAlert::Alternate; };
  EXPECT_EQ(decide(true), GuardDecision::CloseAndRelaunch);
  EXPECT_THAT(logged(), Contains("App is running - closing application..."));
  EXPECT_THAT(fakes_.workspace.quitRequests, IsEmpty());
}

TEST_F(GuardTest, WithAWindowTheUserDecides) {
  AlertTexts shown;
  int button = 0;
  QWAlert::sharedController().ask = [&](const AlertTexts& texts) {
    shown = texts;
    return button;
  };
  for (const auto& [pressed, decision] : {std::pair{7, GuardDecision::NotRunning},
                                          {QWAlert::Default, GuardDecision::CloseAndRelaunch},
                                          {QWAlert::Alternate, GuardDecision::Cancel},
                                          {QWAlert::Other, GuardDecision::Skip}}) {
    button = pressed;
    EXPECT_EQ(decide(true), decision) << pressed;
  }
  EXPECT_EQ(shown.messageText, "App is running");
  EXPECT_EQ(shown.defaultButton, "Close and Relaunch");
  EXPECT_EQ(shown.alternateButton, "Cancel");
  EXPECT_EQ(shown.otherButton, "Skip Application");
  EXPECT_EQ(shown.informativeText,
            "This task cannot complete while App is running. Do you want to cancel processing, skip all App tasks or "
            "close and relaunch App?");
  EXPECT_THAT(logged(), Contains("App is running - asking the user what to do..."));

  const std::string usual = shown.informativeText;
  fakes_.workspace.canBeAsked = false;
  decide(true);
  EXPECT_EQ(shown.informativeText, usual +
                                       "\n\nVantory cannot ask App to quit. Please quit it yourself, then choose "
                                       "Close and Relaunch.");
}

TEST_F(GuardTest, ClosingWaitsForTheLastCopyWithinItsLimit) {
  fakes_.workspace.onQuit = [](const std::string&) { return Error{std::errc::timed_out, "no answer"}; };
  EXPECT_FALSE(guard_.closeAppWithName("App", "app"));
  EXPECT_THAT(logged(), Contains("Unable to quit App application  - no answer"));

  fakes_.workspace.onQuit = [this](const std::string&) { return fakes_.workspace.running.pop_back(), Status(); };
  const Timestamp start = fakes_.clock.now();
  EXPECT_FALSE(guard_.closeAppWithName("App", "app"));
  EXPECT_EQ(fakes_.clock.now().seconds - start.seconds, 32);
  EXPECT_TRUE(guard_.closeAppWithName("App", "app"));
  EXPECT_EQ(fakes_.clock.now().seconds - start.seconds, 34);
  fakes_.workspace.running = {"app"};
  fakes_.workspace.onQuit = [](const std::string&) { return Status(); };
  EXPECT_FALSE(guard_.closeAppWithName("App", "app", [&] { return fakes_.clock.now().seconds - start.seconds > 34; }));
  EXPECT_EQ(fakes_.clock.now().seconds - start.seconds, 35) << "a cancel ends the wait";
}

TEST_F(GuardTest, WhereNobodyCanTellThatIsSaidAndAWaitDoesNotEnd) {
  fakes_.workspace.runningFailure = Error{std::errc::timed_out, "no answer"};
  EXPECT_EQ(decide(true), GuardDecision::NotKnown);
  EXPECT_THAT(logged(), Contains("Unable to tell whether App is running: no answer"));
  EXPECT_FALSE(guard_.closeAppWithName("App", "app"));
}

}  // namespace
}  // namespace vantory::test
