#include "vantile/platform/configuration_store.h"

#include <SystemConfiguration/SystemConfiguration.h>

#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/values.h"

namespace vantile {
namespace {

/// The texts as an array; null where one of them is not UTF-8.
Owned<CFArrayRef> arrayOf(const std::vector<std::string>& texts) {
  std::vector<Owned<CFStringRef>> strings;
  std::vector<const void*> items;
  for (const auto& text : texts) {
    strings.push_back(stringOf(text));
    if (!strings.back()) return {};
    items.push_back(strings.back().get());
  }
  return Owned<CFArrayRef>(CFArrayCreate(nullptr, items.data(), static_cast<CFIndex>(items.size()),
                                         &kCFTypeArrayCallBacks));
}

class MacosConfigurationSession final : public ConfigurationSession {
 public:
  explicit MacosConfigurationSession(std::function<void()> changed)
      : changed_(std::move(changed)) {}

  ~MacosConfigurationSession() override {
    if (loop_) CFRunLoopRemoveSource(loop_.get(), source_.get(), kCFRunLoopDefaultMode);
  }
  MacosConfigurationSession(const MacosConfigurationSession&) = delete;
  MacosConfigurationSession& operator=(const MacosConfigurationSession&) = delete;

  /// Whether each step succeeded.
  bool begin(std::string_view name, const ConfigurationKeys& keys) {
    const auto called = stringOf(name);
    const auto single = arrayOf(keys.keys), patterns = arrayOf(keys.patterns);
    if (!called || !single || !patterns) return false;
    SCDynamicStoreContext context = {};
    context.info = this;
    store_.reset(::SCDynamicStoreCreate(nullptr, called.get(), onChange, &context));
    if (!store_ || !::SCDynamicStoreSetNotificationKeys(store_.get(), single.get(), patterns.get()))
      return false;
    source_.reset(::SCDynamicStoreCreateRunLoopSource(nullptr, store_.get(), 0));
    if (!source_) return false;
    loop_.reset(static_cast<CFRunLoopRef>(const_cast<void*>(CFRetain(CFRunLoopGetCurrent()))));
    CFRunLoopAddSource(loop_.get(), source_.get(), kCFRunLoopDefaultMode);
    return true;
  }

  std::shared_ptr<const Dictionary> value(std::string_view key) override {
    const auto name = stringOf(key);
    if (!name) return nullptr;
    const Owned<CFPropertyListRef> held(::SCDynamicStoreCopyValue(store_.get(), name.get()));
    const auto entries = as<CFDictionaryRef>(CFDictionaryGetTypeID(), held.get());
    return entries ? dictionaryFrom(entries) : nullptr;
  }

 private:
  static void onChange(SCDynamicStoreRef, CFArrayRef, void* session) {
    const auto changed = static_cast<MacosConfigurationSession*>(session)->changed_;
    guarded("a change of the configuration", changed);  // may be the session's end
  }

  const std::function<void()> changed_;
  Owned<SCDynamicStoreRef> store_;
  Owned<CFRunLoopSourceRef> source_;
  Owned<CFRunLoopRef> loop_;  // that the source is in; null for none
};

class MacosConfigurationStore final : public ConfigurationStore {
 public:
  std::unique_ptr<ConfigurationSession> open(std::string_view name, const ConfigurationKeys& keys,
                                             std::function<void()> changed) override {
    auto session = std::make_unique<MacosConfigurationSession>(std::move(changed));
    if (!session->begin(name, keys)) return nullptr;
    return session;
  }
};

}  // namespace

std::shared_ptr<ConfigurationStore> systemConfigurationStore() {
  static auto& store =
      *new std::shared_ptr<ConfigurationStore>(std::make_shared<MacosConfigurationStore>());
  return store;
}

}  // namespace vantile
