#include "vantile/platform/parsers/pid_stat.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

const std::string rest =
    " S 7 41 39 34816 41 4194560 1 2 3 4 500 60 7 8 20 5 3 0 2043719 8126464 910 "
    "18446744073709551615 94000 94500 140720 0 0 0 0 4096 2 0 0 0 17 1 0 0 0 0 0 1 2 3 4 5 6 7 0\n";

TEST(PidStatText, ThatWasRecordedIsReadAsAWhole) {
  const auto text = fixture("pid-stat.txt");
  const auto stat = parsePidStat(text).value();
  EXPECT_EQ(stat.pid, 30215);
  EXPECT_EQ(stat.name, "a) R (b");
  EXPECT_EQ(stat.state, 'R');
  EXPECT_EQ(stat.parent, 30204);
  EXPECT_EQ(stat.userTicks, 3u);
  EXPECT_EQ(stat.startTicks, 2568770u);
  EXPECT_EQ(stat.virtualBytes, 17145856u);
  EXPECT_EQ(stat.residentPages, 3394u);
  EXPECT_EQ(stat.codeStart, 94739122937856u);
  EXPECT_EQ(stat.stackStart, 140722772762640u);
}

TEST(PidStatText, EveryFieldComesFromItsPlace) {
  const std::string text = "40 (name)" + rest;
  const auto stat = parsePidStat(text).value();
  EXPECT_EQ(stat.pid, 40);
  EXPECT_EQ(stat.name, "name");
  EXPECT_EQ(stat.state, 'S');
  EXPECT_EQ(stat.parent, 7);
  EXPECT_EQ(stat.session, 39);
  EXPECT_EQ(stat.userTicks, 500u);
  EXPECT_EQ(stat.systemTicks, 60u);
  EXPECT_EQ(stat.nice, 5);
  EXPECT_EQ(stat.threads, 3);
  EXPECT_EQ(stat.startTicks, 2043719u);
  EXPECT_EQ(stat.virtualBytes, 8126464u);
  EXPECT_EQ(stat.residentPages, 910u);
  EXPECT_EQ(stat.codeStart, 94000u);
  EXPECT_EQ(stat.stackStart, 140720u);
}

TEST(PidStatText, ANameMayHoldAnything) {
  for (const std::string name :
       {"", ")", "a) S (b", "(", "line\nbreak", " ", "\xFF\xC3", ") S 1"}) {
    const std::string text = "40 (" + name + ")" + rest;
    const auto stat = parsePidStat(text);
    ASSERT_TRUE(stat) << name;
    EXPECT_EQ(stat->name, name);
    EXPECT_EQ(stat->parent, 7);
  }
}

TEST(PidStatText, NumbersOfAnySignAreRead) {
  std::string text = "40 (n)" + rest;
  text.replace(text.find(" 20 5 "), 6, " -2 -19 ");
  text.replace(text.find(" 7 41 39 "), 9, " 0 0 -1 ");
  const auto stat = parsePidStat(text).value();
  EXPECT_EQ(stat.nice, -19);
  EXPECT_EQ(stat.parent, 0);
  EXPECT_EQ(stat.session, -1);
}

TEST(PidStatText, WithoutItsBeginningIsNone) {
  for (const std::string begin : {"", "x (n)", "0 (n)", "-4 (n)", "40", "40 n)", "40 (n", "40(n)",
                                  "40  (n)", "4294967337 (n)", " 40 (n)", "40 )("})
    EXPECT_FALSE(parsePidStat(begin + rest)) << begin;
}

TEST(PidStatText, WithoutAStateThatIsALetterIsNone) {
  for (const std::string state : {" +", " 1", "", "  ", "S", " \n", " \xFF"})
    EXPECT_FALSE(parsePidStat("40 (n)" + state + rest.substr(2))) << state;
}

TEST(PidStatText, CutOffAnywhereBeforeItsLastFieldIsNone) {
  const std::string whole = "40 (n)" + rest;
  const auto enough = whole.find(" 140720 ") + 8;
  for (std::size_t size = 0; size < enough; ++size)
    EXPECT_FALSE(parsePidStat(whole.substr(0, size))) << whole.substr(0, size);
  EXPECT_TRUE(parsePidStat(whole.substr(0, enough)));
}

TEST(PidStatText, WithAFieldThatIsNoNumberIsNone) {
  for (const std::string field : {" 7 ", " 39 ", " 500 ", " 60 ", " 5 3 ", " 2043719 ", " 8126464 ",
                                  " 910 ", " 94000 ", " 140720 "}) {
    std::string text = "40 (n)" + rest;
    text.replace(text.find(field) + 1, 1, "x");
    EXPECT_FALSE(parsePidStat(text)) << field;
  }
}

TEST(PidStatText, WithANumberThatDoesNotFitIsNone) {
  std::string text = "40 (n)" + rest;
  text.replace(text.find(" 500 "), 5, " 18446744073709551616 ");
  EXPECT_FALSE(parsePidStat(text));
  text.replace(text.find(" 18446744073709551616 "), 22, " 18446744073709551615 ");
  EXPECT_EQ(parsePidStat(text)->userTicks, std::numeric_limits<std::uint64_t>::max());
}

}  // namespace
}  // namespace vantile
