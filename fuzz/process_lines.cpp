#include <string>

#include "vantile/platform/text_patterns.h"
#include "vantile/process/process_ports.h"
#include "vantile/process/process_stats.h"

#include "fakes/fake_process_ports.h"
#include "fakes/stepped_loop.h"
#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

/// What one sample makes of the tool's output for the processes 1 and 41.
struct Sample {
  testing::SteppedLoop loop;
  testing::FakeProcessPorts ports;
  std::shared_ptr<ProcessStats> monitor = ProcessStats::init();

  std::vector<std::shared_ptr<ProcessInfo>> of(std::string_view output) {
    std::vector<std::shared_ptr<ProcessInfo>> found;
    const auto delegate = std::make_shared<ProcessStatsDelegate>();
    delegate->updateProcessStaus = [&found](const auto* processes) { found = *processes; };
    ports.applications->applications = {{"a", "/a", 1}, {"b", "/b", 41}};
    ports.lister->output = output;
    monitor->setDelegate(delegate);
    monitor->updateInfo();
    monitor->setDelegate(nullptr);
    return found;
  }
};

bool isLetters(std::string_view text) {
  for (const char each : text)
    if (!((each >= 'a' && each <= 'z') || (each >= 'A' && each <= 'Z'))) return false;
  return !text.empty();
}

}  // namespace

void consume(std::string_view input) {
  static auto& sample = *new Sample;
  for (const auto& info : sample.of(input)) {
    require(info->cpu() >= 0 && info->memory() >= 0, "shares have no sign");
    require(info->phyMemoryPages() >= 0 && info->virtMemoryPages() >= 0, "sizes have none");
    require(!info->stats() || isLetters(*info->stats()), "a state is letters");
    require(!info->stats() || input.find(*info->stats()) != input.npos, "a state is in the text");
  }
  // A line of its own behind whatever came before is read, unless that is no UTF-8 or the engine
  // gave up.
  if (input.size() > 100 || input.find_first_not_of("0123456789.,+ \nabPID%<") != input.npos)
    return;
  const auto found = sample.of(std::string(input) + "\n\x2B\n41 7.5 0.1 100 200 Xyz\n");
  for (const auto& info : found)
    require(info->pid() != 41 || info->stats() == "Xyz", "the last line counts");
}

}  // namespace vantile::fuzz
