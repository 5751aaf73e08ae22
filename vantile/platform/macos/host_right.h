#pragma once

#include <mach/mach.h>

#include <mutex>

namespace vantile {

/// Every `mach_host_self` adds a reference to the one name that the process has for its host.
class HostRight {
 public:
  HostRight() = default;
  ~HostRight() {
    if (name_ != MACH_PORT_NULL) ::mach_port_deallocate(mach_task_self(), name_);
  }
  HostRight(const HostRight&) = delete;
  HostRight& operator=(const HostRight&) = delete;

  /// The name; asked for anew while the system gives none.
  mach_port_t name() {
    const std::lock_guard lock(mutex_);
    if (name_ == MACH_PORT_NULL) name_ = ::mach_host_self();
    return name_;
  }

 private:
  std::mutex mutex_;
  mach_port_t name_ = MACH_PORT_NULL;
};

}  // namespace vantile
