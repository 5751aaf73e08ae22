#include "vantile/platform/property_lists.h"

#include <limits>

#include "seam.h"
#include "temporary_folder.h"

namespace vantile {
namespace {

using List = fakes::PropertyList;
using Moment = std::chrono::sys_time<std::chrono::nanoseconds>;

constexpr const char* bytes = "the list's bytes";

std::string repeated(std::string_view piece, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += piece;
  return text;
}

/// The array in an array and so on, so many of them.
List nested(int levels) {
  List list = {List::Array()};
  for (int i = 1; i < levels; ++i) list = {List::Array{std::move(list)}};
  return list;
}

class PropertyListsSeam : public Seam {
 protected:
  std::shared_ptr<Dictionary> read(const List& list) { return read(bytes, list); }
  std::shared_ptr<Dictionary> read(const std::string& contents, const List& list) {
    folder.write("list.plist", contents);
    fakes::machine.lists[contents] = list;
    return systemPropertyLists()->read(folder / "list.plist");
  }
  /// What becomes of a value in a dictionary.
  std::optional<Value> converted(const List& value) {
    const auto dictionary = read({List::Dictionary{{u"key", value}}});
    const auto* const found = dictionary ? dictionary->find("key") : nullptr;
    return found ? std::optional(*found) : std::nullopt;
  }
  /// What becomes of a date so many seconds into 2001.
  std::optional<Moment> date(double seconds) {
    const auto value = converted({List::Date{seconds}});
    const auto* const held = value ? value->as<std::shared_ptr<const Date>>() : nullptr;
    return held ? std::optional((*held)->time) : std::nullopt;
  }
  /// Whether a list of those bytes is handed to the system at all.
  bool isParsed(const std::string& contents) {
    fakes::machine.listsParsed = 0;
    return read(contents, {List::Dictionary()}) != nullptr && fakes::machine.listsParsed == 1;
  }

  TemporaryFolder folder;
};

TEST_F(PropertyListsSeam, GiveEachKindOfValue) {
  EXPECT_EQ(converted({u"Übung"}), Value("Übung"));
  EXPECT_EQ(converted({u""}), Value(""));
  EXPECT_EQ(converted({std::int64_t{-5}}), Value(std::int64_t{-5}));
  EXPECT_EQ(converted({2.5}), Value(2.5));
  EXPECT_EQ(converted({true}), Value(true));
  EXPECT_EQ(converted({false}), Value(false));
  EXPECT_EQ(date(0), Moment(std::chrono::seconds(978307200)));
  EXPECT_EQ(converted({List::Array{{std::int64_t{1}}, {u"two"}}}),
            Value(std::make_shared<Array>(Array{std::int64_t{1}, "two"})));
  const auto inner = std::make_shared<Dictionary>();
  inner->set("inner", std::int64_t{1});
  EXPECT_EQ(converted({List::Dictionary{{u"inner", {std::int64_t{1}}}}}), Value(inner));
}

TEST_F(PropertyListsSeam, GiveUnsignedNumbersWhereTheyNeedToBe) {
  constexpr auto highest = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(converted({highest}), Value(highest));
  EXPECT_EQ(converted({std::uint64_t{highest} + 1}), Value(std::uint64_t{highest} + 1));
  EXPECT_EQ(converted({std::numeric_limits<std::uint64_t>::max()}),
            Value(std::numeric_limits<std::uint64_t>::max()));
}

TEST_F(PropertyListsSeam, LeaveDataOut) {
  EXPECT_FALSE(converted({List::Data()}));
  EXPECT_EQ(converted({List::Array{{List::Data()}, {true}}}),
            Value(std::make_shared<Array>(Array{true})));
}

TEST_F(PropertyListsSeam, LeaveTextOutThatIsNoUnicode) {
  const std::u16string half(1, char16_t{0xD800});
  EXPECT_FALSE(converted({half}));
  const auto dictionary = read({List::Dictionary{{half, {true}}, {u"whole", {true}}}});
  ASSERT_TRUE(dictionary);
  EXPECT_EQ(dictionary->size(), 1u);
  EXPECT_TRUE(dictionary->contains("whole"));
}

TEST_F(PropertyListsSeam, GiveDatesToFractionsOfASecond) {
  EXPECT_EQ(date(0.5), Moment(std::chrono::milliseconds(978307200500)));
  EXPECT_EQ(date(-0.25), Moment(std::chrono::milliseconds(978307199750)));
}

TEST_F(PropertyListsSeam, HoldADateOutOfRangeAtTheNearestSecond) {
  const auto latest = std::chrono::floor<std::chrono::seconds>(Moment::max());
  const auto earliest = std::chrono::ceil<std::chrono::seconds>(Moment::min());
  EXPECT_EQ(date(1e15), latest);
  EXPECT_EQ(date(std::numeric_limits<double>::infinity()), latest);
  EXPECT_EQ(date(-std::numeric_limits<double>::max()), earliest);
  EXPECT_EQ(date(std::numeric_limits<double>::quiet_NaN()),
            Moment(std::chrono::seconds(978307200)));
}

TEST_F(PropertyListsSeam, AreNothingButDictionaries) {
  EXPECT_FALSE(read({List::Array{{u"text"}}}));
  EXPECT_FALSE(read({u"text"}));
  EXPECT_TRUE(read({List::Dictionary()}));
}

TEST_F(PropertyListsSeam, AreNothingWhereThereIsNoReadableFile) {
  EXPECT_FALSE(systemPropertyLists()->read(folder / "none.plist"));
  EXPECT_FALSE(systemPropertyLists()->read(folder.path().string()));
  fakes::machine.lists[""] = {List::Dictionary()};
  EXPECT_FALSE(systemPropertyLists()->read("/dev/null"));
  EXPECT_FALSE(systemPropertyLists()->read(""));
}

TEST_F(PropertyListsSeam, AreReadThroughALink) {
  ASSERT_TRUE(read({List::Dictionary()}));
  folder.link("list.plist", "link.plist");
  EXPECT_TRUE(systemPropertyLists()->read(folder / "link.plist"));
}

TEST_F(PropertyListsSeam, AreReadWhole) {
  EXPECT_TRUE(read(repeated("0123456789abcdef", 5000), {List::Dictionary()}));
  EXPECT_TRUE(read("", {List::Dictionary()}));
}

TEST_F(PropertyListsSeam, AreNotReadBeyondTheBound) {
  folder.write("list.plist", "");
  std::filesystem::resize_file(folder / "list.plist", (64u << 20) + 1);
  EXPECT_FALSE(systemPropertyLists()->read(folder / "list.plist"));
  EXPECT_EQ(fakes::machine.listsParsed, 0);
  std::filesystem::resize_file(folder / "list.plist", 64u << 20);
  systemPropertyLists()->read(folder / "list.plist");
  EXPECT_EQ(fakes::machine.listsParsed, 1);
}

TEST_F(PropertyListsSeam, AreNothingWhereTheSystemFails) {
  for (const char* const function : {"CFDataCreate", "CFPropertyListCreateWithData"}) {
    fakes::machine.refuses = {function};
    EXPECT_FALSE(read({List::Dictionary()})) << function;
  }
  fakes::machine.refuses.clear();
  EXPECT_TRUE(read({List::Dictionary()}));
}

TEST_F(PropertyListsSeam, LeaveTextOutThatTheSystemDoesNotConvert) {
  for (const char* const function : {"measuring", "CFStringGetBytes"}) {
    fakes::machine.refuses = {function};
    EXPECT_TRUE(read({List::Dictionary{{u"key", {u"text"}}}})->empty()) << function;
  }
}

TEST_F(PropertyListsSeam, LeaveOutWhatIsDeeperThanCallsMayNest) {
  const auto dictionary = read({List::Dictionary{{u"deep", nested(1000)}, {u"flat", {true}}}});
  ASSERT_TRUE(dictionary);
  EXPECT_TRUE(dictionary->contains("flat"));
  int levels = 0;
  const auto* value = dictionary->find("deep");
  while (value) {
    ++levels;
    const auto& items = **value->as<std::shared_ptr<Array>>();
    value = items.empty() ? nullptr : &items[0];
  }
  EXPECT_EQ(levels, 511);  // within the dictionary
}

TEST_F(PropertyListsSeam, AreNotHandedToTheSystemWhereTheyNestTooDeep) {
  const auto open = repeated("<array>", 1000), close = repeated("</array>", 1000);
  EXPECT_FALSE(isParsed("<plist>" + open + close + "</plist>"));
  EXPECT_FALSE(isParsed("bplist00 and no table"));
  EXPECT_TRUE(isParsed("<plist><dict></dict></plist>"));
}

TEST_F(PropertyListsSeam, AreNotHandedToTheSystemWhereTheyNestTooDeepInUtf16) {
  const auto inUtf16 = [](const std::string& text) {
    std::string wide = "\xFE\xFF";
    for (const char character : text) wide += std::string(1, '\0') + character;
    return wide;
  };
  EXPECT_FALSE(isParsed(inUtf16(repeated("<array>", 1000) + repeated("</array>", 1000))));
  EXPECT_TRUE(isParsed(inUtf16("<plist><dict></dict></plist>")));
}

TEST_F(PropertyListsSeam, AreNotHandedToTheSystemWhereTheyNestTooDeepInTheFormBeforeXml) {
  EXPECT_FALSE(isParsed(repeated("(", 1000)));
  EXPECT_FALSE(isParsed("\n{ a = " + repeated("(\")\",", 1000)));
  EXPECT_TRUE(isParsed("{ a = (\"(\"); }"));
}

}  // namespace
}  // namespace vantile
