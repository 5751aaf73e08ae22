// SystemConfiguration.

#include <SystemConfiguration/SystemConfiguration.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "fakes/objects.h"

using fakes::machine;

struct __SCDynamicStore : fakes::Counted {
  SCDynamicStoreCallBack callout = nullptr;
  SCDynamicStoreContext context = {};
};

namespace {

std::vector<std::string> textsIn(CFArrayRef array) {
  std::vector<std::string> texts;
  for (const auto* const item : array->items)
    texts.push_back(*fakes::utf8Of(dynamic_cast<const __CFString&>(*item).text));
  return texts;
}

void perform(void* store) {
  const auto& self = *static_cast<const __SCDynamicStore*>(store);
  auto* const keys = fakes::createdBy<__CFArray>("changed keys");
  self.callout(&self, keys, self.context.info);
  CFRelease(keys);
}

}  // namespace

namespace fakes {

void changeStore() {
  const auto source = static_cast<CFRunLoopSourceRef>(machine.storeSource);
  CFRunLoopSourceSignal(source);
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false);
}

}  // namespace fakes

extern "C" {

SCDynamicStoreRef SCDynamicStoreCreate(CFAllocatorRef, CFStringRef name,
                                       SCDynamicStoreCallBack callout,
                                       SCDynamicStoreContext* context) {
  machine.storeName = *fakes::utf8Of(name->text);
  auto* const store = fakes::createdBy<__SCDynamicStore>("SCDynamicStoreCreate");
  if (!store) return nullptr;
  store->callout = callout;
  store->context = *context;
  return store;
}

Boolean SCDynamicStoreSetNotificationKeys(SCDynamicStoreRef, CFArrayRef keys, CFArrayRef patterns) {
  machine.storeKeys = textsIn(keys);
  machine.storePatterns = textsIn(patterns);
  return !fakes::refused("SCDynamicStoreSetNotificationKeys");
}

CFRunLoopSourceRef SCDynamicStoreCreateRunLoopSource(CFAllocatorRef, SCDynamicStoreRef store,
                                                     CFIndex order) {
  if (order != 0) std::abort();
  if (fakes::refused("SCDynamicStoreCreateRunLoopSource")) return nullptr;
  CFRunLoopSourceContext context = {};
  context.info = const_cast<__SCDynamicStore*>(store);
  context.perform = perform;
  const CFRunLoopSourceRef source = CFRunLoopSourceCreate(nullptr, 0, &context);
  machine.storeSource = source;
  return source;
}

CFPropertyListRef SCDynamicStoreCopyValue(SCDynamicStoreRef, CFStringRef key) {
  const auto name = *fakes::utf8Of(key->text);
  machine.storeReads.push_back(name);
  const auto found = machine.store.find(name);
  return found == machine.store.end() ? nullptr : fakes::objectFrom(found->second);
}

CFStringRef SCDynamicStoreCopyComputerName(SCDynamicStoreRef store, CFStringEncoding* encoding) {
  if (store || encoding) std::abort();
  if (!machine.computerName) return nullptr;
  auto* const name = fakes::createdBy<__CFString>("SCDynamicStoreCopyComputerName");
  if (name) name->text = *machine.computerName;
  return name;
}

}  // extern "C"
