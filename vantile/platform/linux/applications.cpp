#include "vantile/platform/applications.h"

#include "vantile/platform/linux/glib_text.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

struct FreeKeyFile {
  void operator()(GKeyFile* file) const { g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, FreeKeyFile>;

constexpr std::size_t longestEntry = 1u << 20;

/// The groups of a desktop entry, or null where the text is none.
KeyFile keyFileOf(const std::string& text) {
  KeyFile file(g_key_file_new());
  if (!g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr))
    return {};
  return file;
}

/// Whether the text is a desktop entry that menus show.
bool isShownApplication(const std::string& text) {
  const auto entry = keyFileOf(text);
  if (!entry) return false;
  const auto flag = [&entry](const char* key) {
    return g_key_file_get_boolean(entry.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr) != FALSE;
  };
  const GlibText type(g_key_file_get_string(entry.get(), G_KEY_FILE_DESKTOP_GROUP,
                                            G_KEY_FILE_DESKTOP_KEY_TYPE, nullptr));
  return type && std::string_view(type.get()) == G_KEY_FILE_DESKTOP_TYPE_APPLICATION &&
         !flag(G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY) && !flag(G_KEY_FILE_DESKTOP_KEY_HIDDEN);
}

/// The name that a desktop entry gives itself in the user's language, or nothing.
std::optional<std::string> localizedName(const std::string& text) {
  const auto entry = keyFileOf(text);
  if (!entry) return std::nullopt;
  const GlibText name(g_key_file_get_locale_string(entry.get(), G_KEY_FILE_DESKTOP_GROUP,
                                                   G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr));
  return name && *name.get() ? std::optional<std::string>(name.get()) : std::nullopt;
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
      const auto text = contentsOf(path, longestEntry);
      if (const auto shown = text ? localizedName(*text) : std::nullopt) return *shown + ".desktop";
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
