// IOKit's power sources.

#include <IOKit/ps/IOPowerSources.h>

#include <algorithm>
#include <cstdlib>

#include "fakes/objects.h"

using fakes::machine;

namespace {

/// What the information of a moment holds; descriptions live as long as it does.
struct Information : fakes::Counted {
  ~Information() override {
    for (auto* const description : descriptions)
      if (description) fakes::drop(description);
  }
  std::vector<fakes::Object*> descriptions;
};

const Information& informationIn(CFTypeRef info) {
  return dynamic_cast<const Information&>(*fakes::objectOf(info));
}

std::vector<CFRunLoopSourceRef> sources;  // that tell of changes

}  // namespace

namespace fakes {

void changePowerSources() {
  for (auto* const source : sources) CFRunLoopSourceSignal(source);
}

}  // namespace fakes

extern "C" {

CFTypeRef IOPSCopyPowerSourcesInfo(void) {
  if (!machine.powerSources) return nullptr;
  auto* const info = fakes::createdBy<Information>("IOPSCopyPowerSourcesInfo");
  if (!info) return nullptr;
  for (const auto& source : *machine.powerSources)
    info->descriptions.push_back(source ? fakes::objectFrom(*source) : nullptr);
  return info;
}

// Names of sources are their places.
CFArrayRef IOPSCopyPowerSourcesList(CFTypeRef info) {
  if (!machine.hasPowerSourcesList) return nullptr;
  fakes::PropertyList::Array names;
  for (std::size_t i = 0; i < informationIn(info).descriptions.size(); ++i)
    names.push_back({static_cast<std::int64_t>(i)});
  return dynamic_cast<CFArrayRef>(fakes::objectFrom({names}));
}

CFDictionaryRef IOPSGetPowerSourceDescription(CFTypeRef info, CFTypeRef source) {
  const auto& name = dynamic_cast<const __CFNumber&>(*fakes::objectOf(source));
  const auto place = static_cast<std::size_t>(std::get<std::int64_t>(name.number));
  return dynamic_cast<CFDictionaryRef>(informationIn(info).descriptions.at(place));
}

CFTimeInterval IOPSGetTimeRemainingEstimate(void) {
  return machine.timeRemaining;
}

CFRunLoopSourceRef IOPSNotificationCreateRunLoopSource(IOPowerSourceCallbackType callback,
                                                       void* context) {
  CFRunLoopSourceContext source = {};
  source.info = context;
  source.perform = callback;
  const auto created = CFRunLoopSourceCreate(nullptr, 0, &source);
  if (created) sources = {created};  // the one before is gone with its test
  return created;
}

}  // extern "C"
