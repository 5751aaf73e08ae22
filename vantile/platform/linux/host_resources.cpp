#include "vantile/platform/linux/host_resources.h"

#include <unistd.h>

#include <filesystem>
#include <utility>

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

LinuxHostResources::LinuxHostResources(const LinuxRoots& roots)
    : executable_(roots.proc + "/self/exe") {}

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
