// SystemConfiguration.

#include <SystemConfiguration/SystemConfiguration.h>

#include <cstdlib>

#include "fakes/objects.h"

using fakes::machine;

extern "C" {

CFStringRef SCDynamicStoreCopyComputerName(SCDynamicStoreRef store, CFStringEncoding* encoding) {
  if (store || encoding) std::abort();
  if (!machine.computerName) return nullptr;
  auto* const name = fakes::createdBy<__CFString>("SCDynamicStoreCopyComputerName");
  if (name) name->text = *machine.computerName;
  return name;
}

}  // extern "C"
