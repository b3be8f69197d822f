#include "topscreen.h"

#include <clocale>
// Its macros take common names, so they are left out.
#define NCURSES_NOMACROS
#include <fmt/format.h>
#include <ncurses.h>
#include <unistd.h>

#include <algorithm>

#include "signals.h"
#include "terminal.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

constexpr short alertPair = 1;
// A terminal that changes its size just before a wait begins does not end it, so waits are short.
constexpr std::chrono::milliseconds glance{100};
constexpr int escapeDelayMilliseconds = 25;  // what a lone Escape waits for the rest of a key
constexpr const char* help = "q quit   p pause   s, S next, previous column   r reverse   arrows scroll";

// Takes the terminal over, and gives it back when it goes.
class Terminal {
 public:
  Terminal() {
    ::tcgetattr(STDOUT_FILENO, &state_.modes);
    std::setlocale(LC_CTYPE, "C.UTF-8");  // what SafeText() gives
    screen_ = ::newterm(nullptr, stdout, stdin);
    if (!screen_) return;
    state_.fd = STDOUT_FILENO;
    for (const char* name : {"sgr0", "cnorm", "rmkx", "rmcup"}) {
      const char* const sequence = ::tigetstr(name);
      if (sequence != nullptr && sequence != reinterpret_cast<char*>(-1)) state_.sequence += sequence;
    }
    SetTerminalState(&state_);
    ::cbreak();
    ::noecho();
    ::nodelay(stdscr, true);
    ::keypad(stdscr, true);
    ::set_escdelay(escapeDelayMilliseconds);
    ::curs_set(0);
    hasColors_ = WantsColors(STDOUT_FILENO) && ::has_colors() && ::start_color() == OK &&
                 ::use_default_colors() == OK && ::init_pair(alertPair, COLOR_RED, -1) == OK;
  }
  ~Terminal() {
    if (!screen_) return;
    ::endwin();
    SetTerminalState(nullptr);
    ::delscreen(screen_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  bool IsUsable() const { return screen_ != nullptr; }
  bool HasColors() const { return hasColors_; }

 private:
  SCREEN* screen_ = nullptr;
  bool hasColors_ = false;
  TerminalState state_ = {};
};

class TopScreen : public TopOutput {
 public:
  TopScreen(const std::string& title, const TopOrder& order) : title_(title), order_(order) {}
  bool IsUsable() const { return terminal_.IsUsable(); }

  void Show(const std::deque<TopLogger>& loggers) override;
  bool WaitUntil(Clock::time_point time) override;

 private:
  bool TakeKeys();
  bool TakeKey(int key);
  void MoveColumn(std::size_t by);
  void Draw();
  void DrawLine(int y, const std::string& text, attr_t attributes) const;
  attr_t AttributesOf(TopLine::Kind kind) const;
  int Room() const { return std::max(::getmaxy(stdscr) - 2, 0); }  // between title and help

  Terminal terminal_;
  std::string title_;
  TopOrder order_;
  TopTable table_;
  bool isPaused_ = false;
  int firstLine_ = 0;  // of the table, on the screen
};

// Reading goes on during a pause, so nothing is lost by it.
void TopScreen::Show(const std::deque<TopLogger>& loggers) {
  if (!isPaused_) table_.Take(loggers);
  Draw();
}

bool TopScreen::WaitUntil(Clock::time_point time) {
  for (;;) {
    if (StopRequests() > 0 || !TakeKeys()) return false;
    if (Clock::now() >= time) return true;
    if (!WaitForInput(STDIN_FILENO, std::min(time, Clock::now() + glance))) return false;
  }
}

// False when one of them ends it all.
bool TopScreen::TakeKeys() {
  bool any = false;
  for (int key = ::getch(); key != ERR; key = ::getch()) {
    if (!TakeKey(key)) return false;
    any = true;
  }
  if (any) Draw();
  return true;
}

bool TopScreen::TakeKey(int key) {
  switch (key) {
    case 'q': return false;
    case 'p':
    case ' ': isPaused_ = !isPaused_; break;
    case 's':
    case KEY_RIGHT: MoveColumn(1); break;
    case 'S':
    case KEY_LEFT: MoveColumn(topColumnCount - 1); break;
    case 'r': order_.reversed = !order_.reversed; break;
    case KEY_DOWN: ++firstLine_; break;
    case KEY_UP: --firstLine_; break;
    case KEY_NPAGE: firstLine_ += Room(); break;
    case KEY_PPAGE: firstLine_ -= Room(); break;
    default: break;  // also a new size of the window: all is drawn anew
  }
  return true;
}

void TopScreen::MoveColumn(std::size_t by) {
  order_.column = static_cast<TopColumn>((static_cast<std::size_t>(order_.column) + by) % topColumnCount);
}

// From the top down: what is too long for its line goes on in the next one, and is overwritten there.
void TopScreen::Draw() {
  const std::vector<TopLine> lines = table_.Lines(order_);
  const int room = Room();
  firstLine_ = std::clamp(firstLine_, 0, std::max(static_cast<int>(lines.size()) - room, 0));
  DrawLine(0,
           fmt::format("{}   by {}{}{}", title_, TopColumnNames()[static_cast<std::size_t>(order_.column)],
                       order_.reversed ? ", reversed" : "", isPaused_ ? "   PAUSED" : ""),
           A_BOLD);
  int y = 1;
  for (int i = firstLine_; i < static_cast<int>(lines.size()) && y <= room; ++i, ++y)
    DrawLine(y, lines[static_cast<std::size_t>(i)].text,
             AttributesOf(lines[static_cast<std::size_t>(i)].kind));
  ::move(y, 0);
  ::clrtobot();
  if (room > 0) DrawLine(room + 1, help, A_DIM);
  ::refresh();
}

void TopScreen::DrawLine(int y, const std::string& text, attr_t attributes) const {
  ::move(y, 0);
  ::clrtoeol();
  ::attrset(static_cast<int>(attributes));
  ::addstr(text.c_str());
  ::attrset(A_NORMAL);
}

attr_t TopScreen::AttributesOf(TopLine::Kind kind) const {
  switch (kind) {
    case TopLine::Kind::logger: return A_BOLD;
    case TopLine::Kind::headings: return A_REVERSE;
    case TopLine::Kind::alert: return terminal_.HasColors() ? A_BOLD | COLOR_PAIR(alertPair) : A_BOLD;
    case TopLine::Kind::plain: break;
  }
  return A_NORMAL;
}

}  // namespace

std::unique_ptr<TopOutput> MakeTopScreen(const std::string& title, const TopOrder& order) {
  auto screen = std::make_unique<TopScreen>(title, order);
  if (!screen->IsUsable()) return nullptr;
  return screen;
}

}  // namespace cli
