#include "vantile/platform/parsers/netlink.h"

#include <gtest/gtest.h>

#include <vector>

#include "fakes/netlink_bytes.h"

namespace vantile {
namespace {

using namespace std::string_literals;
using testing::attribute;
using testing::bytesOf;
using testing::message;

std::vector<NetlinkMessage> messagesIn(std::string_view datagram) {
  std::vector<NetlinkMessage> all;
  NetlinkMessages messages(datagram);
  while (const auto each = messages.next()) all.push_back(*each);
  return all;
}

std::vector<NetlinkAttribute> attributesIn(std::string_view bytes, std::size_t header = 0) {
  std::vector<NetlinkAttribute> all;
  NetlinkAttributes attributes(bytes, header);
  while (const auto each = attributes.next()) all.push_back(*each);
  return all;
}

TEST(NetlinkMessages, AreWalkedOneAfterTheOther) {
  const auto datagram = message(16, "five!", 2, 77) + message(17, "", 0, 78);
  const auto all = messagesIn(datagram);
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].type, 16);
  EXPECT_EQ(all[0].flags, 2);
  EXPECT_EQ(all[0].sequence, 77u);
  EXPECT_EQ(all[0].payload, "five!");  // without what fills it up
  EXPECT_EQ(all[1].type, 17);
  EXPECT_EQ(all[1].payload, "");
}

TEST(NetlinkMessages, ALengthBeyondTheDatagramEndsTheWalk) {
  auto datagram = message(16, "one") + message(17, "two");
  datagram.resize(datagram.size() - 4);
  EXPECT_EQ(messagesIn(datagram).size(), 1u);
  EXPECT_TRUE(messagesIn(bytesOf(std::uint32_t{0xffffffff}) + std::string(12, 'x')).empty());
}

TEST(NetlinkMessages, ALengthOfLessThanAHeaderEndsTheWalk) {
  for (const std::uint32_t length : {0u, 1u, 15u})
    EXPECT_TRUE(messagesIn(bytesOf(length) + std::string(28, '\0')).empty());
  EXPECT_TRUE(messagesIn("").empty());
  EXPECT_TRUE(messagesIn("abc").empty());
}

TEST(NetlinkMessages, TheLastOneNeedNotBeFilledUp) {
  auto datagram = message(16, "five!");
  datagram.resize(21);
  ASSERT_EQ(messagesIn(datagram).size(), 1u);
  EXPECT_EQ(messagesIn(datagram)[0].payload, "five!");
}

TEST(NetlinkError, IsTheKernelsNumberMadePositive) {
  const auto of = [](std::int32_t number) {
    const auto bytes = message(NetlinkMessage::failure, bytesOf(number));
    return messagesIn(bytes).at(0).error();
  };
  EXPECT_EQ(of(-95), 95u);
  EXPECT_EQ(of(0), 0u);
  EXPECT_EQ(of(12), 0u);
  EXPECT_EQ(of(-2147483647 - 1), 0u);
  EXPECT_EQ(messagesIn(message(3, "")).at(0).error(), 0u);
}

TEST(NetlinkAttributes, FollowTheHeaderAndEachOther) {
  const auto bytes = "eightchr" + attribute(3, "abc") + attribute(5, "");
  const auto all = attributesIn(bytes, 8);
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].type, 3);
  EXPECT_EQ(all[0].value, "abc");
  EXPECT_EQ(all[1].type, 5);
  EXPECT_EQ(all[1].value, "");
}

TEST(NetlinkAttributes, MarksForNestingAndByteOrderAreNoPartOfTheType) {
  EXPECT_EQ(attributesIn(attribute(0x8000 | 18, "x")).at(0).type, 18);
  EXPECT_EQ(attributesIn(attribute(0x4000 | 18, "x")).at(0).type, 18);
}

TEST(NetlinkAttributes, ALengthThatLiesEndsTheWalk) {
  EXPECT_TRUE(attributesIn(bytesOf(std::uint16_t{9}) + bytesOf(std::uint16_t{1}) + "abcd").empty());
  EXPECT_TRUE(attributesIn(bytesOf(std::uint16_t{3}) + bytesOf(std::uint16_t{1}) + "abcd").empty());
  EXPECT_TRUE(attributesIn(bytesOf(std::uint32_t{0})).empty());
  EXPECT_TRUE(attributesIn("ab", 8).empty());
}

TEST(NetlinkAttribute, NumbersNeedTheirBytes) {
  const auto one = attribute(1, "\x2A");
  const auto number = attributesIn(one).at(0);
  EXPECT_EQ(number.uint8(), 42);
  EXPECT_EQ(number.uint16(), std::nullopt);
  EXPECT_EQ(number.uint32(), std::nullopt);
  const auto four = attribute(1, bytesOf(std::uint32_t{70000}));
  EXPECT_EQ(attributesIn(four).at(0).uint32(), 70000u);
}

TEST(NetlinkAttribute, TextEndsAtItsZero) {
  const auto terminated = attribute(1, "eth0\0x"s), open = attribute(1, "eth0");
  EXPECT_EQ(attributesIn(terminated).at(0).text(), "eth0");
  EXPECT_EQ(attributesIn(open).at(0).text(), "eth0");
}

TEST(NumberAt, NeedsAllItsBytesInside) {
  EXPECT_EQ(numberAt<std::uint16_t>("\x01\x02\x03", 1), numberAt<std::uint16_t>("\x02\x03", 0));
  EXPECT_EQ(numberAt<std::uint16_t>("abc", 2), std::nullopt);
  EXPECT_EQ(numberAt<std::uint64_t>("abc", 99), std::nullopt);
}

}  // namespace
}  // namespace vantile
