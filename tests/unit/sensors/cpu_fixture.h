#pragma once

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "vantile/sensors/cpu.h"

#include "fakes/fake_sensors_ports.h"
#include "fakes/stepped_loop.h"

namespace vantile::testing {

/// Parts of 1, as the delegate got them: system, user, idle.
using Parts = std::array<float, 3>;

/// A `CPUStatus` on fakes, with a loop that runs when the test says so.
class Cpu : public ::testing::Test {
 protected:
  Cpu() {
    smc.dataSize = 0;  // no temperature
    smc.bytes = {0x3a, 0x40};
    delegate->cpuUsedWithCoreWithSystemWithUserWithIdle = [this](std::uint32_t core, float system,
                                                                 float user, float idle) {
      told.push_back("core " + std::to_string(core));
      cores[core] = {system, user, idle};
    };
    delegate->cpuUsedWithSystemWithUserWithIdle = [this](float system, float user, float idle) {
      told.push_back("all");
      all = {system, user, idle};
    };
    delegate->processorWithTaskCountWithThreadCount = [this](std::int32_t tasks,
                                                             std::int32_t threads) {
      told.push_back("tasks");
      counts = {tasks, threads};
    };
    delegate->loadAverageWith1mWith5mWith15m = [this](float one, float five, float fifteen) {
      told.push_back("load");
      loads = {one, five, fifteen};
    };
    delegate->cpuWithTemperature = [this](double degrees) {
      told.push_back("temperature");
      celsius = degrees;
    };
  }

  /// The shared monitor, with the delegate set.
  std::shared_ptr<CPUStatus> monitor() {
    auto shared = CPUStatus::singleton();
    if (shared) shared->setDelegate(delegate);
    return shared;
  }
  FakeSensorsPorts ports;
  FakeProcessors& processors = *ports.processors;
  FakeSmcService& smc = *ports.smc;
  SteppedLoop loop;
  std::shared_ptr<CPUDelegate> delegate = std::make_shared<CPUDelegate>();
  std::vector<std::string> told;  ///< what was, in order
  std::map<std::uint32_t, Parts> cores;
  Parts all = {}, loads = {};
  TaskCounts counts;
  double celsius = 0;
};

}  // namespace vantile::testing
