// The lock helper itself, started by an ordinary user on a file system that knows the immutable flag.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <linux/fs.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "platform/linux/files/LinuxFileMetadata.h"
#include "platform/linux/locks/LockHelper.h"
#include "platform/linux/locks/LockProtocol.h"
#include "platform/posix/processes/ChildProgram.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr uid_t kUser = 64201;
constexpr std::chrono::seconds kPatience{20};
constexpr const char* kSetpriv = "/usr/bin/setpriv";

std::vector<std::string> asUser(std::vector<std::string> command) {
  const std::string user = std::to_string(kUser);
  std::vector<std::string> arguments{"--reuid=" + user, "--regid=" + user, "--clear-groups"};
  arguments.insert(arguments.end(), command.begin(), command.end());
  return arguments;
}

int exitCodeOf(const ChildProgram& program) {
  const auto child = startChild(program);
  if (!child) return -1;
  int status = 0;
  waitpid(*child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

unsigned flagsOf(const std::string& path) {
  const Descriptor item(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW));
  unsigned flags = 0;
  if (ioctl(item.get(), FS_IOC_GETFLAGS, &flags) != 0) throw std::runtime_error("no flags: " + path);
  return flags;
}

void setFlags(const std::string& path, unsigned flags) {
  const Descriptor item(open(path.c_str(), O_RDONLY));
  if (ioctl(item.get(), FS_IOC_SETFLAGS, &flags) != 0) throw std::runtime_error("no flags: " + path);
}

bool isLocked(const std::string& path) {
  return (flagsOf(path) & FS_IMMUTABLE_FL) != 0;
}

std::string number(int error) {
  return std::to_string(error);
}

// As setcap does.
bool giveCapabilities(const std::string& program, std::uint32_t capabilities) {
  vfs_cap_data data{};
  data.magic_etc = VFS_CAP_REVISION_2 | VFS_CAP_FLAGS_EFFECTIVE;
  data.data[0].permitted = capabilities;
  return setxattr(program.c_str(), "security.capability", &data, sizeof data, 0) == 0;
}

constexpr std::uint32_t kImmutable = 1U << CAP_LINUX_IMMUTABLE;

// An ext4 file system of the test's own, with the helper on it.
class LockHelperTest : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser mounts file systems and gives capabilities";
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
      GTEST_SKIP() << "no mounts of its own are to be had here";
    const std::string image = scratch / "image";
    writeFile(image, "");
    ASSERT_EQ(truncate(image.c_str(), 32 << 20), 0);
    makeFolders(volume);
    chmod(scratch.path().c_str(), 0755);
    if (exitCodeOf({.path = "/sbin/mkfs.ext4", .arguments = {"-q", "-F", image}}) != 0 ||
        exitCodeOf({.path = "/bin/mount", .arguments = {"-o", "loop", image, volume}}) != 0)
      GTEST_SKIP() << "no ext4 file system can be mounted here";
    mounted = true;
    fs::copy_file(fs::read_symlink("/proc/self/exe").parent_path() / kLockHelper, program);
    if (!giveCapabilities(program, kImmutable)) GTEST_SKIP() << "no capabilities can be given here";
    makeFolders(home);
    give(home);
    writeFile(scratch / "passwd", readFile("/etc/passwd") + "vanna:x:64201:64201::" + home + ":/bin/sh\n");
    ASSERT_EQ(mount((scratch / "passwd").c_str(), "/etc/passwd", nullptr, MS_BIND, nullptr), 0);
  }

  void TearDown() override {
    endHelper();
    umount2("/etc/passwd", MNT_DETACH);
    if (mounted) umount2(volume.c_str(), MNT_DETACH);
  }

  void give(const std::string& path) const { ASSERT_EQ(lchown(path.c_str(), kUser, kUser), 0); }
  std::string own(const std::string& name) const {
    const std::string path = home + "/" + name;
    writeFile(path, name);
    give(path);
    return path;
  }

  // Starts the helper as a user who has something to hand down.
  void startHelper() {
    auto ends = Channel::pair();
    ASSERT_TRUE(ends);
    const auto child = startChild({.path = kSetpriv,
                                   .arguments = asUser({"--inh-caps=+chown", program}),
                                   .environment = {"LD_PRELOAD=libnothing.so", "SECRET=x"},
                                   .input = ends->other.descriptor()});
    ASSERT_TRUE(child);
    helper = *child;
    channel.emplace(std::move(ends->own));
  }

  Message ask(const Message& request) {
    if (helper < 0) startHelper();
    if (!channel->send(request)) return {"not sent"};
    const auto answer = channel->receive(kPatience);
    return answer ? *answer : Message{"no answer"};
  }

  // The exit code.
  int endHelper() {
    channel.reset();
    int status = 0;
    if (helper < 0 || waitpid(std::exchange(helper, -1), &status, 0) < 0 || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
  }

  ScratchFolder scratch;
  const std::string volume = scratch / "volume";
  const std::string home = volume + "/home";
  const std::string program = volume + "/" + std::string(kLockHelper);
  bool mounted = false;
  pid_t helper = -1;
  std::optional<Channel> channel;
};

TEST_F(LockHelperTest, RefusesEverythingElse) {
  const std::string mine = own("folder/mine");
  give(home + "/folder");
  const std::string roots = home + "/roots";
  writeFile(roots, "readable for all");
  const std::string hidden = home + "/hidden/mine";
  writeFile(hidden, "");
  give(hidden);
  chmod((home + "/hidden").c_str(), 0700);
  const std::string unreadable = own("unreadable");
  chmod(unreadable.c_str(), 0);
  fs::create_symlink(mine, home + "/link");
  fs::create_symlink(home + "/folder", home + "/way");
  give(home + "/way");
  ASSERT_EQ(mkfifo((home + "/pipe").c_str(), 0666), 0);
  ASSERT_EQ(mknod((home + "/null").c_str(), S_IFCHR | 0666, makedev(1, 3)), 0);
  for (const char* name : {"/link", "/pipe", "/null"}) give(home + name);

  EXPECT_THAT(
      ask({"lock", roots, home + "/link", home + "/way/mine", home + "/pipe", home + "/null", home + "/missing",
           mine + "/below", hidden, unreadable, "folder/mine", "", "/"}),
      ElementsAre(number(EPERM), number(EINVAL), number(ELOOP), number(EINVAL), number(EINVAL), number(ENOENT),
                  number(ENOTDIR), number(EACCES), number(EACCES), number(EINVAL), number(EINVAL), number(kIsOutside)));
  for (const std::string& path : {roots, mine, hidden, unreadable}) EXPECT_FALSE(isLocked(path)) << path;
  setFlags(roots, flagsOf(roots) | FS_IMMUTABLE_FL);
  EXPECT_THAT(ask({"unlock", roots}), ElementsAre(number(EPERM)));
  EXPECT_TRUE(isLocked(roots));
}

TEST_F(LockHelperTest, EndsWhenItIsToldNonsenseAndDoesNothing) {
  const std::string file = own("file");
  Message tooMany(kMostPathsAtOnce + 1, "/");
  tooMany.push_back(file);
  tooMany.front() = "lock";
  for (const Message& nonsense : {Message{"chown", file}, {"Lock", file}, {"", file}, {"lock"}, tooMany}) {
    EXPECT_THAT(ask(nonsense), ElementsAre("no answer"));
    EXPECT_EQ(endHelper(), 64);
  }
  for (const std::string& bytes : {"lock" + std::string(1, '\0') + file, std::string(kMaxMessageBytes + 1, '\0')}) {
    startHelper();
    ASSERT_EQ(send(channel->descriptor(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
    EXPECT_FALSE(channel->receive(kPatience));
    EXPECT_EQ(endHelper(), 64);
  }
  EXPECT_FALSE(isLocked(file));
}

TEST_F(LockHelperTest, KeepsOneRightAndNoWayToMore) {
  EXPECT_THAT(ask({"lock", own("file")}), ElementsAre("0"));
  const std::string folder = "/proc/" + std::to_string(helper);
  const std::string status = readFile(folder + "/status");
  for (const char* set : {"CapPrm:\t0000000000000200", "CapEff:\t0000000000000200", "CapInh:\t0000000000000000",
                          "CapAmb:\t0000000000000000", "NoNewPrivs:\t1"})
    EXPECT_THAT(status, HasSubstr(set));
  EXPECT_EQ(fs::read_symlink(folder + "/cwd"), "/");
  struct stat shown {};
  ASSERT_EQ(stat((folder + "/mem").c_str(), &shown), 0);
  EXPECT_EQ(shown.st_uid, 0u) << "the caller may not look into it";
}

TEST_F(LockHelperTest, RunsWithThatOneRightOnly) {
  auto ends = Channel::pair();
  ASSERT_TRUE(ends);
  const auto exitCode = [&](const std::vector<std::string>& arguments, int input) {
    return exitCodeOf({.path = kSetpriv, .arguments = arguments, .input = input});
  };
  const int conversation = ends->other.descriptor();
  shutdown(ends->own.descriptor(), SHUT_WR);
  EXPECT_EQ(exitCode(asUser({program}), conversation), 0);
  EXPECT_EQ(exitCode(asUser({program, "lock"}), conversation), 64) << "arguments";
  EXPECT_EQ(exitCode(asUser({program}), ChildProgram::kNullDevice), 64) << "no conversation";
  EXPECT_EQ(exitCode({program}, conversation), 77) << "the superuser";
  EXPECT_EQ(exitCode(asUser({kSetpriv, "--no-new-privs", program}), conversation), 77) << "the capability was withheld";

  ASSERT_TRUE(giveCapabilities(program, kImmutable | 1U << CAP_DAC_OVERRIDE));
  EXPECT_EQ(exitCode(asUser({program}), conversation), 77) << "one capability too many";
  ASSERT_EQ(removexattr(program.c_str(), "security.capability"), 0);
  EXPECT_EQ(exitCode(asUser({program}), conversation), 77) << "without the capability";
  ASSERT_EQ(chmod(program.c_str(), 04755), 0);
  EXPECT_EQ(exitCode(asUser({program}), conversation), 77) << "another identity";
}

TEST_F(LockHelperTest, TheClientSplitsWhatIsTooMuchAndServesEveryThread) {
  LockHelper client({.path = kSetpriv, .arguments = asUser({program})});
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      const std::string file = own("thread " + number(t));
      std::vector<std::string> paths(3000, home + "/missing, with a name so long that not all fit into a message");
      paths[t * 700] = file;
      std::vector<int> wanted(paths.size(), ENOENT);
      wanted[t * 700] = 0;
      for (const bool locked : {true, false, true}) {
        EXPECT_EQ(client.setLocked(paths, locked), wanted);
        EXPECT_EQ(isLocked(file), locked);
      }
    });
  for (std::thread& thread : threads) thread.join();
}

TEST_F(LockHelperTest, TheClientTriesOneThatWasInstalledMeanwhile) {
  const std::string late = volume + "/late";
  LockHelper client({.path = late, .environment = cleanEnvironment()});
  EXPECT_THAT(client.setLocked({"/a"}, true), Each(EPERM));
  writeFile(late, "#!/usr/bin/python3\nimport socket\ns = socket.socket(fileno=0)\ns.recv(65536)\ns.send(b'0\\0')\n");
  ASSERT_EQ(chmod(late.c_str(), 0755), 0);
  ASSERT_TRUE(giveCapabilities(late, kImmutable));
  EXPECT_THAT(client.setLocked({"/a"}, true), Each(0));
}

TEST(LockHelperClientTest, DoesWithoutAHelperThatFails) {
  const std::vector<std::string> paths{"/a", "/b"};
  const auto python = [](const std::string& answer) {
    const std::string code = "import socket\ns = socket.socket(fileno=0)\ns.recv(65536)\n" + answer + "\ns.recv(1)\n";
    return ChildProgram{.path = "/usr/bin/python3", .arguments = {"-c", code}, .environment = cleanEnvironment()};
  };
  for (const ChildProgram& program :
       {ChildProgram{.path = "/nonexistent/helper"}, ChildProgram{.path = "/bin/true"}, python("s.send(b'0\\0')"),
        python("s.send(b'0\\0-1\\0')"), python("s.send(b'0')")}) {
    LockHelper client(program);
    EXPECT_THAT(client.setLocked(paths, true), AllOf(testing::SizeIs(2), testing::Contains(EPERM)));
    EXPECT_THAT(client.setLocked(paths, true), Each(EPERM)) << "and is not asked again";
  }
}

}  // namespace
}  // namespace vantory::test
