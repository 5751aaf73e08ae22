#include "vantile/platform/system_version.h"

#include <sys/sysctl.h>

#include <array>
#include <cstring>

namespace vantile {
namespace {

class MacosSystemVersion final : public SystemVersion {
 public:
  std::optional<std::string> version() override {
    std::array<char, 64> text = {};
    std::size_t size = text.size() - 1;  // leaves a NUL, should the kernel send none
    if (::sysctlbyname("kern.osproductversion", text.data(), &size, nullptr, 0) != 0)
      return std::nullopt;
    return std::string(text.data());
  }
};

}  // namespace

std::shared_ptr<SystemVersion> systemVersion() {
  static auto& version =
      *new std::shared_ptr<SystemVersion>(std::make_shared<MacosSystemVersion>());
  return version;
}

}  // namespace vantile
