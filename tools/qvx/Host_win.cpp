#include "Host.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <streambuf>
#include <utility>

#include <qvxsys/TStringCore.h>
#include <qvxsys/TTextDecoder.h>

#include "WindowsApi.h"

// The C run-time expands * and ? in arguments, as users of this system expect: its shells leave that to programs.
extern "C" int _dowildcard;
int _dowildcard = -1;

namespace qvx::host {
namespace {

// Takes UTF-8 and writes UTF-16 to a console, so that the console's code page does not matter.
class ConsoleBuffer : public std::streambuf
{
public:
    explicit ConsoleBuffer(HANDLE console) : m_console(console) {}

protected:
    int_type overflow(int_type c) override
    {
        if (c != traits_type::eof()) {
            m_pending += static_cast<char>(c);
        }
        return m_pending.size() < kPiece || sync() == 0 ? traits_type::not_eof(c) : traits_type::eof();
    }

    std::streamsize xsputn(char const* text, std::streamsize n) override
    {
        m_pending.append(text, static_cast<std::size_t>(n));
        return m_pending.size() < kPiece || sync() == 0 ? n : 0;
    }

    // A sequence that is not complete yet stays in the decoder.
    int sync() override
    {
        TStringView rest = m_decoder.Decode(m_pending.data(), m_pending.size(), false);
        m_pending.clear();
        while (!rest.empty()) {
            TStringView const piece = Piece(rest);
            DWORD written = 0;
            if (WriteConsoleW(m_console, piece.data(), static_cast<DWORD>(piece.size()), &written, nullptr) == 0 ||
                written == 0) {
                return -1;
            }
            rest = rest.mid(static_cast<int>(written));
        }
        return 0;
    }

private:
    static constexpr int kPiece = 8192; // what every console takes at once

    // A pair must not be written in halves.
    static TStringView Piece(TStringView text)
    {
        TStringView const piece = text.left(kPiece);
        bool const splits = piece.size() < text.size() && CharacterUtils::IsHighSurrogate(piece[piece.size() - 1]);
        return splits ? piece.left(kPiece - 1) : piece;
    }

    HANDLE m_console;
    std::string m_pending;
    TTextDecoder m_decoder{"UTF-8"};
};

bool IsConsole(HANDLE handle) noexcept
{
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;
}

void WriteTo(std::ostream& stream, DWORD which)
{
    HANDLE const handle = GetStdHandle(which);
    if (IsConsole(handle)) {
        // Lives as long as the stream, which is flushed after everything else.
        stream.rdbuf(std::make_unique<ConsoleBuffer>(handle).release());
    }
}

// The path in the form that has no limit of length: absolute, with a prefix.
std::filesystem::path Extended(std::filesystem::path const& path, std::error_code& error)
{
    std::filesystem::path absolute = std::filesystem::absolute(path, error).make_preferred();
    std::wstring const& name = absolute.native();
    if (name.starts_with(LR"(\\?\)") || name.starts_with(LR"(\\.\)")) {
        return absolute;
    }
    return name.starts_with(LR"(\\)") ? LR"(\\?\UNC)" + name.substr(1)
                                      : LR"(\\?\)" + absolute.lexically_normal().native();
}

// Puts surrogates above all other units, as code points of two units are above those of one.
constexpr unsigned Rank(wchar_t unit) noexcept
{
    return unit >= 0xE000 ? unit - 0x800u : unit >= 0xD800 ? unit + 0x2000u : unit;
}

} // namespace

void Prepare()
{
    WriteTo(std::cout, STD_OUTPUT_HANDLE);
    WriteTo(std::cerr, STD_ERROR_HANDLE);
}

// The system calls the handler on a thread that it makes for that.
void OnInterrupt(std::function<void()> function)
{
    // Never destroyed: the handler may run at any time.
    static std::function<void()> const& onInterrupt = *new std::function<void()>(std::move(function));
    static std::atomic<bool> asked = false;
    SetConsoleCtrlHandler(
        [](DWORD event) -> BOOL {
            if ((event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) || asked.exchange(true)) {
                return FALSE;
            }
            onInterrupt();
            return TRUE;
        },
        TRUE);
}

bool StderrIsTerminal() noexcept
{
    return IsConsole(GetStdHandle(STD_ERROR_HANDLE));
}

bool StdoutHasColours() noexcept
{
    HANDLE const console = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    wchar_t const* const refused = _wgetenv(L"NO_COLOR");
    return GetConsoleMode(console, &mode) != 0 && (refused == nullptr || *refused == 0) &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

int StderrWidth() noexcept
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    bool const known = GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info) != 0;
    return known ? info.srWindow.Right - info.srWindow.Left + 1 : 80;
}

bool IsInteractive() noexcept
{
    return IsConsole(GetStdHandle(STD_INPUT_HANDLE)) && IsConsole(GetStdHandle(STD_OUTPUT_HANDLE));
}

std::FILE* OpenToAppend(std::filesystem::path const& path) noexcept
{
    return _wfopen(path.c_str(), L"abN");
}

std::filesystem::path PathOf(std::string const& argument)
{
    TStringCore const text = TStringCore::fromStdString(argument);
    std::filesystem::path path = std::wstring(static_cast<wchar_t const*>(text), text.size());
    return path.make_preferred();
}

// Not by std::filesystem, whose iterator takes a folder with a path of more than 260 characters for another one.
std::vector<Entry> EntriesOf(std::filesystem::path const& folder, std::function<bool()> const& goesOn,
                             std::error_code& error)
{
    constexpr DWORD kNotAFile = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
    std::vector<Entry> entries;
    WIN32_FIND_DATAW entry{};
    HANDLE const search = FindFirstFileExW((Extended(folder, error) / L"*").c_str(), FindExInfoBasic, &entry,
                                           FindExSearchNameMatch, nullptr, 0);
    DWORD status = search != INVALID_HANDLE_VALUE ? ERROR_SUCCESS : GetLastError();
    while (status == ERROR_SUCCESS && goesOn()) {
        std::wstring_view const name = entry.cFileName;
        if (name != L"." && name != L"..") {
            entries.push_back({folder / name, (entry.dwFileAttributes & kNotAFile) == 0});
        }
        status = FindNextFileW(search, &entry) != 0 ? ERROR_SUCCESS : GetLastError();
    }
    if (search != INVALID_HANDLE_VALUE) {
        FindClose(search);
    }
    error.clear();
    if (status != ERROR_NO_MORE_FILES && status != ERROR_FILE_NOT_FOUND) { // the latter: an empty drive
        error.assign(static_cast<int>(status), std::system_category());
    }
    return entries;
}

// Junctions and mounted folders stand for another folder as symbolic links do; other reparse points, as those of files
// kept elsewhere, are what they look like.
bool IsLink(std::filesystem::path const& path) noexcept
{
    WIN32_FIND_DATAW entry{};
    HANDLE const search = FindFirstFileW(path.c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return false;
    }
    FindClose(search);
    DWORD const tag = entry.dwReserved0; // 0 is none: Wine does not tell it
    bool const isSurrogate = tag == 0 || IsReparseTagNameSurrogate(tag) != 0;
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && isSurrogate;
}

std::string PathBytes(std::filesystem::path const& path)
{
    std::string name = TStringCore(path.c_str()).toStdString();
    std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

bool ComesBefore(std::filesystem::path const& a, std::filesystem::path const& b) noexcept
{
    return std::ranges::lexicographical_compare(a.native(), b.native(), {}, Rank, Rank);
}

} // namespace qvx::host

int wmain(int argc, wchar_t** argv)
{
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.push_back(TStringCore(argv[i]).toStdString());
    }
    return qvx::Main(arguments);
}
