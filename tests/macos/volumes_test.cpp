#include "vantile/platform/volumes.h"

#include "seam.h"

namespace vantile {
namespace {

using fakes::PropertyList;
using Dictionary = PropertyList::Dictionary;
using Paths = std::vector<std::string>;

class VolumesSeam : public Seam {
 protected:
  Volumes& volumes = *systemVolumes();
};

TEST_F(VolumesSeam, AreTheWholeTableInItsOrderFresh) {
  fakes::machine.mounts = {
      {"hfs", "/dev/disk1", "/", 4096, 100, 30},
      {"devfs", "devfs", "/dev", 512, 7, 0},
      {"msdos", "/dev/disk2s1", "/Volumes/Übung", 512, 1ull << 40, 1ull << 39}};
  const auto mounts = volumes.mounts({"hfs"});
  ASSERT_EQ(mounts.size(), 3u);
  EXPECT_EQ(fakes::machine.mountFlags, 1);
  EXPECT_EQ(mounts[0].type, "hfs");
  EXPECT_EQ(mounts[0].device, "/dev/disk1");
  EXPECT_EQ(mounts[0].mountPoint, "/");
  EXPECT_EQ(mounts[0].blockSize, 4096u);
  EXPECT_EQ(mounts[0].totalBlocks, 100u);
  EXPECT_EQ(mounts[0].availableBlocks, 30u);
  EXPECT_EQ(mounts[1].mountPoint, "/dev");
  EXPECT_EQ(mounts[2].mountPoint, "/Volumes/Übung");
  EXPECT_EQ(mounts[2].totalBlocks, 1ull << 40);
}

TEST_F(VolumesSeam, AreNoneWhereTheTableCantBeHad) {
  fakes::machine.mounts = {{"hfs", "/dev/disk1", "/", 4096, 100, 30}};
  fakes::machine.refuses = {"getmntinfo"};
  EXPECT_TRUE(volumes.mounts({}).empty());
}

TEST_F(VolumesSeam, HaveNoTypesOfTheirOwn) {
  EXPECT_TRUE(volumes.localTypes().empty());
}

TEST_F(VolumesSeam, AreCalledAsTheCatalogueHasThem) {
  fakes::machine.volumeNames = {{"/", u"Macintosh HD"}, {"/Volumes/a", u"Übung \U0001F600"}};
  EXPECT_EQ(volumes.name("/"), "Macintosh HD");
  EXPECT_EQ(volumes.name("/Volumes/a"), "Übung \U0001F600");
}

TEST_F(VolumesSeam, AVolumeMayHaveAnEmptyName) {
  fakes::machine.volumeNames = {{"/", u""}};
  EXPECT_EQ(volumes.name("/"), "");
}

TEST_F(VolumesSeam, WithoutOneOfTheThreeLookUpsThereIsNoName) {
  fakes::machine.volumeNames = {{"/", u"Macintosh HD"}};
  for (const char* function : {"FSPathMakeRef", "FSGetCatalogInfo", "FSGetVolumeInfo"}) {
    fakes::machine.refuses = {function};
    EXPECT_EQ(volumes.name("/"), std::nullopt) << function;
  }
  fakes::machine.refuses.clear();
  EXPECT_EQ(volumes.name("/missing"), std::nullopt);
}

TEST_F(VolumesSeam, ALengthBeyondTheRecordIsCutOff) {
  fakes::machine.volumeNames = {{"/", std::u16string(300, u'a')}};
  EXPECT_EQ(volumes.name("/"), std::string(255, 'a'));
}

TEST_F(VolumesSeam, AHalfCharacterInANameIsReplaced) {
  fakes::machine.volumeNames = {{"/", std::u16string{u'a', char16_t{0xD800}, u'b'}}};
  EXPECT_EQ(volumes.name("/"), "a\uFFFDb");
}

TEST_F(VolumesSeam, HaveThePictureOfTheWorkspaceForAsLongAsItIsHeld) {
  fakes::machine.pictures = {"/Volumes/Übung"};
  auto picture = volumes.icon("/Volumes/Übung");
  ASSERT_NE(picture, nullptr);
  EXPECT_NE(picture->handle, nullptr);
  EXPECT_TRUE(picture->name.empty());
  EXPECT_TRUE(picture->file.empty());
  EXPECT_EQ(fakes::live().values, 1);
  picture.reset();
  EXPECT_EQ(fakes::live().values, 0);
}

TEST_F(VolumesSeam, WithoutAPictureOrAWorkspaceThereIsNone) {
  EXPECT_EQ(volumes.icon("/"), nullptr);
  fakes::machine.pictures = {"/"};
  EXPECT_EQ(volumes.icon("/\xFF"), nullptr);
  fakes::machine.raisesAt = "iconForFile:";
  EXPECT_EQ(volumes.icon("/"), nullptr);
  fakes::machine.classes.erase("NSWorkspace");
  EXPECT_EQ(volumes.icon("/"), nullptr);
}

TEST_F(VolumesSeam, LocalPathsAreTheWorkspacesInItsOrder) {
  fakes::machine.localVolumePaths = PropertyList{PropertyList::Array{
      {std::u16string(u"/Volumes/BOOTCAMP")}, {std::int64_t{1}}, {std::u16string(u"/")}}};
  EXPECT_EQ(volumes.localPaths({}), (Paths{"/Volumes/BOOTCAMP", "/"}));
}

TEST_F(VolumesSeam, LocalPathsMayBeNone) {
  EXPECT_TRUE(volumes.localPaths({}).empty());
  fakes::machine.localVolumePaths = PropertyList{std::int64_t{1}};
  EXPECT_TRUE(volumes.localPaths({}).empty());
  fakes::machine.raisesAt = "mountedLocalVolumePaths";
  EXPECT_TRUE(volumes.localPaths({}).empty());
}

TEST_F(VolumesSeam, SpaceIsWhatTheFileManagerTells) {
  fakes::machine.fileSystemAttributes["/Users/ada"] = {
      Dictionary{{u"NSFileSystemSize", {std::int64_t{3'000'000'000'000}}},
                 {u"NSFileSystemFreeSize", {std::uint64_t{1} << 63}},
                 {u"NSFileSystemNodes", {std::int64_t{77}}}}};
  const auto space = volumes.space("/Users/ada");
  EXPECT_EQ(space.size, 3'000'000'000'000u);
  EXPECT_EQ(space.free, std::uint64_t{1} << 63);
  EXPECT_EQ(space.nodes, 77u);
}

TEST_F(VolumesSeam, SpaceThatIsNotToldIsAbsent) {
  fakes::machine.fileSystemAttributes["/"] = {
      Dictionary{{u"NSFileSystemSize", {std::u16string(u"much")}}}};
  EXPECT_EQ(volumes.space("/").size, std::nullopt);
  EXPECT_EQ(volumes.space("/").free, std::nullopt);
  EXPECT_EQ(volumes.space("/missing").size, std::nullopt);
  EXPECT_EQ(volumes.space("/\xFF").size, std::nullopt);
  fakes::machine.raisesAt = "attributesOfFileSystemForPath:error:";
  EXPECT_EQ(volumes.space("/").size, std::nullopt);
}

}  // namespace
}  // namespace vantile
