#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace vantile::testing {

/// A folder of a test's own on the real disk, gone at the test's end.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(
      const std::filesystem::path& parent = std::filesystem::temp_directory_path())
      : path_((parent / "vantile-test-XXXXXX").string()) {
    if (!::mkdtemp(path_.data())) throw std::runtime_error("no temporary folder in " + path_);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& path() const { return path_; }
  /// The path of something in here. A name is bytes.
  std::string path(std::string_view relative) const { return path_ + "/" + std::string(relative); }

  /// Makes a folder, and those around it.
  std::string folder(std::string_view relative) const {
    const auto at = path(relative);
    std::filesystem::create_directories(at);
    return at;
  }
  /// Writes a file anew, in place, and makes the folders around it.
  std::string file(std::string_view relative, std::string_view contents = {}) const {
    const auto at = path(relative);
    std::filesystem::create_directories(std::filesystem::path(at).parent_path());
    if (!(std::ofstream(at, std::ios::binary | std::ios::trunc) << contents).flush())
      throw std::runtime_error("can't write " + at);
    return at;
  }
  std::string symbolicLink(std::string_view relative, const std::string& target) const {
    const auto at = path(relative);
    std::filesystem::create_symlink(target, at);
    return at;
  }
  void hardLink(std::string_view existing, std::string_view relative) const {
    std::filesystem::create_hard_link(path(existing), path(relative));
  }
  void remove(std::string_view relative) const { std::filesystem::remove_all(path(relative)); }

 private:
  std::string path_;
};

}  // namespace vantile::testing
