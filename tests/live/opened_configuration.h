#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/platform/linux/configuration_store.h"

#include "fakes/temporary_folder.h"

namespace vantile::testing {

using Texts = std::vector<std::string>;

inline Texts textsOf(const std::shared_ptr<const Dictionary>& dictionary, std::string_view name) {
  Texts texts;
  const auto* const value = dictionary ? dictionary->find(name) : nullptr;
  const auto* const array = value ? value->as<std::shared_ptr<Array>>() : nullptr;
  if (array)
    for (const auto& each : **array) texts.push_back(*each.as<std::string>());
  return texts;
}

inline std::string textOf(const std::shared_ptr<const Dictionary>& dictionary,
                          std::string_view name) {
  const auto* const text = dictionary ? dictionary->text(name) : nullptr;
  return text ? *text : std::string();
}

/// A session with a resolver's file of the test's own and no NetworkManager.
struct Opened {
  explicit Opened(int eventBuffer = 0) {
    sources.resolver = {folder.path("resolv.conf"), folder.path("run/resolv.conf")};
    sources.follow = [](std::function<void()>) { return nullptr; };
    sources.open = [eventBuffer](int bus, unsigned groups) {
      return openNetlink(bus, groups, groups != 0 ? eventBuffer : 0);
    };
    session = LinuxConfigurationStore(sources).open("test", {}, [this] { ++told; });
    if (!session) throw std::runtime_error("no session");
  }

  Texts order() { return textsOf(session->value("Setup:/Network/Global/IPv4"), "ServiceOrder"); }
  std::string device(const std::string& service) {
    return textOf(session->value("Setup:/Network/Service/" + service + "/Interface"), "DeviceName");
  }
  std::set<std::string> devices() {
    std::set<std::string> names;
    for (const auto& service : order()) names.insert(device(service));
    return names;
  }
  std::string serviceOf(const std::string& name) {
    for (auto& service : order())
      if (device(service) == name) return service;
    return {};
  }
  std::shared_ptr<const Dictionary> state(const std::string& name, const std::string& part) {
    return session->value("State:/Network/Service/" + serviceOf(name) + "/" + part);
  }
  std::optional<bool> active(const std::string& name) {
    const auto link = session->value("State:/Network/Interface/" + name + "/Link");
    return link ? link->boolean("Active") : std::nullopt;
  }
  std::string primary() {
    return textOf(session->value("State:/Network/Global/IPv4"), "PrimaryInterface");
  }
  Texts servers(const std::string& name) { return textsOf(state(name, "DNS"), "ServerAddresses"); }

  TemporaryFolder folder;
  ConfigurationSources sources;
  int told = 0;
  std::unique_ptr<ConfigurationSession> session;
};

}  // namespace vantile::testing
