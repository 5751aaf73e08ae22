#include "vantile/utility/paths.h"

namespace vantile {
namespace {

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return path;
}

}  // namespace

std::string lastPathComponent(std::string_view path) {
  path = withoutTrailingSlashes(path);
  const auto slash = path.rfind('/');
  if (slash == std::string_view::npos || path.size() == 1) return std::string(path);
  return std::string(path.substr(slash + 1));
}

std::string withoutLastPathComponent(std::string_view path) {
  path = withoutTrailingSlashes(path);
  const auto slash = path.rfind('/');
  if (slash == std::string_view::npos) return {};
  return std::string(withoutTrailingSlashes(path.substr(0, slash == 0 ? 1 : slash)));
}

std::string appendingPathComponent(std::string_view path, std::string_view component) {
  if (path.empty()) return std::string(component);
  std::string joined(withoutTrailingSlashes(path));
  if (!joined.ends_with('/')) joined.push_back('/');
  while (component.starts_with('/')) component.remove_prefix(1);
  return joined.append(component);
}

std::string pathExtension(std::string_view path) {
  const std::string name = lastPathComponent(path);
  const auto dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 ? std::string() : name.substr(dot + 1);
}

std::string withoutPathExtension(std::string_view path) {
  path = withoutTrailingSlashes(path);
  const auto extension = pathExtension(path);
  if (!extension.empty()) path.remove_suffix(extension.size() + 1);
  return std::string(path);
}

}  // namespace vantile
