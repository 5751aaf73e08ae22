#include "vantile/platform/parsers/firefox_prefs.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using namespace std::string_view_literals;
using testing::fixture;

using Text = std::optional<std::string>;

Text dirIn(std::string_view text) {
  const auto prefs = parseFirefoxPrefs(text);
  return prefs ? prefs->dir : std::nullopt;
}
/// The folder of a prefs.js that sets it to `literal`.
Text dirSetTo(const std::string& literal) {
  return dirIn("user_pref(\"browser.download.dir\", " + literal + ");\n");
}
std::optional<std::int64_t> listSetTo(const std::string& literal) {
  const auto prefs = parseFirefoxPrefs("user_pref(\"browser.download.folderList\", " + literal +
                                       ");\nuser_pref(\"z\", 1);\n");
  return prefs ? prefs->folderList : std::nullopt;
}
bool isWhole(std::string_view text) {
  return parseFirefoxPrefs(text).has_value();
}

TEST(FirefoxPrefs, OfARealFileAreFound) {
  const auto prefs = parseFirefoxPrefs(fixture("firefox-prefs.js"));
  ASSERT_TRUE(prefs);
  EXPECT_EQ(prefs->folderList, 2);
  EXPECT_EQ(prefs->dir, "/home/ada/Übertragungen \"groß\"");
}

TEST(FirefoxPrefs, ThoseNotSetAreAbsent) {
  const auto prefs = parseFirefoxPrefs("user_pref(\"a\", 1);\n");
  ASSERT_TRUE(prefs);
  EXPECT_EQ(prefs->folderList, std::nullopt);
  EXPECT_EQ(prefs->dir, std::nullopt);
}

TEST(FirefoxPrefs, ARealFileCutOffAnywhereInALineIsHalfWritten) {
  const auto text = fixture("firefox-prefs.js");
  const auto firstStatement = text.find(";\n") + 2;
  for (std::size_t size = 0; size < text.size(); ++size) {
    const bool afterALine = size >= firstStatement && text[size - 1] == '\n';
    EXPECT_EQ(isWhole(std::string_view(text).substr(0, size)), afterALine) << size;
  }
}

TEST(FirefoxPrefs, ATextWithoutAStatementIsHalfWritten) {
  for (const auto text : {""sv, "\n"sv, "// Mozilla User Preferences\n"sv, "nonsense\n"sv})
    EXPECT_FALSE(isWhole(text)) << text;
}

TEST(FirefoxPrefs, ATextThatEndsWithinAStatementIsHalfWritten) {
  for (const auto rest : {"user_pref(\n"sv, "user_pref(\"b\n"sv, "user_pref(\"b\"\n"sv,
                          "user_pref(\"b\", 1)\n"sv, "pref('b);\nuser_pref(\"c\", 1);\n"sv,
                          "/* why\n"sv, "user_pref(\"b\", /* 1);\n"sv, "user_pref(\"b\", \"\\\n"sv})
    EXPECT_FALSE(isWhole("user_pref(\"a\", 1);\n" + std::string(rest))) << rest;
}

TEST(FirefoxPrefs, CommentsAndBlanksMayStandAnywhere) {
  EXPECT_EQ(dirIn("#\n//\n/**//*/ two\n user_pref( */ user_pref // three\n ( # 4\n "
                  "'browser.download.dir'\t,\r\n \"/a\" , sticky, locked ) ; // end\n\n"),
            "/a");
}

TEST(FirefoxPrefs, ACommentedStatementIsNone) {
  EXPECT_EQ(dirIn("//user_pref(\"browser.download.dir\", \"/a\");\n"
                  "/*user_pref(\"browser.download.dir\", \"/a\");*/\nuser_pref(\"a\", 1);\n"),
            std::nullopt);
}

TEST(FirefoxPrefs, AStatementWithinATextIsNone) {
  EXPECT_EQ(dirIn("user_pref(\"a\", \"user_pref('browser.download.dir', '/a');\");\n"),
            std::nullopt);
}

TEST(FirefoxPrefs, TheLastStatementCounts) {
  EXPECT_EQ(dirIn("pref(\"browser.download.dir\", \"/a\");\n"
                  "sticky_pref(\"browser.download.dir\", \"/b\");\n"),
            "/b");
}

TEST(FirefoxPrefs, AValueOfAnotherKindIsNone) {
  EXPECT_EQ(dirSetTo("2"), std::nullopt);
  EXPECT_EQ(dirSetTo("true"), std::nullopt);
  EXPECT_EQ(listSetTo("\"2\""), std::nullopt);
  EXPECT_EQ(listSetTo("false"), std::nullopt);
  EXPECT_EQ(dirIn("user_pref(\"browser.download.dir\", \"/a\");\n"
                  "user_pref(\"browser.download.dir\", 1);\n"),
            std::nullopt);
}

TEST(FirefoxPrefs, NumbersMayHaveASign) {
  EXPECT_EQ(listSetTo("-1"), -1);
  EXPECT_EQ(listSetTo("+2"), 2);
  EXPECT_EQ(listSetTo("+-2"), std::nullopt);
  EXPECT_EQ(listSetTo("--2"), std::nullopt);
  EXPECT_EQ(listSetTo("2x"), std::nullopt);
  EXPECT_EQ(listSetTo("99999999999999999999"), std::nullopt);
}

TEST(FirefoxPrefs, EscapesAreResolved) {
  EXPECT_EQ(dirSetTo(R"("/\"\\\'\n\r")"), "/\"\\'\n\r");
  EXPECT_EQ(dirSetTo(R"('/a"b\'')"), "/a\"b'");
  EXPECT_EQ(dirSetTo(R"("\x41\xe9")"), "A\xC3\xA9");
  EXPECT_EQ(dirSetTo(R"("\u0041\u00E9\u20ac")"), "A\xC3\xA9\xE2\x82\xAC");
  EXPECT_EQ(dirSetTo(R"("\ud83d\uDE00!")"), "\xF0\x9F\x98\x80!");
}

TEST(FirefoxPrefs, MalformedEscapesMakeTheStatementMalformed) {
  for (const auto* literal :
       {R"("\q")", R"("\x4")", R"("\x4z")", R"("\u12zz")", R"("\x00")", R"("\u12")", R"("\u0000")",
        R"("\ud83d")", R"("\ud83d\u0041")", R"("\ude00")", R"("\x-1")"})
    EXPECT_EQ(dirSetTo(literal), std::nullopt) << literal;
}

TEST(FirefoxPrefs, AfterAMalformedLineTheNextOnesAreRead) {
  for (const auto line : {"nonsense\n"sv, "user_pref(;\n"sv, "user_pref(\"b\", );\n"sv,
                          "user_pref(\"b\", 1, odd);\n"sv, "user_pref \"b\", 1);\n"sv,
                          "user_prefs(\"b\", 1);\n"sv, "\0\xFF\n"sv})
    EXPECT_EQ(dirIn(std::string(line) + "user_pref(\"browser.download.dir\", \"/a\");\n"), "/a")
        << line;
}

TEST(FirefoxPrefs, ValuesAreBytes) {
  EXPECT_EQ(dirSetTo("\"/\xFF\xC3\""), "/\xFF\xC3");
  EXPECT_EQ(dirSetTo(std::string("\"/\0a\"", 5)), std::string("/\0a", 3));
}

TEST(FirefoxPrefs, ManyUnfinishedPiecesAreReadOnce) {
  std::string text;
  for (int i = 0; i < 200000; ++i) text += "user_pref(/*\n";
  EXPECT_FALSE(isWhole(text + "*/\n"));
}

}  // namespace
}  // namespace vantile
