#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "vantile/platform/folder_reader.h"
#include "vantile/platform/linux/statx.h"
#include "vantile/platform/posix/descriptor.h"
#include "vantile/platform/posix/files.h"

namespace vantile {

/// A folder held open, with its descriptor for those who ask the kernel for more of it.
class LinuxFolder final : public OpenFolder {
 public:
  explicit LinuxFolder(Descriptor folder) : folder_(std::move(folder)) {}

  /// The folder at `path`, or null.
  static std::unique_ptr<LinuxFolder> at(const char* path, int flags = 0) {
    return opened(::open(path, folderFlags | flags));
  }

  int descriptor() const { return folder_.get(); }
  std::unique_ptr<LinuxFolder> folder(const char* name) {
    return opened(::openat(folder_.get(), name, folderFlags | O_NOFOLLOW));
  }
  std::unique_ptr<LinuxFolder> around() {
    return opened(::openat(folder_.get(), "..", folderFlags));
  }

  Listed list(FolderBatch& batch) override;
  std::unique_ptr<OpenFolder> child(const char* name) override { return folder(name); }
  std::unique_ptr<OpenFolder> parent() override { return around(); }

  std::optional<FileIdentity> identity() override {
    const auto status = statusOf(folder_.get(), "", AT_EMPTY_PATH, STATX_INO);
    return status ? std::optional(identityOf(*status)) : std::nullopt;
  }

  std::optional<FileFacts> facts(const char* name) override {
    const auto status = statusOf(folder_.get(), name, AT_SYMLINK_NOFOLLOW,
                                 STATX_TYPE | STATX_SIZE | STATX_NLINK | STATX_INO);
    return status ? std::optional(factsOf(*status)) : std::nullopt;
  }

  std::optional<std::string> text(const char* name, std::size_t most) override {
    return beginningOf(folder_.get(), name, most);
  }

 private:
  static std::unique_ptr<LinuxFolder> opened(int fd) {
    return fd < 0 ? nullptr : std::make_unique<LinuxFolder>(Descriptor(fd));
  }
  FileKind kindOfEntry(unsigned char type, const char* name) const;

  Descriptor folder_;
};

}  // namespace vantile
