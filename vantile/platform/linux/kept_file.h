#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/platform/posix/descriptor.h"

namespace vantile {

/// A file of /proc or /sys that is read again and again through one descriptor, which such files
/// answer anew at every read from the start. Opened at the first reading, and again after one that
/// failed. Not synchronised.
class KeptFile {
 public:
  explicit KeptFile(std::string path) : path_(std::move(path)) {}

  /// The present contents, or nothing when there are none to be had. Valid until the next reading.
  std::optional<std::string_view> text();

  /// What one read of at most `most` bytes gives. The kernel may give less than there is, so it is
  /// for files whose wanted part stands at the beginning.
  std::optional<std::string_view> beginning(std::size_t most);

 private:
  std::optional<std::size_t> readAt(std::size_t offset, std::size_t most);

  std::string path_;
  Descriptor descriptor_;
  std::vector<char> buffer_;
};

/// The whole contents of a file that is read once, or nothing.
std::optional<std::string> readFile(const std::string& path);

}  // namespace vantile
