#include "vantile/platform/system_version.h"

namespace vantile {
namespace {

/// What this platform layer provides is what macOS provides from this release on.
class InterfaceLevel final : public SystemVersion {
 public:
  std::optional<std::string> version() override { return "10.9"; }
};

}  // namespace

std::shared_ptr<SystemVersion> systemVersion() {
  static auto& version = *new std::shared_ptr<SystemVersion>(std::make_shared<InterfaceLevel>());
  return version;
}

}  // namespace vantile
