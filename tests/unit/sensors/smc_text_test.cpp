#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "vantile/sensors/smc.h"

namespace vantile {
namespace {

TEST(SmcStrtoul, PacksAKeyInBase16) {
  EXPECT_EQ(_strtoul("TC0P", 4, 16), 0x54433050u);
}

TEST(SmcStrtoul, InAnotherBaseOnlyTheLastCharacterCounts) {
  EXPECT_EQ(_strtoul("TC0P", 4, 10), static_cast<std::uint32_t>('P'));
  EXPECT_EQ(_strtoul("TC0P", 4, 0), 0x50u);
  EXPECT_EQ(_strtoul("\xFF", 1, 10), 0xffu);
}

TEST(SmcStrtoul, OfNoCharactersIs0) {
  EXPECT_EQ(_strtoul("TC0P", 0, 16), 0u);
  EXPECT_EQ(_strtoul("TC0P", -1, 16), 0u);
  EXPECT_EQ(_strtoul(nullptr, 4, 16), 0u);
}

TEST(SmcStrtoul, CharactersAreSigned) {
  EXPECT_EQ(_strtoul("\xFF", 1, 16), 0xffffffffu);
  EXPECT_EQ(_strtoul("\x01\x80", 2, 16), 0x00000080u);  // 0x100 - 0x80
  EXPECT_EQ(_strtoul("A\xFF\xFF\xFF", 4, 16), 0x40fefeffu);
}

TEST(SmcStrtoul, TakesSoManyCharactersOfALongerText) {
  EXPECT_EQ(_strtoul("sp78", 2, 16), 0x7370u);
}

TEST(SmcStrtoul, ReadsNoFurtherThanTheNul) {
  EXPECT_EQ(_strtoul("AB", 4, 16), 0x41420000u);
  EXPECT_EQ(_strtoul("AB", 4, 10), 0u);
  EXPECT_EQ(_strtoul("", std::numeric_limits<std::int32_t>::max(), 16), 0u);
  EXPECT_EQ(_strtoul("AB", std::numeric_limits<std::int32_t>::max(), 16), 0u);
}

TEST(SmcStrtoul, ShiftsOf32BitsAndMoreContributeNothing) {
  EXPECT_EQ(_strtoul("xxTC0P", 6, 16), 0x54433050u);
  EXPECT_EQ(_strtoul("\xFFTC0P", 5, 16), 0x54433050u);
  EXPECT_EQ(_strtoul("xTC0P", 5, 10), 0x50u);
}

TEST(SmcUltostr, WritesFourCharactersAndANul) {
  char text[6] = "-----";
  _ultostr(text, 0x54433050);
  EXPECT_EQ(std::string(text, 6), std::string("TC0P\0\0", 6));
}

TEST(SmcUltostr, EveryByteIsACharacter) {
  char text[6] = "-----";
  _ultostr(text, 0xff00417f);
  EXPECT_EQ(std::string(text, 5), std::string("\xFF\0A\x7F\0", 5));
}

TEST(SmcUltostr, WritesNothingToNowhere) {
  _ultostr(nullptr, 7);
}

}  // namespace
}  // namespace vantile
