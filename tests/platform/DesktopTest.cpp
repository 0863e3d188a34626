// The desktop helper program, with real peers on a bus of the test's own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <future>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/helpers/DesktopHelper.h"
#include "platform/linux/session/DesktopSession.h"
#include "platform/linux/session/LinuxDesktop.h"
#include "tests/support/DesktopFolders.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/SessionBus.h"

namespace vantory::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using Answer = TaskClient::Answer;
using Outcome = DesktopNotifications::Outcome;

const std::string kFirst = "QWProClientCallback";
const std::string kSecond = "QWGearwrightClientCallback";

class DesktopTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const std::string reason = SessionBus::missing(); !reason.empty()) GTEST_SKIP() << reason;
    bus_.emplace();
  }

  Answer sent(const std::string& service, const TaskMessage& message) {
    const Result<Answer> answer = client_.send(service, message);
    EXPECT_TRUE(answer) << answer.error().text;
    return answer ? *answer : Answer::NotRegistered;
  }

  FakeUsers users_;
  std::optional<SessionBus> bus_;
  int started_ = 0;
  DesktopHelper helper_{[this] {
    ++started_;
    return desktopHelperProgram(users_);
  }};
  LinuxDesktopNotifications notifications_{helper_, users_};
  LinuxTaskClient client_{helper_, users_};
};

TEST_F(DesktopTest, ShowsNotificationsAndTellsWhatBecameOfItsOwnOnly) {
  {
    HelperProcess simple = bus_->start("notification_server.py", {"body", "body-markup"});
    ASSERT_TRUE(notifications_.post("Backup <failed> & \xff", "Disk <b>full</b> & \"gone\"", ""));
    EXPECT_THAT(heardBy(simple), ElementsAre("Notify", "Vantory", "0", "Backup <failed> & \xef\xbf\xbd",
                                             "Disk &lt;b&gt;full&lt;/b&gt; &amp; &quot;gone&quot;", "", "1", "-1"));
  }
  HelperProcess server = bus_->start("notification_server.py", {"body", "actions"});
  auto pair = Channel::pair();
  ASSERT_TRUE(pair);
  notifications_.listen([&](Outcome outcome, const std::string& context) {
    (void)pair->own.send({outcome == Outcome::Clicked ? "clicked" : "timed out", context});
  });
  for (const char* context : {"first", "second"}) {
    ASSERT_TRUE(notifications_.post("Title", "Disk <full> & gone", context));
    EXPECT_THAT(heardBy(server),
                ElementsAre("Notify", "Vantory", "0", "Title", "Disk <full> & gone", "default", "1", "-1"));
  }
  for (const Message& signal : std::vector<Message>{{"ActionInvoked", "7", "default"},
                                                    {"ActionInvoked", "41", "other"},
                                                    {"NotificationClosed", "7", "1"},
                                                    {"ActionInvoked", "42", "default"},
                                                    {"NotificationClosed", "41", "1"}})
    ASSERT_TRUE(server.channel().send(signal));
  EXPECT_THAT(*pair->other.receive(10s), ElementsAre("clicked", "second"));
  EXPECT_THAT(*pair->other.receive(10s), ElementsAre("timed out", "first"));
}

TEST_F(DesktopTest, WhoNeverAnswersIsAnErrorThatTheHelperOutlives) {
  EXPECT_EQ(notifications_.post("Title", "Text", "").error().text, "Nothing on this desktop shows notifications.");
  HelperProcess server = bus_->start("notification_server.py", {"hangs"});
  EXPECT_EQ(notifications_.post("Title", "Text", "").error().code, std::errc::timed_out);
  HelperProcess dying = bus_->start("task_client.py", {kFirst, "dies", "postError"});
  EXPECT_FALSE(client_.send(kFirst, {"postError:", {"x"}}));
  HelperProcess hanging = bus_->start("task_client.py", {kSecond, "hangs", "postError"});
  EXPECT_EQ(client_.send(kSecond, {"postError:", {"x"}}).error().code, std::errc::timed_out);
  LinuxAnnouncements announcements(helper_, users_);
  EXPECT_EQ(announcements.announce("no name").error().code, std::errc::invalid_argument);
  EXPECT_EQ(started_, 1);
}

TEST_F(DesktopTest, AFrozenBusServesAgainWhenItGoesOn) {
  HelperProcess client = bus_->start("task_client.py", {kFirst, "answers", "postError"});
  bus_->signal(SIGSTOP);
  EXPECT_EQ(client_.send(kFirst, {"postError:", {"x"}}).error().code, std::errc::timed_out);
  EXPECT_EQ(notifications_.post("Title", "Text", "").error().code, std::errc::timed_out);
  bus_->signal(SIGCONT);
  EXPECT_TRUE(soon([&] {
    const Result<Answer> answer = client_.send(kFirst, {"postError:", {"x"}});
    return answer && *answer == Answer::Received;
  }));
  EXPECT_EQ(started_, 1);
}

TEST_F(DesktopTest, AsksFromSeveralThreadsAtOnce) {
  HelperProcess client = bus_->start("task_client.py", {kFirst, "answers", "postError"});
  std::vector<std::future<bool>> askers;
  for (int i = 0; i < 4; ++i)
    askers.push_back(std::async(std::launch::async, [&] {
      bool right = true;
      for (int n = 0; n < 20; ++n)
        right = right && sent(kFirst, {"postError:", {"x"}}) == Answer::Received &&
                sent(kSecond, {"postError:", {"x"}}) == Answer::NotRegistered;
      return right;
    }));
  for (auto& asker : askers) EXPECT_TRUE(asker.get());
  EXPECT_EQ(started_, 1);
}

// A Python script in place of the real program; `s` is the conversation.
TEST(DesktopHelperTest, NonsenseIsAnErrorAndTheNextUseStartsAnew) {
  std::string script;
  DesktopHelper helper([&] {
    const std::string code = "import socket\ns = socket.socket(fileno=0)\ns.recv(9)\n" + script;
    return ChildProgram{.path = "/usr/bin/python3", .arguments = {"-c", code}};
  });
  for (const std::string answer : {"b'what\\0'", "b'error\\0'", "b'error\\00099999999999\\0y\\0'",
                                   "b'error\\0000\\0y\\0'", "b'cut'", "b'x' * 70000"}) {
    script = "s.send(" + answer + ")\n";
    EXPECT_FALSE(helper.ask({"verb"}, 10s)) << answer;
  }
  script =
      "s.send(b'error\\0002\\0text\\0')\ns.recv(9)\ns.send(b'event\\0odd\\0')\ns.send(b'ok\\0one\\0\\0')\ns.recv(9)\ns."
      "recv(9)\n";
  EXPECT_EQ(helper.ask({"verb"}, 10s).error().text, "text");
  EXPECT_EQ(helper.ask({"a", std::string(kMaxMessageBytes, 'x')}, 10s).error().code, std::errc::message_size);
  EXPECT_EQ(helper.ask({std::string("a\0b", 3)}, 10s).error().code, std::errc::invalid_argument);
  EXPECT_THAT(*helper.ask({"verb"}, 10s), ElementsAre("one", ""));
  EXPECT_EQ(helper.ask({"verb"}, std::chrono::milliseconds(300)).error().code, std::errc::timed_out);
}

}  // namespace
}  // namespace vantory::test
