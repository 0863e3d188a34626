#include "platform/linux/Channel.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <string>

#include "platform/linux/HelperProcess.h"

namespace vantory::test {
namespace {

using std::chrono::milliseconds;

Channel::Ends conversation() {
  auto ends = Channel::pair();
  if (!ends) throw std::runtime_error(ends.error().text);
  return std::move(*ends);
}

TEST(ChannelTest, CarriesAnyTextWholeAndInOrder) {
  Channel::Ends ends = conversation();
  const Message odd = {"", "a\nb", "\xff\xfe", std::string(40000, 'x'), ""};
  ASSERT_TRUE(ends.own.send(odd));
  ASSERT_TRUE(ends.own.send({"next"}));
  EXPECT_EQ(*ends.other.receive(), odd);
  EXPECT_EQ(*ends.other.receive(), Message{"next"});
  EXPECT_EQ(ends.other.receive(milliseconds(1)).error().code, std::errc::timed_out);
}

TEST(ChannelTest, RefusesWhatCannotTravel) {
  Channel::Ends ends = conversation();
  EXPECT_EQ(ends.own.send({}).error().code, std::errc::invalid_argument);
  EXPECT_EQ(ends.own.send({std::string("a\0b", 3)}).error().code, std::errc::invalid_argument);
  EXPECT_EQ(ends.own.send({std::string(kMaxMessageBytes, 'x')}).error().code, std::errc::message_size);
}

TEST(ChannelTest, TellsTheEndAndWhatIsNoMessage) {
  Channel::Ends ends = conversation();
  ASSERT_EQ(send(ends.own.descriptor(), "cut", 3, 0), 3);
  EXPECT_EQ(ends.other.receive().error().code, std::errc::bad_message);
  ends.own = Channel(Descriptor());
  EXPECT_EQ(ends.other.receive().error().code, std::errc::not_connected);
  EXPECT_EQ(ends.other.send({"late"}).error().code, std::errc::not_connected);
}

// An echo that speaks through its standard input, as helpers do.
constexpr const char* kEcho =
    "import socket\n"
    "s = socket.socket(fileno=0)\n"
    "while True:\n"
    "    m = s.recv(65536)\n"
    "    if not m: break\n"
    "    s.send(m)\n";

TEST(ChannelTest, ReachesAHelperProgramAndSeesItEnd) {
  auto helper =
      HelperProcess::start({.path = "/usr/bin/python3", .arguments = {"-c", kEcho}, .environment = cleanEnvironment()});
  ASSERT_TRUE(helper);
  ASSERT_TRUE(helper->channel().send({"hello", "there"}));
  EXPECT_EQ(*helper->channel().receive(), (Message{"hello", "there"}));

  auto dead = HelperProcess::start({.path = "/bin/true", .environment = cleanEnvironment()});
  ASSERT_TRUE(dead);
  EXPECT_EQ(dead->channel().receive(milliseconds(5000)).error().code, std::errc::not_connected);
}

}  // namespace
}  // namespace vantory::test
