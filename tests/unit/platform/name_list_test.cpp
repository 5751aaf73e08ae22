#include "vantile/platform/parsers/name_list.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vantile {
namespace {

using namespace std::string_literals;

std::string text(const NameList& names, std::size_t from = 0) {
  std::string text(names.size() - from, '\0');
  names.copy(from, text.data(), text.size());
  return text;
}

std::string numbers(int count) {
  std::string expected;
  for (int number = 0; number < count; ++number)
    expected.append(std::to_string(number)).push_back('\0');
  return expected;
}

TEST(NameListTest, NamesComeOutAsTheyWentIn) {
  NameList names;
  for (int number = 0; number < 30000; ++number) names.append(std::to_string(number));
  const auto expected = numbers(30000);
  EXPECT_EQ(names.size(), expected.size());
  EXPECT_EQ(text(names), expected);
  for (const std::size_t from : {1u, 65535u, 65536u, 131072u})
    EXPECT_EQ(text(names, from), expected.substr(from)) << from;
}

TEST(NameListTest, AListIsPutBehindAnother) {
  NameList names("first\0"s);
  names.take(NameList(numbers(30000)));
  names.take(NameList());
  names.append("last");
  EXPECT_EQ(text(names), "first\0"s + numbers(30000) + "last\0"s);
}

TEST(NameListTest, ANameMayBeLongerThanAnyPiece) {
  NameList names;
  names.append(std::string(200000, 'x'));
  EXPECT_EQ(text(names), std::string(200000, 'x') + '\0');
}

TEST(NameListTest, EachNameIsHandedOn) {
  std::string seen;
  forEachName("a\0\xFF b\0cut off"s,
              [&seen](std::string_view name) { seen.append(name).append("|"); });
  EXPECT_EQ(seen, "a|\xFF b|cut off|");
}

}  // namespace
}  // namespace vantile
