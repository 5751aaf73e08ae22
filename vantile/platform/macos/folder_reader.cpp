#include "vantile/platform/folder_reader.h"

#include <dirent.h>
#include <fcntl.h>

#include <cerrno>
#include <cstring>

#include "vantile/platform/macos/status.h"
#include "vantile/platform/posix/descriptor.h"
#include "vantile/platform/posix/files.h"
#include "vantile/platform/posix/folder_listing.h"

namespace vantile {
namespace {

class MacosFolder final : public OpenFolder {
 public:
  explicit MacosFolder(Descriptor folder) : folder_(std::move(folder)) {}

  Listed list(FolderBatch& batch) override;

  std::unique_ptr<OpenFolder> child(const char* name) override {
    return opened(::openat(folder_.get(), name, folderFlags | O_NOFOLLOW));
  }
  std::unique_ptr<OpenFolder> parent() override {
    return opened(::openat(folder_.get(), "..", folderFlags));
  }

  std::optional<FileIdentity> identity() override {
    struct stat status = {};
    if (::fstat(folder_.get(), &status) != 0) return std::nullopt;
    return identityOf(status);
  }

  std::optional<FileFacts> facts(const char* name) override {
    struct stat status = {};
    if (::fstatat(folder_.get(), name, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    return factsOf(status);
  }

  std::optional<std::string> text(const char* name, std::size_t most) override {
    return beginningOf(folder_.get(), name, most);
  }

  static std::unique_ptr<OpenFolder> opened(int fd) {
    return fd < 0 ? nullptr : std::make_unique<MacosFolder>(Descriptor(fd));
  }

 private:
  bool startListing();
  FileKind kindOfEntry(const dirent& entry);

  const Descriptor folder_;
  FolderListing listing_;
  bool ended_ = false;
  bool failed_ = false;  // told once the entries up to there were
};

bool MacosFolder::startListing() {
  // A listing closes the descriptor that it is given, and the folder is still needed after it.
  Descriptor own(::fcntl(folder_.get(), F_DUPFD_CLOEXEC, 0));
  if (!own) return false;
  listing_.reset(::fdopendir(own.get()));
  if (listing_) own.release();
  return listing_ != nullptr;
}

FileKind MacosFolder::kindOfEntry(const dirent& entry) {
  switch (entry.d_type) {
    case DT_REG:
      return FileKind::regular;
    case DT_DIR:
      return FileKind::folder;
    case DT_LNK:
      return FileKind::symbolicLink;
    case DT_UNKNOWN: {  // some file systems do not tell in the listing
      const auto known = facts(entry.d_name);
      return known ? known->kind : FileKind::other;
    }
    default:
      return FileKind::other;
  }
}

Listed MacosFolder::list(FolderBatch& batch) {
  batch.entries.clear();
  if (failed_ || (!listing_ && !ended_ && !startListing())) return Listed::failed;
  std::size_t used = 0;
  // An entry can't be put back, so there has to be room for the longest name before it is read.
  while (!ended_ && !failed_ && FolderBatch::capacity - used >= sizeof(dirent::d_name)) {
    errno = 0;  // the end and a failure both give null
    const dirent* const entry = ::readdir(listing_.get());
    if (!entry) {
      (errno == 0 ? ended_ : failed_) = true;
      listing_.reset();
      break;
    }
    if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
    const std::size_t size = std::strlen(entry->d_name) + 1;
    void* const name = std::memcpy(batch.memory.get() + used, entry->d_name, size);
    batch.entries.push_back({static_cast<const char*>(name), kindOfEntry(*entry)});
    used += size;
  }
  if (!batch.entries.empty()) return Listed::some;
  return failed_ ? Listed::failed : Listed::end;
}

class MacosFolderReader final : public FolderReader {
 public:
  std::unique_ptr<OpenFolder> open(const char* path) override {
    return MacosFolder::opened(::open(path, folderFlags));
  }
};

}  // namespace

std::shared_ptr<FolderReader> systemFolderReader() {
  static auto& reader = *new std::shared_ptr<FolderReader>(std::make_shared<MacosFolderReader>());
  return reader;
}

}  // namespace vantile
