#include "vantile/platform/system_entries.h"

#include <IOKit/IOKitLib.h>
#include <sys/sysctl.h>

#include "vantile/platform/macos/core_foundation.h"

namespace vantile {
namespace {

class MacosSystemEntries final : public SystemEntries {
 public:
  std::optional<std::string> registryText(std::string_view key) override {
    const auto name = stringOf(key);
    // No port stands for the main one, whose newer constant older systems lack. The call releases
    // the dictionary.
    const io_service_t device = ::IOServiceGetMatchingService(
        MACH_PORT_NULL, ::IOServiceMatching("IOPlatformExpertDevice"));
    if (device == IO_OBJECT_NULL) return std::nullopt;
    const Owned<CFTypeRef> property(
        name ? ::IORegistryEntryCreateCFProperty(device, name.get(), nullptr, 0) : nullptr);
    ::IOObjectRelease(device);
    return textOf(as<CFStringRef>(CFStringGetTypeID(), property.get()));
  }

  std::optional<std::string> controlText(std::string_view name) override {
    const std::string entry(name);
    std::size_t size = 0;
    if (::sysctlbyname(entry.c_str(), nullptr, &size, nullptr, 0) != 0) return std::nullopt;
    std::string text(size, '\0');
    // A text that grew meanwhile is left as far as the kernel wrote it.
    ::sysctlbyname(entry.c_str(), text.data(), &size, nullptr, 0);
    return text;
  }

  std::optional<std::uint64_t> controlNumber(std::string_view name) override {
    const std::string entry(name);
    std::uint64_t number = 0;
    std::size_t size = sizeof number;
    if (::sysctlbyname(entry.c_str(), &number, &size, nullptr, 0) != 0) return std::nullopt;
    return number;
  }
};

}  // namespace

std::shared_ptr<SystemEntries> systemEntries() {
  static auto& entries =
      *new std::shared_ptr<SystemEntries>(std::make_shared<MacosSystemEntries>());
  return entries;
}

}  // namespace vantile
