#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "platform/linux/LinuxUsers.h"
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
    const std::optional<User> user = LinuxUsers(state_.path()).consoleUser();
    return user ? user->name + " " + user->home : "nobody";
  }
  std::string homeOfProcess() const {
    const std::optional<User> user = LinuxUsers(state_.path()).processUser();
    return user ? user->home : "none";
  }

  ScratchFolder state_;
  ScratchFolder home_;
  const std::string person_ = std::string("daemon ") + getpwuid(1)->pw_dir;
  const std::string ownHome_ = getpwuid(getuid())->pw_dir;
  const std::string ownName_ = getpwuid(getuid())->pw_name;
  EnvironmentChange homeVariable_{"HOME", home_.path()};
  EnvironmentChange pkexec_{"PKEXEC_UID", std::nullopt};
  EnvironmentChange sudo_{"SUDO_UID", std::nullopt};
};

TEST_F(UsersTest, TheActiveSessionDecidesWhoIsAtTheConsole) {
  const EnvironmentChange ignored("PKEXEC_UID", "0");
  loginServiceSays("ACTIVE=c7\nACTIVE_UID=1\nSESSIONS=c7\n", "UID=1\nUSER=daemon\nCLASS=user\n");
  EXPECT_EQ(consoleUser(), person_);
}

TEST_F(UsersTest, NobodyIsAtTheConsoleWithoutAPersonsSession) {
  const EnvironmentChange ignored("SUDO_UID", kPersonId);
  const std::string person = "UID=1\nCLASS=user\n";
  for (const auto& [seat, session] : std::vector<std::pair<std::string, std::string>>{
           {"", person},
           {"ACTIVE=c8\n", person},
           {"ACTIVE=../sessions/c7\n", person},
           {"ACTIVE=c7\n", "UID=1\nCLASS=greeter\n"},
           {"ACTIVE=c7\n", "UID=4294967295\nCLASS=user\n"},
           {"ACTIVE=c7\n", "UID=1 0\nCLASS=user\n"},
       }) {
    loginServiceSays(seat, session);
    EXPECT_EQ(consoleUser(), "nobody") << seat << session;
  }
}

TEST_F(UsersTest, WithoutALoginServiceTheInvokingUserCounts) {
  {
    const EnvironmentChange pkexec("PKEXEC_UID", kPersonId);
    const EnvironmentChange sudo("SUDO_UID", "0");
    EXPECT_EQ(consoleUser(), person_);
  }
  const EnvironmentChange sudo("SUDO_UID", kPersonId);
  for (const char* unusable : {"", "-1", "+0", "0x0", "0 ", "4294967296", "4294967295", "99999999999999999999"}) {
    const EnvironmentChange pkexec("PKEXEC_UID", unusable);
    EXPECT_EQ(consoleUser(), person_) << unusable;
  }
}

TEST_F(UsersTest, WithoutAnyoneElseTheOwnUserCountsInAHomeOfItsOwn) {
  EXPECT_EQ(consoleUser(), ownName_ + " " + home_.path());
  if (getuid() == 0) {
    ASSERT_EQ(chown(home_.path().c_str(), 1, 1), 0);
    EXPECT_EQ(homeOfProcess(), ownHome_);
  } else {
    setenv("HOME", "/usr", 1);
  }
  EXPECT_EQ(consoleUser(), ownName_ + " " + ownHome_);
}

TEST_F(UsersTest, HomeIsNormalisedAndMustBeAbsolute) {
  setenv("HOME", ("/" + home_.path() + "/./a/..//").c_str(), 1);
  EXPECT_EQ(homeOfProcess(), home_.path());
  for (const char* unusable : {"", "relative", "~", "/", "//"}) {
    setenv("HOME", unusable, 1);
    EXPECT_EQ(homeOfProcess(), ownHome_) << unusable;
  }
}

}  // namespace
}  // namespace vantory::test
