#include "platform/Messaging.h"

#include "services/QWGrowl.h"
#include "services/QWTaskNotification.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

using TaskNotificationTest = ServicesTest;

TEST_F(TaskNotificationTest, SendsTheFirstMessageThatTheClientUnderstands) {
  FakeTaskClient& client = fakes_.taskClient;
  client.services = {"QWGearwrightClientCallback"};
  client.understood = {"postErrorString:userInfo:", "postErrorString:", "postError:", "postDisconnect"};
  QWTaskNotification::postTaskErrorString("text");
  QWTaskNotification::postTaskError("error");
  QWTaskNotification::postTaskFinished();
  QWTaskNotification::postDisconnect();
  client.failure = Error{std::errc::timed_out, "no answer"};
  QWTaskNotification::postTaskError("again");
  EXPECT_THAT(client.sent, ElementsAre(TaskMessage{"postErrorString:userInfo:", {"text", "Vantory"}},
                                       TaskMessage{"postError:", {"error"}}, TaskMessage{"postDisconnect"}));
  EXPECT_THAT(logged(), Contains(HasSubstr("Exception in postTaskError:")));
}

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

}  // namespace
}  // namespace vantory::test
