#include "platform/linux/session/LinuxSingleInstance.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstring>
#include <future>
#include <vector>

#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

using HandOver = SingleInstance::HandOver;

class SingleInstanceTest : public testing::Test {
 protected:
  // A socket of a program that is not ours, after this call on it with the name's address.
  template <class Call>
  Descriptor stranger(Call call) const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + 1, first_.name().data(), first_.name().size());
    Descriptor own(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + first_.name().size());
    EXPECT_EQ(call(own.get(), reinterpret_cast<const sockaddr*>(&address), length), 0);
    return own;
  }

  const ScratchFolder home_;
  LinuxSingleInstance first_{home_.path(), ":7"};
  LinuxSingleInstance second_{home_.path(), ":7"};
};

TEST_F(SingleInstanceTest, OneListensAndTheOthersHandOver) {
  std::promise<OpenRequest> heard;
  ASSERT_TRUE(first_.listen([&](OpenRequest request) { heard.set_value(std::move(request)); }));
  EXPECT_FALSE(second_.listen([](const OpenRequest&) {}));
  EXPECT_EQ(LinuxSingleInstance(home_.path(), ":8").handOver({}), HandOver::Nobody) << "another display";

  // More than one message could carry, and names of any bytes.
  std::vector<std::string> files(2000, "/tmp/" + std::string(200, 'x'));
  files.emplace_back("/tmp/\xff\n -odd.fcp");
  EXPECT_EQ(second_.handOver({.files = files, .activationToken = "token"}), HandOver::Taken);
  const OpenRequest request = heard.get_future().get();
  EXPECT_EQ(request.files, files);
  EXPECT_EQ(request.activationToken, "token");

  first_.stopListening();
  EXPECT_EQ(second_.handOver({}), HandOver::Nobody);
  EXPECT_TRUE(second_.listen([](const OpenRequest&) {})) << "the name is free again";
}

TEST_F(SingleInstanceTest, NonsenseIsPassedOverAndTheNextIsHeard) {
  std::atomic<int> heard = 0;
  ASSERT_TRUE(first_.listen([&](const OpenRequest&) { ++heard; }));
  std::vector<Descriptor> strangers;
  for (const std::string& bytes : {std::string("no end"), std::string("\0", 1), std::string("open\0\0\0", 7),
                                   std::string("file\0/x\0", 8), std::string(100'000, '\0')}) {
    strangers.push_back(stranger(connect));
    EXPECT_EQ(send(strangers.back().get(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  }
  strangers[3] = Descriptor();  // names a file and goes
  EXPECT_EQ(second_.handOver({}), HandOver::Taken);
  first_.stopListening();
  EXPECT_EQ(heard, 1);
}

TEST_F(SingleInstanceTest, AnotherUsersSocketGetsNothing) {
  if (getuid() != 0) GTEST_SKIP() << "only root can be two users";
  const Descriptor other = stranger(bind);
  ASSERT_EQ(seteuid(65534), 0);
  EXPECT_EQ(listen(other.get(), 8), 0);
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_FALSE(first_.listen([](const OpenRequest&) {}));
  EXPECT_EQ(first_.handOver({.files = {"/secret"}}), HandOver::Refused);
  pollfd waiting{other.get(), POLLIN, 0};
  ASSERT_EQ(poll(&waiting, 1, 0), 1) << "it was called";
  const Descriptor call(accept(other.get(), nullptr, nullptr));
  char byte = 0;
  EXPECT_EQ(recv(call.get(), &byte, 1, 0), 0) << "and told nothing";
}

}  // namespace
}  // namespace vantory::test
