#include "vantile/platform/power_sources.h"

#include <IOKit/ps/IOPowerSources.h>

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/values.h"

namespace vantile {
namespace {

class Subscription final : public PowerSourceSubscription {
 public:
  explicit Subscription(Owned<CFRunLoopSourceRef> source) : source_(std::move(source)) {}
  ~Subscription() override { CFRunLoopSourceInvalidate(source_.get()); }
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;

 private:
  const Owned<CFRunLoopSourceRef> source_;
};

class MacosPowerSources final : public PowerSources {
 public:
  std::vector<std::shared_ptr<const Dictionary>> descriptions() override {
    std::vector<std::shared_ptr<const Dictionary>> descriptions;
    const Owned<CFTypeRef> info(::IOPSCopyPowerSourcesInfo());
    const Owned<CFArrayRef> list(info ? ::IOPSCopyPowerSourcesList(info.get()) : nullptr);
    const CFIndex count = list ? CFArrayGetCount(list.get()) : 0;
    for (CFIndex i = 0; i < count; ++i) {
      const CFDictionaryRef description = ::IOPSGetPowerSourceDescription(
          info.get(), CFArrayGetValueAtIndex(list.get(), i));  // it belongs to the information
      if (description) descriptions.push_back(dictionaryFrom(description));
    }
    return descriptions;
  }

  std::unique_ptr<PowerSourceSubscription> subscribe(void (*changed)(void*),
                                                     void* context) override {
    Owned<CFRunLoopSourceRef> source(::IOPSNotificationCreateRunLoopSource(changed, context));
    if (!source) return nullptr;
    CFRunLoopAddSource(CFRunLoopGetCurrent(), source.get(), kCFRunLoopDefaultMode);
    return std::make_unique<Subscription>(std::move(source));
  }
};

}  // namespace

std::shared_ptr<PowerSources> systemPowerSources() {
  static auto& sources = *new std::shared_ptr<PowerSources>(std::make_shared<MacosPowerSources>());
  return sources;
}

}  // namespace vantile
