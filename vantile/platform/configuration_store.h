#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"

namespace vantile {

/// Which changes of the store are told: of these keys, and of keys that match these regular
/// expressions.
struct ConfigurationKeys {
  std::vector<std::string> keys;
  std::vector<std::string> patterns;
};

/// A session with the store of the machine's network configuration. It belongs to the run loop of
/// the thread that opened it: it tells and ends there, also inside its own call, or once the thread
/// is gone. When it goes, nothing is told any more.
class ConfigurationSession {
 public:
  virtual ~ConfigurationSession() = default;

  /// What the store holds under `key` now, or null when that is nothing, or no dictionary. Any
  /// thread, while the session lives.
  /// macOS: SCDynamicStoreCopyValue.
  /// Linux: dictionaries of the same keys and values, made from rtnetlink's links, addresses and
  /// routes, the resolver's servers and, where it is on the bus, NetworkManager's connections.
  virtual std::shared_ptr<const Dictionary> value(std::string_view key) = 0;

  /// Whether no value changes without being told, so that also an absence holds until then.
  /// macOS: no, only the keys asked for are told. Linux: yes.
  virtual bool tellsEveryChange() const { return false; }
};

/// The store of the machine's network configuration.
class ConfigurationStore {
 public:
  virtual ~ConfigurationStore() = default;

  /// Opens a session that calls `changed` on the calling thread's run loop when something under
  /// `keys` has changed; null when any step fails.
  /// macOS: SCDynamicStoreCreate, SCDynamicStoreSetNotificationKeys and
  /// SCDynamicStoreCreateRunLoopSource, in the loop's default mode; it is called at each of the
  /// store's notifications. Linux: rtnetlink's groups, the resolver's file and the bus; a burst of
  /// changes is told once, when it is over, one that does not end five times a second, and every
  /// change of the configuration is told, whichever keys were asked for: all of them hang together.
  virtual std::unique_ptr<ConfigurationSession> open(std::string_view name,
                                                     const ConfigurationKeys& keys,
                                                     std::function<void()> changed) = 0;
};

/// The machine's store, shared by the process.
VANTILE_API std::shared_ptr<ConfigurationStore> systemConfigurationStore();

}  // namespace vantile
