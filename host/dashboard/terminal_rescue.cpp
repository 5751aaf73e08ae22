#include "dashboard/terminal_rescue.h"

#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "output.h"

namespace vantile::host {
namespace {

// The signals that end a process that does nothing about them, apart from those that the dashboard
// takes as requests to end (Signals), SIGPIPE, which the program ignores, SIGSTKFLT, which nothing
// sends and not every processor has, and SIGKILL. Those of the real-time range join them.
constexpr int deadly[] = {SIGSEGV, SIGBUS,  SIGFPE,  SIGILL,  SIGABRT, SIGTRAP, SIGSYS, SIGXCPU,
                          SIGXFSZ, SIGUSR1, SIGUSR2, SIGALRM, SIGPROF, SIGPOLL, SIGPWR, SIGVTALRM};

// What the handler reads stays where it is while any thread may be in it, hence no member and
// nothing that allocates.
std::array<char, 512> resetText;
std::size_t resetSize = 0;
int terminal = STDOUT_FILENO;
termios settings;
bool settingsKnown = false;
std::array<struct sigaction, NSIG> previous;

std::vector<int> replaced;  // the handler does not look at it

// For a stack that overflowed there is no room on that stack.
alignas(16) std::array<char, std::size_t{64} * 1024> spareStack;
bool spareStackInUse = false;

// Only what may be called at any point of the program.
void giveBackAndDie(int number) {
  // In the background the terminal is a shell's, and was given back when we stopped.
  const pid_t foreground = tcgetpgrp(terminal);
  if (foreground <= 0 || foreground == getpgrp()) {
    if (settingsKnown) tcsetattr(terminal, TCSANOW, &settings);
    [[maybe_unused]] const auto written = write(terminal, resetText.data(), resetSize);
  }
  // The signal is blocked until this returns: it then strikes where the first one did, so that a
  // core dump shows that place.
  sigaction(number, &previous[static_cast<std::size_t>(number)], nullptr);
  raise(number);
}

void replace(int number) {
  auto& before = previous[static_cast<std::size_t>(number)];
  if (sigaction(number, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) return;
  struct sigaction action = {};
  action.sa_handler = giveBackAndDie;
  action.sa_flags = SA_ONSTACK;
  sigfillset(&action.sa_mask);  // SIGTTOU too, which changing the settings might raise
  if (sigaction(number, &action, nullptr) == 0) replaced.push_back(number);
}

void useSpareStack() {
  stack_t present = {};
  if (sigaltstack(nullptr, &present) != 0 || !(present.ss_flags & SS_DISABLE)) return;
  stack_t spare = {};
  spare.ss_sp = spareStack.data();
  spare.ss_size = spareStack.size();
  spareStackInUse = sigaltstack(&spare, nullptr) == 0;
}

}  // namespace

TerminalRescue::TerminalRescue() {
  terminal = outputFd();
  settingsKnown = tcgetattr(terminal, &settings) == 0;
}

void TerminalRescue::arm(std::string_view reset) {
  disarm();
  resetSize = reset.size() <= resetText.size() ? reset.size() : 0;
  std::copy_n(reset.begin(), resetSize, resetText.begin());
  useSpareStack();
  for (const int number : deadly) replace(number);
  for (int number = SIGRTMIN; number <= SIGRTMAX; ++number) replace(number);
}

void TerminalRescue::disarm() {
  for (const int number : replaced) {
    sigaction(number, &previous[static_cast<std::size_t>(number)], nullptr);
  }
  replaced.clear();
  if (!spareStackInUse) return;
  spareStackInUse = false;
  stack_t none = {};
  none.ss_flags = SS_DISABLE;
  sigaltstack(&none, nullptr);
}

}  // namespace vantile::host
