#include "vantile/platform/linux/kept_file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "fakes/open_descriptors.h"
#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using testing::TemporaryFolder;

struct KeptFileTest : ::testing::Test {
  TemporaryFolder folder;
};

TEST_F(KeptFileTest, IsReadAnewEachTime) {
  KeptFile file(folder.file("f", "one"));
  EXPECT_EQ(file.text(), "one");
  folder.file("f", "second");
  EXPECT_EQ(file.text(), "second");
  folder.file("f", "3");
  EXPECT_EQ(file.text(), "3");
}

TEST_F(KeptFileTest, IsReadThroughOneDescriptor) {
  KeptFile file(folder.file("f", "one"));
  const auto before = testing::openDescriptors();
  for (int i = 0; i < 10; ++i) (void)file.text();
  EXPECT_EQ(testing::openDescriptors(), before + 1);
}

TEST_F(KeptFileTest, ClosesItsDescriptorAtItsEnd) {
  const auto before = testing::openDescriptors();
  { (void)KeptFile(folder.file("f", "one")).text(); }
  EXPECT_EQ(testing::openDescriptors(), before);
}

TEST_F(KeptFileTest, MayBeOfAnyLength) {
  for (const std::size_t size : {0u, 1u, 4095u, 4096u, 4097u, 8192u, 100000u}) {
    KeptFile file(folder.file("f", std::string(size, 'x')));
    const auto text = file.text();
    ASSERT_TRUE(text);
    EXPECT_EQ(text->size(), size);
  }
}

TEST_F(KeptFileTest, GivesItsBytesAsTheyAre) {
  const std::string bytes("a\0\xFF\r\n", 5);
  EXPECT_EQ(KeptFile(folder.file("f", bytes)).text(), bytes);
}

TEST_F(KeptFileTest, ItsBeginningIsAsLongAsAsked) {
  KeptFile file(folder.file("f", "abcdef"));
  EXPECT_EQ(file.beginning(4), "abcd");
  EXPECT_EQ(file.beginning(100), "abcdef");
  EXPECT_EQ(file.beginning(2), "ab");
}

TEST_F(KeptFileTest, OneThatIsMissingIsNothingUntilItComes) {
  KeptFile file(folder.path("later"));
  EXPECT_EQ(file.text(), std::nullopt);
  EXPECT_EQ(file.beginning(4), std::nullopt);
  folder.file("later", "here");
  EXPECT_EQ(file.text(), "here");
}

TEST_F(KeptFileTest, OneThatCantBeReadIsNothingAndIsOpenedAgain) {
  folder.folder("f");
  KeptFile file(folder.path("f"));
  EXPECT_EQ(file.text(), std::nullopt);
  folder.remove("f");
  folder.file("f", "a file now");
  EXPECT_EQ(file.text(), "a file now");
}

}  // namespace
}  // namespace vantile
