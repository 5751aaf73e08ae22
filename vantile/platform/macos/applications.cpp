#include "vantile/platform/applications.h"

#include "vantile/platform/macos/core_foundation.h"

namespace vantile {
namespace {

class MacosApplications final : public Applications {
 public:
  bool isApplication(std::string_view name, FileKind kind, const Contents&) override {
    constexpr std::string_view ending = ".app";
    // A name that is nothing but ".app" has no extension.
    return kind == FileKind::folder && name.size() > ending.size() && name.ends_with(ending);
  }

  bool isApplicationExtension(std::string_view extension) override { return extension == "app"; }

  std::optional<std::string> displayName(const std::string& path) override {
    const Owned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()),
        false));
    CFTypeRef name = nullptr;
    if (!url || !CFURLCopyResourcePropertyForKey(url.get(), kCFURLLocalizedNameKey, &name, nullptr))
      return std::nullopt;
    const Owned<CFTypeRef> owner(name);
    return textOf(as<CFStringRef>(CFStringGetTypeID(), name));
  }
};

}  // namespace

std::shared_ptr<Applications> systemApplications() {
  static auto& kinds = *new std::shared_ptr<Applications>(std::make_shared<MacosApplications>());
  return kinds;
}

}  // namespace vantile
