#include "vantile/platform/parsers/compact_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace vantile {
namespace {

static_assert(sizeof(CompactText) == 16);

TEST(CompactTextTest, TextsOfEveryLengthComeBack) {
  std::string text;
  for (int length = 0; length < 300; ++length) {
    EXPECT_EQ(CompactText(text).view(), text) << length;
    text.push_back(static_cast<char>(length));
  }
}

TEST(CompactTextTest, AMovedTextLeavesNone) {
  for (const std::string text : {"fifteen letters", "sixteen letters."}) {
    CompactText from(text);
    CompactText to(std::move(from));
    EXPECT_EQ(to.view(), text);
    EXPECT_EQ(from.view(), "");  // NOLINT(bugprone-use-after-move)
    CompactText other("a text that there was before");
    other = std::move(to);
    EXPECT_EQ(other.view(), text);
    EXPECT_EQ(to.view(), "");  // NOLINT(bugprone-use-after-move)
    other = CompactText();
    EXPECT_EQ(other.view(), "");
  }
}

TEST(CompactTextTest, ATextTooLongForItIsRefused) {
  constexpr std::size_t most = std::numeric_limits<std::uint32_t>::max();
  EXPECT_THROW(CompactText(std::string_view("", most + 1)), std::length_error);
}

}  // namespace
}  // namespace vantile
