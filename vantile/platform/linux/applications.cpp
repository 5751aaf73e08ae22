#include "vantile/platform/applications.h"

#include <glib.h>

#include "vantile/platform/linux/desktop_entry.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

/// Whether the text is a desktop entry that menus show.
bool isShownApplication(const std::string& text) {
  const auto entry = desktopEntryOf(text);
  return entry && entry->isShown;
}

std::string_view lastComponent(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return path == "/" ? path : path.substr(path.rfind('/') + 1);
}

// A name that is nothing but "." and an extension has no extension.
bool hasExtension(std::string_view name, std::string_view ending) {
  return name.size() > ending.size() && name.ends_with(ending);
}

bool equalInAnyCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && g_ascii_strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool hasExtensionInAnyCase(std::string_view name, std::string_view ending) {
  return name.size() > ending.size() &&
         equalInAnyCase(name.substr(name.size() - ending.size()), ending);
}

class LinuxApplications final : public Applications {
 public:
  bool isApplication(std::string_view name, FileKind kind, const Contents& contents) override {
    if (kind == FileKind::folder) return hasExtension(name, ".app");
    if (kind != FileKind::regular) return false;
    if (hasExtensionInAnyCase(name, ".AppImage")) return true;
    if (!hasExtension(name, ".desktop")) return false;
    const auto text = contents();
    return text && isShownApplication(*text);
  }

  bool isApplicationExtension(std::string_view extension) override {
    return extension == "app" || extension == "desktop" || equalInAnyCase(extension, "AppImage");
  }

  std::optional<std::string> displayName(const std::string& path) override {
    if (path.empty()) return std::nullopt;
    const auto name = lastComponent(path);
    if (hasExtension(name, ".desktop")) {
      const auto text = contentsOf(path, longestDesktopEntry);
      if (const auto shown = text ? localizedNameOf(*text) : std::nullopt)
        return *shown + ".desktop";
    }
    return std::string(name);
  }
};

}  // namespace

std::shared_ptr<Applications> systemApplications() {
  static auto& kinds = *new std::shared_ptr<Applications>(std::make_shared<LinuxApplications>());
  return kinds;
}

}  // namespace vantile
