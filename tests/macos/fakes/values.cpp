// The values of property lists. A list's bytes stand for what a test says that they do.

#include <cstdlib>
#include <cstring>

#include "fakes/objects.h"

using fakes::machine;
using fakes::Object;
using fakes::PropertyList;

struct __CFBoolean : Object {
  explicit __CFBoolean(bool truth) : isTrue(truth) {}
  const bool isTrue;
};

namespace {

// Never counted and never gone.
__CFBoolean yes(true), no(false);

enum Kind : CFTypeID { other = 1, string = 7, array, dictionary, boolean, number, date };

template <class Made>
Made* made() {
  const std::lock_guard lock(fakes::mutex);
  return new Made;
}

Object* retained(Object* object) {
  const std::lock_guard lock(fakes::mutex);
  ++object->references;
  return object;
}

Object* stringFrom(const std::u16string& text) {
  auto* const object = made<__CFString>();
  object->text = text;
  return object;
}

/// Makes the object of each alternative.
struct Maker {
  Object* operator()(const PropertyList::Text& text) const { return stringFrom(text); }
  Object* operator()(std::int64_t value) const { return numberFrom(value); }
  Object* operator()(std::uint64_t value) const { return numberFrom(value); }
  Object* operator()(double value) const { return numberFrom(value); }
  Object* operator()(bool value) const { return retained(value ? &yes : &no); }
  Object* operator()(PropertyList::Data) const { return made<__CFData>(); }
  Object* operator()(PropertyList::Date value) const {
    auto* const object = made<__CFDate>();
    object->time = value.seconds;
    return object;
  }
  Object* operator()(const PropertyList::Array& items) const {
    auto* const object = made<__CFArray>();
    for (const auto& item : items) object->items.push_back(fakes::objectFrom(item));
    return object;
  }
  Object* operator()(const PropertyList::Dictionary& entries) const {
    auto* const object = made<__CFDictionary>();
    for (const auto& [key, value] : entries)
      object->entries.emplace_back(stringFrom(key), fakes::objectFrom(value));
    return object;
  }

  template <class Held>
  static Object* numberFrom(Held value) {
    auto* const object = made<__CFNumber>();
    object->number = value;
    return object;
  }
};

}  // namespace

namespace fakes {

Object* objectFrom(const PropertyList& list) {
  return std::visit(Maker(), list.held);
}

}  // namespace fakes

extern "C" {

const CFTimeInterval kCFAbsoluteTimeIntervalSince1970 = 978307200;
const CFArrayCallBacks kCFTypeArrayCallBacks = {};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {};

CFTypeID CFStringGetTypeID(void) {
  return string;
}
CFTypeID CFNumberGetTypeID(void) {
  return number;
}
CFTypeID CFBooleanGetTypeID(void) {
  return boolean;
}
CFTypeID CFDateGetTypeID(void) {
  return date;
}
CFTypeID CFArrayGetTypeID(void) {
  return array;
}
CFTypeID CFDictionaryGetTypeID(void) {
  return dictionary;
}

CFTypeID CFGetTypeID(CFTypeRef reference) {
  if (!reference) std::abort();
  const Object* const object = fakes::objectOf(reference);
  if (dynamic_cast<const __CFString*>(object)) return string;
  if (dynamic_cast<const __CFNumber*>(object)) return number;
  if (dynamic_cast<const __CFBoolean*>(object)) return boolean;
  if (dynamic_cast<const __CFDate*>(object)) return date;
  if (dynamic_cast<const __CFArray*>(object)) return array;
  return dynamic_cast<const __CFDictionary*>(object) ? dictionary : other;
}

Boolean CFNumberIsFloatType(CFNumberRef value) {
  return std::holds_alternative<double>(value->number);
}

// An unsigned number that the type can't hold gives its lower bits, and that it did not fit.
Boolean CFNumberGetValue(CFNumberRef value, CFNumberType type, void* result) {
  if (type == kCFNumberFloat64Type) {
    const double real = std::get<double>(value->number);
    std::memcpy(result, &real, sizeof real);
    return true;
  }
  const auto* const integer = std::get_if<std::int64_t>(&value->number);
  if (type == kCFNumberSInt32Type) {
    const auto narrow = static_cast<std::int32_t>(*integer);
    std::memcpy(result, &narrow, sizeof narrow);
    return narrow == *integer;
  }
  if (type != kCFNumberSInt64Type) std::abort();
  const void* const bits =
      integer ? static_cast<const void*>(integer) : &std::get<std::uint64_t>(value->number);
  std::memcpy(result, bits, sizeof(std::int64_t));
  return integer != nullptr;
}

Boolean CFBooleanGetValue(CFBooleanRef value) {
  return value->isTrue;
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef value) {
  return value->time;
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex size) {
  auto* const data = fakes::createdBy<__CFData>("CFDataCreate");
  if (data)
    data->bytes.assign(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
  return data;
}

CFIndex CFArrayGetCount(CFArrayRef value) {
  return static_cast<CFIndex>(value->items.size());
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks) {
  if (callBacks != &kCFTypeArrayCallBacks) std::abort();  // without these it would own nothing
  auto* const result = fakes::createdBy<__CFArray>("CFArrayCreate");
  for (CFIndex i = 0; result && i < count; ++i)
    result->items.push_back(retained(fakes::objectOf(values[i])));
  return result;
}

const void* CFArrayGetValueAtIndex(CFArrayRef value, CFIndex index) {
  return value->items.at(static_cast<std::size_t>(index));
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values,
                                   CFIndex count, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
  // Without these it would own neither.
  if (keyCallBacks != &kCFTypeDictionaryKeyCallBacks ||
      valueCallBacks != &kCFTypeDictionaryValueCallBacks)
    std::abort();
  auto* const result = fakes::createdBy<__CFDictionary>("CFDictionaryCreate");
  for (CFIndex i = 0; result && i < count; ++i)
    result->entries.emplace_back(retained(fakes::objectOf(keys[i])),
                                 retained(fakes::objectOf(values[i])));
  return result;
}

const void* CFDictionaryGetValue(CFDictionaryRef value, const void* wanted) {
  const auto& text = dynamic_cast<const __CFString&>(*fakes::objectOf(wanted)).text;
  for (const auto& [key, held] : value->entries)
    if (dynamic_cast<const __CFString&>(*key).text == text) return held;
  return nullptr;
}

CFIndex CFDictionaryGetCount(CFDictionaryRef value) {
  return static_cast<CFIndex>(value->entries.size());
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef value, const void** keys, const void** values) {
  for (const auto& [key, held] : value->entries) {
    *keys++ = key;
    *values++ = held;
  }
}

CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef, CFDataRef data,
                                               CFOptionFlags options, CFPropertyListFormat*,
                                               CFErrorRef* error) {
  if (options != kCFPropertyListImmutable || error) std::abort();
  ++machine.listsParsed;
  const auto found = machine.lists.find(data->bytes);
  const bool fails = found == machine.lists.end() || fakes::refused("CFPropertyListCreateWithData");
  return fails ? nullptr : fakes::objectFrom(found->second);
}

}  // extern "C"
