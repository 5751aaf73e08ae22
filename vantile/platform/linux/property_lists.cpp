#include "vantile/platform/linux/property_lists.h"

#include <locale.h>
#include <plist/plist.h>
#include <stdlib.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "vantile/platform/parsers/property_list_bounds.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

constexpr std::size_t longestFile = 64u << 20;

struct FreeNode {
  void operator()(void* node) const { ::plist_free(node); }
};
using Root = std::unique_ptr<void, FreeNode>;

struct FreeMemory {
  void operator()(void* memory) const { ::free(memory); }
};
template <class Held>
using Allocated = std::unique_ptr<Held, FreeMemory>;

/// In its scope the thread's numbers are written with a point, whatever the host's locale: libplist
/// reads reals by it.
class PlainNumbers {
 public:
  PlainNumbers() : plain_(::newlocale(LC_ALL_MASK, "C", nullptr)), before_(::uselocale(plain_)) {}
  ~PlainNumbers() {
    ::uselocale(before_);
    ::freelocale(plain_);
  }
  PlainNumbers(const PlainNumbers&) = delete;
  PlainNumbers& operator=(const PlainNumbers&) = delete;

 private:
  const locale_t plain_, before_;
};

Root parsed(std::string_view list) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";  // libplist knows none
  if (list.starts_with(byteOrderMark)) list.remove_prefix(byteOrderMark.size());
  if (list.size() > longestFile || !isWithin(PropertyListBounds(), list)) return {};
  const auto size = static_cast<std::uint32_t>(list.size());
  const PlainNumbers plainNumbers;
  plist_t root = nullptr;
  if (::plist_is_binary(list.data(), size))
    ::plist_from_bin(list.data(), size, &root);
  else
    ::plist_from_xml(list.data(), size, &root);
  return Root(root);
}

/// The 64 bits of an integer or a date as a binary list holds them, which tells more than libplist
/// does: whether an integer has a sign, and all of a date. `marker` becomes what stands before
/// them.
std::optional<std::uint64_t> storedBits(plist_t node, unsigned& marker) {
  char* bytes = nullptr;
  std::uint32_t size = 0;
  ::plist_to_bin(node, &bytes, &size);
  const Allocated<char> owner(bytes);
  constexpr std::size_t magic = 8;  // "bplist00"
  if (!bytes || size <= magic) return std::nullopt;
  const auto byteAt = [bytes](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
  marker = byteAt(magic);
  const auto width = std::size_t{1} << (marker & 0xF);
  if (size <= magic + width) return std::nullopt;
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < width; ++i) bits = bits << 8 | byteAt(magic + 1 + i);
  return bits;
}

Value integerIn(plist_t node) {
  std::uint64_t number = 0;
  ::plist_get_uint_val(node, &number);
  const auto asSigned = static_cast<std::int64_t>(number);
  if (asSigned >= 0) return asSigned;
  constexpr unsigned sixteenBytes = 0x14;  // so stands one that a sign would make negative
  unsigned marker = 0;
  const auto bits = storedBits(node, marker);
  return bits && marker == sixteenBytes ? Value(number) : Value(asSigned);
}

/// A date is stored as seconds since the beginning of 2001.
std::shared_ptr<const Date> dateIn(plist_t node) {
  constexpr std::int64_t beginningOf2001 = 978307200;
  constexpr double farAway = 1e12;  // more than a Date reaches, less than overflows
  unsigned marker = 0;
  const auto seconds = std::bit_cast<double>(storedBits(node, marker).value_or(0));
  const auto near = std::isnan(seconds) ? 0 : std::clamp(seconds, -farAway, farAway);
  const auto whole = std::floor(near);
  return std::make_shared<const Date>(
      Date{momentOf(static_cast<std::int64_t>(whole) + beginningOf2001,
                    static_cast<std::int64_t>((near - whole) * 1e9))});
}

std::string textIn(plist_t node) {
  std::uint64_t size = 0;
  const char* const text = ::plist_get_string_ptr(node, &size);
  return text ? std::string(text, size) : std::string();
}

std::optional<Value> valueOf(plist_t node);

std::shared_ptr<Array> arrayIn(plist_t node) {
  auto array = std::make_shared<Array>();
  plist_array_iter position = nullptr;
  ::plist_array_new_iter(node, &position);
  const Allocated<void> owner(position);
  while (true) {
    plist_t item = nullptr;
    ::plist_array_next_item(node, position, &item);
    if (!item) return array;
    if (auto value = valueOf(item)) array->push_back(std::move(*value));
  }
}

std::shared_ptr<Dictionary> dictionaryIn(plist_t node) {
  auto dictionary = std::make_shared<Dictionary>();
  plist_dict_iter position = nullptr;
  ::plist_dict_new_iter(node, &position);
  const Allocated<void> owner(position);
  while (true) {
    char* key = nullptr;
    plist_t item = nullptr;
    ::plist_dict_next_item(node, position, &key, &item);
    const Allocated<char> keyOwner(key);
    if (!item) return dictionary;
    if (auto value = valueOf(item)) dictionary->set(std::string(key ? key : ""), std::move(*value));
  }
}

std::optional<Value> valueOf(plist_t node) {
  switch (::plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t truth = 0;
      ::plist_get_bool_val(node, &truth);
      return Value(truth != 0);
    }
    case PLIST_UINT:
      return integerIn(node);
    case PLIST_REAL: {
      double number = 0;
      ::plist_get_real_val(node, &number);
      return Value(number);
    }
    case PLIST_STRING:
      return Value(textIn(node));
    case PLIST_DATE:
      return Value(dateIn(node));
    case PLIST_ARRAY:
      return Value(arrayIn(node));
    case PLIST_DICT:
      return Value(dictionaryIn(node));
    default:
      return std::nullopt;
  }
}

class LinuxPropertyLists final : public PropertyLists {
 public:
  std::shared_ptr<Dictionary> read(const std::string& path) override {
    const auto list = contentsOf(path, longestFile + 1);
    return list ? dictionaryOf(*list) : nullptr;
  }
};

}  // namespace

std::shared_ptr<Dictionary> dictionaryOf(std::string_view list) {
  const auto root = parsed(list);
  if (!root || ::plist_get_node_type(root.get()) != PLIST_DICT) return nullptr;
  return dictionaryIn(root.get());
}

std::shared_ptr<PropertyLists> systemPropertyLists() {
  static auto& lists = *new std::shared_ptr<PropertyLists>(std::make_shared<LinuxPropertyLists>());
  return lists;
}

}  // namespace vantile
