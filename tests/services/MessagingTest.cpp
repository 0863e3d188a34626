#include "platform/Messaging.h"

#include <chrono>
#include <thread>

#include "services/MainThread.h"
#include "services/NotificationCenter.h"
#include "services/QWGrowl.h"
#include "services/QWTaskNotification.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Outcome = DesktopNotifications::Outcome;

class TaskNotificationTest : public ServicesTest {
 protected:
  // Milliseconds that an operation paused.
  std::int64_t pauseOf(void (*operation)()) {
    const Timestamp before = fake_.clock.now();
    operation();
    const Timestamp after = fake_.clock.now();
    return (after.seconds - before.seconds) * 1000 + (after.nanoseconds - before.nanoseconds) / 1'000'000;
  }

  FakeTaskClient& client_ = fake_.taskClient;
};

TEST_F(TaskNotificationTest, SendsTheFirstMessageThatTheClientUnderstands) {
  client_.services = {"QWGearwrightClientCallback"};
  client_.understood = {"postErrorString:userInfo:", "postErrorString:", "postError:", "postDisconnect"};
  QWTaskNotification::postTaskErrorString("text");
  QWTaskNotification::postTaskError("error");
  QWTaskNotification::postTaskFinished();
  QWTaskNotification::postDisconnect();
  EXPECT_THAT(client_.sent, ElementsAre(TaskMessage{"postErrorString:userInfo:", {"text", "Vantory"}},
                                        TaskMessage{"postError:", {"error"}}, TaskMessage{"postDisconnect"}));
}

TEST_F(TaskNotificationTest, TheSecondServiceIsForWhoHasNotRegisteredTheFirst) {
  client_.services = {"QWProClientCallback", "QWGearwrightClientCallback"};
  QWTaskNotification::postIncrementProgress();
  EXPECT_THAT(client_.asked, ElementsAre("QWProClientCallback"));
}

TEST_F(TaskNotificationTest, PausesOnlyAfterAMessage) {
  EXPECT_EQ(pauseOf(QWTaskNotification::postDisconnect), 0);
  client_.services = {"QWProClientCallback"};
  EXPECT_EQ(pauseOf(QWTaskNotification::postDisconnect), 0);
  client_.understood = {"postDisconnect"};
  EXPECT_EQ(pauseOf(QWTaskNotification::postDisconnect), 15);
}

TEST_F(TaskNotificationTest, AFailureIsLogged) {
  client_.services = {"QWProClientCallback", "QWGearwrightClientCallback"};
  client_.understood = {"postError:forApp:", "postError:"};
  client_.failure = Error{std::errc::timed_out, "no answer"};
  QWTaskNotification::postTaskError("error");
  EXPECT_THAT(client_.sent, IsEmpty());
  EXPECT_THAT(logged(), Contains(HasSubstr("Exception in postTaskError:")));
}

class GrowlTest : public ServicesTest {
 protected:
  NotificationCenter::Observation observe(const std::string& name) {
    return NotificationCenter::shared().observe(name, [this, name](const UserInfo& info) {
      const PropertyList* context = info.find("clickContext");
      const Timestamp* date = context ? context->asDate() : nullptr;
      EXPECT_TRUE(date && *date == posted_);
      EXPECT_TRUE(MainThread::shared().isCurrent());
      told_.push_back(name);
    });
  }

  const Timestamp posted_{1794692117, 250'000'000};
  MainThread& main_ = MainThread::shared();
  std::vector<std::string> told_;
};

TEST_F(GrowlTest, CallsOutWhatBecameOfANotificationOnTheMainThread) {
  const auto clicked = observe("QWGrowlAlertClicked");
  const auto timedOut = observe("QWGrowlAlertTimedOut");
  fake_.clock.set(posted_);
  QWGrowl::postGrowlNotification("title", "text");
  fake_.clock.advance(std::chrono::seconds(5));
  std::thread platform([this] {
    fake_.notifications.listener(Outcome::Clicked, fake_.notifications.lastContext);
    fake_.notifications.listener(Outcome::Clicked, "nonsense");
    fake_.notifications.listener(Outcome::TimedOut, fake_.notifications.lastContext);
  });
  platform.join();
  EXPECT_THAT(told_, IsEmpty());
  main_.runPending();
  EXPECT_THAT(told_, ElementsAre("QWGrowlAlertClicked", "QWGrowlAlertTimedOut"));
}

TEST_F(GrowlTest, NobodyListensWhenTheProgramIsEnding) {
  {
    Runtime inner(fake_.platform);
    QWGrowl::postGrowlNotification("title", "text");
    EXPECT_TRUE(fake_.notifications.listener);
  }
  EXPECT_FALSE(fake_.notifications.listener);
}

TEST_F(GrowlTest, OneLineOfTheLogTellsOfAFailureAndOneSwitchTurnsAllOff) {
  fake_.notifications.answer = Error{std::errc::timed_out, "no answer"};
  QWGrowl::postGrowlNotification("Backup failed", "text");
  EXPECT_THAT(logged(), ElementsAre("Unable to show the notification \"Backup failed\": no answer"));
  writeFile(home_ / "Library/Preferences/com.quarrywell.global.plist",
            "<plist version=\"1.0\"><dict><key>growlDisabled</key><true/></dict></plist>");
  QWGrowl::postGrowlNotification("again", "text");
  EXPECT_EQ(fake_.notifications.posted.size(), 1u);
}

}  // namespace
}  // namespace vantory::test
