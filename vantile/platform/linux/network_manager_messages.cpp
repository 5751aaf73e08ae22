#include "vantile/platform/linux/network_manager_messages.h"

#include <algorithm>
#include <cstdint>

namespace vantile {
namespace {

constexpr std::size_t longestText = 4096;

std::optional<std::string> bounded(const char* text) {
  const std::string_view view(text);
  if (view.size() > longestText) return std::nullopt;
  return std::string(view);
}

std::optional<std::vector<std::string>> readArrayOfPaths(sd_bus_message* message) {
  if (sd_bus_message_enter_container(message, 'a', "o") <= 0) return std::nullopt;
  std::vector<std::string> paths;
  const char* path = nullptr;
  int result = 0;
  while ((result = sd_bus_message_read_basic(message, 'o', &path)) > 0)
    if (auto text = bounded(path)) paths.push_back(std::move(*text));
  if (result < 0 || sd_bus_message_exit_container(message) < 0) return std::nullopt;
  return paths;
}

/// The variant that a message stands at. It is read once, as what it is; what is not read has to be
/// skipped.
class Variant {
 public:
  explicit Variant(sd_bus_message* message) : message_(message) {
    char type = 0;
    const char* contents = nullptr;
    if (sd_bus_message_peek_type(message, &type, &contents) > 0 && type == 'v' && contents)
      signature_ = contents;
  }

  std::optional<std::string> text() { return string('s'); }
  std::optional<std::string> path() { return string('o'); }

  template <class Number>
  std::optional<Number> number(char type) {
    if (!holds(type)) return std::nullopt;
    return inside([&]() -> std::optional<Number> {
      Number value{};
      if (sd_bus_message_read_basic(message_, type, &value) <= 0) return std::nullopt;
      return value;
    });
  }

  std::optional<std::vector<std::string>> paths() {
    if (signature_ != "ao") return std::nullopt;
    return inside([&] { return readArrayOfPaths(message_); });
  }

  /// Goes on behind it, whether it was read or not.
  bool pass() {
    if (failed_) return false;
    return read_ || sd_bus_message_skip(message_, "v") >= 0;
  }

 private:
  bool holds(char type) const { return signature_.size() == 1 && signature_[0] == type; }

  std::optional<std::string> string(char type) {
    if (!holds(type)) return std::nullopt;
    return inside([&]() -> std::optional<std::string> {
      const char* value = nullptr;
      if (sd_bus_message_read_basic(message_, type, &value) <= 0) return std::nullopt;
      return bounded(value);
    });
  }

  template <class Read>
  auto inside(Read read) -> decltype(read()) {
    failed_ = true;
    if (sd_bus_message_enter_container(message_, 'v', signature_.c_str()) <= 0) return std::nullopt;
    auto value = read();
    failed_ = sd_bus_message_exit_container(message_) < 0;
    read_ = true;
    return value;
  }

  sd_bus_message* const message_;
  std::string signature_;
  bool read_ = false, failed_ = false;
};

/// Calls `visit(name, variant)` for each entry of the `a{sv}` that the message stands at.
template <class Visit>
bool eachEntry(sd_bus_message* message, Visit visit) {
  if (sd_bus_message_enter_container(message, 'a', "{sv}") <= 0) return false;
  int entered = 0;
  while ((entered = sd_bus_message_enter_container(message, 'e', "sv")) > 0) {
    const char* name = nullptr;
    if (sd_bus_message_read_basic(message, 's', &name) <= 0) return false;
    Variant variant(message);
    visit(std::string_view(name), variant);
    if (!variant.pass() || sd_bus_message_exit_container(message) < 0) return false;
  }
  return entered == 0 && sd_bus_message_exit_container(message) >= 0;
}

bool isError(sd_bus_message* message) {
  return sd_bus_message_is_method_error(message, nullptr) != 0;
}

bool readConnectionSection(sd_bus_message* message, ConnectionSettings& settings) {
  return eachEntry(message, [&](std::string_view key, Variant& value) {
    if (key == "uuid") settings.uuid = value.text().value_or("");
    if (key == "id") settings.name = value.text().value_or("");
    if (key == "type") settings.type = value.text().value_or("");
    if (key == "interface-name") settings.interfaceName = value.text().value_or("");
    if (key == "autoconnect-priority")
      settings.autoconnectPriority = value.number<std::int32_t>('i').value_or(0);
    if (key == "timestamp") settings.timestamp = value.number<std::uint64_t>('t').value_or(0);
  });
}

}  // namespace

std::optional<std::string> readPath(sd_bus_message* message) {
  const char* path = nullptr;
  if (sd_bus_message_read_basic(message, 'o', &path) <= 0) return std::nullopt;
  return bounded(path);
}

std::optional<std::vector<std::string>> readPaths(sd_bus_message* message) {
  if (isError(message)) return std::nullopt;
  return readArrayOfPaths(message);
}

std::optional<std::vector<std::string>> readPathsProperty(sd_bus_message* message) {
  if (isError(message)) return std::nullopt;
  return Variant(message).paths();
}

std::optional<ConnectionSettings> readSettings(sd_bus_message* message) {
  if (isError(message) || sd_bus_message_enter_container(message, 'a', "{sa{sv}}") <= 0)
    return std::nullopt;
  ConnectionSettings settings;
  int entered = 0;
  while ((entered = sd_bus_message_enter_container(message, 'e', "sa{sv}")) > 0) {
    const char* section = nullptr;
    if (sd_bus_message_read_basic(message, 's', &section) <= 0) return std::nullopt;
    const bool read = std::string_view(section) == "connection"
                          ? readConnectionSection(message, settings)
                          : sd_bus_message_skip(message, "a{sv}") >= 0;
    if (!read || sd_bus_message_exit_container(message) < 0) return std::nullopt;
  }
  if (entered < 0) return std::nullopt;
  return settings;
}

std::optional<ActiveConnection> readActive(sd_bus_message* message) {
  ActiveConnection active;
  const auto read = [&](std::string_view key, Variant& value) {
    if (key == "Connection") active.connection = value.path().value_or("");
    if (key == "State") active.state = ActiveState(value.number<std::uint32_t>('u').value_or(0));
    if (key != "Devices") return;
    const auto devices = value.paths();
    if (devices && !devices->empty()) active.device = devices->front();
  };
  if (isError(message) || !eachEntry(message, read)) return std::nullopt;
  return active;
}

std::optional<std::string> readDeviceName(sd_bus_message* message) {
  std::string interface, ipInterface;
  const auto read = [&](std::string_view key, Variant& value) {
    if (key == "Interface") interface = value.text().value_or("");
    if (key == "IpInterface") ipInterface = value.text().value_or("");
  };
  if (isError(message) || !eachEntry(message, read)) return std::nullopt;
  return deviceName(interface, ipInterface);
}

bool tellsOf(sd_bus_message* message, const std::vector<std::string_view>& properties) {
  const auto isOne = [&](std::string_view name) {
    return std::find(properties.begin(), properties.end(), name) != properties.end();
  };
  const char* name = nullptr;
  bool found = false;
  if (sd_bus_message_read_basic(message, 's', &name) <= 0) return false;
  if (!eachEntry(message, [&](std::string_view key, Variant&) { found = found || isOne(key); }))
    return false;
  // The second list: properties whose new value is not told.
  if (sd_bus_message_enter_container(message, 'a', "s") <= 0) return found;
  while (sd_bus_message_read_basic(message, 's', &name) > 0) found = found || isOne(name);
  return found;
}

}  // namespace vantile
