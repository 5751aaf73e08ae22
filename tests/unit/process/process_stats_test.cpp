#include "vantile/process/process_stats.h"

#include <atomic>
#include <stdexcept>
#include <thread>

#include "unit/process/process_fixture.h"

namespace vantile {
namespace {

using std::chrono::seconds;
using testing::ProcessSample;
using testing::RecordedLog;

TEST_F(ProcessSample, IsTakenEveryTwoSecondsFromTheStart) {
  EXPECT_EQ(monitor->freshInterval(), 2);
  loop.advance(seconds(10));
  EXPECT_EQ(calls, 5);
}

TEST_F(ProcessSample, FollowsTheIntervalThatIsSet) {
  monitor->setFreshInterval(5);
  EXPECT_EQ(monitor->freshInterval(), 5);
  loop.advance(seconds(10));
  EXPECT_EQ(calls, 2);
  monitor->setFreshInterval(0);
  loop.advance(seconds(10));
  EXPECT_EQ(calls, 2);
}

TEST_F(ProcessSample, EndsWithTheMonitor) {
  monitor.reset();
  loop.advance(seconds(10));
  EXPECT_EQ(calls, 0);
}

TEST_F(ProcessSample, LetsTheDesktopRestAtTheMonitorsEnd) {
  loop.advance(seconds(2));
  EXPECT_EQ(ports.applications->rests, 0);
  monitor.reset();
  EXPECT_EQ(ports.applications->rests, 1);
}

TEST_F(ProcessSample, MonitorsAreEachAHostsOwn) {
  EXPECT_NE(ProcessStats::init(), monitor);
}

TEST_F(ProcessSample, ThePatternIsCompiledOnceAndIsThisOne) {
  read("");
  read("");
  EXPECT_EQ(
      ports.patterns->compiled,
      std::vector<std::string>{
          "[\\n^\\n]*?\\s*(\\d+)\\s+(\\d+.\\d+)\\s+(\\d+.\\d+)\\s+(\\d+)\\s+(\\d+)\\s+([a-zA-Z]+)"
          "\\s*\\n"});
}

TEST_F(ProcessSample, WithoutApplicationsTellsNilAndRunsNothing) {
  launch({});
  monitor->updateInfo();
  EXPECT_EQ(reports, decltype(reports){std::nullopt});
  EXPECT_TRUE(ports.lister->requests.empty());
}

TEST_F(ProcessSample, WithoutAnAnswerTellsNilAndRunsNothing) {
  monitor->updateInfo();
  EXPECT_EQ(reports, decltype(reports){std::nullopt});
  EXPECT_TRUE(ports.lister->requests.empty());
}

TEST_F(ProcessSample, AsksForTheApplicationsInTheirOrderWithCommasBetween) {
  launch({{"Mail", "/Mail.app", 41}, {"Chess", "/Chess.app", 7}, {{}, {}, -1}});
  monitor->updateInfo();
  EXPECT_EQ(ports.lister->requests,
            std::vector<std::string>{"41,7,-1 pid,%cpu,%mem,cmd,rss,vsz,stat"});
}

TEST_F(ProcessSample, OneApplicationIsAskedForWithoutAComma) {
  launch({{"Mail", "/Mail.app", 41}});
  monitor->updateInfo();
  EXPECT_EQ(ports.lister->requests.at(0), "41 pid,%cpu,%mem,cmd,rss,vsz,stat");
}

TEST_F(ProcessSample, TellsEachApplicationWithItsNameAndPath) {
  launch({{"Mail", "/Mail.app", 41}, {std::nullopt, std::nullopt, 7}});
  monitor->updateInfo();
  const auto records = reports.at(0).value();
  EXPECT_EQ(records.size(), 2u);
  EXPECT_EQ(records.at(41)->appName(), "Mail");
  EXPECT_EQ(records.at(41)->appPath(), "/Mail.app");
  EXPECT_EQ(records.at(7)->appName(), std::nullopt);
  EXPECT_EQ(records.at(7)->appPath(), std::nullopt);
}

TEST_F(ProcessSample, OfTwoApplicationsWithOnePidTheLaterCountsAndBothAreAskedFor) {
  launch({{"Mail", "/Mail.app", 41}, {"Chess", "/Chess.app", 41}});
  ports.lister->output = " 41 1.5 0.1 100 200 S\n";
  monitor->updateInfo();
  EXPECT_EQ(ports.lister->requests.at(0).substr(0, 6), "41,41 ");
  const auto records = reports.at(0).value();
  EXPECT_EQ(records.size(), 1u);
  EXPECT_EQ(records.at(41)->appName(), "Chess");
  EXPECT_EQ(records.at(41)->cpu(), 1.5);
}

TEST_F(ProcessSample, AToolThatSucceedsEndsItUntold) {
  launch({{"Mail", "/Mail.app", 41}});
  ports.lister->exitStatus = 0;
  ports.lister->output = " 41 1.5 0.1 100 200 S\n";
  monitor->updateInfo();
  EXPECT_EQ(calls, 0);
}

TEST_F(ProcessSample, AnyOtherStatusIsRead) {
  for (const std::int32_t status : {1, 2, 127, -1}) {
    ports.lister->exitStatus = status;
    EXPECT_EQ(read(" 41 1.5 0.1 100 200 S\n")->cpu(), 1.5) << status;
  }
}

TEST_F(ProcessSample, AToolThatCantBeRunEndsItWithALineInTheLog) {
  const RecordedLog log;
  launch({{"Mail", "/Mail.app", 41}});
  ports.lister->refuses = true;
  monitor->updateInfo();
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(log.lines, std::vector<std::string>{"a process sample: the process list can't be run"});
}

TEST_F(ProcessSample, ADesktopThatRaisesAnExceptionEndsItWithALineInTheLog) {
  const RecordedLog log;
  ports.applications->onList = [] { throw std::runtime_error("no desktop"); };
  monitor->updateInfo();
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(log.lines, std::vector<std::string>{"a process sample threw: no desktop"});
  ports.applications->onList = nullptr;
  monitor->updateInfo();
  EXPECT_EQ(calls, 1);
}

TEST_F(ProcessSample, RunsTheToolWithoutADelegateToo) {
  monitor->setDelegate(nullptr);
  launch({{"Mail", "/Mail.app", 41}});
  monitor->updateInfo();
  EXPECT_EQ(ports.lister->requests.size(), 1u);
}

TEST_F(ProcessSample, ADelegateWithoutTheOperationIsLeftAlone) {
  monitor->setDelegate(std::make_shared<ProcessStatsDelegate>());
  monitor->updateInfo();
  launch({{"Mail", "/Mail.app", 41}});
  monitor->updateInfo();
  EXPECT_EQ(calls, 0);
}

TEST_F(ProcessSample, ForgetsWhatTheOneBeforeFound) {
  launch({{"Mail", "/Mail.app", 41}});
  monitor->updateInfo();
  launch({{"Chess", "/Chess.app", 7}});
  monitor->updateInfo();
  EXPECT_EQ(reports.at(1).value().size(), 1u);
  EXPECT_TRUE(reports.at(1).value().contains(7));
}

TEST_F(ProcessSample, LeavesTheRecordsOfTheOneBeforeAsTheyWere) {
  const auto first = read(" 41 1.5 0.1 100 200 S\n");
  const auto second = read(" 41 9.5 0.1 100 200 R\n");
  EXPECT_NE(first, second);
  EXPECT_EQ(first->cpu(), 1.5);
  EXPECT_EQ(second->cpu(), 9.5);
}

TEST_F(ProcessSample, MayBeAskedForFromItsOwnDelegateCall) {
  launch({{"Mail", "/Mail.app", 41}});
  int nested = 0;
  delegate->updateProcessStaus = [&](const auto*) {
    if (++nested == 1) monitor->updateInfo();
  };
  monitor->updateInfo();
  EXPECT_EQ(nested, 2);
  launch({});
  nested = 0;
  monitor->updateInfo();
  EXPECT_EQ(nested, 2);
}

TEST_F(ProcessSample, MayBeTakenOnSeveralThreadsAtOnceWhileThePatternIsSet) {
  launch({{"Mail", "/Mail.app", 41}});
  ports.lister->output = "41 1.0 2.0 3 4 S\n";
  std::atomic<int> whole = 0;
  delegate->updateProcessStaus = [&whole](const auto* processes) {
    if (processes && processes->size() == 1 && processes->at(0)->stats() == "S") ++whole;
  };
  constexpr int samples = 50;
  const auto sampling = [this] {
    for (int sample = 0; sample < samples; ++sample) {
      monitor->setPsRegex(monitor->psRegex());
      monitor->updateInfo();
    }
  };
  std::thread another(sampling);
  sampling();
  another.join();
  EXPECT_EQ(whole, 2 * samples);
}

TEST_F(ProcessSample, ADelegateMayLetGoOfTheMonitor) {
  launch({{"Mail", "/Mail.app", 41}});
  delegate->updateProcessStaus = [&](const auto*) {
    ++calls;
    monitor.reset();
  };
  loop.advance(seconds(10));
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace vantile
