#include "vantile/platform/file_attributes.h"

#include "vantile/platform/macos/status.h"

namespace vantile {
namespace {

/// A file system that keeps no times of birth leaves them at 0 or -1.
bool isKnown(const timespec& birth) {
  return birth.tv_sec > 0 || birth.tv_nsec > 0;
}

std::chrono::sys_time<std::chrono::nanoseconds> momentAt(const timespec& time) {
  return momentOf(time.tv_sec, time.tv_nsec);
}

class MacosFileSystem final : public FileSystem {
 public:
  std::optional<FileAttributes> attributes(const std::string& path, bool followLink) override {
    struct stat status = {};
    const int result = followLink ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status);
    if (result != 0) return std::nullopt;
    FileAttributes attributes;
    attributes.facts = factsOf(status);
    attributes.permissions = status.st_mode & 07777u;
    attributes.owner = status.st_uid;
    attributes.group = status.st_gid;
    attributes.modified = momentAt(status.st_mtimespec);
    if (isKnown(status.st_birthtimespec)) attributes.created = momentAt(status.st_birthtimespec);
    return attributes;
  }
};

}  // namespace

std::shared_ptr<FileSystem> systemFileSystem() {
  static auto& files = *new std::shared_ptr<FileSystem>(std::make_shared<MacosFileSystem>());
  return files;
}

}  // namespace vantile
