#include "vantile/platform/macos/core_foundation.h"

namespace vantile {

Owned<CFStringRef> stringOf(std::string_view text) {
  return Owned<CFStringRef>(
      CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(text.data()),
                              static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false));
}

Owned<CFStringRef> pathString(const std::string& path) {
  if (auto string = stringOf(path)) return string;
  return Owned<CFStringRef>(CFStringCreateWithFileSystemRepresentation(nullptr, path.c_str()));
}

std::optional<std::string> textOf(CFStringRef string) {
  if (!string) return std::nullopt;
  const CFRange whole = {0, CFStringGetLength(string)};
  const auto convert = [&](UInt8* to, CFIndex room, CFIndex& size) {
    return CFStringGetBytes(string, whole, kCFStringEncodingUTF8, 0, false, to, room, &size) ==
           whole.length;
  };
  CFIndex size = 0;
  if (!convert(nullptr, 0, size)) return std::nullopt;
  std::string text(static_cast<std::size_t>(size), '\0');
  if (!convert(reinterpret_cast<UInt8*>(text.data()), size, size)) return std::nullopt;
  return text;
}

}  // namespace vantile
