#include "vantile/platform/parsers/strings_table.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using Text = std::optional<std::string>;

TEST(StringsTable, HoldsTextsUnderKeys) {
  const auto table = testing::fixture("localizable.strings");
  EXPECT_EQ(stringInTable(table, "%1$ld:%2$02ld"), "%1$ld Std. %2$ld Min.");
  EXPECT_EQ(stringInTable(table, "Trash"), "Papierkorb");
  EXPECT_EQ(stringInTable(table, "Say \"hello\""), "\"Gr\xC3\xBC\xC3\x9F\" sagen\n\tund gehen\\");
  EXPECT_EQ(stringInTable(table, "bare_key"), "bare.value");
  EXPECT_EQ(stringInTable(table, "alone"), "alone");
  EXPECT_EQ(stringInTable(table, "// no comment"), "/* nor this */");
  EXPECT_EQ(stringInTable(table, "commented"), Text());
  EXPECT_EQ(stringInTable(table, "trash"), Text());
}

TEST(StringsTable, TheLastTextCounts) {
  EXPECT_EQ(stringInTable("\"a\" = \"1\"; \"a\" = \"2\"; \"b\" = \"3\";", "a"), "2");
}

TEST(StringsTable, MayBeginWithItsMark) {
  EXPECT_EQ(stringInTable("\xEF\xBB\xBF\"a\"=\"1\";", "a"), "1");
}

TEST(StringsTable, MayHoldEmptyTexts) {
  EXPECT_EQ(stringInTable("\"\" = \"1\"; \"a\" = \"\";", ""), "1");
  EXPECT_EQ(stringInTable("\"\" = \"1\"; \"a\" = \"\";", "a"), "");
}

TEST(StringsTable, PassesBytesThrough) {
  EXPECT_EQ(stringInTable("\"\xFF\" = \"\xFE\";", "\xFF"), "\xFE");
}

TEST(StringsTable, ThatIsMalformedHoldsNothing) {
  for (const auto* table :
       {"", "\"a\" = \"1\"", "\"a\" \"1\";", "\"a\" = ;", "= \"1\";", "\"a\" = \"1;", "\"a = 1;",
        "\"a\" = \"1\"; }", "\"a\" = \"1\"; /* open", "\"a\" = \"\\U00e9\";", "\"a\" = \"\\",
        "\"a\" = \"1\";;", "{ \"a\" = \"1\"; }", "\"a\" = (\"1\");"})
    EXPECT_EQ(stringInTable(table, "a"), Text()) << table;
}

}  // namespace
}  // namespace vantile
