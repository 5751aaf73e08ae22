#include "json.h"

#include <gtest/gtest.h>
#include <vantile/foundation/value.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>

namespace vantile::host {
namespace {

using namespace std::chrono_literals;

std::shared_ptr<const Date> dateAt(std::chrono::nanoseconds sinceEpoch) {
  return std::make_shared<const Date>(
      Date{std::chrono::sys_time<std::chrono::nanoseconds>(sinceEpoch)});
}

TEST(HostJson, NumbersKeepTheirWidth) {
  EXPECT_EQ(jsonText(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
  EXPECT_EQ(jsonText(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(jsonText(std::uint32_t{7}), "7");
  EXPECT_EQ(jsonText(std::int32_t{-7}), "-7");
  EXPECT_EQ(jsonText(0.5), "0.5");
  EXPECT_EQ(jsonText(true), "true");
}

TEST(HostJson, ANumberThatJsonCannotWriteIsNull) {
  EXPECT_EQ(jsonText(std::numeric_limits<double>::infinity()), "null");
}

TEST(HostJson, BytesThatAreNotUtf8AreReplaced) {
  EXPECT_EQ(jsonText("caf\xe9"), "\"caf\uFFFD\"");
}

TEST(HostJson, ControlCharactersAreEscaped) {
  EXPECT_EQ(jsonText("a\nb\"c"), R"("a\nb\"c")");
  EXPECT_EQ(jsonText("\x1b[2J"), R"("\u001b[2J")");
}

TEST(HostJson, WhatATerminalWouldObeyIsEscapedToo) {
  EXPECT_EQ(jsonText("\x7f\u009b2J\u202eback"), R"("\u007f\u009b2J\u202eback")");
  EXPECT_EQ(jsonText("é日😀"), "\"é日😀\"");
}

TEST(HostJson, DatesAreIsoTextInUtc) {
  EXPECT_EQ(jsonText(dateAt(0ns)), "\"1970-01-01T00:00:00.000Z\"");
  EXPECT_EQ(jsonText(dateAt(1700000000125ms)), "\"2023-11-14T22:13:20.125Z\"");
  EXPECT_EQ(jsonText(dateAt(-1ms)), "\"1969-12-31T23:59:59.999Z\"");
}

TEST(HostJson, ImagesAreNameAndFile) {
  const Image image{.name = "firefox", .file = "/icons/firefox.png", .handle = nullptr};
  EXPECT_EQ(jsonText(std::make_shared<const Image>(image)),
            R"({"name":"firefox","file":"/icons/firefox.png"})");
}

TEST(HostJson, DictionariesKeepTheirOrder) {
  const auto dictionary = std::make_shared<Dictionary>();
  dictionary->set("zebra", 1);
  dictionary->set("ant", std::make_shared<Array>(Array{1, "two", false}));
  EXPECT_EQ(jsonText(dictionary), R"({"zebra":1,"ant":[1,"two",false]})");
}

TEST(HostJson, NamedValuesAreAnObjectInTheirOrderWithNullForNil) {
  EXPECT_EQ(jsonText(NamedValues{{"zebra", Value("z\xff")}, {"ant", std::nullopt}, {"bee", 1}}),
            "{\"zebra\":\"z\uFFFD\",\"ant\":null,\"bee\":1}");
  EXPECT_EQ(jsonText(NamedValues{}), "{}");
}

TEST(HostJson, EmptyCollectionsAreNotNull) {
  EXPECT_EQ(jsonText(std::make_shared<Dictionary>()), "{}");
  EXPECT_EQ(jsonText(std::make_shared<Array>()), "[]");
}

TEST(HostJson, NullPointersAreNull) {
  EXPECT_EQ(jsonText(std::shared_ptr<Dictionary>()), "null");
  EXPECT_EQ(jsonText(std::shared_ptr<Array>()), "null");
  EXPECT_EQ(jsonText(std::shared_ptr<const Date>()), "null");
  EXPECT_EQ(jsonText(std::shared_ptr<const Image>()), "null");
}

TEST(HostJson, AReportIsOneLine) {
  Dictionary memory;
  memory.set("memory_used", std::uint64_t{42});
  const Report report{"memory", "update", {argument(&memory), argument(nullptr)}};
  EXPECT_EQ(jsonLine(report, std::chrono::sys_time<std::chrono::milliseconds>(1700000000125ms)),
            R"({"time":1700000000.125,"monitor":"memory","operation":"update",)"
            R"("arguments":[{"memory_used":42},null]})"
            "\n");
}

TEST(HostJson, ANilPathIsNull) {
  const std::optional<std::string> path;
  const Report report{"downloads", "downloadFileCompleted", {argument(path)}};
  EXPECT_EQ(jsonLine(report, std::chrono::sys_time<std::chrono::milliseconds>(1s)),
            R"({"time":1.0,"monitor":"downloads","operation":"downloadFileCompleted",)"
            R"("arguments":[null]})"
            "\n");
}

TEST(HostJson, APathThatIsThereIsText) {
  const Report report{"trash", "trashAddedApp", {argument(std::string("/a\xff"))}};
  EXPECT_NE(jsonLine(report, {}).find("\"arguments\":[\"/a\uFFFD\"]"), std::string::npos);
}

TEST(HostJson, AReportWithoutArgumentsHasAnEmptyList) {
  const Report report{"disk", "changed", {}};
  EXPECT_EQ(jsonLine(report, std::chrono::sys_time<std::chrono::milliseconds>(1s)),
            R"({"time":1.0,"monitor":"disk","operation":"changed","arguments":[]})"
            "\n");
}

}  // namespace
}  // namespace vantile::host
