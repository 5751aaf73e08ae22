#include "vantile/platform/system_facts.h"

#include <SystemConfiguration/SystemConfiguration.h>

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/objective_c.h"

extern "C" {
// Foundation's, whose headers are for Objective-C alone. Both give an autoreleased NSString.
id NSUserName(void);
id NSFullUserName(void);
}

namespace vantile {
namespace {

std::optional<std::string> textIn(id string) {
  return textOf(reinterpret_cast<CFStringRef>(string));
}

id processInformation() {
  return message<id>(classNamed("NSProcessInfo"), "processInfo");
}

class MacosSystemFacts final : public SystemFacts {
 public:
  std::optional<std::string> computerName() override {
    const Owned<CFStringRef> name(::SCDynamicStoreCopyComputerName(nullptr, nullptr));
    return textOf(name.get());
  }

  std::optional<std::string> hostName() override {
    return unlessRaised([] {
      const id host = message<id>(classNamed("NSHost"), "currentHost");
      return textIn(message<id>(host, "localizedName"));
    });
  }

  std::optional<std::string> userName() override {
    return unlessRaised([] { return textIn(::NSUserName()); });
  }

  std::optional<std::string> fullUserName() override {
    return unlessRaised([] { return textIn(::NSFullUserName()); });
  }

  // It has been deprecated since 10.10; a system without it raises an exception.
  std::optional<std::int64_t> operatingSystem() override {
    return unlessRaised([]() -> std::optional<std::int64_t> {
      const id information = processInformation();
      if (!information) return std::nullopt;
      return static_cast<std::int64_t>(message<unsigned long>(information, "operatingSystem"));
    });
  }

  std::optional<std::uint64_t> physicalMemory() override {
    return unlessRaised([]() -> std::optional<std::uint64_t> {
      const id information = processInformation();
      if (!information) return std::nullopt;
      return message<unsigned long long>(information, "physicalMemory");
    });
  }

  std::optional<std::string> versionText() override { return std::nullopt; }
};

}  // namespace

std::shared_ptr<SystemFacts> systemFacts() {
  static auto& facts = *new std::shared_ptr<SystemFacts>(std::make_shared<MacosSystemFacts>());
  return facts;
}

}  // namespace vantile
