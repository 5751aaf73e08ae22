#include "vantile/platform/text_folding.h"

#include "seam.h"

namespace vantile {
namespace {

using namespace std::string_literals;

using TextFoldingSeam = Seam;

std::string lowerCased(std::string_view text) {
  return systemTextFolding()->lowerCased(text);
}
std::string folded(std::string_view text) {
  return systemTextFolding()->folded(text);
}

TEST_F(TextFoldingSeam, LowersLettersAndKeepsTheirMarks) {
  EXPECT_EQ(lowerCased("ÉTÉ Übung 1"), "été übung 1");
  EXPECT_EQ(lowerCased(""), "");
}

TEST_F(TextFoldingSeam, FoldsCaseAndMarks) {
  EXPECT_EQ(folded("É"), "e");
  EXPECT_EQ(folded("é"), "e");
  EXPECT_EQ(folded("e\u0301"), "e");
  EXPECT_EQ(folded("E"), "e");
}

TEST_F(TextFoldingSeam, GoesByNoLocaleOfTheHosts) {
  EXPECT_EQ(lowerCased("I"), "i");
  EXPECT_EQ(folded("I"), "i");
}

TEST_F(TextFoldingSeam, LowersTheAsciiLettersOfWhatIsNotUtf8) {
  EXPECT_EQ(lowerCased("AZ[É\xFF"), "az[É\xFF");
  EXPECT_EQ(folded("@AZ É\xC3"), "@az É\xC3");
}

TEST_F(TextFoldingSeam, GoesThroughZeroBytes) {
  EXPECT_EQ(lowerCased("A\0É"s), "a\0é"s);
}

TEST_F(TextFoldingSeam, LowersTheAsciiLettersWhereTheSystemFails) {
  for (const char* const function :
       {"CFStringCreateWithBytes", "CFStringCreateMutableCopy", "measuring", "CFStringGetBytes"}) {
    fakes::machine.refuses = {function};
    EXPECT_EQ(lowerCased("AÉ"), "aÉ") << function;
    EXPECT_EQ(folded("AÉ"), "aÉ") << function;
  }
}

}  // namespace
}  // namespace vantile
