#pragma once

#include <libudev.h>

#include <memory>

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

}  // namespace vantile
