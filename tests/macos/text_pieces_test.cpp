#include "vantile/platform/text_pieces.h"

#include "seam.h"

namespace vantile {
namespace {

using TextPiecesSeam = Seam;
using Pieces = std::vector<std::string>;

TEST_F(TextPiecesSeam, OfAlphanumericsStandBetweenEverythingElse) {
  EXPECT_EQ(systemTextPieces()->alphanumericPieces("Intel(R) \u00C9t\u00E9-7"),
            (Pieces{"Intel", "R", "", "\u00C9t\u00E9", "7"}));
}

TEST_F(TextPiecesSeam, BetweenPunctuationKeepSymbolsAndSpaces) {
  EXPECT_EQ(systemTextPieces()->piecesBetweenPunctuation("13.4-a+b c..0"),
            (Pieces{"13", "4", "a+b c", "", "0"}));
}

TEST_F(TextPiecesSeam, KeepBytesThatAreNotUtf8) {
  EXPECT_EQ(systemTextPieces()->alphanumericPieces("a\xFF b"), (Pieces{"a\xFF", "b"}));
  EXPECT_EQ(systemTextPieces()->piecesBetweenPunctuation("a\xC3.b"), (Pieces{"a\xC3", "b"}));
}

}  // namespace
}  // namespace vantile
