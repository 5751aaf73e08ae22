#include <gtest/gtest.h>

#include "vantile/platform/parsers/firmware_text.h"
#include "vantile/platform/parsers/gecos.h"
#include "vantile/platform/parsers/text_pieces.h"

namespace vantile {
namespace {

using namespace std::string_literals;

using Pieces = std::vector<std::string>;

TEST(FullNameIn, TheFirstFieldIsTheFullName) {
  EXPECT_EQ(fullNameIn("Ada Lovelace,Room 5,1815,,", "ada"), "Ada Lovelace");
  EXPECT_EQ(fullNameIn("Ada Lovelace", "ada"), "Ada Lovelace");
}

TEST(FullNameIn, EachAmpersandIsTheLoginNameWithACapital) {
  EXPECT_EQ(fullNameIn("& of &ville,&", "ada"), "Ada of Adaville");
  EXPECT_EQ(fullNameIn("&", "Ada"), "Ada");
  EXPECT_EQ(fullNameIn("&", "7of9"), "7of9");
  EXPECT_EQ(fullNameIn("&", "\xFFx"), "\xFFx");
}

TEST(FullNameIn, ABlankOneIsNone) {
  EXPECT_EQ(fullNameIn("", "ada"), std::nullopt);
  EXPECT_EQ(fullNameIn(",Room 5", "ada"), std::nullopt);
  EXPECT_EQ(fullNameIn(" \t,", "ada"), std::nullopt);
  EXPECT_EQ(fullNameIn("&", ""), std::nullopt);
}

TEST(FirmwareText, IsWhatTheMakerPutThereWithoutBlanksAndLineEnd) {
  EXPECT_EQ(firmwareText(" PF0ABCDE \n"), "PF0ABCDE");
  EXPECT_EQ(firmwareText("Raspberry Pi 4 Model B Rev 1.4\0"s), "Raspberry Pi 4 Model B Rev 1.4");
  EXPECT_EQ(firmwareText("a\0b"s), "a");
}

TEST(FirmwareText, PlaceholdersAreNone) {
  for (const char* const placeholder :
       {"To Be Filled By O.E.M.", "to be filled by O.E.M.", "Default string", "Not Specified",
        "None", "System Serial Number", "System Product Name", "N/A", "Unknown", "0123456789",
        "03000200-0400-0500-0006-000700080009"})
    EXPECT_EQ(firmwareText(placeholder + "\n"s), std::nullopt) << placeholder;
}

TEST(FirmwareText, NothingButZerosIsNone) {
  for (const char* const filling : {"0", "0000000", "00000000-0000-0000-0000-000000000000",
                                    "FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF", "........", "****"})
    EXPECT_EQ(firmwareText(filling), std::nullopt) << filling;
}

TEST(FirmwareText, WhatOnlyBeginsLikeAPlaceholderIsNone) {
  for (const char* const text : {"00000001", "None of these", "Unknown 7", "F", "fff", "0-1", "F1"})
    EXPECT_EQ(firmwareText(text), text);
}

TEST(FirmwareText, WhatIsEmptyIsNone) {
  for (const auto& text : {""s, "\n"s, " \t\r\n"s, "\0\0"s, "\0a"s})
    EXPECT_EQ(firmwareText(text), std::nullopt);
}

Pieces betweenSpaces(std::string_view text) {
  return piecesBetween(text, [](char32_t character) { return character == U' '; });
}

TEST(PiecesBetween, AreOneMoreThanTheCharactersBetweenThem) {
  EXPECT_EQ(betweenSpaces("a b"), (Pieces{"a", "b"}));
  EXPECT_EQ(betweenSpaces(" a  b "), (Pieces{"", "a", "", "b", ""}));
  EXPECT_EQ(betweenSpaces("ab"), Pieces{"ab"});
  EXPECT_EQ(betweenSpaces(""), Pieces{""});
}

TEST(PiecesBetween, CharactersAreThoseOfUtf8) {
  std::u32string seen;
  piecesBetween("a\u00E9\u20AC\U0001F600\0"s, [&seen](char32_t character) {
    seen.push_back(character);
    return false;
  });
  EXPECT_EQ(seen, std::u32string(U"a\u00E9\u20AC\U0001F600\0", 5));
}

TEST(PiecesBetween, ABytesThatAreNotUtf8BelongToTheirPieces) {
  // An end cut off, a lone continuation, overlong forms, a surrogate, beyond the last character.
  for (const auto& bytes : {"\xFF"s, "\xC3"s, "\x80"s, "\xC0\xA0"s, "\xE0\x80\xA0"s,
                            "\xED\xA0\x80"s, "\xF4\x90\x80\x80"s, "\xF0\x9F\x98"s, "\xE2\x82"s}) {
    const auto pieces = piecesBetween("a" + bytes + "b c", [](char32_t character) {
      return character != U'a' && character != U'b' && character != U'c';
    });
    EXPECT_EQ(pieces, (Pieces{"a" + bytes + "b", "c"}));
  }
}

}  // namespace
}  // namespace vantile
