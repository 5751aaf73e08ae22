#include "vantile/platform/linux/host_resources.h"

#include <glib.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

#include "vantile/platform/parsers/strings_table.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

std::optional<std::string> targetOf(const std::string& link) {
  std::string target(256, '\0');
  while (true) {
    const auto size = ::readlink(link.c_str(), target.data(), target.size());
    if (size < 0) return std::nullopt;
    if (static_cast<std::size_t>(size) < target.size()) {
      target.resize(static_cast<std::size_t>(size));
      return target;
    }
    target.resize(target.size() * 2);  // it may have been cut off
  }
}

}  // namespace

LinuxHostResources::LinuxHostResources(const LinuxRoots& roots, Languages languages)
    : executable_(roots.proc + "/self/exe"), languages_(std::move(languages)) {}

std::vector<std::string> LinuxHostResources::usersLanguages() {
  std::vector<std::string> languages;
  for (const auto* name = ::g_get_language_names(); name && *name; ++name)
    languages.emplace_back(*name);
  return languages;
}

std::optional<std::string> LinuxHostResources::folderOfExecutable() const {
  auto program = targetOf(executable_);
  if (!program) return std::nullopt;
  // An update may have replaced it since it was started; what it brings along stands where it did.
  constexpr std::string_view deleted = " (deleted)";
  if (program->ends_with(deleted)) program->resize(program->size() - deleted.size());
  const std::filesystem::path path(*program);
  if (!path.is_absolute()) return std::nullopt;  // it is out of this process's reach
  return path.parent_path().parent_path() / "share" / path.filename();
}

std::optional<std::string> LinuxHostResources::folder() {
  const std::lock_guard lock(mutex_);
  return folder_ ? folder_ : folderOfExecutable();
}

std::optional<std::string> LinuxHostResources::path(std::string_view name, std::string_view type) {
  const auto inside = folder();
  return inside ? fileIn(*inside, name, type) : std::nullopt;
}

std::string LinuxHostResources::localizedString(std::string_view key) {
  const auto inside = folder();
  if (!inside) return std::string(key);
  for (const auto& language : languages_()) {
    if (language.find('/') != language.npos) continue;  // the environment may hold anything
    const auto file = fileIn(*inside + "/" + language + ".lproj", "Localizable", "strings");
    const auto table = file ? contentsOf(*file) : std::nullopt;
    auto translation = table ? stringInTable(*table, key) : std::nullopt;
    if (translation) return *translation;
  }
  return std::string(key);
}

void LinuxHostResources::setFolder(std::optional<std::string> folder) {
  const std::lock_guard lock(mutex_);
  folder_ = std::move(folder);
}

std::shared_ptr<HostResources> systemHostResources() {
  static auto& resources =
      *new std::shared_ptr<HostResources>(std::make_shared<LinuxHostResources>());
  return resources;
}

}  // namespace vantile
