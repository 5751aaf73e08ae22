#include "dashboard/dashboard.h"

#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vantile/foundation/log.h>
#include <vantile/foundation/run_loop.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dashboard/screen.h"
#include "dashboard/terminal.h"
#include "event_loop.h"
#include "output.h"
#include "registry.h"
#include "signals.h"
#include "text.h"

namespace vantile::host {
namespace {

/// Keeps the library's log lines off the screen: the latest is shown in the foot line, all of
/// them are printed once the terminal is back.
class KeptLog {
 public:
  KeptLog() {
    setLogSink([this](std::string_view line) {
      const std::lock_guard lock(mutex_);
      if (lines_.size() < most) lines_.emplace_back(line);
      latest_ = line;
    });
  }
  ~KeptLog() {
    setLogSink({});
    for (const auto& line : lines_) complain(line);
  }
  KeptLog(const KeptLog&) = delete;
  KeptLog& operator=(const KeptLog&) = delete;

  std::string latest() const {
    const std::lock_guard lock(mutex_);
    return latest_;
  }

 private:
  static constexpr std::size_t most = 100;

  mutable std::mutex mutex_;  // any thread logs
  std::vector<std::string> lines_;
  std::string latest_;
};

std::string machineName() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

class Dashboard {
 public:
  explicit Dashboard(const Options& options) : options_(options) {}
  int run();

 private:
  bool start();
  bool start(std::string_view monitor, const ReportSink& sink);
  void handleSignal(int number);
  void handleInput(short found);
  void handleKey(KeyPress key);
  void redraw();

  const Options& options_;
  KeptLog log_;
  Signals signals_{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGWINCH, SIGCONT};
  EventLoop loop_{signals_};
  std::vector<std::unique_ptr<Pane>> panes_;
  std::vector<std::unique_ptr<RunningMonitor>> running_;
  std::unique_ptr<Terminal> terminal_;  // after the log: given back before that is printed
  std::size_t page_ = 0;
  std::size_t pages_ = 1;
  bool changed_ = true;
};

int Dashboard::run() {
  if (!start()) return 1;
  terminal_ = Terminal::open();
  if (!terminal_) {
    const char* const type = std::getenv("TERM");
    complain("cannot draw on a terminal of the type '" + std::string(type ? type : "") +
             "' (set TERM, or use 'vantile-host stream')");
    return 1;
  }
  loop_.onSignal([this](int number) { handleSignal(number); });
  loop_.watch(STDIN_FILENO, POLLIN, [this](short found) { handleInput(found); });
  loop_.afterEach([this] {
    for (const auto& monitor : running_) monitor->afterRound();
    redraw();
  });
  const Timer clock =
      RunLoop::current().every(std::chrono::seconds(1), [this] { changed_ = true; });
  redraw();
  return loop_.run();
}

bool Dashboard::start() {
  for (const auto& part : dashboardParts()) {
    auto group = part.panes();
    const ReportSink sink = [this, show = std::move(group.take)](const Report& report) {
      show(report);
      changed_ = true;
    };
    const auto started = std::ranges::count_if(
        part.monitors, [&](std::string_view monitor) { return start(monitor, sink); });
    if (started > 0) std::ranges::move(group.panes, std::back_inserter(panes_));
  }
  if (running_.empty()) complain("no monitor has anything to read on this system");
  return !running_.empty();
}

bool Dashboard::start(std::string_view monitor, const ReportSink& sink) {
  // A sample at once, rather than an empty screen for the first interval.
  auto running =
      startMonitor(monitorNamed(monitor), {.interval = options_.interval, .atOnce = true}, sink);
  if (!running) return false;
  running_.push_back(std::move(running));
  return true;
}

void Dashboard::handleSignal(int number) {
  if (number != SIGWINCH && number != SIGCONT) return loop_.end(128 + number);
  terminal_->resize();
  changed_ = true;
}

void Dashboard::handleInput(short found) {
  int waiting = 0;
  const bool readable = (found & POLLIN) && ioctl(STDIN_FILENO, FIONREAD, &waiting) == 0;
  // A terminal that is gone stays "readable" without anything to read.
  if (!readable || waiting == 0) return loop_.end(0);
  while (const auto key = terminal_->key()) handleKey(*key);
}

void Dashboard::handleKey(KeyPress key) {
  changed_ = true;
  switch (key) {
    case KeyPress::Quit:
      return loop_.end(0);
    case KeyPress::NextPage:
      page_ = (page_ + 1) % pages_;
      break;
    case KeyPress::PreviousPage:
      page_ = (page_ + pages_ - 1) % pages_;
      break;
    case KeyPress::Sort:
      for (const auto& pane : panes_) pane->sort(Sorting::Next);
      break;
    case KeyPress::ReverseSort:
      for (const auto& pane : panes_) pane->sort(Sorting::Reverse);
      break;
    case KeyPress::Redraw:
      terminal_->resize();
      break;
    case KeyPress::Other:
      break;
  }
}

void Dashboard::redraw() {
  if (!changed_) return;
  changed_ = false;
  Canvas canvas(terminal_->size());
  pages_ = drawScreen(canvas, panes_,
                      {.machine = machineName(),
                       .clock = formatClock(std::time(nullptr)),
                       .message = log_.latest(),
                       .interval = options_.interval,
                       .page = page_});
  page_ = std::min(page_, pages_ - 1);
  terminal_->show(canvas);
}

}  // namespace

int runDashboard(const Options& options) {
  const OwnOutput output;
  return Dashboard(options).run();
}

}  // namespace vantile::host
