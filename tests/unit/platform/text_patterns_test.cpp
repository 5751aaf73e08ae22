#include "vantile/platform/text_patterns.h"

#include <gtest/gtest.h>

#include <string>

namespace vantile {
namespace {

using Match = std::vector<std::optional<std::string>>;

std::vector<Match> matches(std::string_view pattern, std::string_view text) {
  std::vector<Match> found;
  systemTextPatterns()->compile(pattern)->matches(text, [&](const TextPattern::Groups& groups) {
    Match match;
    for (const auto& group : groups)
      match.push_back(group ? std::optional(std::string(*group)) : std::nullopt);
    found.push_back(match);
  });
  return found;
}

TEST(TextPatterns, GiveTheGroupsOfEachMatchInOrder) {
  EXPECT_EQ(matches("(\\w)=(\\d+)", "a=1 b=22 c="),
            (std::vector<Match>{{"a=1", "a", "1"}, {"b=22", "b", "22"}}));
}

TEST(TextPatterns, AGroupThatTookNoPartIsAbsent) {
  EXPECT_EQ(matches("(a)|(b)", "ab"),
            (std::vector<Match>{{"a", "a", std::nullopt}, {"b", std::nullopt, "b"}}));
}

TEST(TextPatterns, AnEmptyGroupIsThere) {
  EXPECT_EQ(matches("a(b*)", "a"), (std::vector<Match>{{"a", ""}}));
}

TEST(TextPatterns, EmptyMatchesComeOnce) {
  EXPECT_EQ(matches("x*", "ax").size(), 3u);
}

TEST(TextPatterns, GroupsAreViewsIntoTheText) {
  const std::string text = "Größe 41";
  systemTextPatterns()->compile("(\\d+)")->matches(text, [&](const TextPattern::Groups& groups) {
    EXPECT_EQ(groups.at(1)->data(), text.data() + text.find("41"));
  });
}

TEST(TextPatterns, NothingIsFoundWhereNothingIs) {
  EXPECT_TRUE(matches("b", "aaa").empty());
  EXPECT_TRUE(matches("b", "").empty());
  EXPECT_TRUE(matches("b", std::string_view()).empty());
}

TEST(TextPatterns, TextThatIsNotUtf8HasNoMatches) {
  EXPECT_TRUE(matches("a", "a\xFF").empty());
  EXPECT_TRUE(matches("a", std::string_view("a\0\xFF", 3)).empty());
}

TEST(TextPatterns, GoThroughZeroBytes) {
  EXPECT_EQ(matches("b", std::string_view("a\0b", 3)), (std::vector<Match>{{"b"}}));
}

TEST(TextPatterns, WhatIsNoPatternIsNotCompiled) {
  for (const auto pattern : {std::string_view("("), std::string_view("a{2,1}"),
                             std::string_view("\xFF"), std::string_view("a\0b", 3)})
    EXPECT_EQ(systemTextPatterns()->compile(pattern), nullptr) << pattern;
}

TEST(TextPatterns, TextAtWhichTheSystemGivesUpEndsTheMatches) {
  EXPECT_LE(matches("(a+)+$", std::string(40, 'a') + "b").size(), 1u);
}

}  // namespace
}  // namespace vantile
