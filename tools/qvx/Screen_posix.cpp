#include "Screen.h"

#include <algorithm>
#include <clocale>
#include <csignal>
#include <string>

#define NCURSES_WIDECHAR 1
#include <ncurses.h>

#include <qvxsys/CodePointView.h>

#include "Failures.h"
#include "Host.h"

namespace qvx {
namespace {

constexpr int kControlC = 3;
constexpr int kControlZ = 26;

SCREEN* g_screen = nullptr; // there is one terminal

std::wstring Wide(TStringCore const& text)
{
    std::wstring wide;
    for (char32_t const c : TStringView(text).codePoints()) {
        wide += static_cast<wchar_t>(c);
    }
    return wide;
}

int AttributesOf(Screen::Style style)
{
    switch (style) {
    case Screen::Style::Heading:
        return static_cast<int>(A_REVERSE);
    case Screen::Style::Warning:
        return static_cast<int>(A_BOLD);
    case Screen::Style::Plain:
        break;
    }
    return static_cast<int>(A_NORMAL);
}

} // namespace

Screen::Screen()
{
    // The encoding of the terminal only: numbers stay as they are.
    char const* const locale = std::setlocale(LC_CTYPE, "");
    if (locale == nullptr || MB_CUR_MAX == 1) {
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
    g_screen = host::IsInteractive() ? newterm(nullptr, stdout, stdin) : nullptr; // initscr would end the program
    if (g_screen == nullptr) {
        throw MakeFailure(Failure::NoTerminal, u"this needs a terminal; try qvx top --once, or --json");
    }
    raw();
    noecho();
    nonl();
    keypad(stdscr, TRUE);
    set_escdelay(25);
    curs_set(0);
}

Screen::~Screen()
{
    endwin();
    delscreen(g_screen);
}

int Screen::Columns() const noexcept
{
    return COLS;
}

int Screen::Rows() const noexcept
{
    return LINES;
}

void Screen::Show(std::vector<Line> const& lines)
{
    erase();
    for (int row = 0; row < std::min(Rows(), static_cast<int>(lines.size())); ++row) {
        Line const& line = lines[static_cast<std::size_t>(row)];
        attrset(AttributesOf(line.style));
        mvaddwstr(row, 0, Wide(line.text).c_str());
        attrset(static_cast<int>(A_NORMAL));
    }
    refresh();
}

int Screen::Wait(std::chrono::milliseconds timeout)
{
    auto const until = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        wtimeout(stdscr, static_cast<int>(std::max<long long>(left.count(), 0)));
        switch (int const key = getch()) {
        case KEY_LEFT:
            return Left;
        case KEY_RIGHT:
            return Right;
        case KEY_UP:
            return Up;
        case KEY_DOWN:
            return Down;
        case KEY_RESIZE:
            return Resized;
        case kControlC:
            return Quit;
        case kControlZ:
            raise(SIGTSTP); // ncurses leaves the screen and comes back to it
            return Resized;
        case ERR:
            if (std::chrono::steady_clock::now() >= until) {
                return None;
            }
            if (left.count() > 0 && !host::IsInteractive()) { // returned at once: nobody is there any more
                return Quit;
            }
            break;
        default:
            return key;
        }
    }
}

} // namespace qvx
