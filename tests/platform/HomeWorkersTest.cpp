// Processes of homes that hang, fail or say too little. What they do as owners the end-to-end tests of homes show.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <map>
#include <stdexcept>
#include <string>

#include "base/Paths.h"
#include "platform/posix/homes/PosixHomeWorkers.h"
#include "platform/posix/processes/PasswordDatabase.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

class HomeWorkersTest : public testing::Test {
 protected:
  // A home that even root may find an owner for.
  std::string home(const std::string& name) {
    const std::string path = folder_ / name;
    mkdir(path.c_str(), 0755);
    if (getuid() == 0 && chown(path.c_str(), kOwner, static_cast<gid_t>(-1)) != 0) throw std::runtime_error(path);
    return path;
  }
  // Does in each home what its name says.
  std::map<std::string, HomeResult> workIn(const std::vector<std::string>& names) {
    PosixHomeWorkers workers({.run =
                                  [] {
                                    const std::string task = paths::lastComponent(std::getenv("HOME"));
                                    if (task == "hang") pause();
                                    if (task == "crash") raise(SIGKILL);
                                    if (task == "throw") throw std::runtime_error(task);
                                    return HomeResult{.home = {},
                                                      .owner = {},
                                                      .why = std::string("a\nb\0c", 5),
                                                      .counts = HomeResult::Counts{1, 2, 3},
                                                      .output = std::string(200'000, 'x')};
                                  },
                              .patience = 20s,
                              .patienceWithWork = 1s});
    std::map<std::string, HomeResult> results;
    for (const std::string& name : names) EXPECT_TRUE(workers.start(home(name)));
    for (std::size_t i = 0; i < names.size(); ++i) {
      const auto result = workers.next();
      if (result) results[paths::lastComponent(result->home)] = *result;
    }
    return results;
  }

  static constexpr uid_t kOwner = 65534;
  ScratchFolder folder_;
};

TEST_F(HomeWorkersTest, NoneHoldsUpTheOthers) {
  if (getuid() == 0 && !databaseName(kOwner)) GTEST_SKIP() << "there is no user to own a home";
  auto results = workIn({"hang", "crash", "throw", "work"});
  EXPECT_THAT(results["hang"].why, HasSubstr("may be dead"));
  EXPECT_THAT(results["crash"].why, HasSubstr("by signal 9"));
  EXPECT_THAT(results["throw"].why, HasSubstr("ended before"));
  for (const char* name : {"hang", "crash", "throw"}) EXPECT_EQ(results[name].exitCode, 3) << name;
  const HomeResult& work = results["work"];
  EXPECT_EQ(work.why, std::string("a\nb\0c", 5));
  EXPECT_EQ(work.output.size(), 200'000U);
  ASSERT_TRUE(work.counts);
  EXPECT_EQ(work.counts->failed, 3U);
}

// Work that does use the processor, as for a file that has no end.
TEST_F(HomeWorkersTest, NoneMayTakeTooLong) {
  if (getuid() == 0 && !databaseName(kOwner)) GTEST_SKIP() << "there is no user to own a home";
  HomeWork work{.run =
                    [] {
                      while (std::time(nullptr) > 0) {
                      }
                      return HomeResult();
                    },
                .patienceWithWork = 100ms,
                .longest = 1s};
  PosixHomeWorkers workers(work);
  ASSERT_TRUE(workers.start(home("endless")));
  EXPECT_THAT(workers.next()->why, HasSubstr("too long"));
  work.longest = 1h;
  work.patienceAtEnd = 100ms;
  PosixHomeWorkers asked(work);
  ASSERT_TRUE(asked.start(home("endless")));
  raise(SIGTERM);
  EXPECT_FALSE(asked.next());
  EXPECT_THAT(asked.next()->why, HasSubstr("too long"));
}

TEST_F(HomeWorkersTest, WhereItHangsBeforeTheWorkTheOwnerIsTold) {
  if (getuid() == 0 && !databaseName(kOwner)) GTEST_SKIP() << "there is no user to own a home";
  const auto hang = [](const std::string&) -> std::optional<std::string> { return pause(), std::nullopt; };
  PosixHomeWorkers workers({.run = [] { return HomeResult(); }, .busyFile = hang, .patience = 1s});
  ASSERT_TRUE(workers.start(home("home")));
  const auto result = workers.next();
  EXPECT_EQ(result->exitCode, 1);
  EXPECT_NE(result->owner, "");
}

// A file system whose program never answers.
TEST_F(HomeWorkersTest, ADeadFileSystemIsGivenUp) {
  const std::string dead = folder_ / "dead";
  mkdir(dead.c_str(), 0755);
  const Descriptor program(open("/dev/fuse", O_RDWR));
  const std::string options = "fd=" + std::to_string(program.get()) + ",rootmode=40000,user_id=0,group_id=0";
  if (getuid() != 0 || unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("dead", dead.c_str(), "fuse", 0, options.c_str()) != 0)
    GTEST_SKIP() << "no file system can be mounted here";
  PosixHomeWorkers workers({.run = [] { return HomeResult(); }, .patience = 300ms});
  ASSERT_TRUE(workers.start(dead));
  const auto result = workers.next();
  const auto homes = workers.homesMatching(dead + "/*");
  EXPECT_EQ(umount2(dead.c_str(), MNT_DETACH), 0);
  ASSERT_TRUE(result);
  EXPECT_EQ(result->exitCode, 1);
  EXPECT_THAT(result->why, HasSubstr("may be dead"));
  ASSERT_FALSE(homes);
  EXPECT_EQ(homes.error().code, std::errc::timed_out);
}

}  // namespace
}  // namespace vantory::test
