#include "vantile/platform/linux/usage_cache.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "vantile/foundation/log.h"
#include "vantile/platform/linux/file_stamp.h"
#include "vantile/platform/linux/folder_entries.h"
#include "vantile/platform/linux/standard_folders.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {
namespace {

/// False, with errno, where not all could be written.
bool writeAll(int file, std::string_view text) {
  while (!text.empty()) {
    const auto count = ::write(file, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

/// The names of a record's index, with which the record ends: as long as nobody writes to it.
UsageIndex::ReadKept namesIn(std::shared_ptr<const Descriptor> record) {
  const auto stamp = stampOf(record->get());
  return [record = std::move(record), stamp](std::uint64_t fromEnd, char* to, std::size_t size) {
    if (!stamp || stampOf(record->get()) != stamp) return false;
    for (auto at = static_cast<off_t>(stamp->size - fromEnd); size > 0;) {
      const auto count = ::pread(record->get(), to, size, at);
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) return false;
      to += count;
      at += count;
      size -= static_cast<std::size_t>(count);
    }
    return true;
  };
}

/// A file of a name of its own, which is removed unless it is given another one.
struct Temporary {
  explicit Temporary(std::string pattern)
      : path(std::move(pattern)), file(::mkostemp(path.data(), O_CLOEXEC)) {
    if (!file) path.clear();
  }
  ~Temporary() {
    if (!path.empty()) ::unlink(path.c_str());
  }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;

  /// False, with errno, where that can't be.
  bool empty() const {
    return ::ftruncate(file.get(), 0) == 0 && ::lseek(file.get(), 0, SEEK_SET) == 0;
  }

  std::string path;
  Descriptor file;
};

/// Removes what a process that ended while it wrote left of the record called `name`.
void removeLeftOvers(const std::string& folder, const std::string& name) {
  constexpr std::int64_t day = 86400;
  forEachEntry(folder, [&](const dirent& entry) {
    if (!std::string_view(entry.d_name).starts_with(name + ".")) return;
    const auto path = folder + "/" + entry.d_name;
    const auto stamp = stampOf(path);
    if (stamp && stamp->seconds < presentSecond() - day) ::unlink(path.c_str());
  });
}

}  // namespace

std::string UsageCache::pathOf(const UsageVolume& volume) const {
  return folder_ + "/" + usageRecordName(volume);
}

UsageCache::Came UsageCache::take(const UsageVolume& volume, std::optional<UsageRecord>& record,
                                  const IsStopped& isStopped) const {
  constexpr std::size_t pieceSize = 65536;
  const auto path = pathOf(volume);
  Descriptor opened(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
  const auto file = std::make_shared<const Descriptor>(std::move(opened));
  struct stat status = {};
  if (!*file || ::fstat(file->get(), &status) != 0 || !S_ISREG(status.st_mode))
    return Came::toTheEnd;
  auto names = namesIn(file);  // before it is read, so that a change meanwhile shows
  bool stopped = false;
  std::string piece(pieceSize, '\0');
  const UsageRecordSource source = [&]() -> std::string_view {
    stopped = stopped || isStopped();
    if (stopped) return {};
    ssize_t count = 0;
    do {
      count = ::read(file->get(), piece.data(), piece.size());
    } while (count < 0 && errno == EINTR);
    return count > 0 ? std::string_view(piece).substr(0, static_cast<std::size_t>(count))
                     : std::string_view();
  };
  record = readUsageRecord(source, static_cast<std::uint64_t>(status.st_size), volume);
  if (stopped) {
    record.reset();
    return Came::stopped;
  }
  if (!record) {
    logLine("usage by category: " + path + " is damaged or another volume's, and begun anew");
    ::unlink(path.c_str());
  } else {
    record->index.setKept(std::move(names));
  }
  return Came::toTheEnd;
}

UsageCache::Came UsageCache::keep(const UsageVolume& volume, bool complete, UsageIndex& index,
                                  const IsStopped& isStopped) {
  const int error = write(volume, complete, index, isStopped);
  if (error == ECANCELED) return Came::stopped;
  if (error != 0 && !std::exchange(hasFailed_, true))
    logLine("usage by category is not kept in " + folder_ + ": " + ::strerror(error));
  return Came::toTheEnd;
}

int UsageCache::write(const UsageVolume& volume, bool complete, UsageIndex& index,
                      const IsStopped& isStopped) const {
  makeForUserAlone(folder_);
  removeLeftOvers(folder_, usageRecordName(volume));
  const auto path = pathOf(volume);
  Temporary temporary(path + ".XXXXXX");
  if (!temporary.file) return errno;
  int error = 0;
  const auto sink = [&](std::string_view piece) {
    if (isStopped()) {
      error = ECANCELED;
    } else if (!writeAll(temporary.file.get(), piece)) {
      error = errno;
    }
    return error == 0;
  };
  std::optional<std::string> head;
  // A second time where names could not be read, without those.
  for (int time = 0; time < 2 && error == 0 && !head; ++time) {
    if (!temporary.empty()) return errno;
    if (sink(std::string(usageRecordHead, '\0')))
      head = writeUsageRecord(volume, complete, index, sink);
  }
  if (error == 0 && !head) return EIO;
  if (head && ::lseek(temporary.file.get(), 0, SEEK_SET) != 0) return errno;
  if (head) sink(*head);
  if (error != 0) return error;
  // To be read alone from now on: what is open for writing keeps its file system writable.
  Descriptor record(::open(temporary.path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (!record || ::close(temporary.file.release()) != 0) return errno;
  if (::rename(temporary.path.c_str(), path.c_str()) != 0) return errno;
  temporary.path.clear();
  index.setKept(namesIn(std::make_shared<const Descriptor>(std::move(record))));
  return 0;
}

}  // namespace vantile
