#include <dirent.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "vantile/platform/linux/linux_folder.h"
#include "vantile/platform/linux/statx.h"

namespace vantile {
namespace {

// As the kernel fills it.
struct KernelEntry {
  std::uint64_t inode;
  std::int64_t offset;
  unsigned short length;
  unsigned char type;
  char name[1];
};

}  // namespace

FileKind LinuxFolder::kindOfEntry(unsigned char type, const char* name) const {
  switch (type) {
    case DT_REG:
      return FileKind::regular;
    case DT_DIR:
      return FileKind::folder;
    case DT_LNK:
      return FileKind::symbolicLink;
    case DT_UNKNOWN: {  // some file systems do not tell in the listing
      const auto status = statusOf(folder_.get(), name, AT_SYMLINK_NOFOLLOW, STATX_TYPE);
      return status ? kindOf(status->stx_mode) : FileKind::other;
    }
    default:
      return FileKind::other;
  }
}

Listed LinuxFolder::list(FolderBatch& batch) {
  batch.entries.clear();
  long size = 0;
  do {
    size = ::syscall(SYS_getdents64, folder_.get(), batch.memory.get(), batch.capacity);
  } while (size < 0 && errno == EINTR);
  if (size <= 0) return size == 0 ? Listed::end : Listed::failed;
  const std::byte* const end = batch.memory.get() + size;
  for (const std::byte* next = batch.memory.get(); next < end;) {
    const auto* const entry = reinterpret_cast<const KernelEntry*>(next);
    next += entry->length;
    const char* const name = reinterpret_cast<const char*>(entry) + offsetof(KernelEntry, name);
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
    batch.entries.push_back({name, kindOfEntry(entry->type, name)});
  }
  return Listed::some;
}

namespace {

class LinuxFolderReader final : public FolderReader {
 public:
  std::unique_ptr<OpenFolder> open(const char* path) override { return LinuxFolder::at(path); }
};

}  // namespace

std::shared_ptr<FolderReader> systemFolderReader() {
  static auto& reader = *new std::shared_ptr<FolderReader>(std::make_shared<LinuxFolderReader>());
  return reader;
}

}  // namespace vantile
