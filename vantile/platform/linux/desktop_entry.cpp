#include "vantile/platform/linux/desktop_entry.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "vantile/platform/linux/glib_text.h"

namespace vantile {
namespace {

struct FreeKeyFile {
  void operator()(GKeyFile* file) const { g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, FreeKeyFile>;

/// The groups of a desktop entry, or null where the text is none.
KeyFile keyFileOf(const std::string& text) {
  KeyFile file(g_key_file_new());
  if (!g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr))
    return {};
  return file;
}

std::optional<std::string> textIn(const GlibText& text) {
  return text && *text ? std::optional<std::string>(text.get()) : std::nullopt;
}

std::optional<std::string> nameIn(GKeyFile* file) {
  return textIn(GlibText(g_key_file_get_locale_string(
      file, G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr)));
}

bool flagIn(GKeyFile* file, const char* key) {
  return g_key_file_get_boolean(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr) != FALSE;
}

std::optional<std::string> stringIn(GKeyFile* file, const char* key) {
  return textIn(GlibText(g_key_file_get_string(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr)));
}

std::vector<std::string> listIn(GKeyFile* file, const char* key) {
  std::vector<std::string> items;
  gchar** const list =
      g_key_file_get_string_list(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr, nullptr);
  for (gchar** item = list; item && *item; ++item) items.emplace_back(*item);
  g_strfreev(list);
  return items;
}

bool shareOne(const std::vector<std::string>& some, const std::vector<std::string>& others) {
  return std::find_first_of(some.begin(), some.end(), others.begin(), others.end()) != some.end();
}

}  // namespace

bool DesktopEntry::isShownIn(const std::vector<std::string>& desktops) const {
  return isShown && (onlyShownIn.empty() || shareOne(onlyShownIn, desktops)) &&
         !shareOne(notShownIn, desktops);
}

std::optional<DesktopEntry> desktopEntryOf(const std::string& text) {
  const auto file = keyFileOf(text);
  if (!file || stringIn(file.get(), G_KEY_FILE_DESKTOP_KEY_TYPE) !=
                   std::string_view(G_KEY_FILE_DESKTOP_TYPE_APPLICATION))
    return std::nullopt;
  DesktopEntry entry;
  entry.name = nameIn(file.get());
  entry.command = stringIn(file.get(), G_KEY_FILE_DESKTOP_KEY_EXEC);
  entry.isShown = !flagIn(file.get(), G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY) &&
                  !flagIn(file.get(), G_KEY_FILE_DESKTOP_KEY_HIDDEN);
  entry.onlyShownIn = listIn(file.get(), G_KEY_FILE_DESKTOP_KEY_ONLY_SHOW_IN);
  entry.notShownIn = listIn(file.get(), G_KEY_FILE_DESKTOP_KEY_NOT_SHOW_IN);
  return entry;
}

std::optional<std::string> localizedNameOf(const std::string& text) {
  const auto file = keyFileOf(text);
  return file ? nameIn(file.get()) : std::nullopt;
}

}  // namespace vantile
