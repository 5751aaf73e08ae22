#include "vantile/platform/linux/timed_read.h"

#include <gtest/gtest.h>

#include "fakes/gate.h"
#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;

/// Runs what it is given at once, or keeps it.
class KeptThreads final : public Threads {
 public:
  bool detach(const char*, std::function<void()> body) override {
    ++asked;
    if (refuses) return false;
    if (keeps) {
      kept = std::move(body);
    } else {
      body();
    }
    return true;
  }

  bool refuses = false, keeps = false;
  int asked = 0;
  std::function<void()> kept;
};

struct TimedReadTest : ::testing::Test {
  TimedReadTest() {
    TimedRead::Means means;
    means.read = [this](const std::string& path) {
      now += takes;
      paths.push_back(path);
      return says;
    };
    means.now = [this] { return now; };
    means.threads = threads;
    means.patience = 1ms;
    reader = std::make_unique<TimedRead>(std::move(means));
  }

  const std::shared_ptr<KeptThreads> threads = std::make_shared<KeptThreads>();
  TimedRead::Clock::time_point now{};
  std::chrono::microseconds takes{0};
  std::optional<std::string> says = "42";
  std::vector<std::string> paths;
  std::unique_ptr<TimedRead> reader;
};

TEST_F(TimedReadTest, AFileThatAnsweredInTimeIsReadWithoutAThreadFromThenOn) {
  EXPECT_EQ(reader->read("a").text, "42");
  EXPECT_EQ(threads->asked, 1);
  EXPECT_EQ(reader->read("a").text, "42");
  EXPECT_EQ(threads->asked, 1);
  EXPECT_EQ(paths, (std::vector<std::string>{"a", "a"}));
}

TEST_F(TimedReadTest, AnotherFileIsNotTrustedForThat) {
  reader->read("a");
  reader->read("b");
  EXPECT_EQ(threads->asked, 2);
}

TEST_F(TimedReadTest, AFileThatGivesNothingIsNotLate) {
  says = std::nullopt;
  const auto reading = reader->read("a");
  EXPECT_FALSE(reading.text);
  EXPECT_FALSE(reading.late);
}

TEST_F(TimedReadTest, OneThatBecomesSlowGivesNothingAndIsReadApartAgain) {
  reader->read("a");
  takes = 1ms;
  EXPECT_EQ(reader->read("a").text, "42");
  takes = 1001us;
  EXPECT_TRUE(reader->read("a").late);
  EXPECT_EQ(threads->asked, 1);
  takes = 0us;
  EXPECT_EQ(reader->read("a").text, "42");
  EXPECT_EQ(threads->asked, 2);
}

TEST_F(TimedReadTest, WhatDoesNotAnswerIsLateAndNotAskedTwice) {
  threads->keeps = true;
  EXPECT_TRUE(reader->read("a").late);
  EXPECT_TRUE(reader->read("a").late);
  EXPECT_TRUE(reader->read("b").late);
  EXPECT_EQ(threads->asked, 1);
}

TEST_F(TimedReadTest, AnAnswerThatComesLateIsNotUsedButEndsTheWait) {
  threads->keeps = true;
  reader->read("a");
  threads->kept();
  threads->keeps = false;
  says = "43";
  EXPECT_EQ(reader->read("a").text, "43");
}

TEST_F(TimedReadTest, AnAnswerMayComeWhenTheReaderIsGone) {
  threads->keeps = true;
  reader->read("a");
  reader.reset();
  threads->kept();
}

TEST_F(TimedReadTest, WithoutAThreadThereIsNoReadingThisTime) {
  threads->refuses = true;
  EXPECT_TRUE(reader->read("a").late);
  EXPECT_TRUE(paths.empty());
  threads->refuses = false;
  EXPECT_EQ(reader->read("a").text, "42");
}

TEST(TimedReadOfFiles, ReadsThemAnewEachTime) {
  const testing::TemporaryFolder folder;
  TimedRead reader;
  EXPECT_EQ(reader.read(folder.file("t", "one")).text, "one");
  EXPECT_EQ(reader.read(folder.file("t", "two")).text, "two");
  folder.remove("t");
  EXPECT_FALSE(reader.read(folder.path("t")).text);
}

}  // namespace
}  // namespace vantile
