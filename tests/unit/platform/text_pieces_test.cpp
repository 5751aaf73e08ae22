#include "vantile/platform/text_pieces.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

using namespace std::string_literals;

using Pieces = std::vector<std::string>;

Pieces alphanumeric(std::string_view text) {
  return systemTextPieces()->alphanumericPieces(text);
}
Pieces unpunctuated(std::string_view text) {
  return systemTextPieces()->piecesBetweenPunctuation(text);
}

TEST(LinuxTextPieces, SpacesPunctuationSymbolsAndControlsSeparateAlphanumericPieces) {
  EXPECT_EQ(alphanumeric("a b-c+d\te\0f@g"s), (Pieces{"a", "b", "c", "d", "e", "f", "g"}));
  EXPECT_EQ(alphanumeric("Intel(R)"), (Pieces{"Intel", "R", ""}));
}

TEST(LinuxTextPieces, LettersMarksAndNumbersOfEveryScriptAreAlphanumeric) {
  // Letters of each case and none, a modifier; marks of all kinds; digits, a numeral, a fraction.
  for (const auto* const text : {"a\u00C9\u01C5\u02B0\u4E2D", "e\u0301", "\u0905\u0903", "a\u20DD",
                                 "7\u0663", "\u2167", "\u00BD"})
    EXPECT_EQ(alphanumeric(text), Pieces{text});
  EXPECT_EQ(alphanumeric("a\u00AEb\u2122c\u00B7d"), (Pieces{"a", "b", "c", "d"}));
}

TEST(LinuxTextPieces, PunctuationOfEveryKindSeparates) {
  EXPECT_EQ(unpunctuated("13.4.0"), (Pieces{"13", "4", "0"}));
  EXPECT_EQ(unpunctuated("a_b-c(d)e\u00ABf\u00BBg!h"),
            (Pieces{"a", "b", "c", "d", "e", "f", "g", "h"}));
  EXPECT_EQ(unpunctuated(".."), (Pieces{"", "", ""}));
}

TEST(LinuxTextPieces, SymbolsAndSpacesAreNoPunctuation) {
  EXPECT_EQ(unpunctuated("a+b c$d\u00AEe"), Pieces{"a+b c$d\u00AEe"});
}

TEST(LinuxTextPieces, BytesThatAreNotUtf8BelongToTheirPieces) {
  EXPECT_EQ(alphanumeric("a\xFF b"), (Pieces{"a\xFF", "b"}));
  EXPECT_EQ(unpunctuated("a\xFF.b"), (Pieces{"a\xFF", "b"}));
}

}  // namespace
}  // namespace vantile
