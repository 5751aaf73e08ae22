#include "vantile/platform/macos/host_resources.h"

#include <limits.h>

#include <array>
#include <mutex>
#include <utility>

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

std::optional<std::string> inMainBundle(std::string_view name, std::string_view type) {
  const CFBundleRef bundle = CFBundleGetMainBundle();
  const auto called = stringOf(name), extension = stringOf(type);
  if (!bundle || !called || !extension) return std::nullopt;
  const Owned<CFURLRef> url(CFBundleCopyResourceURL(
      bundle, called.get(), type.empty() ? nullptr : extension.get(), nullptr));
  std::array<char, PATH_MAX> path = {};
  if (!url ||
      !CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(path.data()),
                                        static_cast<CFIndex>(path.size())))
    return std::nullopt;
  return path.data();
}

/// An empty default has the key itself given where there is no translation.
std::optional<std::string> inDefaultTable(std::string_view key) {
  const CFBundleRef bundle = CFBundleGetMainBundle();
  const auto name = stringOf(key), none = stringOf("");
  if (!bundle || !name || !none) return std::nullopt;
  const Owned<CFStringRef> found(
      CFBundleCopyLocalizedString(bundle, name.get(), none.get(), nullptr));
  return textOf(found.get());
}

class MacosHostResources final : public HostResources {
 public:
  std::optional<std::string> path(std::string_view name, std::string_view type) override {
    const std::lock_guard lock(mutex_);
    return folder_ ? fileIn(*folder_, name, type) : inMainBundle(name, type);
  }

  std::string localizedString(std::string_view key) override {
    const std::lock_guard lock(mutex_);
    return inDefaultTable(key).value_or(std::string(key));
  }

  void setFolder(std::optional<std::string> folder) override {
    const std::lock_guard lock(mutex_);
    folder_ = std::move(folder);
  }

 private:
  std::mutex mutex_;  // over the folder, and over the bundle's look-up, which may fill its caches
  std::optional<std::string> folder_;
};

}  // namespace

std::shared_ptr<HostResources> makeHostResources() {
  return std::make_shared<MacosHostResources>();
}

std::shared_ptr<HostResources> systemHostResources() {
  static auto& resources = *new std::shared_ptr<HostResources>(makeHostResources());
  return resources;
}

}  // namespace vantile
