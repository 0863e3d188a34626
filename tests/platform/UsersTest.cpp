#include <gtest/gtest.h>
#include <pwd.h>

#include "platform/linux/system/LinuxUsers.h"
#include "tests/support/EnvironmentChange.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

// "daemon" stands for the person at the machine: everywhere in the password database, never the tests' own user.
constexpr const char* kPersonId = "1";

class UsersTest : public ::testing::Test {
 protected:
  void loginServiceSays(const std::string& seat, const std::string& session) {
    writeFile(state_ / "seats/seat0", "IS_SEAT0=1\n" + seat);
    writeFile(state_ / "sessions/c7", session);
  }
  std::string consoleUser() const {
    const LinuxUsers users(state_.path());
    const std::optional<User> user = users.consoleUser();
    return user ? users.nameOf(*user) + " " + user->home : "nobody";
  }

  ScratchFolder state_;
  const std::string person_ = std::string("daemon ") + getpwuid(1)->pw_dir;
  EnvironmentChange pkexec_{"PKEXEC_UID", std::nullopt};
  EnvironmentChange sudo_{"SUDO_UID", std::nullopt};
};

TEST_F(UsersTest, NobodyIsAtTheConsoleWithoutAPersonsSession) {
  const EnvironmentChange ignored("SUDO_UID", kPersonId);
  const std::string person = "UID=1\nCLASS=user\n";
  for (const auto& [seat, session] : std::vector<std::pair<std::string, std::string>>{
           {"ACTIVE=c8\n", person},
           {"ACTIVE=../sessions/c7\n", person},
           {"ACTIVE=c7\n", "UID=4294967295\nCLASS=user\n"},
           {"ACTIVE=c7\n", "UID=1 0\nCLASS=user\n"},
       }) {
    loginServiceSays(seat, session);
    EXPECT_EQ(consoleUser(), "nobody") << seat << session;
  }
}

TEST_F(UsersTest, WithoutALoginServiceTheInvokingUserCounts) {
  const EnvironmentChange sudo("SUDO_UID", kPersonId);
  for (const char* unusable : {"", "-1", "0 ", "4294967296", "4294967295", "99999999999999999999"}) {
    const EnvironmentChange pkexec("PKEXEC_UID", unusable);
    EXPECT_EQ(consoleUser(), person_) << unusable;
  }
}

}  // namespace
}  // namespace vantory::test
