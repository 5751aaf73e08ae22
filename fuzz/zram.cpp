#include "vantile/platform/parsers/zram.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

std::optional<std::uint64_t> numberAt(const std::vector<std::string_view>& fields, std::size_t at) {
  return at < fields.size() ? numberIn(fields[at]) : std::nullopt;
}

}  // namespace

void consume(std::string_view input) {
  const auto fields = fieldsOf(split(input, '\n').front());

  const auto memory = parseZramMemory(input);
  const auto held = numberAt(fields, 0), occupied = numberAt(fields, 2);
  require(memory.has_value() == (held && occupied), "memory is read where both numbers are there");
  require(!memory || (memory->heldBytes == held && memory->occupiedBytes == occupied),
          "memory is what the first and third field say");

  const auto traffic = parseBlockTraffic(input);
  const auto read = numberAt(fields, 2), written = numberAt(fields, 6);
  require(traffic.has_value() == (read && written), "traffic is read where both numbers are there");
  require(!traffic || (traffic->readSectors == read && traffic->writtenSectors == written),
          "traffic is what the third and seventh field say");
}

}  // namespace vantile::fuzz
