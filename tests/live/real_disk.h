#pragma once

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "fakes/temporary_folder.h"

namespace vantile::testing {

/// Where the tests were built, which unlike /tmp stands on a disk.
inline std::filesystem::path buildFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

/// Whether writing to the folder reaches a disk.
inline bool isOnDisk(const std::string& folder) {
  struct statfs system = {};
  if (::statfs(folder.c_str(), &system) != 0) return false;
  return system.f_type != TMPFS_MAGIC && system.f_type != RAMFS_MAGIC &&
         system.f_type != OVERLAYFS_SUPER_MAGIC;
}

/// Writes a file of that many MiB of real data and waits until the disk has it.
inline bool writeToDisk(const std::string& path, std::size_t mebibytes) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (file < 0) return false;
  std::vector<char> data(1 << 20);
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>(i * 2654435761u >> 13);
  bool written = true;
  for (std::size_t i = 0; written && i < mebibytes; ++i) {
    data[0] = static_cast<char>(i);
    written = ::write(file, data.data(), data.size()) == static_cast<ssize_t>(data.size());
  }
  written = ::fsync(file) == 0 && written;
  ::close(file);
  return written;
}

}  // namespace vantile::testing
