// What Mach tells of processors, and the load averages.

#include <mach/mach.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>

#include "fakes/counters.h"

using fakes::machine;

namespace {

constexpr kern_return_t invalidArgument = 4;

std::map<void*, std::size_t> given;  // arrays, with their bytes

}  // namespace

namespace fakes {

bool isHost(std::uint32_t name) {
  const std::lock_guard lock(mutex);
  return name != MACH_PORT_NULL && name == machine.hostName && counts.hostRights > 0;
}

bool isProcessorSet(std::uint32_t name) {
  const std::lock_guard lock(mutex);
  return name != MACH_PORT_NULL && name == machine.processorSet && counts.setRights > 0;
}

}  // namespace fakes

extern "C" {

kern_return_t host_processor_info(host_t host, processor_flavor_t flavor, natural_t* processors,
                                  processor_info_array_t* info, mach_msg_type_number_t* words) {
  if (machine.processorResult != KERN_SUCCESS) return machine.processorResult;
  if (!fakes::isHost(host) || flavor != PROCESSOR_CPU_LOAD_INFO) return invalidArgument;
  const auto& ticks = machine.processorTicks;
  const auto bytes = ticks.size() * sizeof(integer_t);
  void* const array = std::malloc(std::max<std::size_t>(bytes, 1));
  if (!ticks.empty()) std::memcpy(array, ticks.data(), bytes);
  *processors = machine.processorCount.value_or(static_cast<unsigned>(ticks.size() / 4));
  *info = static_cast<processor_info_array_t>(array);
  *words = static_cast<mach_msg_type_number_t>(ticks.size());
  const std::lock_guard lock(fakes::mutex);
  given[array] = bytes;
  ++fakes::counts.kernelMemory;
  return KERN_SUCCESS;
}

kern_return_t vm_deallocate(vm_map_t task, vm_address_t address, vm_size_t size) {
  const std::lock_guard lock(fakes::mutex);
  const auto array = given.find(reinterpret_cast<void*>(address));
  if (task != mach_task_self_ || array == given.end() || array->second != size) std::abort();
  std::free(array->first);
  given.erase(array);
  --fakes::counts.kernelMemory;
  return KERN_SUCCESS;
}

kern_return_t processor_set_default(host_t host, processor_set_name_t* set) {
  if (!fakes::isHost(host) || machine.processorSet == MACH_PORT_NULL) return invalidArgument;
  const std::lock_guard lock(fakes::mutex);
  ++fakes::counts.setRights;
  *set = machine.processorSet;
  return KERN_SUCCESS;
}

kern_return_t processor_set_statistics(processor_set_name_t set, processor_set_flavor_t flavor,
                                       processor_set_info_t info, mach_msg_type_number_t* words) {
  if (machine.processorSetResult != KERN_SUCCESS) return machine.processorSetResult;
  if (!fakes::isProcessorSet(set) || flavor != PROCESSOR_SET_LOAD_INFO) return invalidArgument;
  if (*words != PROCESSOR_SET_LOAD_INFO_COUNT) return invalidArgument;
  const processor_set_load_info_data_t load = {machine.taskCount, machine.threadCount, 0, 0};
  std::memcpy(info, &load, sizeof load);
  return KERN_SUCCESS;
}

int fake_getloadavg(double averages[], int count) {
  if (machine.loadAverages.empty()) return -1;
  const int told = std::min(count, static_cast<int>(machine.loadAverages.size()));
  std::copy_n(machine.loadAverages.begin(), told, averages);
  return told;
}

}  // extern "C"
