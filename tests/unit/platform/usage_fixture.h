#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "vantile/platform/linux/file_stamp.h"
#include "vantile/platform/parsers/name_kinds.h"

#include "fakes/temporary_folder.h"

namespace vantile::testing {

/// A tree on the disk whose files are counted. Times are taken for long ago.
struct UsageTest : ::testing::Test {
  static std::string contents(std::size_t kibibytes) { return std::string(kibibytes * 1024, 'x'); }

  /// What the file takes on the disk, in bytes.
  std::uint64_t bytes(std::string_view name) const {
    struct stat status = {};
    EXPECT_EQ(::lstat(tree.path(name).c_str(), &status), 0) << name;
    return static_cast<std::uint64_t>(status.st_blocks) * 512;
  }

  /// A second at which all that the test did is settled.
  static std::int64_t muchLater() { return presentSecond() + 1000; }

  /// Bytes of applications, movies, audio, photos.
  static UsageSums sums(std::uint64_t applications, std::uint64_t movies, std::uint64_t audio,
                        std::uint64_t photos) {
    return {applications, movies, audio, photos};
  }

  const TemporaryFolder tree;
};

}  // namespace vantile::testing
