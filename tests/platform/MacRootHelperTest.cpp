// The dialog of a Mac and the helper behind it, with stand-ins for the system's service.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "platform/macos/rights/MacPrivilegedRunner.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

using namespace darwin;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr uid_t kUser = 64203;
// Of the superuser's, in folders of the superuser's: what is started is the service's matter here.
constexpr const char* kSafeProgram = "/usr/bin/env";

// What the service answers, what it was asked, and the process that it started last.
struct Service {
  AuthorizationStatus rights = kGranted;
  AuthorizationStatus starting = kGranted;
  uid_t caller = kUser;
  std::vector<std::string> asked = {};
  pid_t helper = -1;
} service;

const AuthorizationHandle kHandle = reinterpret_cast<AuthorizationHandle>(&service);

AuthorizationStatus create(const AuthorizationItems*, const AuthorizationItems*, AuthorizationFlags,
                           AuthorizationHandle* made) {
  service.asked.emplace_back("create");
  *made = kHandle;
  return kGranted;
}

AuthorizationStatus copyRights(AuthorizationHandle, const AuthorizationItems* rights, const AuthorizationItems*,
                               AuthorizationFlags flags, AuthorizationItems**) {
  service.asked.emplace_back(rights->items[0].name);
  EXPECT_EQ(flags, kInteractionAllowed | kExtendRights | kPreAuthorize);
  return service.rights;
}

// As the system does: effectively the superuser's, and by its real user the caller's.
AuthorizationStatus execute(AuthorizationHandle, const char* tool, AuthorizationFlags, char* const*, FILE** stream) {
  service.asked.emplace_back(tool);
  if (service.starting != kGranted) return service.starting;
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return -1;
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "root_helper_on_darwin";
  service.helper = fork();
  if (service.helper == 0) {
    dup2(ends[1], STDIN_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    if (setresgid(service.caller, service.caller, service.caller) != 0 || setresuid(service.caller, 0, 0) != 0)
      _exit(1);
    execl(program.c_str(), program.c_str(), nullptr);
    _exit(1);
  }
  close(ends[1]);
  *stream = fdopen(ends[0], "r+");
  return kGranted;
}

AuthorizationStatus handDown(AuthorizationHandle* right, AuthorizationFlags) {
  *right = kHandle;
  return kGranted;
}

AuthorizationStatus release(AuthorizationHandle, AuthorizationFlags flags) {
  service.asked.emplace_back(flags == kDestroyRights ? "destroy" : "free");
  return kGranted;
}

const AuthorizationCalls* calls() {
  static const AuthorizationCalls kCalls{create, copyRights, execute, handDown, release};
  return &kCalls;
}

class KeptLog : public SystemLog {
 public:
  void write(std::string_view message) override { text.append(message); }
  void record(std::string_view message) override { write(message); }
  std::string text;
};

class MacRootHelperTest : public testing::Test {
 protected:
  void SetUp() override {
    service = {};
    ignoreFailedWrites();
    if (geteuid() != 0) GTEST_SKIP() << "the helper works for the superuser only";
    if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
      GTEST_SKIP() << "mount namespaces are not permitted here";
    writeFile(scratch / "passwd", readFile("/etc/passwd") + "vanna:x:64203:64203::" + home + ":/bin/sh\n");
    ASSERT_EQ(mount((scratch / "passwd").c_str(), "/etc/passwd", nullptr, MS_BIND, nullptr), 0);
    chmod(scratch.path().c_str(), 0755);
    writeFile(home + "/own", "own");
    writeFile(scratch / "foreign/secret", "secret");
    for (const std::string& each : {home, home + "/own"}) ASSERT_EQ(chown(each.c_str(), kUser, kUser), 0);
  }
  void TearDown() override { umount2("/etc/passwd", MNT_DETACH); }
  static int endOfHelper() {
    int status = 0;
    waitpid(service.helper, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  static int copies(MacPrivilegedRunner& runner, const std::string& from, const std::string& to) {
    return runner.run("/bin/cp", {"-f", "-p", "-R", from, to});
  }

  ScratchFolder scratch;
  const std::string home = scratch / "home";
  KeptLog log;
};

TEST_F(MacRootHelperTest, ServesWhoHasGivenAPassword) {
  MacPrivilegedRunner runner(log, calls, nullptr, kSafeProgram);
  EXPECT_FALSE(runner.isAuthorized());
  EXPECT_EQ(copies(runner, home + "/own", home + "/copy"), PrivilegedRunner::kFailed) << "nothing without the right";
  ASSERT_TRUE(runner.authorize()) << log.text;
  EXPECT_TRUE(runner.authorize() && runner.isAuthorized());
  EXPECT_THAT(service.asked, ElementsAre("create", "system.privilege.admin", kSafeProgram, "destroy"))
      << "asked once, and not kept";
  EXPECT_EQ(copies(runner, home + "/own", home + "/copy"), PrivilegedRunner::kDone);
  struct stat status {};
  ASSERT_EQ(stat((home + "/copy").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, kUser);
  EXPECT_EQ(copies(runner, scratch / "foreign/secret", home + "/got"), PrivilegedRunner::kFailed);
  EXPECT_EQ(runner.run("machine-log", {"open", "x.log", ""}), PrivilegedRunner::kFailed) << "not this helper's";
  runner.release();
  EXPECT_EQ(endOfHelper(), 0);
  EXPECT_EQ(copies(runner, home + "/own", home + "/copy"), PrivilegedRunner::kFailed);
}

TEST_F(MacRootHelperTest, TellsWhyThereIsNoRight) {
  const auto refused = [&](AuthorizationStatus rights, AuthorizationStatus starting = kGranted) {
    service = {.rights = rights, .starting = starting};
    log.text.clear();
    MacPrivilegedRunner runner(log, calls, nullptr, kSafeProgram);
    EXPECT_FALSE(runner.authorize() || runner.isAuthorized());
    EXPECT_EQ(service.asked.back(), "destroy");
    return log.text;
  };
  EXPECT_EQ(refused(kCancelled), "");
  EXPECT_THAT(refused(kNobodyToAsk), HasSubstr("nobody can be asked"));
  EXPECT_THAT(refused(-60005), HasSubstr("error -60005"));
  EXPECT_THAT(refused(kGranted, -60031), HasSubstr("Unable to start"));
  log.text.clear();
  EXPECT_FALSE(MacPrivilegedRunner(log, [] { return static_cast<const AuthorizationCalls*>(nullptr); }).authorize());
  EXPECT_THAT(log.text, HasSubstr("no service"));
}

TEST_F(MacRootHelperTest, StartsNoProgramThatSomebodyCouldExchange) {
  const auto refuses = [&](const std::string& helper) {
    service = {};
    return !MacPrivilegedRunner(log, calls, nullptr, helper).authorize() && service.asked.empty();
  };
  writeFile(scratch / "helper", "");
  EXPECT_TRUE(refuses(scratch / "helper")) << "in a folder that others may write to";
  EXPECT_TRUE(refuses(home + "/own") && refuses(scratch / "missing") && refuses("/usr/bin") &&
              refuses("/usr/../usr/bin/env"));
  ASSERT_EQ(mount("tmpfs", scratch.path().c_str(), "tmpfs", 0, "mode=755"), 0);
  ASSERT_EQ(mount("tmpfs", "/mnt", "tmpfs", 0, "mode=755"), 0);
  writeFile("/mnt/folder/helper", "");
  EXPECT_FALSE(refuses("/mnt/folder/helper"));
  ASSERT_EQ(chmod("/mnt/folder", 0775), 0);
  EXPECT_TRUE(refuses("/mnt/folder/helper"));
  ASSERT_EQ(chmod("/mnt/folder", 0755) | chown("/mnt/folder/helper", kUser, kUser), 0);
  EXPECT_TRUE(refuses("/mnt/folder/helper"));
  ASSERT_EQ(symlink("/usr/bin/env", "/mnt/folder/link"), 0);
  EXPECT_TRUE(refuses("/mnt/folder/link"));
  umount2("/mnt", MNT_DETACH);
  umount2(scratch.path().c_str(), MNT_DETACH);
}

TEST_F(MacRootHelperTest, WorksForAPersonOnly) {
  for (const uid_t caller : {uid_t{0}, uid_t{64999}, uid_t{1}}) {
    service = {.caller = caller};
    EXPECT_FALSE(MacPrivilegedRunner(log, calls, nullptr, kSafeProgram).authorize()) << caller;
    EXPECT_EQ(endOfHelper(), 77) << caller;
  }
  ASSERT_EQ(chown(home.c_str(), 1, 1), 0);
  service = {};
  EXPECT_FALSE(MacPrivilegedRunner(log, calls, nullptr, kSafeProgram).authorize()) << "whose home is another's";
  EXPECT_EQ(endOfHelper(), 77);
}

TEST_F(MacRootHelperTest, UsesARightThatWasHandedDown) {
  MacPrivilegedRunner runner(log, calls, kHandle, kSafeProgram);
  EXPECT_TRUE(runner.isAuthorized() && service.asked.empty());
  EXPECT_EQ(copies(runner, home + "/own", home + "/copy"), PrivilegedRunner::kDone);
  EXPECT_THAT(service.asked, ElementsAre(kSafeProgram, "free")) << "no dialog, and it stays the other program's";
  kill(service.helper, SIGKILL);
  endOfHelper();
  EXPECT_EQ(copies(runner, home + "/own", home + "/copy"), PrivilegedRunner::kFailed);
  EXPECT_FALSE(runner.isAuthorized()) << "it has gone with its helper";
}

}  // namespace
}  // namespace vantory::test
