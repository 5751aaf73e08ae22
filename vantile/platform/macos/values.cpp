#include "vantile/platform/macos/values.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/objective_c.h"
#include "vantile/platform/parsers/property_list_bounds.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

Value numberIn(CFNumberRef number) {
  double real = 0;
  if (CFNumberIsFloatType(number)) {
    CFNumberGetValue(number, kCFNumberFloat64Type, &real);
    return real;
  }
  SInt64 integer = 0;
  if (CFNumberGetValue(number, kCFNumberSInt64Type, &integer))
    return static_cast<std::int64_t>(integer);
  // Lists hold unsigned numbers, too, which CoreFoundation keeps but has no type to ask for by.
  return static_cast<std::uint64_t>(
      message<unsigned long long>(bridged(number), "unsignedLongLongValue"));
}

std::shared_ptr<const Date> dateIn(CFDateRef date) {
  constexpr double farAway = 1e12;  // more than a Date reaches, less than overflows
  const auto seconds = CFDateGetAbsoluteTime(date);
  const auto near = std::isnan(seconds) ? 0 : std::clamp(seconds, -farAway, farAway);
  const auto whole = std::floor(near);
  return std::make_shared<const Date>(
      Date{momentOf(static_cast<std::int64_t>(whole + kCFAbsoluteTimeIntervalSince1970),
                    static_cast<std::int64_t>((near - whole) * 1e9))});
}

std::optional<Value> valueAt(CFTypeRef object, std::size_t depth);

std::shared_ptr<Array> arrayIn(CFArrayRef items, std::size_t depth) {
  auto array = std::make_shared<Array>();
  const auto count = CFArrayGetCount(items);
  array->reserve(static_cast<std::size_t>(count));
  for (CFIndex i = 0; i < count; ++i)
    if (auto value = valueAt(CFArrayGetValueAtIndex(items, i), depth))
      array->push_back(std::move(*value));
  return array;
}

std::shared_ptr<Dictionary> dictionaryIn(CFDictionaryRef entries, std::size_t depth) {
  auto dictionary = std::make_shared<Dictionary>();
  const auto count = static_cast<std::size_t>(CFDictionaryGetCount(entries));
  std::vector<CFTypeRef> keys(count), values(count);
  CFDictionaryGetKeysAndValues(entries, keys.data(), values.data());
  dictionary->reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    auto key = textOf(as<CFStringRef>(CFStringGetTypeID(), keys[i]));
    auto value = key ? valueAt(values[i], depth) : std::nullopt;
    if (value) dictionary->set(std::move(*key), std::move(*value));
  }
  return dictionary;
}

/// The value, `depth` levels down.
std::optional<Value> valueAt(CFTypeRef object, std::size_t depth) {
  if (const auto string = as<CFStringRef>(CFStringGetTypeID(), object)) {
    auto text = textOf(string);
    return text ? std::optional<Value>(std::move(*text)) : std::nullopt;
  }
  if (const auto number = as<CFNumberRef>(CFNumberGetTypeID(), object)) return numberIn(number);
  if (const auto truth = as<CFBooleanRef>(CFBooleanGetTypeID(), object))
    return Value(CFBooleanGetValue(truth) != 0);
  if (const auto date = as<CFDateRef>(CFDateGetTypeID(), object)) return Value(dateIn(date));
  if (depth >= PropertyListBounds().depth) return std::nullopt;
  if (const auto items = as<CFArrayRef>(CFArrayGetTypeID(), object))
    return Value(arrayIn(items, depth + 1));
  if (const auto entries = as<CFDictionaryRef>(CFDictionaryGetTypeID(), object))
    return Value(dictionaryIn(entries, depth + 1));
  return std::nullopt;
}

}  // namespace

std::optional<Value> valueOf(CFTypeRef object) {
  return valueAt(object, 0);
}

std::shared_ptr<Dictionary> dictionaryFrom(CFDictionaryRef entries) {
  return dictionaryIn(entries, 1);
}

}  // namespace vantile
