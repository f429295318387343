#pragma once
// A whole terminal to draw on, and its keys. One source file for each system; that for POSIX is the only one that knows
// of ncurses.

#include <chrono>
#include <vector>

#include <qvxsys/TStringCore.h>

namespace qvx {

class Screen
{
public:
    enum class Style : unsigned char { Plain, Heading, Warning };
    struct Line
    {
        TStringCore text; ///< not wider than the screen
        Style style = Style::Plain;
    };
    /// Keys that are no characters.
    enum Key : int { None = -1, Left = -2, Right = -3, Up = -4, Down = -5, Resized = -6, Quit = -7 };

    /// Throws Failure::NoTerminal when stdin and stdout are no terminal that can be drawn on.
    Screen();
    /// Leaves the terminal as it was.
    ~Screen();
    Screen(Screen const&) = delete;
    Screen& operator=(Screen const&) = delete;

    [[nodiscard]] int Columns() const noexcept;
    [[nodiscard]] int Rows() const noexcept;
    /// Draws the lines from the top, as many as there is room for.
    void Show(std::vector<Line> const& lines);
    /// Waits for a key: a character, or one of Key. None when the time is over, Quit for Ctrl-C and when the terminal
    /// is gone.
    [[nodiscard]] int Wait(std::chrono::milliseconds timeout);
};

} // namespace qvx
