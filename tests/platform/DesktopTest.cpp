// The desktop helper program, with real peers on a bus of the test's own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <future>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/DesktopHelper.h"
#include "platform/linux/DesktopSession.h"
#include "platform/linux/LinuxMessaging.h"
#include "tests/support/DesktopFolders.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/SessionBus.h"

namespace vantory::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Answer = TaskClient::Answer;
using Outcome = DesktopNotifications::Outcome;

const std::string kFirst = "QWProClientCallback";
const std::string kSecond = "QWGearwrightClientCallback";

std::chrono::milliseconds timeOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

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
  std::string shown(HelperProcess& server, const std::string& text) {
    const Status posted = notifications_.post("Title", text, "");
    EXPECT_TRUE(posted) << posted.error().text;
    const Message message = heardBy(server);
    return message.size() > 4 ? message[4] : "";
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

TEST_F(DesktopTest, ShowsANotificationAsTheServerReadsText) {
  {
    HelperProcess plain = bus_->start("notification_server.py", {"body", "actions"});
    ASSERT_TRUE(notifications_.post("Backup <failed> & \xff", "Disk <full> & gone", ""));
    EXPECT_THAT(heardBy(plain), ElementsAre("Notify", "Vantory", "0", "Backup <failed> & \xef\xbf\xbd",
                                            "Disk <full> & gone", "default", "1", "-1"));
  }
  HelperProcess simple = bus_->start("notification_server.py", {"body", "body-markup"});
  ASSERT_TRUE(notifications_.post("Backup <failed>", "Disk <b>full</b> & \"gone\"", ""));
  EXPECT_THAT(heardBy(simple), ElementsAre("Notify", "Vantory", "0", "Backup <failed>",
                                           "Disk &lt;b&gt;full&lt;/b&gt; &amp; &quot;gone&quot;", "", "1", "-1"));
  EXPECT_EQ(started_, 1);
}

TEST_F(DesktopTest, TellsWhatBecameOfItsOwnNotificationsOnly) {
  HelperProcess server = bus_->start("notification_server.py", {"body", "actions"});
  auto pair = Channel::pair();
  ASSERT_TRUE(pair);
  notifications_.listen([&](Outcome outcome, const std::string& context) {
    (void)pair->own.send({outcome == Outcome::Clicked ? "clicked" : "timed out", context});
  });
  const auto told = [&] {
    const Result<Message> message = pair->other.receive(10s);
    return message ? *message : Message{};
  };
  for (const char* context : {"first", "second"}) {
    ASSERT_TRUE(notifications_.post("Title", "Text", context));
    heardBy(server);
  }
  for (const Message& signal : std::vector<Message>{{"ActionInvoked", "7", "default"},
                                                    {"ActionInvoked", "41", "other"},
                                                    {"NotificationClosed", "7", "1"},
                                                    {"ActionInvoked", "42", "default"},
                                                    {"NotificationClosed", "42", "2"},
                                                    {"ActionInvoked", "42", "default"},
                                                    {"NotificationClosed", "41", "1"}})
    ASSERT_TRUE(server.channel().send(signal));
  EXPECT_THAT(told(), ElementsAre("clicked", "second"));
  EXPECT_THAT(told(), ElementsAre("timed out", "first"));

  ASSERT_TRUE(notifications_.post("Title", "Text", "third"));
  notifications_.listen(nullptr);
  ASSERT_TRUE(server.channel().send({"NotificationClosed", "43", "1"}));
  EXPECT_EQ(pair->other.receive(200ms).error().code, std::errc::timed_out);
}

TEST_F(DesktopTest, ARealServerTellsOfAClick) {
  for (const char* program : {"/usr/bin/dunst", "/usr/bin/Xvfb"})
    if (!exists(program)) GTEST_SKIP() << program << " is not installed";
  HelperProcess server = bus_->start("dunst.py");
  std::promise<std::string> clicked;
  notifications_.listen([&](Outcome outcome, const std::string& context) {
    if (outcome == Outcome::Clicked) clicked.set_value(context);
  });
  ASSERT_TRUE(notifications_.post("Backup failed", "Disk <full>", "then"));
  ASSERT_TRUE(server.channel().send({"click"}));
  std::future<std::string> context = clicked.get_future();
  ASSERT_EQ(context.wait_for(10s), std::future_status::ready);
  EXPECT_EQ(context.get(), "then");
}

TEST_F(DesktopTest, ADesktopWithoutNotificationsIsToldAtOnceAndASilentOneInTime) {
  EXPECT_EQ(notifications_.post("Title", "Text", "").error().text, "Nothing on this desktop shows notifications.");
  HelperProcess server = bus_->start("notification_server.py", {"hangs"});
  EXPECT_LT(timeOf([&] { EXPECT_EQ(notifications_.post("Title", "Text", "").error().code, std::errc::timed_out); }),
            2900ms);
  EXPECT_LT(timeOf([&] { EXPECT_EQ(notifications_.post("Title", "Text", "").error().code, std::errc::timed_out); }), 1s)
      << "not for each message";
  EXPECT_EQ(started_, 1) << "the helper program does not suffer from a silent server";
}

TEST_F(DesktopTest, AnAnnouncementReachesWhoeverListens) {
  HelperProcess listener = bus_->start("announcement_listener.py");
  LinuxAnnouncements announcements(helper_, users_);
  ASSERT_TRUE(announcements.announce("QWShortcutKeysReload"));
  EXPECT_THAT(heardBy(listener), ElementsAre("QWShortcutKeysReload"));
  EXPECT_EQ(announcements.announce("no name").error().code, std::errc::invalid_argument);
}

TEST_F(DesktopTest, ATaskClientGetsEveryMessageItUnderstands) {
  HelperProcess client =
      bus_->start("task_client.py", {kFirst, "answers", "postErrorStringuserInfo", "postErrorforApp",
                                     "postFinishedTask", "incrementRemoteProgress", "postDisconnect"});
  EXPECT_EQ(sent(kFirst, {"postErrorString:userInfo:", {"Größe \xff\n", "Vantory"}}), Answer::Received);
  EXPECT_THAT(heardBy(client), ElementsAre("postErrorStringuserInfo", "Größe \xef\xbf\xbd\n", "Vantory"));
  EXPECT_EQ(sent(kFirst, {"postError:forApp:", {"", "Vantory"}}), Answer::Received);
  EXPECT_THAT(heardBy(client), ElementsAre("postErrorforApp", "", "Vantory"));
  for (const std::string name : {"postFinishedTask", "incrementRemoteProgress", "postDisconnect"}) {
    EXPECT_EQ(sent(kFirst, {name}), Answer::Received);
    EXPECT_THAT(heardBy(client), ElementsAre(name));
  }
  EXPECT_EQ(sent(kFirst, {"postErrorString:", {"text"}}), Answer::NotUnderstood);
  EXPECT_EQ(sent(kFirst, {"postError:", {"text"}}), Answer::NotUnderstood);
  EXPECT_EQ(sent(kSecond, {"postDisconnect"}), Answer::NotRegistered);
  EXPECT_THAT(heardBy(client, 50ms), IsEmpty());
}

TEST_F(DesktopTest, ATaskClientIsNeverStartedForAMessage) {
  const ScratchFolder folder;
  for (const std::string& service : {kFirst, kSecond})
    bus_->offer("com.quarrywell." + service, "/usr/bin/touch " + (folder / "started"));
  EXPECT_EQ(sent(kFirst, {"postDisconnect"}), Answer::NotRegistered);
  EXPECT_EQ(sent(kSecond, {"postDisconnect"}), Answer::NotRegistered);
  std::this_thread::sleep_for(200ms);
  EXPECT_FALSE(exists(folder / "started"));
}

TEST_F(DesktopTest, ATaskClientThatHangsOrDiesHoldsNothingUpForLong) {
  HelperProcess dying = bus_->start("task_client.py", {kFirst, "dies", "postDisconnect"});
  EXPECT_LT(timeOf([&] { EXPECT_FALSE(client_.send(kFirst, {"postDisconnect"})); }), 1900ms);
  HelperProcess hanging = bus_->start("task_client.py", {kSecond, "hangs", "postDisconnect"});
  EXPECT_LT(timeOf([&] { EXPECT_EQ(client_.send(kSecond, {"postDisconnect"}).error().code, std::errc::timed_out); }),
            2900ms);
  EXPECT_EQ(started_, 1);
}

TEST_F(DesktopTest, AFrozenBusIsWaitedForOnceAndServesAgainWhenItGoesOn) {
  HelperProcess client = bus_->start("task_client.py", {kFirst, "answers", "postDisconnect"});
  bus_->signal(SIGSTOP);
  const auto time = timeOf([&] {
    for (int i = 0; i < 10; ++i) {
      EXPECT_EQ(client_.send(kFirst, {"postDisconnect"}).error().code, std::errc::timed_out);
      EXPECT_EQ(notifications_.post("Title", "Text", "").error().code, std::errc::timed_out);
    }
  });
  EXPECT_LT(time, 2900ms);
  bus_->signal(SIGCONT);
  EXPECT_TRUE(soon([&] {
    const Result<Answer> answer = client_.send(kFirst, {"postDisconnect"});
    return answer && *answer == Answer::Received;
  }));
  EXPECT_EQ(started_, 1);
}

TEST_F(DesktopTest, WithoutABusNothingIsStarted) {
  const ScratchFolder folder;
  const EnvironmentChange address("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
  const EnvironmentChange runtime("XDG_RUNTIME_DIR", folder.path());
  EXPECT_EQ(sent(kFirst, {"postDisconnect"}), Answer::NotRegistered);
  EXPECT_FALSE(notifications_.post("Title", "Text", ""));
  EXPECT_EQ(started_, 0);
  const EnvironmentChange stale("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
  EXPECT_EQ(sent(kFirst, {"postDisconnect"}), Answer::NotRegistered);
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

// A program that does what it is told in Python instead of being the real one; `s` is the conversation.
class OddHelperTest : public testing::Test {
 protected:
  Result<Message> ask(const std::string& script, Message request = {"verb"}, std::chrono::milliseconds limit = 10s) {
    script_ = script;
    return helper_.ask(request, limit);
  }

  std::string script_;
  DesktopHelper helper_{[this]() -> Result<ChildProgram> {
    return ChildProgram{.path = "/usr/bin/python3",
                        .arguments = {"-c", "import socket, time\ns = socket.socket(fileno=0)\n" + script_}};
  }};
};

TEST_F(OddHelperTest, ReadsAnswersAndErrors) {
  EXPECT_THAT(*ask("s.recv(9)\ns.send(b'event\\0odd\\0')\ns.send(b'ok\\0one\\0\\0')\n"
                   "s.recv(9)\ns.send(b'error\\0002\\0text\\0')\ns.recv(9)\n"),
              ElementsAre("one", ""));
  const Result<Message> refused = ask("");
  EXPECT_EQ(refused.error().code, std::errc::no_such_file_or_directory);
  EXPECT_EQ(refused.error().text, "text");
  EXPECT_EQ(ask("", {"a", std::string(kMaxMessageBytes, 'x')}).error().code, std::errc::message_size);
}

TEST_F(OddHelperTest, NonsenseIsAnErrorAndTheNextUseStartsAnew) {
  for (const std::string answer :
       {"b'what\\0'", "b'error\\0'", "b'error\\0x\\0y\\0'", "b'error\\00099999999999\\0y\\0'", "b'error\\0000\\0y\\0'",
        "b'cut'", "b'x' * 70000"}) {
    EXPECT_FALSE(ask("s.recv(9)\ns.send(" + answer + ")\n")) << answer;
    EXPECT_FALSE(ask("")) << "that program has ended";
  }
  EXPECT_TRUE(ask("s.recv(9)\ns.send(b'ok\\0')\ntime.sleep(9)\n"));
}

TEST_F(OddHelperTest, SilenceIsBounded) {
  EXPECT_EQ(ask("s.recv(9)\n").error().code, std::errc::not_connected);
  EXPECT_LT(
      timeOf([&] { EXPECT_EQ(ask("s.recv(9)\ns.recv(9)\n", {"verb"}, 300ms).error().code, std::errc::timed_out); }),
      2s);
  EXPECT_EQ(DesktopHelper([] { return ChildProgram{.path = "/nowhere/program"}; }).ask({"verb"}, 1s).error().code,
            std::errc::no_such_file_or_directory);
}

}  // namespace
}  // namespace vantory::test
