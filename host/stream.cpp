#include "stream.h"

#include <poll.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "event_loop.h"
#include "json.h"
#include "output.h"
#include "registry.h"
#include "signals.h"

namespace vantile::host {
namespace {

class Stream {
 public:
  explicit Stream(const Options& options) : options_(options) {}

  int run();

 private:
  /// One monitor's part of the stream.
  struct Source {
    const MonitorEntry& entry;
    std::uint64_t samples = 0;  // or changes
    std::unique_ptr<RunningMonitor> running = nullptr;
  };

  bool start();
  void print(Source& source, const Report& report);
  bool isDone() const;
  bool isDone(const Source& source) const;

  const Options& options_;
  Signals signals_{SIGINT, SIGTERM, SIGHUP, SIGQUIT};
  EventLoop loop_{signals_};
  std::uint64_t reports_ = 0;
  std::vector<Source> sources_;
};

int Stream::run() {
  loop_.onSignal([this](int number) { loop_.end(128 + number); });
  // Without events to wait for, poll still tells when the reader goes away, long before the next
  // write might.
  loop_.watch(outputFd(), 0, [this](short found) {
    if (found & (POLLERR | POLLHUP)) loop_.end(0);
  });
  loop_.afterEach([this] {
    for (const auto& source : sources_) source.running->afterRound();
    if (isDone()) loop_.end(0);
  });
  if (!start()) return 1;
  if (isDone()) loop_.end(0);  // where all reported at once, nothing may ever happen again
  return loop_.run();
}

bool Stream::start() {
  // All of them before the first is started: one that reports at once may be the last to be waited
  // for, or not.
  for (const auto& name : options_.monitors) sources_.push_back({monitorNamed(name)});
  for (auto& source : sources_) {
    source.running = startMonitor(source.entry, {.interval = options_.interval},
                                  [this, &source](const Report& report) { print(source, report); });
    if (!source.running) {
      complain("the " + std::string(source.entry.name) +
               " monitor has nothing to read on this system");
      return false;
    }
  }
  return true;
}

void Stream::print(Source& source, const Report& report) {
  if (loop_.ended()) return;
  const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
  switch (writeOut(jsonLine(report, now), signals_.fd())) {
    case Written::All:
      break;
    case Written::ReaderGone:
      return loop_.end(0);
    case Written::Interrupted:
      return;  // the loop takes the signal next
    case Written::Failed:
      complainOfOutput();
      return loop_.end(1);
  }
  if (source.entry.sample.empty() || report.operation == source.entry.sample) ++source.samples;
  ++reports_;
  if (options_.command == Command::Watch && reports_ == options_.count) loop_.end(0);
}

/// Whether every monitor has had its samples. Asked once a round, so that the last sample is told
/// to its end.
bool Stream::isDone() const {
  if (options_.command == Command::Watch || options_.count == 0) return false;
  return std::ranges::all_of(sources_, [this](const Source& each) { return isDone(each); });
}

bool Stream::isDone(const Source& source) const {
  return source.samples >= (source.entry.sample.empty() ? 1 : options_.count);
}

}  // namespace

int runStream(const Options& options) {
  const OwnOutput output;
  return Stream(options).run();
}

}  // namespace vantile::host
