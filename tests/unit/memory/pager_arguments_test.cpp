#include "vantile/memory/pager_arguments.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

TEST(PagerArguments, TheWordBehindTheOptionIsTheFile) {
  EXPECT_EQ(
      pagerFileArgument("  41 ??  Ss  0:00.1 /sbin/dynamic_pager -F /private/var/vm/swapfile\n"),
      "/private/var/vm/swapfile");
}

TEST(PagerArguments, TheBareNameOfThePagerCountsToo) {
  EXPECT_EQ(pagerFileArgument("dynamic_pager -F /vm/swap"), "/vm/swap");
}

TEST(PagerArguments, AWordThatOnlyContainsTheNameDoesNot) {
  EXPECT_EQ(pagerFileArgument("/usr/sbin/dynamic_pager -F /vm/swap"), "");
  EXPECT_EQ(pagerFileArgument("dynamic_pager2 -F /vm/swap"), "");
}

TEST(PagerArguments, ALineWithoutTheOptionIsPassedOverAndTheSearchGoesOn) {
  EXPECT_EQ(pagerFileArgument("/sbin/dynamic_pager -E\n/sbin/dynamic_pager -F /vm/swap\n"),
            "/vm/swap");
}

TEST(PagerArguments, AnOptionWithoutAWordBehindItIsPassedOverToo) {
  EXPECT_EQ(pagerFileArgument("dynamic_pager -F\ndynamic_pager -F -E\ndynamic_pager -F /vm/swap"),
            "/vm/swap");
}

TEST(PagerArguments, AValueWithSpacesIsPutTogetherUpToTheNextOption) {
  EXPECT_EQ(pagerFileArgument("dynamic_pager -F /Volumes/Swap Disk/the file -E -H 4"),
            "/Volumes/Swap Disk/the file");
}

TEST(PagerArguments, TwoSpacesInsideAValueStay) {
  EXPECT_EQ(pagerFileArgument("dynamic_pager -F /vm/a  b"), "/vm/a  b");
}

TEST(PagerArguments, OnlyTheFirstOptionCounts) {
  EXPECT_EQ(pagerFileArgument("dynamic_pager -F /one -F /two"), "/one");
}

TEST(PagerArguments, TheFirstLineThatGivesAFileIsTheLast) {
  EXPECT_EQ(pagerFileArgument("dynamic_pager -F /one\ndynamic_pager -F /two"), "/one");
}

TEST(PagerArguments, OtherProgramsWithTheOptionAreNotAsked) {
  EXPECT_EQ(pagerFileArgument("tail -F /var/log/system.log"), "");
}

TEST(PagerArguments, TheOptionMayStandBeforeTheName) {
  EXPECT_EQ(pagerFileArgument("-F /odd dynamic_pager -x"), "/odd dynamic_pager");
}

TEST(PagerArguments, NothingGivesNothing) {
  EXPECT_EQ(pagerFileArgument(""), "");
  EXPECT_EQ(pagerFileArgument("\n\n \n"), "");
}

}  // namespace
}  // namespace vantile
