#include "vantile/platform/text_folding.h"

#include <dlfcn.h>
#include <glib.h>
#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "vantile/platform/linux/glib_text.h"

namespace {

const char* pretendedLocale = nullptr;  // while a test pretends one

}  // namespace

// Stands before the C library's in this program: GLib asks it which language's rules to follow, and
// machines need not have a Turkish locale.
extern "C" __attribute__((visibility("default"))) char* setlocale(int category,
                                                                  const char* locale) noexcept {
  if (pretendedLocale && !locale) return const_cast<char*>(pretendedLocale);
  using SetLocale = char* (*)(int, const char*);
  static const auto real = reinterpret_cast<SetLocale>(::dlsym(RTLD_NEXT, "setlocale"));
  return real(category, locale);
}

namespace vantile {
namespace {

using namespace std::string_view_literals;

std::string lower(std::string_view text) {
  return systemTextFolding()->lowerCased(text);
}
std::string folded(std::string_view text) {
  return systemTextFolding()->folded(text);
}

std::string utf8(gunichar character) {
  char bytes[6];
  return {bytes, static_cast<std::size_t>(g_unichar_to_utf8(character, bytes))};
}

/// Calls `each` with every character below the planes of ideographs, which have no case.
template <class Each>
void forEveryCharacter(const Each& each) {
  for (gunichar character = 1; character < 0x20000; ++character)
    if (g_unichar_validate(character) && !::testing::Test::HasFailure()) each(utf8(character));
}

struct InALocale : ::testing::TestWithParam<const char*> {
  InALocale() { pretendedLocale = GetParam(); }
  ~InALocale() override { pretendedLocale = nullptr; }
};

std::string byGlib(const std::string& text) {
  return GlibText(g_utf8_strdown(text.c_str(), -1)).get();
}

TEST(LinuxTextFolding, LowersLettersOfEveryScript) {
  EXPECT_EQ(lower("ABCxyz-09_"), "abcxyz-09_");
  EXPECT_EQ(lower("ÄÖÜÉÇÑØ ẞ ΓΔ ЖЯ Ա"), "äöüéçñø ß γδ жя ա");
  EXPECT_EQ(lower("日本"), "日本");
  EXPECT_EQ(lower(""), "");
}

TEST(LinuxTextFolding, LowersEveryCharacterAsGlibDoes) {
  forEveryCharacter([](const std::string& text) {
    ASSERT_EQ(lower(text), byGlib(text)) << text;
    ASSERT_EQ(lower("A" + text + "BΣ" + text), byGlib("A" + text + "BΣ" + text)) << text;
  });
}

TEST(LinuxTextFolding, ASigmaAtTheEndOfAWordHasItsOwnForm) {
  EXPECT_EQ(lower("ΣΑΣ ΣΑΣ"), "σας σας");
}

TEST(LinuxTextFolding, AreWithoutCaseAndDiacritics) {
  for (const auto* same : {"É", "é", "e", "E", "E\u0301", "e\u0301\u0323"})
    EXPECT_EQ(folded(same), "e") << same;
  EXPECT_EQ(folded("ÄrgerÑÇÅ Ж Й"), "argernca ж и");
  EXPECT_EQ(folded("Straße"), folded("STRASSE"));
  EXPECT_EQ(folded("ΣΑΣ"), folded("σας"));
  EXPECT_EQ(folded("ﬁ"), "fi");
  EXPECT_EQ(folded("Việt"), "viet");
  EXPECT_EQ(folded("שָׁלוֹם"), "שלום");
  EXPECT_EQ(folded("के"), "क");
  EXPECT_EQ(folded("가\u302E"), folded("가"));  // a mark that takes room
}

TEST(LinuxTextFolding, KeepApartWhatDiffersByMore) {
  EXPECT_NE(folded("ø"), folded("o"));
  EXPECT_NE(folded("²"), folded("2"));
  EXPECT_NE(folded("ａ"), folded("a"));
  EXPECT_EQ(folded("日本"), "日本");
  EXPECT_EQ(folded(""), "");
}

TEST(LinuxTextFolding, FoldedOnceIsFolded) {
  forEveryCharacter([](const std::string& text) {
    const auto once = folded(text);
    ASSERT_EQ(folded(once), once) << text;
  });
}

TEST(LinuxTextFolding, EveryCharacterIsFoldedLikeItsLowerCase) {
  forEveryCharacter(
      [](const std::string& text) { ASSERT_EQ(folded(lower(text)), folded(text)) << text; });
}

TEST(LinuxTextFolding, WhatIsNotUtf8OnlyHasItsAsciiLettersLowered) {
  for (const auto text : {"Ab\xFFÉ"sv, "Ab\xC3"sv, "Ab\xED\xA0\x80"sv, "Ab\xC0\x80"sv}) {
    const auto expected = "ab" + std::string(text.substr(2));
    EXPECT_EQ(lower(text), expected) << text;
    EXPECT_EQ(folded(text), expected) << text;
  }
}

TEST(LinuxTextFolding, AZeroByteEndsNothing) {
  EXPECT_EQ(lower("\0A\0\0É\0"sv), "\0a\0\0é\0"sv);
  EXPECT_EQ(folded("\0A\0\0É\0"sv), "\0a\0\0e\0"sv);
}

TEST_P(InALocale, TextIsLoweredAndFoldedAsInAnyOther) {
  const std::string letters = "IiİıJÌÍĨĮŁ I\u0307 J\u0301";
  EXPECT_NE(byGlib(letters), "iii\u0307ıjìíĩįł i\u0307 j\u0301") << "the locale is not seen";
  EXPECT_EQ(lower(letters), "iii\u0307ıjìíĩįł i\u0307 j\u0301");
  EXPECT_EQ(folded("Iİiı"), "iiiı");
}

INSTANTIATE_TEST_SUITE_P(LinuxTextFolding, InALocale,
                         ::testing::Values("tr_TR.UTF-8", "az_AZ.UTF-8", "lt_LT.UTF-8"));

TEST(LinuxTextFolding, IsSharedByTheProcess) {
  EXPECT_EQ(systemTextFolding(), systemTextFolding());
}

}  // namespace
}  // namespace vantile
