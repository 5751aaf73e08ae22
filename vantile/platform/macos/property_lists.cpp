#include "vantile/platform/property_lists.h"

#include <algorithm>
#include <optional>

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/values.h"
#include "vantile/platform/parsers/property_list_bounds.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

constexpr std::size_t longestFile = 64u << 20;

/// Whether the list nests no deeper than the system's reader, whose calls nest with it, can follow.
bool isBounded(std::string_view list) {
  constexpr PropertyListBounds bounds;
  if (list.starts_with("bplist")) return isWithin(bounds, list);
  std::string text(list);
  std::erase(text, '\0');  // of UTF-16
  const auto first = text.find_first_not_of("\xEF\xBB\xBF\xFE\xFF \t\r\n");
  if (first == std::string::npos || text[first] == '<') return isWithin(bounds, text);
  // The form from before XML. What closes may stand in quotes, so that only what opens counts.
  const auto opens = [](char byte) { return byte == '(' || byte == '{'; };
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), opens)) <= bounds.depth;
}

Owned<CFPropertyListRef> parsed(std::string_view list) {
  if (!isBounded(list)) return {};
  const Owned<CFDataRef> data(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(list.data()),
                                           static_cast<CFIndex>(list.size())));
  if (!data) return {};
  return Owned<CFPropertyListRef>(CFPropertyListCreateWithData(
      nullptr, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
}

class MacosPropertyLists final : public PropertyLists {
 public:
  std::shared_ptr<Dictionary> read(const std::string& path) override {
    const auto contents = contentsOf(path, longestFile + 1);
    const bool isWhole = contents && contents->size() <= longestFile;
    const auto list = isWhole ? parsed(*contents) : Owned<CFPropertyListRef>();
    const auto entries = as<CFDictionaryRef>(CFDictionaryGetTypeID(), list.get());
    return entries ? dictionaryFrom(entries) : nullptr;
  }
};

}  // namespace

std::shared_ptr<PropertyLists> systemPropertyLists() {
  static auto& lists = *new std::shared_ptr<PropertyLists>(std::make_shared<MacosPropertyLists>());
  return lists;
}

}  // namespace vantile
