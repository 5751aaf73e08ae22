#include "vantile/platform/parsers/routing_messages.h"

#include <cstring>
#include <string>

#include "fakes/routing_messages.h"
#include "fuzz/fuzzer.h"

namespace vantile::fuzz {

void consume(std::string_view input) {
  InterfaceReadings into;
  parseRoutingMessages(input, into);
  require(into.count <= input.size() / 120, "an interface takes a message");
  for (std::size_t i = 0; i < into.count; ++i) {
    const auto& reading = into.readings[i];
    require(!reading.name.empty() && reading.name.size() <= 255, "it has a name");
    require(input.find(reading.name) != input.npos, "which stands in the message");
    require(reading.received <= 0xFFFFFFFF && reading.sent <= 0xFFFFFFFF, "counters are narrow");
  }
  // What was read, written as the kernel writes it, is read again.
  std::string messages;
  for (std::size_t i = 0; i < into.count; ++i) {
    const auto& reading = into.readings[i];
    const std::uint32_t flags = (reading.up ? 1u : 0u) | (reading.loopback ? 8u : 0u);
    messages += testing::routingMessage({.name = reading.name,
                                         .received = static_cast<std::uint32_t>(reading.received),
                                         .sent = static_cast<std::uint32_t>(reading.sent),
                                         .flags = flags,
                                         .index = static_cast<std::uint16_t>(reading.index)});
  }
  InterfaceReadings again;
  parseRoutingMessages(messages, again);
  require(again.count == into.count, "each interface is read again");
  for (std::size_t i = 0; i < into.count; ++i)
    require(again.readings[i] == into.readings[i], "and says the same");
}

}  // namespace vantile::fuzz
