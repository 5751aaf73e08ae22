#include "vantile/platform/parsers/inotify_watches.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

using Watches = std::unordered_set<int>;

TEST(InotifyWatches, TheListOfARealInstanceIsRead) {
  EXPECT_EQ(parseInotifyWatches(fixture("fdinfo-inotify.txt")), (Watches{1, 2, 10, 26}));
}

TEST(InotifyWatches, NumbersAreHexadecimal) {
  EXPECT_EQ(parseInotifyWatches("inotify wd:ff ino:1\n"), Watches{255});
}

TEST(InotifyWatches, OtherLinesArePassedOver) {
  EXPECT_EQ(parseInotifyWatches("pos:\t0\nflags:\t02004000\nino:\t15\n"), Watches{});
  EXPECT_EQ(parseInotifyWatches(""), Watches{});
}

TEST(InotifyWatches, ANumberThatWasCutOffOrDoesNotFitIsNone) {
  EXPECT_EQ(parseInotifyWatches("inotify wd:1"), Watches{});
  EXPECT_EQ(parseInotifyWatches("inotify wd: ino:1\n"), Watches{});
  EXPECT_EQ(parseInotifyWatches("inotify wd:fffffffff ino:1\n"), Watches{});
  EXPECT_EQ(parseInotifyWatches("inotify wd:80000000 ino:1\n"), Watches{});
  EXPECT_EQ(parseInotifyWatches("inotify wd:1z ino:1\n"), Watches{});
  EXPECT_EQ(parseInotifyWatches("inotify wd:-1 ino:1\n"), Watches{});
}

}  // namespace
}  // namespace vantile
