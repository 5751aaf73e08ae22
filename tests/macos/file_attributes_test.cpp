#include "vantile/platform/file_attributes.h"

#include <sys/stat.h>
#include <unistd.h>

#include <limits>

#include "seam.h"
#include "temporary_folder.h"

namespace vantile {
namespace {

using Moment = std::chrono::sys_time<std::chrono::nanoseconds>;

class FileAttributesSeam : public Seam {
 protected:
  TemporaryFolder folder;
};

TEST_F(FileAttributesSeam, TellsWhatAFileIs) {
  folder.write("notes", "four");
  ::chmod((folder / "notes").c_str(), 0640);
  ::link((folder / "notes").c_str(), (folder / "again").c_str());
  const auto notes = systemFileSystem()->attributes(folder / "notes", false);
  ASSERT_TRUE(notes);
  EXPECT_EQ(notes->facts.kind, FileKind::regular);
  EXPECT_EQ(notes->facts.bytes, 4u);
  EXPECT_EQ(notes->facts.links, 2u);
  EXPECT_EQ(notes->permissions, 0640u);
  EXPECT_EQ(notes->owner, ::getuid());
  EXPECT_EQ(notes->group, ::getgid());
  EXPECT_EQ(notes->facts.identity,
            systemFileSystem()->attributes(folder / "again", false)->facts.identity);
}

TEST_F(FileAttributesSeam, FollowsALinkOnlyWhenAsked) {
  folder.makeFolder("real");
  folder.link("real", "link");
  EXPECT_EQ(systemFileSystem()->attributes(folder / "link", true)->facts.kind, FileKind::folder);
  EXPECT_EQ(systemFileSystem()->attributes(folder / "link", false)->facts.kind,
            FileKind::symbolicLink);
}

TEST_F(FileAttributesSeam, GivesNothingForAFileThatIsNotThere) {
  EXPECT_FALSE(systemFileSystem()->attributes(folder / "none", false));
  EXPECT_FALSE(systemFileSystem()->attributes(folder / "none", true));
}

TEST_F(FileAttributesSeam, TellsWhenAFileWasChangedAndBorn) {
  folder.write("notes", "");
  fakes::machine.modifiedSeconds = 1'000'000'000;
  fakes::machine.birthSeconds = 900'000'000;
  const auto notes = systemFileSystem()->attributes(folder / "notes", false);
  EXPECT_EQ(notes->modified, Moment(std::chrono::seconds(1'000'000'000)));
  EXPECT_EQ(notes->created, Moment(std::chrono::seconds(900'000'000)));
}

TEST_F(FileAttributesSeam, LeavesOutABirthThatTheFileSystemDoesNotKeep) {
  folder.write("notes", "");
  fakes::machine.birthSeconds = 0;
  EXPECT_FALSE(systemFileSystem()->attributes(folder / "notes", false)->created);
  fakes::machine.birthSeconds = -1;
  EXPECT_FALSE(systemFileSystem()->attributes(folder / "notes", false)->created);
}

TEST_F(FileAttributesSeam, HoldsATimeOutOfRangeAtTheNearestSecond) {
  folder.write("notes", "");
  fakes::machine.modifiedSeconds = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(systemFileSystem()->attributes(folder / "notes", false)->modified,
            std::chrono::floor<std::chrono::seconds>(Moment::max()));
  fakes::machine.modifiedSeconds = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(systemFileSystem()->attributes(folder / "notes", false)->modified,
            std::chrono::ceil<std::chrono::seconds>(Moment::min()));
}

}  // namespace
}  // namespace vantile
