#include "dashboard/memory_panes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "drawn.h"
#include "memory_report.h"

namespace vantile::host {
namespace {

using namespace std::chrono_literals;
using Moment = MemoryFigures::Moment;

class HostMemoryPanes : public testing::Test {
 protected:
  void take(const MemoryReport& report, std::chrono::milliseconds at) {
    figures->take(report.report(), Moment(at));
  }

  std::shared_ptr<MemoryFigures> figures = std::make_shared<MemoryFigures>();
};

TEST_F(HostMemoryPanes, SayThatTheyWaitBeforeTheFirstSample) {
  EXPECT_TRUE(contains(drawn(MemoryPane(figures), {76, 7}), "waiting"));
  EXPECT_TRUE(contains(drawn(MemoryHistoryPane(figures), {76, 5}), "waiting"));
  EXPECT_TRUE(contains(drawn(SwapPane(figures), {76, 1}), "waiting"));
}

TEST_F(HostMemoryPanes, ShowABarForEachKindOfMemory) {
  take({}, 0s);
  const auto rows = drawn(MemoryPane(figures), {72, 7});
  EXPECT_EQ(rows[1], "■ Used       ████████████████████────────────────────  8.00 GiB   50.0 %");
  EXPECT_EQ(rows[2].substr(0, 9), "■ Wired");
  EXPECT_EQ(rows[3].substr(0, 10), "■ Active");
  EXPECT_EQ(rows[4].substr(0, 14), "■ Compressed");
  EXPECT_EQ(rows[5].substr(0, 12), "■ Inactive");
  EXPECT_EQ(rows[6].substr(0, 8), "■ Free");
  EXPECT_TRUE(contains(rows, "2.00 GiB   12.5 %"));
}

TEST_F(HostMemoryPanes, TheFirstBarIsTheWholeMemory) {
  take({}, 0s);
  Canvas canvas({64, 7});
  MemoryPane(figures).draw(canvas.region(), 1);
  EXPECT_EQ(canvas.at(0, 0).style.ink, Colour::Orange);
  EXPECT_EQ(canvas.at(12, 0).style.ink, Colour::Blue);
  EXPECT_EQ(canvas.at(28, 0).style.ink, Colour::Purple);
  EXPECT_EQ(canvas.at(32, 0).style.ink, Colour::Yellow);
  EXPECT_EQ(canvas.at(63, 0).style.ink, Colour::Green);
}

TEST_F(HostMemoryPanes, ANarrowPaneKeepsTheFigures) {
  take({}, 0s);
  EXPECT_EQ(drawn(MemoryPane(figures), {24, 6})[0], "■ Used          8.00 GiB");
}

TEST_F(HostMemoryPanes, ALowPaneKeepsTheFirstBars) {
  take({}, 0s);
  EXPECT_TRUE(contains(drawn(MemoryPane(figures), {60, 2}), "Wired"));
}

TEST_F(HostMemoryPanes, TheNoteTellsHowMuchIsUsed) {
  take({}, 0s);
  EXPECT_EQ(MemoryPane(figures).note(), "8.00 GiB of 16.0 GiB used");
  EXPECT_EQ(MemoryHistoryPane(figures).note(), "50.0 %");
}

TEST_F(HostMemoryPanes, TheHistoryGrowsWithEachSample) {
  take({}, 0s);
  take({}, 1s);
  const auto rows = drawn(MemoryHistoryPane(figures), {10, 5});
  EXPECT_EQ(rows[0].substr(0, 5), "100 %");
  EXPECT_TRUE(rows[3].ends_with("⣿")) << rows[3];
  EXPECT_TRUE(rows[4].ends_with("now")) << rows[4];
}

TEST_F(HostMemoryPanes, RatesAreASecondWhateverTheInterval) {
  take({}, 0s);
  take({.pageIns = 1100, .pageOuts = 500, .deltaIns = 100, .deltaOuts = 0}, 2s);
  const auto rows = drawn(PagingPane(figures), {60, 2});
  EXPECT_TRUE(contains(rows, "Page-ins       50/s")) << rows[0];
  EXPECT_TRUE(contains(rows, "Page-outs       0/s")) << rows[1];
}

TEST_F(HostMemoryPanes, TheFirstSampleHasNoRate) {
  take({}, 0s);
  EXPECT_TRUE(contains(drawn(PagingPane(figures), {60, 2}), "–"));
}

TEST_F(HostMemoryPanes, ATallPagingPaneTellsPeakAndCountSinceBoot) {
  take({}, 0s);
  take({.deltaIns = 30}, 1s);
  const auto rows = drawn(PagingPane(figures), {60, 8});
  EXPECT_TRUE(contains(rows, "peak         30/s"));
  EXPECT_TRUE(contains(rows, "since boot   1000"));
}

TEST_F(HostMemoryPanes, SwapShowsItsShareAndItsFiles) {
  take({}, 0s);
  const SwapPane pane(figures);
  EXPECT_TRUE(contains(drawn(pane, {60, 1}), "1.00 GiB   25.0 %"));
  EXPECT_EQ(pane.note(), "2 files in /var/swap/, encrypted");
}

TEST_F(HostMemoryPanes, SwapThatIsNotKnownToBeUsedSaysSo) {
  take({.swapUsed = 0}, 0s);
  EXPECT_TRUE(contains(drawn(SwapPane(figures), {60, 1}), "none of it known to be in use"));
}

TEST_F(HostMemoryPanes, WithoutSwapTheySaySo) {
  take({.withSwap = false}, 0s);
  EXPECT_TRUE(contains(drawn(SwapPane(figures), {60, 1}), "no swap in use"));
}

TEST_F(HostMemoryPanes, TheSwapFiguresStayWhenALaterSampleHasNone) {
  take({}, 0s);
  take({.withSwap = false}, 1s);
  EXPECT_TRUE(contains(drawn(SwapPane(figures), {60, 1}), "1.00 GiB"));
}

TEST_F(HostMemoryPanes, AReportOfAnotherOperationIsNotTheirs) {
  figures->take({"memory", "clearMemoryCompleted", {}}, Moment(0s));
  EXPECT_FALSE(figures->known());
}

}  // namespace
}  // namespace vantile::host
