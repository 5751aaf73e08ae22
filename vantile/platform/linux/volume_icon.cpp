#include "vantile/platform/linux/volume_icon.h"

#include <gio/gio.h>
#include <gio/gunixmounts.h>

#include <utility>

#include "vantile/platform/linux/glib_text.h"

namespace vantile {
namespace {

struct ReleaseGio {
  void operator()(GUnixMountEntry* mount) const { g_unix_mount_free(mount); }
  void operator()(GIcon* icon) const { g_object_unref(icon); }
};

std::string nameOf(GIcon* icon) {
  if (!G_IS_THEMED_ICON(icon)) return {};
  const char* const* const names = g_themed_icon_get_names(G_THEMED_ICON(icon));
  return names && names[0] ? names[0] : "";  // the most fitting one comes first
}

std::string fileOf(GIcon* icon) {
  if (!G_IS_FILE_ICON(icon)) return {};
  const GlibText path(g_file_get_path(g_file_icon_get_file(G_FILE_ICON(icon))));
  return path ? path.get() : "";
}

}  // namespace

std::shared_ptr<const Image> iconOfMount(const std::string& mountPoint) {
  const std::unique_ptr<GUnixMountEntry, ReleaseGio> mount(
      g_unix_mount_at(mountPoint.c_str(), nullptr));
  if (!mount) return nullptr;
  const std::unique_ptr<GIcon, ReleaseGio> icon(g_unix_mount_guess_icon(mount.get()));
  if (!icon) return nullptr;
  Image image{nameOf(icon.get()), fileOf(icon.get()), nullptr};
  if (image.name.empty() && image.file.empty()) return nullptr;
  return std::make_shared<const Image>(std::move(image));
}

}  // namespace vantile
