#include "vantile/platform/posix/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "vantile/platform/linux/file_stamp.h"

#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using testing::TemporaryFolder;

struct RegularFileTest : ::testing::Test {
  TemporaryFolder folder;
};

TEST_F(RegularFileTest, IsGivenWholeOrAsMuchAsIsAskedFor) {
  for (const std::size_t size : {0u, 1u, 4095u, 4096u, 4097u, 20000u}) {
    const std::string bytes(size, '\xFF');
    EXPECT_EQ(contentsOf(folder.file("f", bytes), 100000), bytes);
    EXPECT_EQ(contentsOf(folder.path("f"), size), bytes);
  }
  EXPECT_EQ(contentsOf(folder.file("f", "abcdef"), 4), "abcd");
  EXPECT_EQ(contentsOf(folder.path("f"), 0), "");
}

TEST_F(RegularFileTest, ThatTellsNoSizeIsGivenWhole) {
  const auto text = contentsOf("/proc/self/status", 1u << 20);
  ASSERT_TRUE(text);
  EXPECT_NE(text->find("Pid:"), std::string::npos);
}

TEST_F(RegularFileTest, IsFollowedThroughALink) {
  folder.symbolicLink("l", folder.file("f", "x"));
  EXPECT_EQ(contentsOf(folder.path("l"), 10), "x");
  EXPECT_TRUE(stampOf(folder.path("l")));
  EXPECT_EQ(stampOf(folder.path("l")), stampOf(folder.path("f")));
}

TEST_F(RegularFileTest, WhatIsNoneHasNeitherContentsNorAStamp) {
  folder.folder("d");
  ASSERT_EQ(::mkfifo(folder.path("p").c_str(), 0600), 0);
  for (const auto& path :
       {folder.path("d"), folder.path("p"), folder.path("none"), std::string("/dev/zero")}) {
    EXPECT_EQ(contentsOf(path, 10), std::nullopt) << path;
    EXPECT_EQ(stampOf(path), std::nullopt) << path;
  }
}

}  // namespace
}  // namespace vantile
