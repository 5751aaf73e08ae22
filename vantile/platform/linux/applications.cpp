#include "vantile/platform/applications.h"

#include <glib.h>

#include <algorithm>

namespace vantile {
namespace {

struct FreeKeyFile {
  void operator()(GKeyFile* file) const { g_key_file_free(file); }
};
struct FreeText {
  void operator()(char* text) const { g_free(text); }
};

/// Whether the text is a desktop entry that menus show.
bool isShownApplication(const std::string& text) {
  const std::unique_ptr<GKeyFile, FreeKeyFile> entry(g_key_file_new());
  if (!g_key_file_load_from_data(entry.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr))
    return false;
  const auto flag = [&entry](const char* key) {
    return g_key_file_get_boolean(entry.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr) != FALSE;
  };
  const std::unique_ptr<char, FreeText> type(g_key_file_get_string(
      entry.get(), G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_TYPE, nullptr));
  return type && std::string_view(type.get()) == G_KEY_FILE_DESKTOP_TYPE_APPLICATION &&
         !flag(G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY) && !flag(G_KEY_FILE_DESKTOP_KEY_HIDDEN);
}

// A name that is nothing but "." and an extension has no extension.
bool hasExtension(std::string_view name, std::string_view ending) {
  return name.size() > ending.size() && name.ends_with(ending);
}

bool hasExtensionInAnyCase(std::string_view name, std::string_view ending) {
  return name.size() > ending.size() &&
         g_ascii_strncasecmp(name.data() + (name.size() - ending.size()), ending.data(),
                             ending.size()) == 0;
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
};

}  // namespace

std::shared_ptr<Applications> systemApplications() {
  static auto& kinds = *new std::shared_ptr<Applications>(std::make_shared<LinuxApplications>());
  return kinds;
}

}  // namespace vantile
