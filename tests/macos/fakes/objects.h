#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "fakes/counters.h"

/// CoreFoundation's objects, as the fakes keep them.
namespace fakes {

struct Object {
  virtual ~Object() = default;
  int references = 1;
};

/// Takes a reference away; `mutex` is held. Out of line: GCC 12 loses count of the references else
/// and warns of a use after the last one.
void drop(Object* object);

inline Object* objectOf(const void* object) {
  return static_cast<Object*>(const_cast<void*>(object));
}

/// An object that is counted; made while `mutex` is held.
struct Counted : Object {
  Counted() { ++counts.values; }
  ~Counted() override { --counts.values; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
};

inline bool refused(const char* function) {
  return machine.refusesObjects || machine.refuses.contains(function);
}

/// A new object of the function of that name, or null when a test has it fail.
template <class Made>
Made* createdBy(const char* function) {
  const std::lock_guard lock(mutex);
  return refused(function) ? nullptr : new Made;
}

/// The UTF-8 of the text; nothing when it has none. And the other way round.
std::optional<std::string> utf8Of(const std::u16string& text);
std::optional<std::u16string> utf16Of(const std::string& bytes);

/// Has the thread's innermost pool let go of the object.
void autorelease(Object* object);

/// What a message gives, in the two registers that a record of two words comes in.
struct Answer {
  const void* first = nullptr;
  unsigned long second = 0;
};

/// What a regular expression's class, one, or a match of one answers; nothing where the receiver is
/// none of these.
std::optional<Answer> patternsAnswer(const Object* receiver, const std::string& selector,
                                     const void* first, const void* second, const void* third,
                                     const void* fourth);
const Object* patternClass();

/// What is asked of the workspace or the file manager about volumes; nothing for anything else.
std::optional<const void*> volumeAnswer(const std::string& selector, const void* argument);

/// An object, with all within it, that the caller owns a reference to.
Object* objectFrom(const PropertyList& list);

}  // namespace fakes

struct __CFString : fakes::Counted {
  std::u16string text;
};
struct __CFNumber : fakes::Counted {
  std::variant<std::int64_t, std::uint64_t, double> number;
};
struct __CFDate : fakes::Counted {
  CFAbsoluteTime time = 0;
};
struct __CFData : fakes::Counted {
  std::string bytes;
};
struct __CFArray : fakes::Counted {
  ~__CFArray() override {
    for (auto* const item : items) fakes::drop(item);
  }
  std::vector<fakes::Object*> items;
};
struct __CFDictionary : fakes::Counted {
  ~__CFDictionary() override {
    for (const auto& [key, value] : entries) {
      fakes::drop(key);
      fakes::drop(value);
    }
  }
  std::vector<std::pair<fakes::Object*, fakes::Object*>> entries;
};
struct __CFURL : fakes::Counted {
  std::string path;
};
