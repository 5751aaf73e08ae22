#include "vantile/platform/folder_reader.h"

#include <sys/stat.h>

#include <map>

#include "seam.h"
#include "temporary_folder.h"

namespace vantile {
namespace {

using Entries = std::map<std::string, FileKind>;

class FolderReaderSeam : public Seam {
 protected:
  std::unique_ptr<OpenFolder> open() { return systemFolderReader()->open(folder.path().c_str()); }

  TemporaryFolder folder;
};

Entries entriesOf(OpenFolder& folder) {
  Entries entries;
  FolderBatch batch;
  Listed listed = Listed::some;
  while ((listed = folder.list(batch)) == Listed::some) {
    EXPECT_FALSE(batch.entries.empty());
    for (const FolderEntry& entry : batch.entries) entries.emplace(entry.name, entry.kind);
  }
  EXPECT_EQ(listed, Listed::end);
  return entries;
}

TEST_F(FolderReaderSeam, ListsNamesWithTheirKinds) {
  folder.write("file", "");
  folder.makeFolder("folder");
  folder.link("nowhere", "link");
  ::mkfifo((folder / "pipe").c_str(), 0600);
  EXPECT_EQ(entriesOf(*open()), (Entries{{"file", FileKind::regular},
                                         {"folder", FileKind::folder},
                                         {"link", FileKind::symbolicLink},
                                         {"pipe", FileKind::other}}));
}

TEST_F(FolderReaderSeam, ListsAnEmptyFolderAsNothing) {
  EXPECT_TRUE(entriesOf(*open()).empty());
}

TEST_F(FolderReaderSeam, ListsMoreThanABatchHolds) {
  const std::string filler(200, 'x');
  constexpr int count = 500;  // 100,000 bytes of names
  for (int i = 0; i < count; ++i) folder.write((filler + std::to_string(i)).c_str(), "");
  EXPECT_EQ(entriesOf(*open()).size(), static_cast<std::size_t>(count));
}

TEST_F(FolderReaderSeam, StaysAtTheEndOnceItGotThere) {
  folder.write("file", "");
  const auto listed = open();
  entriesOf(*listed);
  FolderBatch batch;
  EXPECT_EQ(listed->list(batch), Listed::end);
}

TEST_F(FolderReaderSeam, StillOpensChildrenOnceListed) {
  folder.makeFolder("inner");
  const auto outer = open();
  entriesOf(*outer);
  const auto inner = outer->child("inner");
  ASSERT_TRUE(inner);
  EXPECT_EQ(inner->identity(), outer->facts("inner")->identity);
  EXPECT_EQ(inner->parent()->identity(), outer->identity());
}

TEST_F(FolderReaderSeam, EntersNoLinkAndNoFile) {
  folder.write("file", "");
  folder.makeFolder("inner");
  folder.link("inner", "link");
  EXPECT_FALSE(open()->child("link"));
  EXPECT_FALSE(open()->child("file"));
  EXPECT_FALSE(open()->child("none"));
}

TEST_F(FolderReaderSeam, FollowsALinkToTheFirstFolder) {
  folder.makeFolder("inner");
  folder.link("inner", "link");
  EXPECT_TRUE(systemFolderReader()->open((folder / "link").c_str()));
  EXPECT_FALSE(systemFolderReader()->open((folder / "none").c_str()));
}

TEST_F(FolderReaderSeam, TellsFactsOfALinkItself) {
  folder.write("file", "12345");
  folder.link("file", "link");
  EXPECT_EQ(open()->facts("file")->bytes, 5u);
  EXPECT_EQ(open()->facts("link")->kind, FileKind::symbolicLink);
  EXPECT_FALSE(open()->facts("none"));
}

TEST_F(FolderReaderSeam, ReadsTheBeginningOfAFile) {
  folder.write("file", "beginning and end");
  EXPECT_EQ(open()->text("file", 9), "beginning");
  EXPECT_EQ(open()->text("file", 100), "beginning and end");
}

TEST_F(FolderReaderSeam, ReadsNothingThatIsNotAFile) {
  folder.makeFolder("inner");
  ::mkfifo((folder / "pipe").c_str(), 0600);
  EXPECT_FALSE(open()->text("inner", 10));
  EXPECT_FALSE(open()->text("pipe", 10));
  EXPECT_FALSE(open()->text("none", 10));
}

}  // namespace
}  // namespace vantile
