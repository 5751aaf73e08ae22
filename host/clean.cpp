#include "clean.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vantile/foundation/run_loop.h>
#include <vantile/memory/cleaner.h>
#include <vantile/memory/memory.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "dashboard/bar.h"
#include "dashboard/canvas.h"
#include "event_loop.h"
#include "output.h"
#include "signals.h"
#include "text.h"

namespace vantile::host {
namespace {

// Seconds: ten of pressure, one of rest. A filling that has begun is finished first, which takes
// a large machine longer.
constexpr double usualRun = 11;

// Columns kept free at the right, where the terminal shows a "^C" without breaking the line.
constexpr int margin = 4;

// What the kernel moves about anyway between two looks.
constexpr std::uint64_t noise = 1024 * 1024;

// The cleaner may still look at it when a second Ctrl-C ends the program, so it is never gone.
std::int32_t stopFlag = 0;

std::string comparison(const char* what, std::uint64_t before, std::uint64_t after) {
  return std::string(what) + formatBytes(before) + " before, " + formatBytes(after) + " after (" +
         formatChange(before, after) + ")\n";
}

class Cleaning {
 public:
  int run();

 private:
  using Clock = std::chrono::steady_clock;

  void start(KVDMemory& memory);
  void interrupted(int number);
  void showProgress();
  void finish();
  void clearLine() { say("\r\x1b[K"); }
  void say(const std::string& text);
  void abandon();
  double elapsed() const { return std::chrono::duration<double>(Clock::now() - started_).count(); }

  Signals signals_{SIGINT, SIGTERM, SIGHUP, SIGQUIT};
  EventLoop loop_{signals_};
  const bool onTerminal_ = isatty(STDOUT_FILENO) == 1;
  const bool utf8_ = terminalTakesUtf8();
  bool readerGone_ = false;
  bool outputFailed_ = false;
  std::optional<int> stoppedBy_;
  Clock::time_point started_;
  memory_info before_{};
};

int Cleaning::run() {
  const auto memory = KVDMemory::singleton();
  if (!memory || get_memory_info(&before_) != 0) {
    complain("the system does not tell how much memory is free");
    return 1;
  }
  loop_.onSignal([this](int number) { interrupted(number); });
  loop_.watch(STDOUT_FILENO, 0, [this](short) { abandon(); });
  start(*memory);
  Timer progress;
  if (onTerminal_) {
    showProgress();
    progress = RunLoop::current().every(std::chrono::milliseconds(100), [this] { showProgress(); });
  } else {
    say("cleaning memory: about " + formatFixed(usualRun, 0) + " s\n");
  }
  const int code = loop_.run();
  memory->setDelegate(nullptr);
  return code;
}

void Cleaning::start(KVDMemory& memory) {
  auto delegate = std::make_shared<MemoryDelegate>();
  delegate->clearMemoryCompleted = [this] { RunLoop::main().post([this] { finish(); }); };
  memory.setDelegate(std::move(delegate));
  started_ = Clock::now();
  memory.clearMemory(&stopFlag);
}

void Cleaning::interrupted(int number) {
  if (stoppedBy_) {
    if (onTerminal_) clearLine();
    _exit(128 + number);  // at once: the cleaner's thread is not waited for
  }
  stoppedBy_ = number;
  std::atomic_ref(stopFlag).store(1);
  if (onTerminal_) {
    showProgress();
  } else {
    say("stopping\n");
  }
}

void Cleaning::showProgress() {
  winsize window = {};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 0;
  const int width = known ? window.ws_col : 80;

  memory_info now{};
  std::string text =
      " " + formatFixed(elapsed(), 1) + " of about " + formatFixed(usualRun, 0) + " s";
  if (get_memory_info(&now) == 0) text += ", " + formatBytes(now.free) + " free";
  text += stoppedBy_ ? ", stopping" : ", Ctrl-C stops";

  const std::string label = "cleaning ";
  const int barWidth = std::min(40, width - margin - cellsOf(label) - cellsOf(text));
  Canvas bar({std::max(barWidth, 0), 1});
  drawBar(bar.region(), {{elapsed() / usualRun, {}}}, U'\u2500');
  if (!utf8_) bar.makeAscii();
  say("\r" + label + bar.rows().front() + text + "\x1b[K");
}

void Cleaning::finish() {
  memory_info after{};
  if (onTerminal_) clearLine();
  if (get_memory_info(&after) != 0) {
    complain("the system no longer tells how much memory is free");
    return loop_.end(1);
  }
  say(describeCleaning(before_, after, elapsed(), stoppedBy_.has_value()));
  loop_.end(stoppedBy_ ? 128 + *stoppedBy_ : outputFailed_ ? 1 : 0);
}

void Cleaning::say(const std::string& text) {
  if (readerGone_ || outputFailed_) return;
  const auto written = writeOut(text);
  if (written == Written::All) return;
  outputFailed_ = written == Written::Failed;
  if (outputFailed_) complainOfOutput();
  abandon();
}

// Nobody reads any more. The run is still waited for: it gives back what it took.
void Cleaning::abandon() {
  readerGone_ = !outputFailed_;
  std::atomic_ref(stopFlag).store(1);
}

}  // namespace

std::string describeCleaning(const memory_info& before, const memory_info& after, double seconds,
                             bool stopped) {
  std::string text = stopped ? "stopped after " : "finished after ";
  text += formatFixed(seconds, 1) + " s: ";
  if (after.free > before.free + noise) {
    text += formatBytes(after.free - before.free) + " freed\n";
  } else {
    text += "nothing was freed\n";
  }
  text += comparison("free memory:         ", before.free, after.free);
  text += comparison("active and inactive: ", before.active + before.inactive,
                     after.active + after.inactive);
  return text;
}

int runClean() {
  return Cleaning().run();
}

}  // namespace vantile::host
