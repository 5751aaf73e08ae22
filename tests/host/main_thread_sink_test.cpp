#include "main_thread_sink.h"

#include <gtest/gtest.h>
#include <vantile/foundation/run_loop.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace vantile::host {
namespace {

/// Notes what came, and on which thread.
class HostMainThreadSink : public testing::Test {
 protected:
  static Report named(const std::string& path) { return {"downloads", "done", {argument(path)}}; }

  void fromAnotherThread(const std::string& path) {
    std::thread([&] { sink(named(path)); }).join();
  }

  std::vector<std::string> came;
  std::vector<std::thread::id> threads;
  std::shared_ptr<const ReportSink> kept =
      std::make_shared<const ReportSink>([this](const Report& report) {
        came.push_back(*report.text(0));
        threads.push_back(std::this_thread::get_id());
      });
  ReportSink sink = onMainThread(kept);
};

using Paths = std::vector<std::string>;

TEST_F(HostMainThreadSink, AReportOnTheMainThreadIsHandedOnAtOnce) {
  sink(named("/a"));
  EXPECT_EQ(came, (Paths{"/a"}));
}

TEST_F(HostMainThreadSink, AReportOnAnotherThreadWaitsForTheMainOne) {
  fromAnotherThread("/a");
  EXPECT_TRUE(came.empty());
  RunLoop::main().dispatch();
  EXPECT_EQ(came, (Paths{"/a"}));
  EXPECT_EQ(threads, std::vector{std::this_thread::get_id()});
}

TEST_F(HostMainThreadSink, AReportOnItsWayIsDroppedWhenTheSinkGoes) {
  fromAnotherThread("/a");
  kept.reset();
  RunLoop::main().dispatch();
  EXPECT_TRUE(came.empty());
}

TEST_F(HostMainThreadSink, AReportAfterTheSinkIsGoneGoesNowhere) {
  kept.reset();
  sink(named("/a"));
  EXPECT_TRUE(came.empty());
}

}  // namespace
}  // namespace vantile::host
