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

  /// Where a file without an end is cut off.
  static constexpr std::size_t longest = 16u << 20;

  /// The present contents, cut off at about `most` bytes, or nothing when there are none to be had.
  /// Valid until the next reading.
  std::optional<std::string_view> text(std::size_t most = longest);

  /// What one read of at most `most` bytes gives. The kernel may give less than there is, so it is
  /// for files whose wanted part stands at the beginning.
  std::optional<std::string_view> beginning(std::size_t most);

  /// Whether the kernel says that it changed since this was last asked: for the few files that it
  /// says that of. True before the first reading and where it can't be told.
  bool changed();

 private:
  std::optional<std::size_t> readAt(std::size_t offset, std::size_t most);

  std::string path_;
  Descriptor descriptor_;
  std::vector<char> buffer_;
};

}  // namespace vantile
