#include "vantile/foundation/log.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "vantile/foundation/guard.h"

#include "fakes/recorded_log.h"

namespace vantile {
namespace {

TEST(Log, GoesToStandardErrorByDefault) {
  ::testing::internal::CaptureStderr();
  logLine("a line");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "a line\n");
}

TEST(Log, GoesToTheHostsSinkInstead) {
  ::testing::internal::CaptureStderr();
  {
    const testing::RecordedLog log;
    logLine("a line");
    EXPECT_EQ(log.lines, std::vector<std::string>{"a line"});
  }
  logLine("back again");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "back again\n");
}

TEST(Log, ASinkThatThrowsIsIgnored) {
  setLogSink([](std::string_view) { throw std::runtime_error("full"); });
  logLine("a line");
  setLogSink(nullptr);
}

TEST(Log, ASinkMayLogWhichGoesToStandardError) {
  ::testing::internal::CaptureStderr();
  setLogSink([](std::string_view line) { logLine(std::string("about ") + std::string(line)); });
  logLine("a line");
  logLine("another");
  setLogSink(nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "about a line\nabout another\n");
}

TEST(Guard, LetsTheResultOfGoodWorkStand) {
  int done = 0;
  guarded("work", [&] { ++done; });
  EXPECT_EQ(done, 1);
}

}  // namespace
}  // namespace vantile
