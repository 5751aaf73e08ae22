#include "vantile/platform/file_attributes.h"

#include "vantile/platform/linux/statx.h"

namespace vantile {
namespace {

class LinuxFileSystem final : public FileSystem {
 public:
  std::optional<FileAttributes> attributes(const std::string& path, bool followLink) override {
    const auto status = statusOf(AT_FDCWD, path.c_str(), followLink ? 0 : AT_SYMLINK_NOFOLLOW,
                                 STATX_BASIC_STATS | STATX_BTIME);
    if (!status) return std::nullopt;
    FileAttributes attributes;
    attributes.facts = factsOf(*status);
    attributes.permissions = status->stx_mode & 07777u;
    attributes.owner = status->stx_uid;
    attributes.group = status->stx_gid;
    attributes.modified = momentOf(status->stx_mtime.tv_sec, status->stx_mtime.tv_nsec);
    if (status->stx_mask & STATX_BTIME)
      attributes.created = momentOf(status->stx_btime.tv_sec, status->stx_btime.tv_nsec);
    return attributes;
  }
};

}  // namespace

std::shared_ptr<FileSystem> systemFileSystem() {
  static auto& files = *new std::shared_ptr<FileSystem>(std::make_shared<LinuxFileSystem>());
  return files;
}

}  // namespace vantile
