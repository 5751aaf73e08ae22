#include "vantile/platform/linux/property_lists.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <filesystem>
#include <limits>

#include "fakes/temporary_folder.h"
#include "unit/platform/binary_list.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using namespace std::string_view_literals;
using testing::bigEndian;
using testing::binaryList;
using testing::fixture;
using testing::repeated;
using testing::TemporaryFolder;

using Seconds = std::chrono::sys_seconds;

/// The value of the only entry of an XML list, or null.
std::optional<Value> value(const std::string& element) {
  const auto list =
      dictionaryOf("<plist version=\"1.0\"><dict><key>a</key>" + element + "</dict></plist>");
  const auto* const found = list ? list->find("a") : nullptr;
  return found ? std::optional(*found) : std::nullopt;
}
/// That of a binary list.
std::optional<Value> binaryValue(const std::string& object) {
  const auto list = dictionaryOf(binaryList({std::string("\xD1\0\1\0\2", 5),
                                             "\x51"
                                             "a",
                                             object}));
  const auto* const found = list ? list->find("a") : nullptr;
  return found ? std::optional(*found) : std::nullopt;
}
std::optional<Value> binaryDate(double seconds) {
  return binaryValue("\x33" + bigEndian(std::bit_cast<std::uint64_t>(seconds), 8));
}
Value dateAt(std::chrono::sys_time<std::chrono::nanoseconds> time) {
  return std::make_shared<const Date>(Date{time});
}
std::chrono::sys_time<std::chrono::nanoseconds> seconds(std::int64_t since1970) {
  return Seconds(std::chrono::seconds(since1970));
}

constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
constexpr auto highest = std::numeric_limits<std::uint64_t>::max();

Dictionary entriesOfFixture() {
  const auto download = std::make_shared<Dictionary>();
  download->set("DownloadEntryDateAddedKey", dateAt(seconds(1709210096)));
  download->set("DownloadEntryPath", "~/Downloads/Größe & Gewicht.pdf");
  download->set("DownloadEntryProgressBytesSoFar", std::int64_t{1} << 32);
  download->set("DownloadEntryShouldUseRequestURLAsOriginURLIfNecessaryKey", false);
  Dictionary list;
  list.set("DownloadHistory", std::make_shared<Array>(Array{download}));
  list.set("Fraction", 0.25);
  list.set("Largest", highest);
  list.set("LongAgo", dateAt(seconds(-2524424155)));
  list.set("Lowest", lowest);
  list.set("Names", std::make_shared<Array>(Array{"Tool.app", "日本", "", true}));
  list.set("Nothing", std::make_shared<Dictionary>());
  return list;
}

TEST(LinuxPropertyLists, InXmlComeWithEachKindOfValueButData) {
  const auto list = systemPropertyLists()->read(VANTILE_FIXTURES "/property-list.plist");
  ASSERT_TRUE(list);
  EXPECT_EQ(*list, entriesOfFixture());
}

TEST(LinuxPropertyLists, InBinaryFormSayTheSame) {
  const auto list = systemPropertyLists()->read(VANTILE_FIXTURES "/property-list-binary.plist");
  ASSERT_TRUE(list);
  EXPECT_EQ(*list, entriesOfFixture());
}

TEST(LinuxPropertyLists, ThatAreNoDictionaryAreNone) {
  EXPECT_EQ(dictionaryOf("<plist><array><dict/></array></plist>"), nullptr);
  EXPECT_EQ(dictionaryOf("<plist><string>a</string></plist>"), nullptr);
  EXPECT_EQ(dictionaryOf(binaryList({"\x09"})), nullptr);
  EXPECT_TRUE(dictionaryOf("<plist><dict/></plist>"));
  EXPECT_TRUE(dictionaryOf(binaryList({"\xD0"})));
}

TEST(LinuxPropertyLists, ThatAreMalformedAreNone) {
  for (const auto list :
       {""sv, "\0"sv, "x"sv, "<"sv, "<plist>"sv, "<plist><dict></plist>"sv,
        "<plist><dict><true/></dict></plist>"sv, "<dict><key>a</key><foo/></dict>"sv, "bplist00"sv,
        "bplist00\xD0"sv, "{ a = b; }"sv, "{\"a\":1}"sv})
    EXPECT_EQ(dictionaryOf(list), nullptr) << list;
  const auto whole = fixture("property-list-binary.plist");
  for (std::size_t size = 0; size < whole.size(); ++size)
    EXPECT_EQ(dictionaryOf(std::string_view(whole).substr(0, size)), nullptr) << size;
}

TEST(LinuxPropertyLists, IntegersAreSignedWhereTheyCanBe) {
  EXPECT_EQ(value("<integer>7</integer>"), Value(std::int64_t{7}));
  EXPECT_EQ(value("<integer>-1</integer>"), Value(std::int64_t{-1}));
  EXPECT_EQ(value("<integer>9223372036854775808</integer>"), Value(std::uint64_t{1} << 63));
  EXPECT_EQ(binaryValue("\x10\xFF"), Value(std::int64_t{255}));
  EXPECT_EQ(binaryValue("\x13" + bigEndian(highest, 8)), Value(std::int64_t{-1}));
  EXPECT_EQ(binaryValue("\x14" + bigEndian(0, 8) + bigEndian(highest, 8)), Value(highest));
}

TEST(LinuxPropertyLists, DatesCountFrom2001) {
  EXPECT_EQ(value("<date>2001-01-01T00:00:00Z</date>"), dateAt(seconds(978307200)));
  EXPECT_EQ(binaryDate(1.5), dateAt(seconds(978307201) + std::chrono::milliseconds(500)));
  EXPECT_EQ(binaryDate(-0.25), dateAt(seconds(978307199) + std::chrono::milliseconds(750)));
}

TEST(LinuxPropertyLists, DatesBeyondWhatFitsAreTheNearest) {
  constexpr auto infinite = std::numeric_limits<double>::infinity();
  EXPECT_EQ(binaryDate(1e300), dateAt(seconds(9223372036)));
  EXPECT_EQ(binaryDate(infinite), dateAt(seconds(9223372036)));
  EXPECT_EQ(binaryDate(-1e300), dateAt(seconds(-9223372036)));
  EXPECT_EQ(binaryDate(-infinite), dateAt(seconds(-9223372036)));
  EXPECT_EQ(binaryDate(std::nan("")), dateAt(seconds(978307200)));
}

TEST(LinuxPropertyLists, DataAndUniqueNumbersAreLeftOut) {
  EXPECT_EQ(value("<array><data>AAAA</data><true/></array>"),
            Value(std::make_shared<Array>(Array{true})));
  EXPECT_EQ(binaryValue("\x41x"), std::nullopt);
  EXPECT_EQ(binaryValue("\x80\x01"), std::nullopt);
}

TEST(LinuxPropertyLists, TextIsBytes) {
  EXPECT_EQ(value("<string>\xFF\xC3</string>"), Value("\xFF\xC3"));
  EXPECT_EQ(binaryValue("\x52\xFF\xC3"), Value("\xFF\xC3"));
}

TEST(LinuxPropertyLists, AByteOrderMarkIsPassedBy) {
  EXPECT_TRUE(dictionaryOf("\xEF\xBB\xBF<?xml version=\"1.0\"?><plist><dict/></plist>"));
}

TEST(LinuxPropertyLists, ThatNestTooDeepAreNone) {
  const auto xml = [](std::size_t levels) {
    return dictionaryOf("<plist><dict><key>a</key>" + repeated("<array>", levels) +
                        repeated("</array>", levels) + "</dict></plist>");
  };
  EXPECT_TRUE(xml(500));
  EXPECT_FALSE(xml(600));
  EXPECT_FALSE(xml(200000));
  EXPECT_EQ(dictionaryOf("<plist>" + repeated("<dict><key>a</key>", 99000)), nullptr);

  std::vector<std::string> objects = {std::string("\xD1\0\1\0\2", 5),
                                      "\x51"
                                      "a"};
  while (objects.size() < 60000) objects.push_back("\xA1" + bigEndian(objects.size() + 1, 2));
  objects.emplace_back("\x09");
  EXPECT_EQ(dictionaryOf(binaryList(objects)), nullptr);
}

TEST(LinuxPropertyLists, ThatMultiplyThemselvesAreNone) {
  std::vector<std::string> objects = {std::string("\xD1\0\1\0\2", 5),
                                      "\x51"
                                      "a"};
  while (objects.size() < 60)
    objects.push_back("\xA2" + repeated(bigEndian(objects.size() + 1, 2), 2));
  objects.emplace_back("\x09");
  EXPECT_EQ(dictionaryOf(binaryList(objects)), nullptr);
}

struct LinuxPropertyListFiles : ::testing::Test {
  std::shared_ptr<Dictionary> read(std::string_view name) {
    return systemPropertyLists()->read(folder.path(name));
  }
  TemporaryFolder folder;
};

TEST_F(LinuxPropertyListFiles, ThatAreNoFilesAreNone) {
  folder.folder("folder");
  ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(read("folder"), nullptr);
  EXPECT_EQ(read("pipe"), nullptr);
  EXPECT_EQ(read("none"), nullptr);
  EXPECT_EQ(systemPropertyLists()->read("/dev/zero"), nullptr);
}

TEST_F(LinuxPropertyListFiles, AreFollowedThroughALink) {
  folder.symbolicLink("link", folder.file("list", "<plist><dict/></plist>"));
  EXPECT_TRUE(read("link"));
}

TEST_F(LinuxPropertyListFiles, ThatAreTooLongAreNone) {
  const std::string list = "<plist><dict/></plist>";
  folder.file("list", list);
  ASSERT_TRUE(read("list"));
  folder.file("list", list + std::string(64u << 20, ' '));
  EXPECT_EQ(read("list"), nullptr);
}

TEST_F(LinuxPropertyListFiles, AreReadTheSameInALocaleOfOtherNumbers) {
  const auto made = "localedef --no-archive -c -i de_DE -f UTF-8 '" + folder.path("de_DE.UTF-8") +
                    "' > '" + folder.path("log") + "' 2>&1";
  if (std::system(made.c_str()) == -1 || !std::filesystem::exists(folder.path("de_DE.UTF-8")))
    GTEST_SKIP() << "the locale de_DE can't be made here";
  ASSERT_EQ(::setenv("LOCPATH", folder.path().c_str(), 1), 0);
  ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8"));
  EXPECT_EQ(std::strtod("3,5", nullptr), 3.5);
  EXPECT_EQ(value("<real>3.5</real>"), Value(3.5));
  EXPECT_EQ(std::strtod("3,5", nullptr), 3.5) << "the locale did not come back";
  std::setlocale(LC_ALL, "C");
  ::unsetenv("LOCPATH");
}

TEST(LinuxPropertyLists, AreSharedByTheProcess) {
  EXPECT_EQ(systemPropertyLists(), systemPropertyLists());
}

}  // namespace
}  // namespace vantile
