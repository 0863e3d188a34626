#include "services/messages/QWGrowl.h"
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

}  // namespace
}  // namespace vantory::test
