// Who is at the machine.
#include <gtest/gtest.h>
#include <pwd.h>

#include <memory>

#include "platform/linux/system/LinuxUsers.h"
#include "platform/macos/system/MacUsers.h"
#include "tests/platform/Systems.h"
#include "tests/support/EnvironmentChange.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

// "daemon" stands for the person at the machine: everywhere in the password database, never the tests' own user.
constexpr const char* kPersonId = "1";

class UsersTest : public SystemTest {
 protected:
  void loginServiceSays(const std::string& seat, const std::string& session) {
    writeFile(state_ / "seats/seat0", "IS_SEAT0=1\n" + seat);
    writeFile(state_ / "sessions/c7", session);
  }
  std::string consoleUser() const {
    std::unique_ptr<Users> users;
    if (isMac)
      users = std::make_unique<MacUsers>();
    else
      users = std::make_unique<LinuxUsers>(state_.path());
    const std::optional<User> user = users->consoleUser();
    return user ? users->nameOf(*user) + " " + user->home : "nobody";
  }
  // As the system tells it of the user with that id, who is shown the screen.
  std::string consoleUser(const std::string& id) {
    loginServiceSays("ACTIVE=c7\n", "UID=" + id + "\nCLASS=user\n");
    const EnvironmentChange console("VANTORY_TEST_CONSOLE", id);
    return consoleUser();
  }

  ScratchFolder state_;
  const std::string person_ = std::string("daemon ") + getpwuid(1)->pw_dir;
  EnvironmentChange pkexec_{"PKEXEC_UID", std::nullopt};
  EnvironmentChange sudo_{"SUDO_UID", std::nullopt};
  EnvironmentChange console_{"VANTORY_TEST_CONSOLE", std::nullopt};
};

VANTORY_ON_EACH_SYSTEM(UsersTest);

TEST_P(UsersTest, APersonIsAtTheConsoleOrNobody) {
  const EnvironmentChange ignored("SUDO_UID", kPersonId);
  EXPECT_EQ(consoleUser("1"), person_);
  std::vector<std::string> nobodies = {"4000000", "4294967295"};
  const passwd* service = getpwnam("_apt");
  if (!isMac) nobodies.push_back("1 0");
  if (isMac) nobodies.insert(nobodies.end(), {"0", service ? std::to_string(service->pw_uid) : "0"});
  for (const std::string& id : nobodies) EXPECT_EQ(consoleUser(id), "nobody") << id;
  for (const char* seat : {"", "ACTIVE=c8\n", "ACTIVE=../sessions/c7\n"}) {
    loginServiceSays(seat, "UID=1\nCLASS=user\n");
    EXPECT_EQ(consoleUser(), "nobody") << seat;
  }
}

// There is always a login service on a Mac.
TEST_P(UsersTest, OnlyWithoutALoginServiceTheInvokingUserCounts) {
  const EnvironmentChange sudo("SUDO_UID", kPersonId);
  for (const char* unusable : {"", "-1", "0 ", "4294967296", "4294967295", "99999999999999999999"}) {
    const EnvironmentChange pkexec("PKEXEC_UID", unusable);
    EXPECT_EQ(consoleUser(), isMac ? "nobody" : person_) << unusable;
  }
}

}  // namespace
}  // namespace vantory::test
