// Copies of the program with a window, of which one is to do the work.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstring>
#include <future>
#include <memory>
#include <vector>

#include "platform/linux/session/LinuxSingleInstance.h"
#include "platform/macos/session/MacSingleInstance.h"
#include "tests/platform/Systems.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

using HandOver = SingleInstance::HandOver;

class SingleInstanceTest : public SystemTest {
 protected:
  std::unique_ptr<SingleInstance> copy(const std::string& display = ":7") {
    if (isMac) return std::make_unique<MacSingleInstance>(home_.path(), display);
    return std::make_unique<LinuxSingleInstance>(home_.path(), display);
  }
  // A socket of a program that is not ours, after this call on it with the address at which copies meet.
  template <class Call>
  Descriptor stranger(Call call) const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string place = isMac ? MacSingleInstance(home_.path(), ":7").socketPath()
                                    : '\0' + LinuxSingleInstance(home_.path(), ":7").name();
    std::memcpy(address.sun_path, place.data(), place.size());
    Descriptor own(socket(AF_UNIX, (isMac ? SOCK_STREAM : SOCK_SEQPACKET) | SOCK_CLOEXEC, 0));
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + place.size());
    EXPECT_EQ(call(own.get(), reinterpret_cast<const sockaddr*>(&address), length), 0);
    return own;
  }
  // As it travels there: on a stream behind its length.
  std::string message(const std::string& bytes) const {
    const auto size = static_cast<std::uint32_t>(bytes.size());
    return (isMac ? std::string(reinterpret_cast<const char*>(&size), sizeof size) : "") + bytes;
  }

  const ScratchFolder home_;
  const std::unique_ptr<SingleInstance> first_ = copy();
  const std::unique_ptr<SingleInstance> second_ = copy();
};

VANTORY_ON_EACH_SYSTEM(SingleInstanceTest);

TEST_P(SingleInstanceTest, OneListensAndTheOthersHandOver) {
  std::promise<OpenRequest> heard;
  ASSERT_TRUE(first_->listen([&](OpenRequest request) { heard.set_value(std::move(request)); }));
  EXPECT_FALSE(second_->listen([](const OpenRequest&) {}));
  EXPECT_EQ(copy(":8")->handOver({}), HandOver::Nobody) << "another display";

  // More than one message could carry, and names of any bytes.
  std::vector<std::string> files(2000, "/tmp/" + std::string(200, 'x'));
  files.emplace_back("/tmp/\xff\n -odd.fcp");
  EXPECT_EQ(second_->handOver({.files = files, .activationToken = "token"}), HandOver::Taken);
  const OpenRequest request = heard.get_future().get();
  EXPECT_EQ(request.files, files);
  EXPECT_EQ(request.activationToken, "token");

  first_->stopListening();
  EXPECT_EQ(second_->handOver({}), HandOver::Nobody);
  EXPECT_TRUE(second_->listen([](const OpenRequest&) {})) << "the name is free again";
}

TEST_P(SingleInstanceTest, NonsenseIsPassedOverAndTheNextIsHeard) {
  std::atomic<int> heard = 0;
  ASSERT_TRUE(first_->listen([&](const OpenRequest&) { ++heard; }));
  std::vector<Descriptor> strangers;
  for (const std::string& bytes : {std::string("no end"), std::string("\0", 1), std::string("open\0\0\0", 7),
                                   std::string("file\0/x\0", 8), std::string(100'000, '\0')}) {
    strangers.push_back(stranger(connect));
    const std::string sent = message(bytes);
    EXPECT_EQ(send(strangers.back().get(), sent.data(), sent.size(), 0), static_cast<ssize_t>(sent.size()));
  }
  strangers[3] = Descriptor();  // names a file and goes
  EXPECT_EQ(second_->handOver({}), HandOver::Taken);
  first_->stopListening();
  EXPECT_EQ(heard, 1);
}

TEST_P(SingleInstanceTest, AnotherUsersSocketGetsNothing) {
  if (getuid() != 0) GTEST_SKIP() << "only root can be two users";
  const Descriptor other = stranger(bind);
  ASSERT_EQ(seteuid(65534), 0);
  EXPECT_EQ(listen(other.get(), 8), 0);
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_EQ(first_->handOver({.files = {"/secret"}}), HandOver::Refused);
  pollfd waiting{other.get(), POLLIN, 0};
  ASSERT_EQ(poll(&waiting, 1, 0), 1) << "it was called";
  const Descriptor call(accept(other.get(), nullptr, nullptr));
  char byte = 0;
  EXPECT_EQ(recv(call.get(), &byte, 1, 0), 0) << "and told nothing";
  // What lies in the user's own folder is taken over.
  EXPECT_EQ(first_->listen([](const OpenRequest&) {}), isMac);
}

}  // namespace
}  // namespace vantory::test
