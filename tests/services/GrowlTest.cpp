#include "services/messages/QWGrowl.h"

#include "services/messages/QWTaskNotification.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using testing::ElementsAre;

using GrowlTest = ServicesTest;

TEST_F(GrowlTest, NobodyListensWhenTheProgramIsEnding) {
  {
    Runtime inner(fakes_.platform);
    QWGrowl::postGrowlNotification("title", "text");
    EXPECT_TRUE(fakes_.notifications.listener);
  }
  EXPECT_FALSE(fakes_.notifications.listener);
}

TEST_F(GrowlTest, OneLineOfTheLogTellsOfAFailureAndOneSwitchTurnsAllOff) {
  fakes_.notifications.answer = Error{std::errc::timed_out, "no answer"};
  QWGrowl::postGrowlNotification("Backup failed", "text");
  EXPECT_THAT(logged(), ElementsAre("Unable to show the notification \"Backup failed\": no answer"));
  writeFile(home_ / "Library/Preferences/com.quarrywell.global.plist",
            "<plist version=\"1.0\"><dict><key>growlDisabled</key><true/></dict></plist>");
  QWGrowl::postGrowlNotification("again", "text");
  EXPECT_EQ(fakes_.notifications.posted.size(), 1u);
}

TEST_F(GrowlTest, TaskClientsGetTheMessagesThatTheyUnderstand) {
  fakes_.taskClient.services = {"QWGearwrightClientCallback"};
  fakes_.taskClient.understood = {"postError:", "incrementRemoteProgress", "postFinishedTask", "postDisconnect"};
  QWTaskNotification::postTaskError("no space");
  QWTaskNotification::postIncrementProgress();
  QWTaskNotification::postTaskFinished();
  QWTaskNotification::postDisconnect();
  std::vector<std::string> names;
  for (const TaskMessage& message : fakes_.taskClient.sent) names.push_back(message.name);
  EXPECT_THAT(names, ElementsAre("postError:", "incrementRemoteProgress", "postFinishedTask", "postDisconnect"));
  EXPECT_THAT(fakes_.taskClient.sent.front().arguments, ElementsAre("no space"));
}

}  // namespace
}  // namespace vantory::test
