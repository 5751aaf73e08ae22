#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "vantile/foundation/value.h"
#include "vantile/platform/interface_facts.h"

namespace vantile {

/// Whether the name begins with "en", or the platform counts the interface as Ethernet all the
/// same; nothing while it can't be asked.
std::optional<bool> isEthernetName(InterfaceFacts& facts, std::string_view name);

/// The store's key with what stands in place of "%@", "State:/Network/Service/%@/PPP" for instance.
std::string storeKey(std::string_view pattern, std::string_view name);

// Look-ups in a dictionary that may not be there.

const Value* valueIn(const Dictionary* dictionary, std::string_view key);
std::optional<std::string> textIn(const Dictionary* dictionary, std::string_view key);
/// Whether the value is a number whose integer part is `number`.
bool isNumber(const Dictionary* dictionary, std::string_view key, std::uint32_t number);
/// The number as a whole one, cut off, that is at least 0; nothing where there is no number.
std::optional<std::uint64_t> wholeIn(const Dictionary* dictionary, std::string_view key);
/// What a boolean or a number says as a boolean; nothing for any other value.
std::optional<bool> truthOf(const Value* value);

}  // namespace vantile
