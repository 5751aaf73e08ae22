#include "vantile/platform/parsers/routing_messages.h"

#include <gtest/gtest.h>

#include "fakes/routing_messages.h"

namespace vantile::testing {
namespace {

using Readings = std::vector<InterfaceReading>;
using Names = std::vector<std::string>;

Readings parse(std::string_view messages) {
  InterfaceReadings into;
  parseRoutingMessages(messages, into);
  into.readings.resize(into.count);
  return into.readings;
}

Names namesIn(std::string_view messages) {
  Names names;
  for (const auto& each : parse(messages)) names.push_back(each.name);
  return names;
}

std::string withLength(std::string message, std::size_t length) {
  putNumber(message, 0, static_cast<std::uint16_t>(length));
  return message;
}

TEST(RoutingMessages, GiveEachInterface) {
  const auto messages =
      routingMessage({.name = "lo0", .received = 7, .sent = 8, .flags = 0x8049, .index = 1}) +
      routingMessage(
          {.name = "en0", .received = 4294967295, .sent = 1, .flags = 0x8863, .index = 4}) +
      routingMessage({.name = "en1", .flags = 0x8822, .index = 5});
  EXPECT_EQ(
      parse(messages),
      (Readings{{.name = "lo0", .index = 1, .loopback = true, .up = true, .received = 7, .sent = 8},
                {.name = "en0", .index = 4, .up = true, .received = 4294967295, .sent = 1},
                {.name = "en1", .index = 5}}));
}

TEST(RoutingMessages, HaveCountersOf32Bits) {
  InterfaceReadings into;
  into.width = CounterWidth::bits64;
  parseRoutingMessages(routingMessage({.name = "en0"}), into);
  EXPECT_EQ(into.width, CounterWidth::bits32);
}

TEST(RoutingMessages, LongNamesAreWhole) {
  const std::string name(40, 'n');
  EXPECT_EQ(namesIn(routingMessage({.name = name}) + routingMessage({.name = "en0"})),
            (Names{name, "en0"}));
}

TEST(RoutingMessages, OfOtherTypesArePassedOver) {
  const auto address = routingMessage({.name = "xx0", .type = 12});
  EXPECT_EQ(namesIn(address + routingMessage({.name = "en0"}) + address), Names{"en0"});
}

TEST(RoutingMessages, WithAnotherAddressArePassedOver) {
  EXPECT_EQ(namesIn(routingMessage({.name = "xx0", .family = 2}) + routingMessage({.name = "en0"})),
            Names{"en0"});
}

TEST(RoutingMessages, WithoutANameInAsciiArePassedOver) {
  for (const char* const name : {"", "e\xFFn", "en\xC3\xA9"})
    EXPECT_EQ(namesIn(routingMessage({.name = name}) + routingMessage({.name = "en0"})),
              Names{"en0"});
  EXPECT_EQ(namesIn(routingMessage({.name = std::string("e\0n", 3)})), Names());
}

TEST(RoutingMessages, WhoseNameReachesBeyondThemArePassedOver) {
  auto lying = routingMessage({.name = "xx0"});
  putNumber(lying, 117, std::uint8_t{13});
  EXPECT_EQ(namesIn(lying + routingMessage({.name = "en0"})), Names{"en0"});
  putNumber(lying, 117, std::uint8_t{255});
  EXPECT_EQ(namesIn(lying), Names());
}

TEST(RoutingMessages, ThatAreTooShortForAnAddressArePassedOver) {
  const auto whole = routingMessage({.name = "xx0"});
  for (const std::size_t size : {4u, 16u, 111u, 112u, 119u})
    EXPECT_EQ(namesIn(withLength(whole.substr(0, size), size) + routingMessage({.name = "en0"})),
              Names{"en0"})
        << size;
}

TEST(RoutingMessages, OfLengthZeroEndTheWalk) {
  const auto first = routingMessage({.name = "en0"}), next = routingMessage({.name = "en1"});
  for (const std::size_t length : {0u, 1u, 3u})
    EXPECT_EQ(namesIn(first + withLength(next, length) + next), Names{"en0"}) << length;
}

TEST(RoutingMessages, LongerThanWhatIsLeftEndTheWalk) {
  const auto first = routingMessage({.name = "en0"}), next = routingMessage({.name = "en1"});
  EXPECT_EQ(namesIn(first + next.substr(0, next.size() - 1)), Names{"en0"});
  EXPECT_EQ(namesIn(first + withLength(next, 65535)), Names{"en0"});
  for (std::size_t size = 0; size < first.size(); ++size)
    EXPECT_EQ(namesIn(std::string_view(first).substr(0, size)), Names()) << size;
}

TEST(RoutingMessages, StorageIsUsedAgain) {
  InterfaceReadings into;
  parseRoutingMessages(routingMessage({.name = "en0"}) + routingMessage({.name = "en1"}), into);
  const auto* const storage = into.readings.data();
  parseRoutingMessages(routingMessage({.name = "en2"}), into);
  EXPECT_EQ(into.count, 1u);
  EXPECT_EQ(into.readings.at(0).name, "en2");
  parseRoutingMessages({}, into);
  EXPECT_EQ(into.count, 0u);
  EXPECT_EQ(into.readings.data(), storage);
}

}  // namespace
}  // namespace vantile::testing
