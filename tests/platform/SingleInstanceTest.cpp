#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstring>
#include <future>
#include <thread>
#include <vector>

#include "platform/linux/LinuxSingleInstance.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

using HandOver = SingleInstance::HandOver;

class SingleInstanceTest : public testing::Test {
 protected:
  LinuxSingleInstance copy() const { return {home_.path(), ":7"}; }

  // Connects as anybody could, and says this.
  static int strangerSays(const std::string& name, std::string_view bytes) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + 1, name.data(), name.size());
    const int stranger = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    EXPECT_EQ(connect(stranger, reinterpret_cast<const sockaddr*>(&address), length), 0);
    EXPECT_EQ(send(stranger, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    return stranger;
  }

  // Listens in a process of its own, as that user, until it is told to end.
  struct Other {
    pid_t process;
    int end;
    void kill() const {
      ::kill(process, SIGKILL);
      waitpid(process, nullptr, 0);
      close(end);
    }
  };
  static Other listenElsewhere(const std::string& name, uid_t user) {
    int ready[2];
    EXPECT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
      if (setuid(user) != 0) _exit(1);
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      std::memcpy(address.sun_path + 1, name.data(), name.size());
      const int listener = socket(AF_UNIX, SOCK_SEQPACKET, 0);
      const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
      if (bind(listener, reinterpret_cast<const sockaddr*>(&address), length) != 0 || listen(listener, 8) != 0)
        _exit(1);
      (void)!write(ready[1], "x", 1);
      pause();
    }
    close(ready[1]);
    char byte = 0;
    EXPECT_EQ(read(ready[0], &byte, 1), 1);
    return {child, ready[0]};
  }

  const ScratchFolder home_;
};

TEST_F(SingleInstanceTest, OneListensAndTheOthersHandOver) {
  std::promise<OpenRequest> heard;
  LinuxSingleInstance first = copy();
  ASSERT_TRUE(first.listen([&](OpenRequest request) { heard.set_value(std::move(request)); }));
  LinuxSingleInstance second = copy();
  EXPECT_FALSE(second.listen([](const OpenRequest&) {}));
  EXPECT_EQ(LinuxSingleInstance(home_.path(), ":8").handOver({}), HandOver::Nobody) << "another display";

  // More than one message could carry, and names of any bytes.
  std::vector<std::string> files(2000, "/tmp/" + std::string(200, 'x'));
  files.emplace_back("/tmp/\xff\n -odd.fcp");
  EXPECT_EQ(second.handOver({.files = files, .activationToken = "token"}), HandOver::Taken);
  const OpenRequest request = heard.get_future().get();
  EXPECT_EQ(request.files, files);
  EXPECT_EQ(request.activationToken, "token");

  first.stopListening();
  EXPECT_EQ(second.handOver({}), HandOver::Nobody);
  EXPECT_TRUE(second.listen([](const OpenRequest&) {})) << "the name is free again";
}

TEST_F(SingleInstanceTest, OfManyStartsAtOnceExactlyOneListens) {
  std::atomic<int> listening = 0;
  std::vector<std::unique_ptr<LinuxSingleInstance>> copies(16);
  std::vector<std::thread> starts;
  for (auto& each : copies) each = std::make_unique<LinuxSingleInstance>(home_.path(), ":7");
  for (auto& each : copies) starts.emplace_back([&] { listening += each->listen([](const OpenRequest&) {}) ? 1 : 0; });
  for (std::thread& start : starts) start.join();
  EXPECT_EQ(listening, 1);
}

TEST_F(SingleInstanceTest, NonsenseIsPassedOverAndTheNextIsHeard) {
  std::atomic<int> heard = 0;
  LinuxSingleInstance first = copy();
  ASSERT_TRUE(first.listen([&](const OpenRequest&) { ++heard; }));
  std::vector<int> strangers;
  for (const std::string& bytes : {std::string("no end"), std::string("\0", 1), std::string("open\0\0\0", 7),
                                   std::string("file\0/x\0", 8), std::string(100'000, '\0')})
    strangers.push_back(strangerSays(first.name(), bytes));
  close(strangers[3]);  // says a file and goes
  EXPECT_EQ(copy().handOver({}), HandOver::Taken);
  for (const int stranger : strangers) close(stranger);
  first.stopListening();
  EXPECT_EQ(heard, 1);
}

TEST_F(SingleInstanceTest, AKilledCopyLeavesNothingBehind) {
  LinuxSingleInstance next = copy();
  listenElsewhere(next.name(), getuid()).kill();
  EXPECT_TRUE(next.listen([](const OpenRequest&) {}));
}

TEST_F(SingleInstanceTest, AnotherUsersSocketGetsNothing) {
  if (getuid() != 0) GTEST_SKIP() << "only root can be two users";
  LinuxSingleInstance own = copy();
  const Other other = listenElsewhere(own.name(), 65534);
  EXPECT_FALSE(own.listen([](const OpenRequest&) {}));
  EXPECT_EQ(own.handOver({.files = {"/secret"}}), HandOver::Refused);
  other.kill();
}

}  // namespace
}  // namespace vantory::test
