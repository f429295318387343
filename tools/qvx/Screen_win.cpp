// There is no ncurses here, and the table as text does what is needed.
#include "Screen.h"

#include "Failures.h"

namespace qvx {

Screen::Screen()
{
    throw MakeFailure(Failure::NoTerminal, u"there is no live table on Windows; use qvx top --once, or --json");
}

Screen::~Screen() = default;

int Screen::Columns() const noexcept
{
    return 0;
}

int Screen::Rows() const noexcept
{
    return 0;
}

void Screen::Show(std::vector<Line> const&)
{}

int Screen::Wait(std::chrono::milliseconds)
{
    return Quit;
}

} // namespace qvx
