#include "vantile/platform/parsers/text.h"

#include <gtest/gtest.h>

#include <limits>

namespace vantile {
namespace {

using Words = std::vector<std::string_view>;

TEST(LeadingNumber, IsReadAfterSpacesAndTabs) {
  EXPECT_EQ(leadingNumber("42"), 42u);
  EXPECT_EQ(leadingNumber(" \t 42 kB"), 42u);
  EXPECT_EQ(leadingNumber("42kB"), 42u);
}

TEST(LeadingNumber, IsAbsentWhereThereIsNone) {
  EXPECT_EQ(leadingNumber(""), std::nullopt);
  EXPECT_EQ(leadingNumber("  \t"), std::nullopt);
  EXPECT_EQ(leadingNumber("max"), std::nullopt);
  EXPECT_EQ(leadingNumber("-1"), std::nullopt);
  EXPECT_EQ(leadingNumber("+1"), std::nullopt);
}

TEST(LeadingNumber, HoldsTheLargestNumberAndNoLargerOne) {
  EXPECT_EQ(leadingNumber("18446744073709551615"), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(leadingNumber("18446744073709551616"), std::nullopt);
  EXPECT_EQ(leadingNumber("99999999999999999999999999"), std::nullopt);
}

TEST(LeadingNumber, EndsAtBytesThatAreNoDigits) {
  EXPECT_EQ(leadingNumber(std::string_view("7\0008", 3)), 7u);
  EXPECT_EQ(leadingNumber("7\xFF"), 7u);
  EXPECT_EQ(leadingNumber("7\r"), 7u);
  EXPECT_EQ(leadingNumber("\xFF"), std::nullopt);
}

TEST(TextWords, StandBetweenRunsOfSpacesAndTabs) {
  EXPECT_EQ(words("a b"), (Words{"a", "b"}));
  EXPECT_EQ(words("  a\t \tb  "), (Words{"a", "b"}));
  EXPECT_EQ(words("a\xFF\r"), (Words{"a\xFF\r"}));
}

TEST(TextWords, AreNoneInABlankLine) {
  EXPECT_EQ(words(""), Words{});
  EXPECT_EQ(words(" \t "), Words{});
}

TEST(TakeLine, TakesOneLineAfterAnother) {
  std::string_view text = "one\n\nthree\n";
  EXPECT_EQ(takeLine(text), "one");
  EXPECT_EQ(takeLine(text), "");
  EXPECT_EQ(takeLine(text), "three");
  EXPECT_TRUE(text.empty());
}

TEST(TakeLine, TakesALastLineWithoutItsNewline) {
  std::string_view text = "last";
  EXPECT_EQ(takeLine(text), "last");
  EXPECT_TRUE(text.empty());
}

TEST(OctalEscapes, AreResolved) {
  EXPECT_EQ(withoutOctalEscapes("a\\040b\\011c\\012d\\134e"), "a b\tc\nd\\e");
  EXPECT_EQ(withoutOctalEscapes("\\377"), "\xFF");
  EXPECT_EQ(withoutOctalEscapes("\\000"), std::string(1, '\0'));
}

TEST(OctalEscapes, AreResolvedOnce) {
  EXPECT_EQ(withoutOctalEscapes("\\134040"), "\\040");
}

TEST(OctalEscapes, OtherBackslashesStay) {
  EXPECT_EQ(withoutOctalEscapes("\\"), "\\");
  EXPECT_EQ(withoutOctalEscapes("a\\04"), "a\\04");
  EXPECT_EQ(withoutOctalEscapes("\\048 \\n \\400 \\999"), "\\048 \\n \\400 \\999");
}

TEST(NamedNumbers, AreFoundInAnyOrder) {
  NamedNumbers lines("a: 1\nb: 2\nc: 3\n");
  EXPECT_EQ(lines.find("b:"), 2u);
  EXPECT_EQ(lines.find("c:"), 3u);
  EXPECT_EQ(lines.find("a:"), 1u);
  EXPECT_EQ(lines.find("a:"), 1u);
}

TEST(NamedNumbers, AMissingNameDoesNotHideTheOthers) {
  NamedNumbers lines("a: 1\nb: 2\n");
  EXPECT_EQ(lines.find("x:"), std::nullopt);
  EXPECT_EQ(lines.find("b:"), 2u);
  EXPECT_EQ(lines.find("x:"), std::nullopt);
  EXPECT_EQ(lines.find("a:"), 1u);
}

TEST(NamedNumbers, ALineCutOffAtTheEndIsAbsent) {
  NamedNumbers lines("a: 1\nb: 23");
  EXPECT_EQ(lines.find("b:"), std::nullopt);
  EXPECT_EQ(lines.find("a:"), 1u);
}

TEST(NamedNumbers, ANameStandsAtTheBeginningOfItsLine) {
  NamedNumbers lines("xa: 1\n a: 2\na: 3\n");
  EXPECT_EQ(lines.find("a:"), 3u);
}

TEST(NamedNumbers, ANumberIsNotTakenFromTheNextLine) {
  NamedNumbers lines("a:\n7\nb \n8\n");
  EXPECT_EQ(lines.find("a:"), std::nullopt);
  EXPECT_EQ(lines.find("b "), std::nullopt);
}

TEST(NamedNumbers, AnUnreadableNumberIsAbsentAndTheNextOneIsNot) {
  NamedNumbers lines("a: 18446744073709551616\nb: 2\n");
  EXPECT_EQ(lines.find("a:"), std::nullopt);
  EXPECT_EQ(lines.find("b:"), 2u);
}

TEST(NamedNumbers, AreAbsentFromAnEmptyText) {
  EXPECT_EQ(NamedNumbers("").find("a:"), std::nullopt);
  EXPECT_EQ(NamedNumbers("\n\n").find("a:"), std::nullopt);
}

TEST(HexEscapes, AreResolved) {
  EXPECT_EQ(withoutHexEscapes("My\\x20Disk"), "My Disk");
  EXPECT_EQ(withoutHexEscapes("\\x5c\\xC3\\xbc"), "\\\xC3\xBC");
  EXPECT_EQ(withoutHexEscapes(std::string_view("\\x00", 4)), std::string_view("\0", 1));
}

TEST(HexEscapes, OtherBackslashesStay) {
  for (const char* text : {"", "\\", "\\x", "\\x2", "\\xg0", "\\x2g", "\\X20", "\\040", "x20",
                           "\\x-1", "\\x 1", "\\x0x"})
    EXPECT_EQ(withoutHexEscapes(text), text);
}

}  // namespace
}  // namespace vantile
