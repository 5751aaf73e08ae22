#include "vantile/platform/linux/content_kinds.h"

#include <gio/gio.h>

#include <utility>

#include "vantile/platform/linux/glib_text.h"

namespace vantile {
namespace {

constexpr std::size_t mostKnown = 4096;  // names may have any extension

}  // namespace

std::optional<UsageKind> kindByDatabase(const std::string& name) {
  if (isAppImage(name)) return UsageKind::applications;
  const GlibText type(g_content_type_guess(name.c_str(), nullptr, 0, nullptr));
  const GlibText mime(type ? g_content_type_get_mime_type(type.get()) : nullptr);
  return mime ? kindOfType(mime.get()) : std::nullopt;
}

std::optional<UsageKind> ContentKinds::of(std::string_view name) {
  const auto key = typeKeyOf(name);
  if (!key) return std::nullopt;
  if (const auto found = known_.find(*key); found != known_.end()) return found->second;
  if (known_.size() >= mostKnown) known_.clear();
  std::string asked(*key);
  const auto kind = look_(asked.starts_with('.') ? "x" + asked : asked);
  known_.emplace(std::move(asked), kind);
  return kind;
}

}  // namespace vantile
