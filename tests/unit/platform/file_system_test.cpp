#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "vantile/platform/file_attributes.h"

#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using testing::TemporaryFolder;

struct LinuxFileSystemTest : ::testing::Test {
  std::optional<FileAttributes> of(const std::string& path, bool followLink = false) {
    return systemFileSystem()->attributes(path, followLink);
  }
  TemporaryFolder folder;
};

TEST_F(LinuxFileSystemTest, AFileHasItsSizeNamesAndIdentity) {
  const auto path = folder.file("f", "12345");
  folder.hardLink("f", "g");
  struct stat status = {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  const auto file = of(path);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->facts.kind, FileKind::regular);
  EXPECT_EQ(file->facts.bytes, 5u);
  EXPECT_EQ(file->facts.links, 2u);
  EXPECT_EQ(file->facts.identity, (FileIdentity{status.st_dev, status.st_ino}));
}

TEST_F(LinuxFileSystemTest, AFileHasItsPermissionsAndOwners) {
  const auto path = folder.file("f");
  ASSERT_EQ(::chmod(path.c_str(), 04751), 0);
  const auto file = of(path).value();
  EXPECT_EQ(file.permissions, 04751u);
  EXPECT_EQ(file.owner, ::getuid());
  EXPECT_EQ(file.group, ::getgid());
}

TEST_F(LinuxFileSystemTest, AFileHasItsMomentsToTheNanosecond) {
  const auto path = folder.file("f");
  const timespec times[2] = {{1, 2}, {1234567890, 123456789}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  const auto file = of(path).value();
  EXPECT_EQ(file.modified.time_since_epoch(), std::chrono::nanoseconds(1234567890123456789));
  EXPECT_GT(file.created.value_or(std::chrono::sys_days(std::chrono::days(20000))), file.modified);
}

TEST_F(LinuxFileSystemTest, AMomentBefore1970IsOne) {
  const auto path = folder.file("f");
  const timespec times[2] = {{-2, 500000000}, {-2, 500000000}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  EXPECT_EQ(of(path)->modified.time_since_epoch(), std::chrono::milliseconds(-1500));
}

TEST_F(LinuxFileSystemTest, ALinkIsFollowedOnlyWhenAsked) {
  folder.file("f", "12345");
  const auto link = folder.symbolicLink("l", "f");
  EXPECT_EQ(of(link, false)->facts.kind, FileKind::symbolicLink);
  EXPECT_EQ(of(link, false)->facts.bytes, 1u);
  EXPECT_EQ(of(link, true)->facts.kind, FileKind::regular);
  EXPECT_EQ(of(link, true)->facts.bytes, 5u);
}

TEST_F(LinuxFileSystemTest, ALinkThatLeadsNowhereIsOnlyALink) {
  const auto link = folder.symbolicLink("l", "nowhere");
  EXPECT_TRUE(of(link, false));
  EXPECT_FALSE(of(link, true));
}

TEST_F(LinuxFileSystemTest, KindsAreTold) {
  EXPECT_EQ(of(folder.path())->facts.kind, FileKind::folder);
  ASSERT_EQ(::mkfifo(folder.path("p").c_str(), 0600), 0);
  EXPECT_EQ(of(folder.path("p"))->facts.kind, FileKind::other);
}

TEST_F(LinuxFileSystemTest, AMissingFileHasNone) {
  EXPECT_FALSE(of(folder.path("none")));
  EXPECT_FALSE(of(folder.path("none/deeper")));
  EXPECT_FALSE(of(""));
}

TEST_F(LinuxFileSystemTest, ANameMayBeAnyBytes) {
  EXPECT_TRUE(of(folder.file("\xFF\n \x01", "x")));
}

}  // namespace
}  // namespace vantile
