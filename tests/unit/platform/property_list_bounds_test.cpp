#include "vantile/platform/parsers/property_list_bounds.h"

#include <gtest/gtest.h>

#include "unit/platform/binary_list.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::binaryList;
using testing::fixture;
using testing::repeated;

bool isWithinDepth(std::size_t depth, std::string_view list) {
  return isWithin({.depth = depth}, list);
}
bool isWithinValues(std::size_t values, std::string_view list) {
  return isWithin({.values = values}, list);
}

/// A binary list of `arrays` arrays within each other.
std::string nestedArrays(std::size_t arrays) {
  std::vector<std::string> objects;
  for (std::size_t i = 1; i < arrays; ++i) objects.push_back("\xA1" + testing::bigEndian(i, 2));
  objects.push_back("\xA0");
  return binaryList(objects);
}

TEST(PropertyListBounds, HoldRealLists) {
  EXPECT_TRUE(isWithin({}, fixture("property-list.plist")));
  EXPECT_TRUE(isWithin({}, fixture("property-list-binary.plist")));
}

TEST(PropertyListBounds, LimitTheDepthOfAnXmlList) {
  const auto list = "<plist>" + repeated("<array><dict><key>a</key>", 5) +
                    repeated("</dict></array>", 5) + "</plist>";
  EXPECT_TRUE(isWithinDepth(10, list));
  EXPECT_FALSE(isWithinDepth(9, list));
}

TEST(PropertyListBounds, WhatIsClosedInAnXmlListIsNoDepth) {
  EXPECT_TRUE(isWithinDepth(
      2, "<array>" + repeated("<dict></dict><array></array><dict/><array/>", 9) + "</array>"));
  EXPECT_FALSE(isWithinDepth(1, "<array><dict></dict></array>"));
}

TEST(PropertyListBounds, AnEmptyTagIsALevelOfItsOwn) {
  for (const auto* list : {"<dict/>", "<array/>", "<array></array>"}) {
    EXPECT_TRUE(isWithinDepth(1, list)) << list;
    EXPECT_FALSE(isWithinDepth(0, list)) << list;
  }
  EXPECT_TRUE(isWithinDepth(1, "<dict"));
}

TEST(PropertyListBounds, WhatOnlySeemsToCloseInAnXmlListDoesNot) {
  for (const auto* unread : {"<!--</array>-->", "<?</array>?>", "<![CDATA[</array>]]>",
                             "<!--></array>-->", "<!DOCTYPE [</array>]>", "<!-- </array>"}) {
    const auto list = repeated("<array>" + std::string(unread), 5);
    EXPECT_FALSE(isWithinDepth(4, list)) << unread;
  }
}

TEST(PropertyListBounds, LimitTheValuesOfAnXmlList) {
  const std::string list = "<dict><key>a</key><true/><key>b</key><integer>1</integer></dict>";
  EXPECT_TRUE(isWithinValues(5, list));
  EXPECT_FALSE(isWithinValues(4, list));
}

TEST(PropertyListBounds, LimitTheDepthOfABinaryList) {
  EXPECT_TRUE(isWithinDepth(10, nestedArrays(10)));
  EXPECT_FALSE(isWithinDepth(9, nestedArrays(10)));
}

TEST(PropertyListBounds, LimitTheDepthWhereABinaryListRepeatsItself) {
  // The list's first entry is 2 arrays deep, and stands 1 deeper in its second.
  const auto list = binaryList({std::string("\xA2\0\1\0\2", 5), std::string("\xA1\0\3", 3),
                                std::string("\xA1\0\1", 3), "\xA0"});
  EXPECT_TRUE(isWithinDepth(4, list));
  EXPECT_FALSE(isWithinDepth(3, list));
}

TEST(PropertyListBounds, CountAValueOfABinaryListAsOftenAsItStandsThere) {
  std::vector<std::string> objects;
  for (std::size_t i = 1; i <= 40; ++i)  // each holds the next one twice
    objects.push_back("\xA2" + testing::bigEndian(i, 2) + testing::bigEndian(i, 2));
  objects.emplace_back("\x09");
  EXPECT_FALSE(isWithin({}, binaryList(objects)));
  objects.erase(objects.begin() + 3, objects.end());
  objects.insert(objects.end(), {"\x09", "\x09"});
  EXPECT_TRUE(isWithinValues(15, binaryList(objects)));
  EXPECT_FALSE(isWithinValues(14, binaryList(objects)));
}

TEST(PropertyListBounds, CountTheKeysOfABinaryList) {
  const auto list = binaryList({std::string("\xD2\0\1\0\2\0\3\0\3", 9),
                                "\x51"
                                "a",
                                "\x51"
                                "b",
                                "\x09"});
  EXPECT_TRUE(isWithinValues(5, list));
  EXPECT_FALSE(isWithinValues(4, list));
}

TEST(PropertyListBounds, AreBrokenByAListWithinItself) {
  EXPECT_FALSE(isWithin({}, binaryList({std::string("\xA1\0\0", 3)})));
  EXPECT_FALSE(isWithin({}, binaryList({std::string("\xA1\0\1", 3), std::string("\xA1\0\0", 3)})));
}

TEST(PropertyListBounds, AreNotToldOfABinaryListThatPointsOutsideItself) {
  EXPECT_FALSE(isWithin({}, binaryList({std::string("\xA1\0\7", 3)})));
  EXPECT_FALSE(isWithin({}, binaryList({"\xAF\x13" + testing::bigEndian(~0ull, 8)})));
  EXPECT_FALSE(isWithin({}, binaryList({"\xAF\x12" + testing::bigEndian(90000, 4)})));
  EXPECT_FALSE(isWithin({}, binaryList({"\xAF\x1F" + std::string(16, '\0')})));
  EXPECT_FALSE(isWithin({}, binaryList({"\xAF\x51"})));
  EXPECT_FALSE(isWithin({}, binaryList({})));
  auto list = binaryList({"\xA0"});
  EXPECT_TRUE(isWithin({}, list));
  list.back() = '\xFF';  // where the table of the objects begins
  EXPECT_FALSE(isWithin({}, list));
  EXPECT_FALSE(isWithin({}, "bplist00"));
}

TEST(PropertyListBounds, TheEndOfManyTagsIsLookedForOnce) {
  EXPECT_TRUE(isWithin({}, repeated("<array", 90000) + std::string(20u << 20, ' ') + "/>"));
}

}  // namespace
}  // namespace vantile
