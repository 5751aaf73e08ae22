#include "vantile/platform/parsers/utf16.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

constexpr const char* replacement = "\xEF\xBF\xBD";

TEST(Utf16, BecomesUtf8OfEveryLength) {
  EXPECT_EQ(utf8Of(u""), "");
  EXPECT_EQ(utf8Of(u"a\u007F"), "a\x7F");
  EXPECT_EQ(utf8Of(u"\u0080\u07FF"), "\xC2\x80\xDF\xBF");
  EXPECT_EQ(utf8Of(u"\u0800\uD7FF\uE000\uFFFF"),
            "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF");
  EXPECT_EQ(utf8Of(u"\U00010000\U0001F600\U0010FFFF"),
            "\xF0\x90\x80\x80\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF");
}

TEST(Utf16, KeepsAZeroAsItIs) {
  EXPECT_EQ(utf8Of(std::u16string(2, u'\0')), std::string(2, '\0'));
}

TEST(Utf16, HalfAPairIsReplacedAndWhatFollowsIsNot) {
  for (const int half : {0xD800, 0xDBFF, 0xDC00, 0xDFFF}) {
    const std::u16string lone(1, static_cast<char16_t>(half));
    EXPECT_EQ(utf8Of(lone), replacement) << half;
    EXPECT_EQ(utf8Of(u"a" + lone + u"b"), "a" + std::string(replacement) + "b") << half;
  }
  EXPECT_EQ(utf8Of(std::u16string{u'\xDC00', u'\xD800'}), std::string(replacement) + replacement);
  EXPECT_EQ(utf8Of(std::u16string{u'\xD800', u'\xD83D', u'\xDE00'}),
            replacement + std::string("\xF0\x9F\x98\x80"));
}

}  // namespace
}  // namespace vantile
