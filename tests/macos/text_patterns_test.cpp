#include "vantile/platform/text_patterns.h"

#include <stdexcept>

#include "seam.h"

namespace vantile {
namespace {

class TextPatternsSeam : public Seam {
 protected:
  using Match = std::vector<std::optional<std::string>>;

  static std::vector<Match> matches(std::string_view pattern, std::string_view text) {
    std::vector<Match> found;
    const auto compiled = systemTextPatterns()->compile(pattern);
    compiled->matches(text, [&](const TextPattern::Groups& groups) {
      Match match;
      for (const auto& group : groups)
        match.push_back(group ? std::optional(std::string(*group)) : std::nullopt);
      found.push_back(match);
    });
    return found;
  }
};

TEST_F(TextPatternsSeam, GiveTheGroupsOfEachMatchInOrder) {
  EXPECT_EQ(matches("(\\w)=(\\d+)", "a=1 b=22 c="),
            (std::vector<Match>{{"a=1", "a", "1"}, {"b=22", "b", "22"}}));
}

TEST_F(TextPatternsSeam, AGroupThatTookNoPartIsAbsent) {
  EXPECT_EQ(matches("(a)|(b)", "ab"),
            (std::vector<Match>{{"a", "a", std::nullopt}, {"b", std::nullopt, "b"}}));
}

TEST_F(TextPatternsSeam, CountTheTextInItsBytes) {
  // Two bytes and one unit, three and one, four and two.
  for (const std::string before : {"\u00e9", "\u20ac", "\U0001f600", "\u00e9\U0001f600\u20ac"}) {
    const std::string text = before + "41" + before + "7" + before;
    EXPECT_EQ(matches("(\\d+)", text), (std::vector<Match>{{"41", "41"}, {"7", "7"}})) << before;
    EXPECT_EQ(matches("^(.*)$", text), (std::vector<Match>{{text, text}})) << before;
  }
}

TEST_F(TextPatternsSeam, GroupsAreViewsIntoTheText) {
  const std::string text = "\u00e9 41";
  const auto pattern = systemTextPatterns()->compile("(\\d+)");
  pattern->matches(text, [&](const TextPattern::Groups& groups) {
    EXPECT_EQ(groups.at(1)->data(), text.data() + text.find("41"));
  });
}

TEST_F(TextPatternsSeam, ReadTheLinesOfTheProcessList) {
  const std::string pattern =
      "[\\n^\\n]*?\\s*(\\d+)\\s+(\\d+.\\d+)\\s+(\\d+.\\d+)\\s+(\\d+)\\s+(\\d+)\\s+([a-zA-Z]+)"
      "\\s*\\n";
  EXPECT_EQ(
      matches(pattern, "  PID %CPU %MEM RSS VSZ STAT\n 41 1,5 0.2 100 200 Ss\n 42 1.5 0.2 1 2 S+\n")
          .size(),
      1u);
}

TEST_F(TextPatternsSeam, TextThatIsNotUtf8HasNoMatches) {
  EXPECT_TRUE(matches("a", "a\xFF").empty());
}

TEST_F(TextPatternsSeam, NothingIsFoundInNothing) {
  EXPECT_TRUE(matches("a", "").empty());
}

TEST_F(TextPatternsSeam, WhatIsNoPatternIsNotCompiled) {
  EXPECT_EQ(systemTextPatterns()->compile("("), nullptr);
  EXPECT_EQ(systemTextPatterns()->compile("\xFF"), nullptr);
}

TEST_F(TextPatternsSeam, AreNoneWhereTheSystemFails) {
  for (const char* const function :
       {"regularExpressionWithPattern:options:error:", "CFStringCreateWithBytes"}) {
    fakes::machine.refuses = {function};
    EXPECT_EQ(systemTextPatterns()->compile("a"), nullptr) << function;
  }
  fakes::machine.refuses.clear();
  fakes::machine.classes.erase("NSRegularExpression");
  EXPECT_EQ(systemTextPatterns()->compile("a"), nullptr);
}

TEST_F(TextPatternsSeam, FindNothingWhereTheSystemFails) {
  const auto pattern = systemTextPatterns()->compile("a");
  for (const char* const function : {"matchesInString:options:range:", "CFStringCreateWithBytes"}) {
    fakes::machine.refuses = {function};
    pattern->matches("a", [&](const TextPattern::Groups&) { ADD_FAILURE() << function; });
  }
}

TEST_F(TextPatternsSeam, ExceptionsComeAsExceptionsOfThisLanguage) {
  const auto pattern = systemTextPatterns()->compile("a");
  for (const char* const selector :
       {"matchesInString:options:range:", "numberOfRanges", "rangeAtIndex:"}) {
    fakes::machine.raisesAt = selector;
    EXPECT_THROW(pattern->matches("a", [](const TextPattern::Groups&) {}), std::runtime_error)
        << selector;
  }
  fakes::machine.raisesAt = "regularExpressionWithPattern:options:error:";
  EXPECT_THROW(systemTextPatterns()->compile("a"), std::runtime_error);
}

}  // namespace
}  // namespace vantile
