#include "dashboard/terminal.h"

#define NCURSES_NOMACROS 1
#define NCURSES_WIDECHAR 1

#include <curses.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <term.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "dashboard/terminal_rescue.h"
#include "output.h"

namespace vantile::host {
namespace {

SCREEN* inUse = nullptr;
TerminalRescue* rescue = nullptr;
std::terminate_handler previousTerminate = nullptr;

void giveBack() {
  if (!inUse) return;
  inUse = nullptr;
  endwin();
  rescue->disarm();
}

[[noreturn]] void giveBackAndTerminate() {
  giveBack();
  if (previousTerminate) previousTerminate();
  std::abort();
}

std::string resetting;
int appendToReset(int character) {
  if (character != 0) resetting += static_cast<char>(character);  // 0 only passes time
  return character;
}

/// What `endwin` writes, and more, for when it cannot be called.
std::string resetSequence() {
  resetting.clear();
  const auto add = [](const char* name) {
    const char* const text = tigetstr(name);
    if (!text || text == reinterpret_cast<const char*>(-1)) return false;
    tputs(text, 1, appendToReset);
    return true;
  };
  add("rmacs");
  add("sgr0");
  add("op");
  add("rmkx");
  // Without a screen of our own to leave, ours is at least not left under the shell's prompt.
  if (!add("rmcup")) add("clear");
  add("cnorm");
  return resetting;
}

/// The colours on terminals of 256 and of 8; -1 is the terminal's own.
struct ColourNumbers {
  short many, few;
};

ColourNumbers numbersOf(Colour colour) {
  switch (colour) {
    case Colour::Grey:
      return {246, -1};
    case Colour::DarkGrey:
      return {240, -1};
    case Colour::Track:
      return {236, -1};
    case Colour::Red:
      return {203, COLOR_RED};
    case Colour::Orange:
      return {209, COLOR_RED};
    case Colour::Yellow:
      return {221, COLOR_YELLOW};
    case Colour::Green:
      return {114, COLOR_GREEN};
    case Colour::Teal:
      return {80, COLOR_CYAN};
    case Colour::Blue:
      return {75, COLOR_BLUE};
    case Colour::Purple:
      return {141, COLOR_MAGENTA};
    case Colour::Default:
      break;
  }
  return {-1, -1};
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using OutputFile = std::unique_ptr<std::FILE, CloseFile>;

std::FILE* openOutput() {
  const int copy = fcntl(outputFd(), F_DUPFD_CLOEXEC, 0);
  if (copy < 0) return nullptr;
  std::FILE* const file = fdopen(copy, "w");
  if (!file) close(copy);
  return file;
}

class CursesTerminal final : public Terminal {
 public:
  CursesTerminal(std::unique_ptr<TerminalRescue> rescuer, OutputFile output, SCREEN* screen);
  ~CursesTerminal() override;

  Size size() const override { return {getmaxx(stdscr), getmaxy(stdscr)}; }
  void resize() override;
  void show(const Canvas& canvas) override;
  std::optional<KeyPress> key() override;

 private:
  short pair(Style style);

  std::unique_ptr<TerminalRescue> rescue_;
  OutputFile output_;  // of the screen
  SCREEN* screen_;
  const bool utf8_ = terminalTakesUtf8();
  bool coloured_ = false;
  std::map<std::pair<Colour, Colour>, short> pairs_;
};

CursesTerminal::CursesTerminal(std::unique_ptr<TerminalRescue> rescuer, OutputFile output,
                               SCREEN* screen)
    : rescue_(std::move(rescuer)), output_(std::move(output)), screen_(screen) {
  rescue = rescue_.get();
  rescue->arm(resetSequence());
  inUse = screen;
  static const bool once = [] {
    std::atexit(giveBack);
    previousTerminate = std::set_terminate(giveBackAndTerminate);
    return true;
  }();
  static_cast<void>(once);

  cbreak();
  noecho();
  nonl();
  curs_set(0);
  keypad(stdscr, TRUE);
  nodelay(stdscr, TRUE);
  set_escdelay(25);
  const char* const noColour = std::getenv("NO_COLOR");
  coloured_ =
      has_colors() && !(noColour && *noColour) && start_color() == OK && use_default_colors() == OK;
}

CursesTerminal::~CursesTerminal() {
  giveBack();
  delscreen(screen_);
}

void CursesTerminal::resize() {
  winsize window = {};
  if (ioctl(outputFd(), TIOCGWINSZ, &window) == 0 && window.ws_row > 0 && window.ws_col > 0) {
    resizeterm(window.ws_row, window.ws_col);
  }
  clearok(curscr, TRUE);
}

short CursesTerminal::pair(Style style) {
  if (!coloured_ || (style.ink == Colour::Default && style.paper == Colour::Default)) return 0;
  const auto [found, isNew] =
      pairs_.try_emplace({style.ink, style.paper}, static_cast<short>(pairs_.size() + 1));
  if (isNew) {
    const auto ink = numbersOf(style.ink);
    const auto paper = numbersOf(style.paper);
    const bool many = COLORS >= 256;
    init_pair(found->second, many ? ink.many : ink.few, many ? paper.many : paper.few);
  }
  return found->second;
}

void CursesTerminal::show(const Canvas& canvas) {
  Canvas shown = canvas;
  if (!utf8_) shown.makeAscii();
  werase(stdscr);
  for (int y = 0; y < shown.size().height; ++y) {
    for (int x = 0; x < shown.size().width; ++x) {
      const auto& cell = shown.at(x, y);
      if (cell.glyph == 0) continue;  // covered by the wide character before it
      const wchar_t text[] = {static_cast<wchar_t>(cell.glyph), L'\0'};
      cchar_t character;
      setcchar(&character, text, cell.style.bold ? WA_BOLD : WA_NORMAL, pair(cell.style), nullptr);
      mvwadd_wch(stdscr, y, x, &character);
    }
  }
  wrefresh(stdscr);
}

std::optional<KeyPress> CursesTerminal::key() {
  const int pressed = wgetch(stdscr);
  switch (pressed) {
    case ERR:
      return std::nullopt;
    case 'q':
    case 'Q':
      return KeyPress::Quit;
    case '\t':
    case ' ':
    case KEY_NPAGE:
    case KEY_RIGHT:
    case KEY_DOWN:
      return KeyPress::NextPage;
    case KEY_BTAB:
    case KEY_PPAGE:
    case KEY_LEFT:
    case KEY_UP:
      return KeyPress::PreviousPage;
    case 's':
      return KeyPress::Sort;
    case 'r':
      return KeyPress::ReverseSort;
    case 'L' - '@':
      return KeyPress::Redraw;
    default:  // also KEY_RESIZE, which is only curses' echo of our own resizeterm
      return KeyPress::Other;
  }
}

/// Whether the terminal can be told where to draw.
bool cursorMoves() {
  const char* const address = tigetstr("cup");
  return address && address != reinterpret_cast<const char*>(-1);
}

}  // namespace

std::unique_ptr<Terminal> Terminal::open() {
  terminalTakesUtf8();  // sets the locale that curses is to draw in
  auto rescuer = std::make_unique<TerminalRescue>();
  OutputFile output(openOutput());
  SCREEN* const screen = output ? newterm(nullptr, output.get(), stdin) : nullptr;
  if (!screen) return nullptr;
  if (!cursorMoves()) {  // "dumb", say
    endwin();
    delscreen(screen);
    return nullptr;
  }
  return std::make_unique<CursesTerminal>(std::move(rescuer), std::move(output), screen);
}

}  // namespace vantile::host
