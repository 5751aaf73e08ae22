// IOKit's services.

#include <IOKit/IOKitLib.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>

#include "fakes/objects.h"

using fakes::machine;

namespace {

constexpr io_iterator_t iterator = 0x401;
constexpr io_connect_t connection = 0x501;

std::size_t next = 0;             // service that the iterator gives
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

extern "C" {

CFMutableDictionaryRef IOServiceMatching(const char* name) {
  if (std::strcmp(name, "AppleSMC") != 0) std::abort();
  return fakes::createdBy<__CFDictionary>("IOServiceMatching");
}

kern_return_t IOServiceGetMatchingServices(mach_port_t mainPort, CFDictionaryRef matching,
                                           io_iterator_t* existing) {
  note("match");
  if (mainPort != MACH_PORT_NULL) std::abort();
  if (!matching) return static_cast<kern_return_t>(0xe00002c2);
  CFRelease(matching);  // it takes the reference over
  if (machine.matchingResult != KERN_SUCCESS) return machine.matchingResult;
  next = 0;
  *existing = give(iterator);
  return KERN_SUCCESS;
}

io_object_t IOIteratorNext(io_iterator_t from) {
  note("next");
  if (from != iterator || !live.contains(from)) std::abort();
  return next < machine.services.size() ? give(machine.services[next++]) : IO_OBJECT_NULL;
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
