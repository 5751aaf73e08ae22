// IOKit's services.

#include <IOKit/IOKitLib.h>
#include <IOKit/pwr_mgt/IOPMLib.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "fakes/objects.h"

using fakes::machine;

namespace {

constexpr io_iterator_t iterator = 0x401;
constexpr io_connect_t connection = 0x501;
constexpr io_service_t expertDevice = 0x601, battery = 0x602;
constexpr mach_port_t mainPortName = 0x701;

struct Matching : __CFDictionary {
  std::string className, interfaceName;
};

bool isFor(const char* className, CFDictionaryRef matching) {
  return static_cast<const Matching*>(matching)->className == className;
}

std::vector<io_service_t> matched;  // by the last search
std::size_t next = 0;               // service that the iterator gives
constexpr io_object_t toParent = 0x100;

/// The services that the dictionary stands for.
std::vector<io_service_t> servicesFor(CFDictionaryRef matching) {
  const auto& name = static_cast<const Matching*>(matching)->interfaceName;
  if (name.empty()) return machine.services;
  const auto found = machine.namedServices.find(name);
  if (found == machine.namedServices.end()) return {};
  return {found->second, found->second + 1};
}

std::multiset<io_object_t> live;  // objects that somebody owes a release

void note(const char* call) {
  machine.calls.emplace_back(call);
}

io_object_t give(io_object_t object) {
  const std::lock_guard lock(fakes::mutex);
  live.insert(object);
  ++fakes::counts.kernelObjects;
  return object;
}

}  // namespace

bool fakes::isMainPort(std::uint32_t name) {
  const std::lock_guard lock(mutex);
  return name == mainPortName && counts.mainPortRights > 0;
}

extern "C" {

kern_return_t IOMasterPort(mach_port_t bootstrapPort, mach_port_t* mainPort) {
  if (bootstrapPort != MACH_PORT_NULL) std::abort();
  if (machine.mainPortResult != KERN_SUCCESS) return machine.mainPortResult;
  const std::lock_guard lock(fakes::mutex);
  ++fakes::counts.mainPortRights;
  *mainPort = mainPortName;
  return KERN_SUCCESS;
}

IOReturn IOPMCopyBatteryInfo(mach_port_t mainPort, CFArrayRef* info) {
  if (!fakes::isMainPort(mainPort)) std::abort();
  if (machine.batteryInfo)
    *info = dynamic_cast<CFArrayRef>(fakes::objectFrom(*machine.batteryInfo));
  return machine.batteryInfoResult;
}

CFMutableDictionaryRef IOServiceNameMatching(const char* name) {
  auto* const matching = fakes::createdBy<Matching>("IOServiceNameMatching");
  if (matching) matching->className = std::string("called ") + name;
  return matching;
}

CFMutableDictionaryRef IOServiceMatching(const char* name) {
  auto* const matching = fakes::createdBy<Matching>("IOServiceMatching");
  if (matching) matching->className = name;
  return matching;
}

CFMutableDictionaryRef IOBSDNameMatching(mach_port_t mainPort, uint32_t options,
                                         const char* bsdName) {
  if (mainPort != MACH_PORT_NULL || options != 0) std::abort();
  auto* const matching = fakes::createdBy<Matching>("IOBSDNameMatching");
  if (matching) matching->interfaceName = bsdName;
  return matching;
}

kern_return_t IORegistryEntryGetParentEntry(io_registry_entry_t entry, const char* plane,
                                            io_registry_entry_t* parent) {
  note("parent");
  if (!live.contains(entry) || std::strcmp(plane, "IOService") != 0) std::abort();
  if (!machine.hasParent) return static_cast<kern_return_t>(0xe00002f0);
  *parent = give(entry + toParent);
  return KERN_SUCCESS;
}

io_service_t IOServiceGetMatchingService(mach_port_t mainPort, CFDictionaryRef matching) {
  note("match");
  if (mainPort != MACH_PORT_NULL) std::abort();
  if (!matching) return IO_OBJECT_NULL;
  const bool isBattery = isFor("called AppleSmartBattery", matching);
  if (!isBattery && !isFor("IOPlatformExpertDevice", matching)) std::abort();
  CFRelease(matching);  // it takes the reference over
  if (isBattery) return machine.batteryEntry ? give(battery) : IO_OBJECT_NULL;
  return machine.hasExpertDevice ? give(expertDevice) : IO_OBJECT_NULL;
}

CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key,
                                          CFAllocatorRef allocator, IOOptionBits options) {
  note("property");
  const bool isParent = entry >= 0x701 + toParent;
  if ((entry != expertDevice && !isParent) || !live.contains(entry) || allocator || options != 0)
    std::abort();
  const auto found = machine.registry.find(*fakes::utf8Of(key->text));
  return found == machine.registry.end() ? nullptr : fakes::objectFrom(found->second);
}

kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
                                                CFMutableDictionaryRef* properties,
                                                CFAllocatorRef allocator, IOOptionBits options) {
  note("properties");
  if (entry != battery || !live.contains(entry) || allocator || options != 0) std::abort();
  if (machine.propertiesResult != KERN_SUCCESS) return machine.propertiesResult;
  *properties = dynamic_cast<CFMutableDictionaryRef>(fakes::objectFrom(*machine.batteryEntry));
  return KERN_SUCCESS;
}

kern_return_t IOServiceGetMatchingServices(mach_port_t mainPort, CFDictionaryRef matching,
                                           io_iterator_t* existing) {
  note("match");
  if (mainPort != MACH_PORT_NULL) std::abort();
  if (!matching) return static_cast<kern_return_t>(0xe00002c2);
  const bool byName = !static_cast<const Matching*>(matching)->interfaceName.empty();
  if (!byName && !isFor("AppleSMC", matching)) std::abort();
  matched = servicesFor(matching);
  CFRelease(matching);  // it takes the reference over
  if (machine.matchingResult != KERN_SUCCESS) return machine.matchingResult;
  next = 0;
  *existing = give(iterator);
  return KERN_SUCCESS;
}

io_object_t IOIteratorNext(io_iterator_t from) {
  note("next");
  if (from != iterator || !live.contains(from)) std::abort();
  return next < matched.size() ? give(matched[next++]) : IO_OBJECT_NULL;
}

kern_return_t IOObjectRelease(io_object_t object) {
  note(object == iterator ? "release iterator" : "release service");
  const std::lock_guard lock(fakes::mutex);
  const auto found = live.find(object);
  if (found == live.end()) std::abort();
  live.erase(found);
  --fakes::counts.kernelObjects;
  return KERN_SUCCESS;
}

kern_return_t IOServiceOpen(io_service_t service, task_port_t owningTask, uint32_t type,
                            io_connect_t* connect) {
  note("open");
  if (!live.contains(service) || owningTask != mach_task_self() || type != 0) std::abort();
  if (machine.openResult != KERN_SUCCESS) return machine.openResult;
  const std::lock_guard lock(fakes::mutex);
  ++fakes::counts.connections;
  *connect = connection;
  return KERN_SUCCESS;
}

kern_return_t IOServiceClose(io_connect_t connect) {
  note("close");
  if (connect != connection) std::abort();
  const std::lock_guard lock(fakes::mutex);
  --fakes::counts.connections;
  return machine.closeResult;
}

kern_return_t IOConnectCallStructMethod(mach_port_t connect, uint32_t selector, const void* input,
                                        size_t inputSize, void* output, size_t* outputSize) {
  note(("call " + std::to_string(selector)).c_str());
  if (connect != connection) std::abort();
  machine.callInput.assign(static_cast<const char*>(input), inputSize);
  machine.callRoom = *outputSize;
  if (machine.callResult != KERN_SUCCESS) return machine.callResult;
  if (machine.callOutput.size() > *outputSize) std::abort();
  std::memcpy(output, machine.callOutput.data(), machine.callOutput.size());
  *outputSize = machine.callOutput.size();
  return KERN_SUCCESS;
}

}  // extern "C"
