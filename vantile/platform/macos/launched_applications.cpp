#include "vantile/platform/launched_applications.h"

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/objective_c.h"

namespace vantile {
namespace {

/// What the dictionary has under that key; null for nothing. The dictionary owns it.
CFTypeRef valueUnder(CFDictionaryRef dictionary, const char* key) {
  const auto name = stringOf(key);
  return name ? CFDictionaryGetValue(dictionary, name.get()) : nullptr;
}

std::optional<std::string> textUnder(CFDictionaryRef dictionary, const char* key) {
  return textOf(as<CFStringRef>(CFStringGetTypeID(), valueUnder(dictionary, key)));
}

std::int32_t integerUnder(CFDictionaryRef dictionary, const char* key) {
  const auto number = as<CFNumberRef>(CFNumberGetTypeID(), valueUnder(dictionary, key));
  std::int32_t value = 0;
  // What does not fit gives its lower bits, as the number's own conversion does.
  if (number) CFNumberGetValue(number, kCFNumberSInt32Type, &value);
  return value;
}

// The array and its dictionaries are CoreFoundation's as well as Foundation's.
class MacosLaunchedApplications final : public LaunchedApplications {
 public:
  std::optional<std::vector<LaunchedApplication>> list() override {
    const AutoreleasePool pool;
    const id workspace = message<id>(classNamed("NSWorkspace"), "sharedWorkspace");
    const void* const answer = message<id>(workspace, "launchedApplications");
    const auto array = as<CFArrayRef>(CFArrayGetTypeID(), answer);
    if (!array) return std::nullopt;
    std::vector<LaunchedApplication> applications;
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
      const auto each =
          as<CFDictionaryRef>(CFDictionaryGetTypeID(), CFArrayGetValueAtIndex(array, i));
      if (!each) continue;
      applications.push_back({textUnder(each, "NSApplicationName"),
                              textUnder(each, "NSApplicationPath"),
                              integerUnder(each, "NSApplicationProcessIdentifier")});
    }
    return applications;
  }
};

}  // namespace

std::shared_ptr<LaunchedApplications> systemLaunchedApplications() {
  static auto& applications =
      *new std::shared_ptr<LaunchedApplications>(std::make_shared<MacosLaunchedApplications>());
  return applications;
}

}  // namespace vantile
