#include "vantile/platform/interface_facts.h"

#include <IOKit/IOKitLib.h>

#include <string>

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/values.h"

namespace vantile {
namespace {

/// Owns a reference to one of the kernel's objects.
class KernelObject {
 public:
  explicit KernelObject(io_object_t object) : object_(object) {}
  ~KernelObject() {
    if (object_ != IO_OBJECT_NULL) ::IOObjectRelease(object_);
  }
  KernelObject(const KernelObject&) = delete;
  KernelObject& operator=(const KernelObject&) = delete;

  io_object_t get() const { return object_; }
  explicit operator bool() const { return object_ != IO_OBJECT_NULL; }

 private:
  const io_object_t object_;
};

/// The services that go by the interface's name. The call releases the dictionary.
io_iterator_t servicesNamed(const std::string& name) {
  io_iterator_t services = IO_OBJECT_NULL;
  const auto result = ::IOServiceGetMatchingServices(
      MACH_PORT_NULL, ::IOBSDNameMatching(MACH_PORT_NULL, 0, name.c_str()), &services);
  return result == KERN_SUCCESS ? services : IO_OBJECT_NULL;
}

io_registry_entry_t parentOf(io_service_t service) {
  io_registry_entry_t parent = IO_OBJECT_NULL;
  const auto result = ::IORegistryEntryGetParentEntry(service, "IOService", &parent);
  return result == KERN_SUCCESS ? parent : IO_OBJECT_NULL;
}

class MacosInterfaceFacts final : public InterfaceFacts {
 public:
  std::optional<bool> isEthernetDevice(std::string_view) override { return false; }

  std::optional<std::uint64_t> linkSpeed(std::string_view name) override {
    const auto property = stringOf("IOLinkSpeed");
    if (!property) return std::nullopt;
    const KernelObject services(servicesNamed(std::string(name)));
    if (!services) return std::nullopt;
    const KernelObject service(::IOIteratorNext(services.get()));
    if (!service) return std::nullopt;
    const KernelObject parent(parentOf(service.get()));
    if (!parent) return std::nullopt;
    const Owned<CFTypeRef> held(
        ::IORegistryEntryCreateCFProperty(parent.get(), property.get(), nullptr, 0));
    const auto number = as<CFNumberRef>(CFNumberGetTypeID(), held.get());
    const auto value = number ? valueOf(number) : std::nullopt;
    return value ? value->uint64() : std::nullopt;
  }
};

}  // namespace

std::shared_ptr<InterfaceFacts> systemInterfaceFacts() {
  static auto& facts =
      *new std::shared_ptr<InterfaceFacts>(std::make_shared<MacosInterfaceFacts>());
  return facts;
}

}  // namespace vantile
