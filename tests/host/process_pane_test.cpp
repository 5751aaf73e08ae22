#include "dashboard/process_pane.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "drawn.h"

namespace vantile::host {
namespace {

Value application(std::int32_t pid, const char* name, double cpu, std::int32_t resident,
                  std::int32_t addresses) {
  auto record = std::make_shared<Dictionary>();
  record->set("pid", pid);
  record->set("appName", name);
  record->set("cpu", cpu);
  record->set("memory", 12.5);
  record->set("phyMemoryPages", resident);
  record->set("virtMemoryPages", addresses);
  record->set("stats", "Sl");
  return record;
}

class HostApplications : public testing::Test {
 protected:
  void take(const Array& applications) {
    figures->take(
        {"process", "updateProcessStaus", {Value(std::make_shared<Array>(applications))}});
  }
  void takeThree() {
    take({application(7, "Paint", 1.5, 2048, 9000), application(12, "Browser", 250, 1024, 9001),
          application(3, "Mail", 0, 4096, 1)});
  }
  /// The first words of the rows.
  std::string names() {
    std::string all;
    for (const auto& row : drawn(pane, {90, 4})) all += row.substr(0, row.find(' ')) + " ";
    return all;
  }

  std::shared_ptr<ApplicationFigures> figures = std::make_shared<ApplicationFigures>();
  ApplicationsPane pane{figures};
};

TEST_F(HostApplications, SayThatTheyWaitBeforeTheFirstSample) {
  EXPECT_TRUE(contains(drawn(pane, {60, 4}), "waiting"));
  EXPECT_EQ(pane.note(), "");
}

TEST_F(HostApplications, SayThatNoneIsRunning) {
  takeThree();
  for (const auto& none :
       {std::optional<Value>(), std::optional<Value>(std::make_shared<Array>())}) {
    takeThree();
    figures->take({"process", "updateProcessStaus", {none}});
    EXPECT_TRUE(contains(drawn(pane, {60, 4}), "no application of the desktop is running"));
  }
}

TEST_F(HostApplications, AreATable) {
  takeThree();
  const auto rows = drawn(pane, {72, 4});
  EXPECT_EQ(rows[0], "name             processor     memory   share       size      pid  state");
  EXPECT_EQ(rows[1], "Browser            250.0 %   1.00 MiB  12.5 %   8.79 MiB       12     Sl");
}

TEST_F(HostApplications, AreOrderedByEachColumnInTurn) {
  takeThree();
  EXPECT_EQ(names(), "name Browser Paint Mail ");
  EXPECT_EQ(pane.note(), "3 by processor");
  pane.sort(Sorting::Next);
  EXPECT_EQ(names(), "name Mail Paint Browser ");
  EXPECT_EQ(pane.note(), "3 by memory");
  pane.sort(Sorting::Next);
  EXPECT_EQ(names(), "name Browser Paint Mail ");
  pane.sort(Sorting::Next);
  EXPECT_EQ(names(), "name Browser Mail Paint ");
  pane.sort(Sorting::Next);
  EXPECT_EQ(names(), "name Mail Paint Browser ");
  pane.sort(Sorting::Next);
  EXPECT_EQ(pane.note(), "3 by processor");
}

TEST_F(HostApplications, AreOrderedTheOtherWayRoundUntilTheNextColumn) {
  takeThree();
  pane.sort(Sorting::Reverse);
  EXPECT_EQ(names(), "name Mail Paint Browser ");
  EXPECT_EQ(pane.note(), "3 by processor, reversed");
  pane.sort(Sorting::Next);
  EXPECT_EQ(pane.note(), "3 by memory");
}

TEST_F(HostApplications, ThatAreEqualStandInTheOrderOfTheirNumbers) {
  take({application(9, "b", 1, 0, 0), application(2, "c", 1, 0, 0), application(5, "a", 1, 0, 0)});
  EXPECT_EQ(names(), "name c a b ");
  pane.sort(Sorting::Reverse);
  EXPECT_EQ(names(), "name b a c ");
}

TEST_F(HostApplications, LoseColumnsWhereItIsNarrow) {
  takeThree();
  EXPECT_EQ(drawn(pane, {24, 2})[0], "name           processor");
  EXPECT_EQ(drawn(pane, {20, 2})[1], "Browser             ");
}

TEST_F(HostApplications, AreCutOffAtTheLastRow) {
  takeThree();
  EXPECT_FALSE(contains(drawn(pane, {60, 2}), "Paint"));
}

TEST_F(HostApplications, WithoutFiguresOrNamesAreShownAllTheSame) {
  auto record = std::make_shared<Dictionary>();
  record->set("pid", std::int32_t{5});
  record->set("virtMemoryPages", std::int32_t{-1});
  take({Value(record), Value("no record")});
  EXPECT_TRUE(contains(drawn(pane, {90, 3}), "0.0 %"));
  EXPECT_EQ(figures->rows().size(), 1u);
}

TEST_F(HostApplications, OfStrangeNamesAreSafeToPrint) {
  take({application(1, "a\n\xFF\x1B[31m", 1, 1, 1)});
  EXPECT_TRUE(contains(drawn(pane, {90, 3}), "a\uFFFD\uFFFD\uFFFD[31m"));
}

}  // namespace
}  // namespace vantile::host
