#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

/// A folder of a test's own that goes with it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "vantile-seam-XXXXXX").string();
    if (!::mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string operator/(const char* name) const { return (path_ / name).string(); }

  void write(const char* name, const std::string& text) const {
    std::ofstream(path_ / name, std::ios::binary) << text;
  }
  void makeFolder(const char* name) const { std::filesystem::create_directory(path_ / name); }
  void link(const char* to, const char* name) const {
    std::filesystem::create_symlink(to, path_ / name);
  }

 private:
  std::filesystem::path path_;
};
