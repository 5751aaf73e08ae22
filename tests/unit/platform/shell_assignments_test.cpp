#include "vantile/platform/parsers/shell_assignments.h"

#include <gtest/gtest.h>

#include "vantile/platform/parsers/os_release.h"

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using namespace std::string_view_literals;
using testing::fixture;

using Text = std::optional<std::string>;

Text machineInfo(std::string_view name) {
  return shellAssignment(fixture("machine-info.txt"), name);
}
Text valueOf(std::string_view text) {
  return shellAssignment("A=" + std::string(text) + "\n", "A");
}

TEST(ShellAssignments, DoubleQuotesAndTheirEscapesAreResolved) {
  EXPECT_EQ(machineInfo("PRETTY_HOSTNAME"), "Ada's \"big\" $5 Laptop \\ `x` \\d");
}

TEST(ShellAssignments, SingleQuotesKeepEverythingInThem) {
  EXPECT_EQ(machineInfo("CHASSIS"), "laptop");
  EXPECT_EQ(valueOf("'a\\ \"b\" #'"), "a\\ \"b\" #");
}

TEST(ShellAssignments, APlainWordIsItself) {
  EXPECT_EQ(machineInfo("ICON_NAME"), "computer-laptop");
  EXPECT_EQ(valueOf("a#b"), "a#b");
}

TEST(ShellAssignments, BlanksWithoutQuotesArePartOfTheValueButForThoseAtItsEnd) {
  EXPECT_EQ(machineInfo("LOCATION"), "Left rack, 2nd floor");
  EXPECT_EQ(valueOf("\"a\"  b \t"), "a  b");
}

TEST(ShellAssignments, CommentsAreNoPartOfAValueNorAssignments) {
  EXPECT_EQ(machineInfo("DEPLOYMENT"), "development");
  EXPECT_EQ(shellAssignment("#A=1\n # A=2\n", "A"), std::nullopt);
  EXPECT_EQ(valueOf("\"a\" # b"), "a");
  EXPECT_EQ(valueOf("# b"), "# b");
  EXPECT_EQ(valueOf(" # b"), "");
}

TEST(ShellAssignments, NothingAssignedIsEmptyAndNoAssignmentIsNone) {
  EXPECT_EQ(machineInfo("EMPTY"), "");
  EXPECT_EQ(machineInfo("MISSING"), std::nullopt);
  EXPECT_EQ(shellAssignment("", "A"), std::nullopt);
}

TEST(ShellAssignments, AQuoteLeftOpenIsNoAssignment) {
  EXPECT_EQ(machineInfo("OPEN"), std::nullopt);
  EXPECT_EQ(valueOf("'a"), std::nullopt);
  EXPECT_EQ(valueOf("a\""), std::nullopt);
  EXPECT_EQ(valueOf("\"a\\\""), std::nullopt);
  EXPECT_EQ(shellAssignment("A=\"\\", "A"), std::nullopt);
}

TEST(ShellAssignments, QuotedAndPlainPartsAreJoined) {
  EXPECT_EQ(valueOf("a'b'\"c\"\\'d"), "abc'd");
}

TEST(ShellAssignments, ABackslashAtTheEndOfALineIsNone) {
  EXPECT_EQ(valueOf("a\\"), "a");
}

TEST(ShellAssignments, TheLastOneCounts) {
  EXPECT_EQ(shellAssignment("A=1\nA=2\n", "A"), "2");
  EXPECT_EQ(shellAssignment("A=1\nA='2\n", "A"), "1");
}

TEST(ShellAssignments, ANameThatOnlyBeginsOrEndsAlikeIsAnother) {
  EXPECT_EQ(shellAssignment("AB=1\nBA=2\n", "A"), std::nullopt);
  EXPECT_EQ(shellAssignment("VERSION_ID=12\n", "VERSION"), std::nullopt);
}

TEST(ShellAssignments, LineEndsOfAnotherSystemAreNoPartOfTheValue) {
  EXPECT_EQ(shellAssignment("A=b\r\nC=\"d\"\r\n", "A"), "b");
  EXPECT_EQ(shellAssignment("A=b\r\nC=\"d\"\r\n", "C"), "d");
}

TEST(ShellAssignments, BlanksAroundTheEqualsSignAreAllowed) {
  EXPECT_EQ(shellAssignment("\t A\t= b", "A"), "b");
}

TEST(ShellAssignments, ValuesAreBytes) {
  EXPECT_EQ(shellAssignment("A=\xFF\0\xC3\n"sv, "A"), std::string("\xFF\0\xC3", 3));
}

TEST(OsRelease, ThePrettyNameIsTheVersionText) {
  EXPECT_EQ(distributionVersion(fixture("os-release.txt")), "Debian GNU/Linux 12 (bookworm)");
}

TEST(OsRelease, WithoutOneTheNameAndTheVersionAre) {
  EXPECT_EQ(distributionVersion("NAME=\"Some Linux\"\nVERSION_ID=1.5\nPRETTY_NAME=\"\"\n"),
            "Some Linux 1.5");
  EXPECT_EQ(distributionVersion("NAME=Rolling\nVERSION_ID=\n"), "Rolling");
}

TEST(OsRelease, WithoutANameThereIsNone) {
  EXPECT_EQ(distributionVersion("VERSION_ID=12\nNAME=\n"), std::nullopt);
  EXPECT_EQ(distributionVersion(""), std::nullopt);
}

}  // namespace
}  // namespace vantile
