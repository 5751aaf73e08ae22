#pragma once

#include <objc/message.h>
#include <objc/runtime.h>

#include <stdexcept>
#include <string>

extern "C" {
// What compilers call for an @autoreleasepool; no header declares them.
void* objc_autoreleasePoolPush(void);
void objc_autoreleasePoolPop(void* pool);
}

namespace vantile {

/// Lets go, at the end of the scope, of what was autoreleased in it: threads of the library's own
/// have nobody else to.
class AutoreleasePool {
 public:
  AutoreleasePool() : pool_(::objc_autoreleasePoolPush()) {}
  ~AutoreleasePool() { ::objc_autoreleasePoolPop(pool_); }
  AutoreleasePool(const AutoreleasePool&) = delete;
  AutoreleasePool& operator=(const AutoreleasePool&) = delete;

 private:
  void* const pool_;
};

/// A CoreFoundation object as the Objective-C object that it is.
inline id bridged(const void* object) {
  return static_cast<id>(const_cast<void*>(object));
}

/// The class of that name as a receiver of messages; null when it was not loaded.
inline id classNamed(const char* name) {
  return reinterpret_cast<id>(::objc_getClass(name));
}

/// Sends a message, whose arguments and result have the very types of the method's. Sent to null it
/// does nothing and gives null or 0. An Objective-C exception becomes a std::runtime_error.
template <class Result, class... Arguments>
Result message(id receiver, const char* selector, Arguments... arguments) {
  const auto send = reinterpret_cast<Result (*)(id, SEL, Arguments...)>(&::objc_msgSend);
  try {
    return send(receiver, ::sel_registerName(selector), arguments...);
  } catch (...) {  // an Objective-C object can't be told otherwise from here
    throw std::runtime_error(std::string(selector) + " raised an exception");
  }
}

/// What `ask` gives; nothing where the system raises an exception over it.
template <class Ask>
auto unlessRaised(const Ask& ask) -> decltype(ask()) {
  const AutoreleasePool pool;
  try {
    return ask();
  } catch (const std::runtime_error&) {
    return {};
  }
}

}  // namespace vantile
