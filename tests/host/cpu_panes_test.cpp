#include "dashboard/cpu_panes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "drawn.h"

namespace vantile::host {
namespace {

class HostCpuPanes : public testing::Test {
 protected:
  /// A sample of that many processors, each a quarter busy with the system and half with the user.
  void sample(int cores) {
    for (int core = 0; core < cores; ++core)
      take("cpuUsedWithCoreWithSystemWithUserWithIdle",
           {static_cast<std::uint32_t>(core), 0.25, 0.5, 0.25});
    take("cpuUsedWithSystemWithUserWithIdle", {0.25, 0.5, 0.25});
    take("processorWithTaskCountWithThreadCount", {std::int32_t{231}, std::int32_t{612}});
    take("loadAverageWith1mWith5mWith15m", {0.52, 1.4, 12.0});
  }
  void take(std::string_view operation, std::vector<std::optional<Value>> arguments) {
    figures->take({"cpu", operation, std::move(arguments)});
  }

  std::shared_ptr<CpuFigures> figures = std::make_shared<CpuFigures>("2.40 GHz");
};

TEST_F(HostCpuPanes, SayThatTheyWaitBeforeTheFirstSample) {
  EXPECT_TRUE(contains(drawn(CpuPane(figures), {60, 4}), "waiting"));
  EXPECT_TRUE(contains(drawn(CpuHistoryPane(figures), {60, 4}), "waiting"));
  EXPECT_EQ(CpuPane(figures).note(), "");
  EXPECT_EQ(CpuHistoryPane(figures).note(), "");
}

TEST_F(HostCpuPanes, ShowLoadTasksAndTemperature) {
  sample(1);
  take("cpuWithTemperature", {48.53});
  EXPECT_EQ(drawn(CpuPane(figures), {55, 2})[0],
            "load 0.52 1.40 12.00   231 tasks, 612 threads   48.5 °C");
}

TEST_F(HostCpuPanes, ATemperatureThatIsLeftOutIsNotThatOfTheSampleBefore) {
  sample(1);
  EXPECT_TRUE(contains(drawn(CpuPane(figures), {76, 2}), "no temperature sensor"));
  take("cpuWithTemperature", {48.53});
  sample(1);
  EXPECT_TRUE(contains(drawn(CpuPane(figures), {70, 2}), "   – °C"));
}

TEST_F(HostCpuPanes, FiguresMoveTogetherBeforeOneOfThemIsLeftOut) {
  sample(1);
  const std::string load = "load 0.52 1.40 12.00", tasks = "231 tasks, 612 threads";
  const auto line = [this](int width) { return drawn(CpuPane(figures), {width, 2})[0]; };
  EXPECT_EQ(line(69), load + "   " + tasks + "   no temperature sensor");
  EXPECT_EQ(line(67), load + "  " + tasks + "  no temperature sensor");
  EXPECT_EQ(line(66), load + "  " + tasks + std::string(22, ' '));
  EXPECT_EQ(line(43), load + "  no temperature sensor");
  EXPECT_EQ(line(42), load + std::string(22, ' '));
}

TEST_F(HostCpuPanes, ShowABarAProcessor) {
  sample(2);
  const auto rows = drawn(CpuPane(figures), {32, 3});
  EXPECT_EQ(rows[1], "  0 ███████████████─────  75.0 %");
  EXPECT_EQ(rows[2], "  1 ███████████████─────  75.0 %");
}

TEST_F(HostCpuPanes, UseFurtherColumnsOnlyWhereTheRowsAreTooFew) {
  sample(4);
  EXPECT_TRUE(drawn(CpuPane(figures), {50, 5})[4].starts_with("  3 "));
  const auto rows = drawn(CpuPane(figures), {50, 3});
  EXPECT_TRUE(rows[1].starts_with("  0 "));
  EXPECT_TRUE(rows[2].starts_with("  1 "));
  EXPECT_NE(rows[1].find(" 2 █"), std::string::npos);
  EXPECT_NE(rows[2].find(" 3 █"), std::string::npos);
}

TEST_F(HostCpuPanes, ShowACellAProcessorWhereThereAreTooMany) {
  sample(100);
  const auto rows = drawn(CpuPane(figures), {60, 4});
  EXPECT_TRUE(rows[1].starts_with("▆▆▆▆"));
  EXPECT_TRUE(rows[2].starts_with("▆▆▆▆"));
  EXPECT_EQ(rows[3], std::string(60, ' '));
}

TEST_F(HostCpuPanes, ForgetProcessorsThatTheNextSampleLacks) {
  sample(4);
  sample(2);
  EXPECT_EQ(figures->cores.size(), 2u);
}

TEST_F(HostCpuPanes, TellTheWholeAndTheClock) {
  sample(2);
  EXPECT_EQ(CpuPane(figures).note(), "2 at 2.40 GHz");
  EXPECT_EQ(CpuHistoryPane(figures).note(), "75.0 % (system 25.0 %)");
}

TEST_F(HostCpuPanes, FractionsBeyondAllMeasureStayWithinTheirBar) {
  take("cpuUsedWithCoreWithSystemWithUserWithIdle", {std::uint32_t{0}, 1e19, 1e19, 0.0});
  take("cpuUsedWithSystemWithUserWithIdle", {1e19, 1e19, 0.0});
  EXPECT_EQ(drawn(CpuPane(figures), {40, 2}).size(), 2u);
  EXPECT_EQ(drawn(CpuHistoryPane(figures), {40, 4}).size(), 4u);
}

TEST_F(HostCpuPanes, AskForNoMoreRowsThanAFewHoweverManyProcessors) {
  sample(2);
  EXPECT_EQ(CpuPane(figures).rows().wanted, 3);
  sample(200);
  EXPECT_EQ(CpuPane(figures).rows().wanted, 9);
}

TEST_F(HostCpuPanes, AreDrawnInWhateverRegionThereIs) {
  sample(64);
  const CpuPane processors(figures);
  const CpuHistoryPane history(figures);
  for (int width = 0; width < 70; width += 3) {
    for (int height = 0; height < 12; ++height) {
      EXPECT_EQ(drawn(processors, {width, height}).size(), static_cast<std::size_t>(height));
      EXPECT_EQ(drawn(history, {width, height}).size(), static_cast<std::size_t>(height));
    }
  }
}

}  // namespace
}  // namespace vantile::host
