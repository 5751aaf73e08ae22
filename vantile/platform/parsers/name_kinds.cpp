#include "vantile/platform/parsers/name_kinds.h"

#include <algorithm>

namespace vantile {
namespace {

constexpr std::size_t shortName = 7;      // three digits, a dot, an extension
constexpr std::size_t longestKey = 32;    // no extension of the database is as long
constexpr std::size_t longestBefore = 8;  // of the extension before the last one

bool isSuffixByte(char byte) {
  return byte > ' ' && byte < 127 && byte != '/';
}

bool equalInAnyCase(std::string_view a, std::string_view lower) {
  return std::equal(a.begin(), a.end(), lower.begin(), lower.end(), [](char one, char other) {
    return (one >= 'A' && one <= 'Z' ? static_cast<char>(one - 'A' + 'a') : one) == other;
  });
}

/// Whether files of that extension are ones of the extension before it, packed.
bool isPacking(std::string_view extension) {
  for (const std::string_view known : {"gz", "bz2", "xz", "zst", "lz", "lzma", "lzo", "lz4", "z"})
    if (equalInAnyCase(extension, known)) return true;
  return false;
}

std::string withSlash(std::string_view path) {
  while (path.ends_with('/')) path.remove_suffix(1);
  return std::string(path) + "/";
}

}  // namespace

std::optional<UsageKind> kindOfType(std::string_view type) {
  if (type.starts_with("video/")) return UsageKind::movies;
  if (type.starts_with("audio/")) return UsageKind::audio;
  if (type.starts_with("image/")) return UsageKind::photos;
  return std::nullopt;
}

std::optional<std::string_view> typeKeyOf(std::string_view name) {
  const auto dot = name.rfind('.');
  if (dot == name.npos || dot + 1 == name.size()) return std::nullopt;
  const auto extension = name.substr(dot + 1);
  if (extension.size() > longestKey ||
      !std::all_of(extension.begin(), extension.end(), isSuffixByte))
    return std::nullopt;
  if (name.size() <= shortName && std::all_of(name.begin(), name.end(), isSuffixByte)) return name;
  if (!isPacking(extension)) return name.substr(dot);
  const auto stem = name.substr(0, dot);
  const auto before = stem.rfind('.');
  if (before == stem.npos) return name.substr(dot);
  const auto inner = stem.substr(before + 1);
  const bool isUsual = !inner.empty() && inner.size() <= longestBefore &&
                       std::all_of(inner.begin(), inner.end(), isSuffixByte);
  return name.substr(isUsual ? before : dot);
}

bool isAppImage(std::string_view name) {
  constexpr std::string_view ending = ".appimage";
  return name.size() > ending.size() &&
         equalInAnyCase(name.substr(name.size() - ending.size()), ending);
}

InstalledFolders::InstalledFolders(const std::vector<std::string>& paths) {
  for (const auto& path : paths)
    if (path.starts_with('/')) paths_.push_back(withSlash(path));
}

Installed InstalledFolders::at(std::string_view path) const {
  const auto asked = withSlash(path);
  auto found = Installed::none;
  for (const auto& folder : paths_) {
    if (asked.starts_with(folder)) return Installed::here;
    if (folder.starts_with(asked)) found = Installed::below;
  }
  return found;
}

}  // namespace vantile
