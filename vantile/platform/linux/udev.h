#pragma once

#include <libudev.h>
#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>

namespace vantile {

struct ReleaseUdev {
  void operator()(udev* context) const { ::udev_unref(context); }
  void operator()(udev_device* device) const { ::udev_device_unref(device); }
  void operator()(udev_monitor* monitor) const { ::udev_monitor_unref(monitor); }
};

template <class Object>
using Udev = std::unique_ptr<Object, ReleaseUdev>;

/// A context for one thread; null where there can't be one.
inline Udev<udev> udevContext() {
  return Udev<udev>(::udev_new());
}

/// What udev's rules read of the block device when it came, under `name`; nothing where they did
/// not.
inline std::optional<std::string> udevProperty(dev_t number, const char* name) {
  const auto context = udevContext();
  const Udev<udev_device> device(context ? ::udev_device_new_from_devnum(context.get(), 'b', number)
                                         : nullptr);
  const char* const text = device ? ::udev_device_get_property_value(device.get(), name) : nullptr;
  return text ? std::optional<std::string>(text) : std::nullopt;
}

}  // namespace vantile
