// The desktop helper program, with real peers on a bus of the test's own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/DesktopHelper.h"
#include "platform/linux/DesktopSession.h"
#include "platform/linux/LinuxMessaging.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/SessionBus.h"

namespace vantory::test {
namespace {

using testing::ElementsAre;
using Outcome = DesktopNotifications::Outcome;

class DesktopTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const std::string reason = SessionBus::missing(); !reason.empty()) GTEST_SKIP() << reason;
    bus_.emplace();
  }

  FakeUsers users_;
  std::optional<SessionBus> bus_;
  DesktopHelper helper_{[this] { return desktopHelperProgram(users_); }};
  LinuxDesktopNotifications notifications_{helper_, users_};
};

TEST_F(DesktopTest, ShowsANotification) {
  HelperProcess server = bus_->start("notification_server.py", {"body", "actions"});
  const Status posted = notifications_.post("Backup failed", "Disk <full> & gone", "then");
  ASSERT_TRUE(posted) << posted.error().text;
  EXPECT_THAT(heardBy(server),
              ElementsAre("Notify", "Vantory", "0", "Backup failed", "Disk <full> & gone", "default", "1", "-1"));
}

}  // namespace
}  // namespace vantory::test
