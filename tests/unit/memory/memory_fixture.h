#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "vantile/memory/memory.h"

#include "fakes/fake_memory_ports.h"
#include "fakes/fake_utility_ports.h"
#include "fakes/manual_workers.h"
#include "fakes/stepped_loop.h"

namespace vantile::testing {

/// One report, as the delegate got it.
struct Report {
  Dictionary memory, vm;
  bool hasSwap;
};

/// A `KVDMemory` on fakes, with a loop and background work that run when the test says so.
class Memory : public ::testing::Test {
 protected:
  Memory() {
    host.reading.pageIns = 0;
    host.reading.pageOuts = 0;
    host.reading32.pageIns = 0;
    host.reading32.pageOuts = 0;
    delegate->updateMemoryStatusWithVMStatusWithSwapDict =
        [this](const Dictionary& memory, const Dictionary& vm, const Dictionary* swap) {
          reports.push_back({memory, vm, swap != nullptr});
        };
  }

  /// The shared monitor, with the delegate set.
  std::shared_ptr<KVDMemory> monitor() {
    auto shared = KVDMemory::singleton();
    if (shared) shared->setDelegate(delegate);
    return shared;
  }

  /// Lets the alarm go off during the cleaner's first pass.
  void endAfterOnePass() {
    ports.pressure->onRequest = [this] { ports.alarm->handler(14); };
  }

  FakeUtilityPorts utility;
  FakeMemoryPorts ports;
  FakeHostMemory& host = *ports.host;
  SteppedLoop loop;
  ManualWorkers workers;
  std::shared_ptr<MemoryDelegate> delegate = std::make_shared<MemoryDelegate>();
  std::vector<Report> reports;
};

}  // namespace vantile::testing
