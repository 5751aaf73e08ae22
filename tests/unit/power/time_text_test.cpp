#include "vantile/power/time_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace vantile {
namespace {

using Text = std::optional<std::string>;

TEST(TimeText, IsHoursAndTwoDigitsOfMinutes) {
  EXPECT_EQ(timeText(0, 0), "0:00");
  EXPECT_EQ(timeText(1, 2), "1:02");
  EXPECT_EQ(timeText(12, 34), "12:34");
  EXPECT_EQ(timeText(-1, -2), "-1:-2");  // as "%02ld" has it
}

TEST(TimeText, AFormatHoldsBothFieldsInEitherOrder) {
  EXPECT_EQ(timeText("%1$ld:%2$02ld", 1, 2), "1:02");
  EXPECT_EQ(timeText("%2$ld min past %1$ld h", 1, 2), "2 min past 1 h");
  EXPECT_EQ(timeText("%ld h %02ld", 1, 2), "1 h 02");
  EXPECT_EQ(timeText("%1$lld %2$lli", 1, 2), "1 2");
  EXPECT_EQ(timeText("%1$3li|%2$03ld", 1, -2), "  1|-02");
  EXPECT_EQ(timeText("100%% %1$ld.%2$ld", 1, 2), "100% 1.2");
  EXPECT_EQ(timeText("\xC3\xA9 %1$ld\xFF%2$ld", 1, 2),
            "\xC3\xA9 1\xFF"
            "2");
}

TEST(TimeText, NumbersMayBeAsLongAsTheyGet) {
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(timeText("%1$ld %2$02ld", least, least), "-9223372036854775808 -9223372036854775808");
}

TEST(TimeText, AFormatWithoutBothFieldsIsNone) {
  for (const auto* format : {"", "never", "%1$ld", "%2$02ld", "%ld", "%%", "%1$ld:%%2$02ld"})
    EXPECT_EQ(timeText(format, 1, 2), Text()) << format;
}

TEST(TimeText, AFormatWithAFieldTwiceOrMoreFieldsIsNone) {
  for (const auto* format : {"%1$ld:%1$ld", "%1$ld:%2$ld:%2$ld", "%ld:%ld:%ld", "%1$ld:%ld",
                             "%ld:%2$ld", "%1$ld:%2$ld%3$ld"})
    EXPECT_EQ(timeText(format, 1, 2), Text()) << format;
}

TEST(TimeText, AFormatWithAFieldOfAnotherKindIsNone) {
  for (const auto* format :
       {"%1$ld:%2$02ld%n", "%s:%ld", "%1$@:%2$ld", "%1$d:%2$d", "%d:%d", "%i:%i", "%1$lu:%2$ld",
        "%1$hd:%2$ld", "%1$f %2$ld", "%1$lx:%2$ld", "%1$*2$ld:%2$ld", "%1$-3ld:%2$ld",
        "%1$10ld:%2$ld", "%0$ld %1$ld", "%11$ld:%2$ld", "%1$ld:%2$02l", "%1$ld:%2$ld%", "% ld:%ld",
        "%1$.3ld %2$ld"})
    EXPECT_EQ(timeText(format, 1, 2), Text()) << format;
}

}  // namespace
}  // namespace vantile
