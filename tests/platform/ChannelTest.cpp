#include "platform/linux/Channel.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <string>

namespace vantory::test {
namespace {

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
  EXPECT_EQ(ends.other.receive(std::chrono::milliseconds(1)).error().code, std::errc::timed_out);
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

}  // namespace
}  // namespace vantory::test
