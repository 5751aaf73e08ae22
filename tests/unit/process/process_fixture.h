#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vantile/process/process_stats.h"

#include "fakes/fake_process_ports.h"
#include "fakes/recorded_log.h"
#include "fakes/stepped_loop.h"

namespace vantile::testing {

/// A `ProcessStats` on fakes, whose samples are kept.
class ProcessSample : public ::testing::Test {
 protected:
  using Records = std::map<std::int32_t, std::shared_ptr<ProcessInfo>>;

  ProcessSample() {
    delegate->updateProcessStaus = [this](const auto* processes) {
      ++calls;
      if (!processes) return reports.push_back(std::nullopt);
      Records records;
      for (const auto& each : *processes) records[each->pid()] = each;
      EXPECT_EQ(records.size(), processes->size()) << "a pid comes twice";
      reports.push_back(records);
    };
    monitor->setDelegate(delegate);
  }

  void launch(std::vector<LaunchedApplication> applications) {
    ports.applications->applications = std::move(applications);
  }

  /// The one application's record after the tool printed this below its header.
  std::shared_ptr<ProcessInfo> read(const std::string& lines, std::int32_t pid = 41) {
    launch({{"Mail", "/Mail.app", pid}});
    ports.lister->output = "  PID  %CPU %MEM    RSS      VSZ STAT\n" + lines;
    reports.clear();
    monitor->updateInfo();
    return reports.at(0).value().at(pid);
  }

  SteppedLoop loop;
  FakeProcessPorts ports;
  const std::shared_ptr<ProcessStatsDelegate> delegate = std::make_shared<ProcessStatsDelegate>();
  std::shared_ptr<ProcessStats> monitor = ProcessStats::init();
  std::vector<std::optional<Records>> reports;  ///< nothing: the delegate got null
  int calls = 0;
};

}  // namespace vantile::testing
