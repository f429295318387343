#include "Console.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace qvx::console {

void Prepare() noexcept
{
    SetConsoleOutputCP(CP_UTF8);
}

bool StderrIsTerminal() noexcept
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

int StderrWidth() noexcept
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    bool const known = GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info) != 0;
    return known ? info.srWindow.Right - info.srWindow.Left + 1 : 80;
}

} // namespace qvx::console
