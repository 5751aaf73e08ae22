// Mach, sysctl, and single functions of the C library.

#include <crt_externs.h>
#include <dlfcn.h>
#include <mach/mach.h>
#include <net/route.h>
#include <pthread.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/sysctl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "fakes/counters.h"

using fakes::isHost;
using fakes::machine;

namespace {

constexpr kern_return_t invalidArgument = 4;

/// Words 10, 20, 30 and so on, each with `high` in its upper half where it is 64 bits wide.
vm_statistics64_data_t wideCounts() {
  constexpr std::uint64_t high = std::uint64_t{1} << 32;
  vm_statistics64_data_t counts = {};
  counts.free_count = 10, counts.active_count = 20;
  counts.inactive_count = 30, counts.wire_count = 40;
  counts.pageins = high + 50, counts.pageouts = high + 60;
  counts.faults = high + 70, counts.cow_faults = high + 80;
  counts.lookups = high + 90, counts.hits = high + 100;
  counts.purges = high + 110, counts.purgeable_count = 120, counts.speculative_count = 130;
  counts.decompressions = high + 140, counts.compressions = high + 150;
  counts.compressor_page_count = 160;
  counts.total_uncompressed_pages_in_compressor = high + 170;
  return counts;
}

vm_statistics_data_t narrowCounts() {
  vm_statistics_data_t counts = {};
  counts.free_count = 1, counts.active_count = 2, counts.inactive_count = 3, counts.wire_count = 4;
  counts.pageins = 5, counts.pageouts = 6, counts.faults = 7, counts.cow_faults = 8;
  counts.lookups = 9, counts.hits = 10;
  return counts;
}

template <class Record>
kern_return_t give(const Record& record, integer_t* info, mach_msg_type_number_t* words) {
  if (*words != sizeof record / sizeof(integer_t)) return invalidArgument;
  std::memcpy(info, &record, sizeof record);
  return KERN_SUCCESS;
}

int answer(const std::string* value, void* old, size_t* oldSize) {
  if (!value) return errno = ENOENT, -1;
  if (old && *oldSize < value->size()) return errno = ENOMEM, -1;
  if (old) std::memcpy(old, value->data(), value->size());
  *oldSize = value->size();
  return 0;
}

int routingList(void* old, size_t* oldSize) {
  if (old) {
    machine.routingBuffers.push_back(old);
    machine.routingRooms.push_back(*oldSize);
  }
  const int result = answer(machine.routingList ? &*machine.routingList : nullptr, old, oldSize);
  if (!old && machine.routingSize) *oldSize = *machine.routingSize;
  if (!old && machine.routingListLater) machine.routingList = *machine.routingListLater;
  return result;
}

}  // namespace

extern "C" {

vm_size_t vm_page_size = 16384;
mach_port_t mach_task_self_ = 0x103;

mach_port_t mach_host_self(void) {
  const std::lock_guard lock(fakes::mutex);
  if (machine.hostName != MACH_PORT_NULL) ++fakes::counts.hostRights;
  return machine.hostName;
}

kern_return_t mach_port_deallocate(ipc_space_t task, mach_port_t name) {
  const bool host = isHost(name);
  const bool mainPort = fakes::isMainPort(name);
  if (task != mach_task_self_ || (!host && !mainPort && !fakes::isProcessorSet(name))) std::abort();
  const std::lock_guard lock(fakes::mutex);
  --(host       ? fakes::counts.hostRights
     : mainPort ? fakes::counts.mainPortRights
                : fakes::counts.setRights);
  return KERN_SUCCESS;
}

kern_return_t host_statistics(host_t host, host_flavor_t flavor, host_info_t info,
                              mach_msg_type_number_t* words) {
  if (machine.statisticsResult != KERN_SUCCESS) return machine.statisticsResult;
  if (!isHost(host) || flavor != HOST_VM_INFO) return invalidArgument;
  return give(narrowCounts(), info, words);
}

kern_return_t host_statistics64(host_t host, host_flavor_t flavor, host_info64_t info,
                                mach_msg_type_number_t* words) {
  if (machine.statisticsResult != KERN_SUCCESS) return machine.statisticsResult;
  if (!isHost(host)) return invalidArgument;
  if (flavor == HOST_VM_INFO) return give(narrowCounts(), info, words);
  return flavor == HOST_VM_INFO64 ? give(wideCounts(), info, words) : invalidArgument;
}

void* fake_dlsym(void* handle, const char* name) {
  if (handle != RTLD_DEFAULT || std::strcmp(name, "host_statistics64") != 0) std::abort();
  return machine.exportsStatistics64 ? reinterpret_cast<void*>(&host_statistics64) : nullptr;
}

int sysctl(int* name, unsigned int depth, void* old, size_t* oldSize, void*, size_t) {
  constexpr int interfaces[] = {CTL_NET, PF_ROUTE, 0, 0, NET_RT_IFLIST, 0};
  if (depth == 6 && std::equal(name, name + depth, interfaces)) return routingList(old, oldSize);
  if (depth != 2) std::abort();
  if (name[0] == CTL_VM && name[1] == VM_SWAPUSAGE)
    return answer(machine.swapUsage ? &*machine.swapUsage : nullptr, old, oldSize);
  const auto found = machine.sysctlNumbers.find({name[0], name[1]});
  return answer(found == machine.sysctlNumbers.end() ? nullptr : &found->second, old, oldSize);
}

int sysctlbyname(const char* name, void* old, size_t* oldSize, void*, size_t) {
  const auto found = machine.sysctlValues.find(name);
  const int result =
      answer(found == machine.sysctlValues.end() ? nullptr : &found->second, old, oldSize);
  if (!old && result == 0 && machine.sysctlLater.contains(name))
    found->second = machine.sysctlLater[name];
  return result;
}

int fake_getpwuid_r(uid_t user, struct passwd* entry, char* text, size_t size,
                    struct passwd** found) {
  *found = nullptr;
  if (user != ::getuid()) std::abort();
  if (!machine.accountHome) return 0;
  const std::string& home = *machine.accountHome;
  if (size < home.size() + 1 || size < machine.accountBytes) return ERANGE;
  entry->pw_dir = text;
  std::memcpy(text, home.c_str(), home.size() + 1);
  *found = entry;
  return 0;
}

int fake_posix_spawnattr_setflags(posix_spawnattr_t* attributes, int flags) {
  machine.spawnFlags = flags;
#undef posix_spawnattr_setflags
  return ::posix_spawnattr_setflags(attributes,
                                    static_cast<short>(flags & ~POSIX_SPAWN_CLOEXEC_DEFAULT));
}

int fake_getrlimit(int resource, struct rlimit* limit) {
  if (resource != RLIMIT_NOFILE) std::abort();
  if (!machine.descriptorLimit) return errno = EINVAL, -1;
  limit->rlim_cur = *machine.descriptorLimit;
  return 0;
}

int pthread_main_np(void) {
  return machine.isFirstThread ? 1 : 0;
}

uint64_t clock_gettime_nsec_np(clockid_t clock) {
  if (clock != CLOCK_UPTIME_RAW) std::abort();
  return static_cast<uint64_t>(fakes::uptime().count());
}

char*** _NSGetEnviron(void) {
  return &::environ;
}

}  // extern "C"
