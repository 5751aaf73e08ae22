#include "vantile/platform/linux/chromium_preferences.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

using Text = std::optional<std::string>;

Text folderIn(std::string_view json) {
  const auto preferences = parseChromiumPreferences(json);
  return preferences ? preferences->downloadFolder : std::nullopt;
}
bool isWhole(std::string_view json) {
  return parseChromiumPreferences(json).has_value();
}

TEST(ChromiumPreferences, TheFolderOfARealFileIsFound) {
  EXPECT_EQ(folderIn(fixture("chromium-preferences.json")), "/home/ada/Übertragungen \"groß\"");
}

TEST(ChromiumPreferences, ARealFileCutOffAnywhereIsHalfWritten) {
  const auto text = fixture("chromium-preferences.json");
  EXPECT_TRUE(isWhole(text));
  for (std::size_t size = 0; size < text.size(); ++size)
    EXPECT_FALSE(isWhole(std::string_view(text).substr(0, size))) << size;
}

TEST(ChromiumPreferences, AFolderNotSetIsAbsent) {
  for (const auto* json :
       {"{}", "{\"download\":{}}", "{\"download\":{\"default_directory\":\"\"}}",
        "{\"download\":{\"default_directory\":7}}",
        "{\"download\":{\"default_directory\":[\"/a\"]}}",
        "{\"download\":{\"default_directory\":{\"default_directory\":\"/a\"}}}"}) {
    EXPECT_TRUE(isWhole(json)) << json;
    EXPECT_EQ(folderIn(json), std::nullopt) << json;
  }
}

TEST(ChromiumPreferences, TheNameElsewhereIsAnother) {
  for (const auto* json :
       {"{\"default_directory\":\"/a\"}", "{\"x\":{\"download\":{\"default_directory\":\"/a\"}}}",
        "{\"download\":{\"x\":{\"default_directory\":\"/a\"}}}",
        "{\"download\":[{\"default_directory\":\"/a\"}]}",
        "[{\"download\":{\"default_directory\":\"/a\"}}]",
        "{\"download\":1,\"x\":{\"default_directory\":\"/a\"}}",
        "{\"download\":\"/b\",\"default_directory\":\"/a\"}",
        "{\"download\":{\"x\":0},\"default_directory\":\"/a\"}"}) {
    EXPECT_TRUE(isWhole(json)) << json;
    EXPECT_EQ(folderIn(json), std::nullopt) << json;
  }
}

TEST(ChromiumPreferences, TheFolderIsFoundBehindAnythingElse) {
  EXPECT_EQ(folderIn("{\"a\":[{}, [1,2.5,null],true],\"download\":{\"x\":{\"y\":[{}]},"
                     "\"default_directory\":\"/a\",\"z\":\"/b\"},\"b\":\"/c\"}"),
            "/a");
}

TEST(ChromiumPreferences, OfTwoOfOneNameTheLaterCounts) {
  EXPECT_EQ(folderIn("{\"download\":{\"default_directory\":\"/a\"},\"download\":"
                     "{\"default_directory\":\"/b\"}}"),
            "/b");
  EXPECT_EQ(folderIn("{\"download\":{\"default_directory\":\"/a\"},\"download\":{}}"),
            std::nullopt);
  EXPECT_EQ(folderIn("{\"download\":{\"default_directory\":\"/a\",\"default_directory\":1}}"),
            std::nullopt);
}

TEST(ChromiumPreferences, EscapesAreResolved) {
  EXPECT_EQ(folderIn(R"({"download":{"default_directory":"\/a\u00e9\ud83d\ude00\n\\"}})"),
            "/a\xC3\xA9\xF0\x9F\x98\x80\n\\");
}

TEST(ChromiumPreferences, WhatIsNotJsonIsHalfWritten) {
  for (const auto* text : {"", "   ", "{", "{\"a\":1,}", "{} {}", "nul", "{\"a\":1e999}", "\xFF",
                           "{\"download\":{\"default_directory\":\"/\xFF\"}}"})
    EXPECT_FALSE(isWhole(text)) << text;
}

TEST(ChromiumPreferences, MayNestAsDeepAsTheyLike) {
  constexpr std::size_t levels = 1000000;
  const std::string begin(levels, '['), end(levels, ']');
  EXPECT_FALSE(isWhole(begin));
  EXPECT_EQ(folderIn("{\"a\":" + begin + end + ",\"download\":{\"default_directory\":\"/a\"}}"),
            "/a");
}

}  // namespace
}  // namespace vantile
