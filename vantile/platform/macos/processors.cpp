#include "vantile/platform/macos/processors.h"

#include <mach/mach.h>
#include <sys/sysctl.h>

#include <algorithm>
#include <mutex>

#include "vantile/platform/macos/host_right.h"
#include "vantile/platform/posix/load_averages.h"

namespace vantile {
namespace {

/// The default processor set of the host.
class ProcessorSetRight {
 public:
  ProcessorSetRight() = default;
  ~ProcessorSetRight() {
    if (name_ != MACH_PORT_NULL) ::mach_port_deallocate(mach_task_self(), name_);
  }
  ProcessorSetRight(const ProcessorSetRight&) = delete;
  ProcessorSetRight& operator=(const ProcessorSetRight&) = delete;

  /// The name; asked for anew while the system gives none.
  processor_set_name_t name(host_t host) {
    const std::lock_guard lock(mutex_);
    if (name_ == MACH_PORT_NULL && ::processor_set_default(host, &name_) != KERN_SUCCESS)
      name_ = MACH_PORT_NULL;
    return name_;
  }

 private:
  std::mutex mutex_;
  processor_set_name_t name_ = MACH_PORT_NULL;
};

std::optional<std::uint32_t> number(int group, int item) {
  int name[] = {group, item};
  std::uint32_t value = 0;
  std::size_t size = sizeof value;
  if (::sysctl(name, 2, &value, &size, nullptr, 0) != 0) return std::nullopt;
  return value;
}

class MacosProcessors final : public Processors {
 public:
  std::optional<std::vector<ProcessorTicks>> ticks() override;
  std::optional<TaskCounts> tasks() override;
  std::vector<double> loadAverages() override;
  std::optional<std::uint64_t> frequency() override { return number(CTL_HW, HW_CPU_FREQ); }
  std::optional<std::uint32_t> count() override { return number(CTL_HW, HW_NCPU); }

 private:
  HostRight host_;
  ProcessorSetRight set_;
};

std::optional<std::vector<ProcessorTicks>> MacosProcessors::ticks() {
  natural_t processors = 0;
  processor_info_array_t info = nullptr;
  mach_msg_type_number_t words = 0;
  if (::host_processor_info(host_.name(), PROCESSOR_CPU_LOAD_INFO, &processors, &info, &words) !=
      KERN_SUCCESS)
    return std::nullopt;
  struct Array {  // the kernel's, to be given back
    ~Array() { ::vm_deallocate(mach_task_self(), reinterpret_cast<vm_address_t>(info), bytes); }
    processor_info_array_t info;
    vm_size_t bytes;
  } const array{info, words * sizeof(integer_t)};

  std::vector<ProcessorTicks> all(std::min<std::size_t>(processors, words / CPU_STATE_MAX));
  for (std::size_t at = 0; at < all.size(); ++at) {
    const auto state = [&](std::size_t which) {
      return static_cast<std::uint32_t>(array.info[at * CPU_STATE_MAX + which]);
    };
    all[at] = {.user = state(CPU_STATE_USER),
               .system = state(CPU_STATE_SYSTEM),
               .idle = state(CPU_STATE_IDLE),
               .nice = state(CPU_STATE_NICE)};
  }
  return all;
}

std::optional<TaskCounts> MacosProcessors::tasks() {
  processor_set_load_info_data_t load = {};
  mach_msg_type_number_t words = PROCESSOR_SET_LOAD_INFO_COUNT;
  if (::processor_set_statistics(set_.name(host_.name()), PROCESSOR_SET_LOAD_INFO,
                                 reinterpret_cast<processor_set_info_t>(&load),
                                 &words) != KERN_SUCCESS)
    return std::nullopt;
  return TaskCounts{load.task_count, load.thread_count};
}

std::vector<double> MacosProcessors::loadAverages() {
  return givenLoadAverages();
}

}  // namespace

std::shared_ptr<Processors> makeProcessors() {
  return std::make_shared<MacosProcessors>();
}

std::shared_ptr<Processors> systemProcessors() {
  static auto& processors = *new std::shared_ptr<Processors>(makeProcessors());
  return processors;
}

}  // namespace vantile
