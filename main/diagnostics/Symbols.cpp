#include <qvxsys/Symbols.h>

#include <charconv>
#include <utility>

#include "SymbolEngine.h"

namespace quorvex::symbols {
namespace {

using qvxsys::stack::Record;
using qvxsys::stack::SymbolEngine;

/// "0x" and 16 digits.
std::string ThreadText(std::uint64_t threadId)
{
    std::string text = "0x0000000000000000";
    for (auto digit = text.end(); threadId != 0; threadId >>= 4) {
        *--digit = "0123456789abcdef"[threadId & 0xF];
    }
    return text;
}

/// As the C++ library's streams print pointers; twice as fast as a stream.
std::string_view AddressText(void const* address, char (&buffer)[32]) noexcept
{
    buffer[0] = '0';
    buffer[1] = 'x';
    auto const value = reinterpret_cast<std::uintptr_t>(address);
    char const* const end = std::to_chars(buffer + 2, std::end(buffer), value, 16).ptr;
    return value == 0 ? std::string_view(buffer, 1) : std::string_view(buffer, static_cast<std::size_t>(end - buffer));
}

/// A line's pieces, joined.
template<class... Piece>
void AddLine(std::list<std::string>& lines, Piece const&... pieces)
{
    std::string& line = lines.emplace_back();
    line.reserve((pieces.size() + ...));
    (line.append(pieces), ...);
}

} // namespace

Frame::Frame() noexcept = default;
Frame::Frame(void const* address, std::shared_ptr<qvxsys::detail::SymbolRecord const> record) noexcept
    : m_address(address), m_record(std::move(record))
{}
Frame::Frame(Frame const&) noexcept = default;
Frame::Frame(Frame&&) noexcept = default;
Frame& Frame::operator=(Frame const&) noexcept = default;
Frame& Frame::operator=(Frame&&) noexcept = default;
Frame::~Frame() = default;

std::string_view Frame::Symbol() const noexcept
{
    return m_record && m_record->hasSymbol ? std::string_view(m_record->text).substr(m_record->moduleEnd + 1)
                                           : std::string_view();
}

std::string_view Frame::File() const noexcept
{
    return m_record && m_record->fileEnd != 0 ? std::string_view(m_record->text).substr(1, m_record->fileEnd - 1)
                                              : std::string_view();
}

int Frame::Line() const noexcept
{
    return m_record ? m_record->line : -1;
}

std::string_view Frame::Module() const noexcept
{
    return m_record && m_record->hasModule
               ? std::string_view(m_record->text).substr(m_record->lineEnd, m_record->moduleEnd - m_record->lineEnd)
               : std::string_view();
}

std::vector<Frame> Resolve(std::span<void* const> returnAddresses, Detail detail)
{
    std::vector<Frame> frames;
    frames.reserve(returnAddresses.size());
    SymbolEngine::Get().ForEach(
        returnAddresses, 1, detail == Detail::NamesAndLines,
        [&](std::size_t i, Record const& record) { frames.emplace_back(returnAddresses[i], record); });
    return frames;
}

Frame ResolveAddress(void const* address, Detail detail)
{
    Frame frame;
    void* const one[] = {const_cast<void*>(address)};
    SymbolEngine::Get().ForEach(one, 0, detail == Detail::NamesAndLines,
                                [&](std::size_t, Record const& record) { frame = Frame(address, record); });
    return frame;
}

std::list<std::string> Format(std::span<void* const> returnAddresses, StackWalkerConfig const& config,
                              std::uint64_t threadId)
{
    std::list<std::string> lines;
    bool const withFile = config.includeFileName != 0;
    bool const withLine = config.includeFileLineNumber != 0;
    std::string const thread = config.includeThreadInfo != 0 ? ThreadText(threadId) : std::string();
    SymbolEngine::Get().ForEach(returnAddresses, 1, withFile || withLine, [&](std::size_t i, Record const& record) {
        std::string_view const text = record->text;
        auto const names = text.substr(record->lineEnd);
        if (record->fileEnd != 0 && (withFile || withLine)) {
            if (!record->isOwnMachinery) {
                std::size_t const begin = withFile ? 0 : record->fileEnd;
                AddLine(lines, thread, text.substr(begin, (withLine ? record->lineEnd : record->fileEnd) - begin),
                        names);
            }
        } else if (config.includeSystemMemoryAddresses != 0) {
            using namespace std::string_view_literals;
            char buffer[32];
            AddLine(lines, thread, " 0x"sv, AddressText(returnAddresses[i], buffer), " "sv, names);
        } else {
            AddLine(lines, thread, names);
        }
    });
    return lines;
}

std::vector<LoadedModule> LoadedModules()
{
    return SymbolEngine::Get().Modules();
}

void SetSearchPath(std::string path)
{
    SymbolEngine::Get().SetSearchPath(std::move(path));
}

std::string GetSearchPath()
{
    return SymbolEngine::Get().GetSearchPath();
}

void SetCacheLimit(std::size_t bytes)
{
    SymbolEngine::Get().SetCacheLimit(bytes);
}

CacheUse GetCacheUse()
{
    return SymbolEngine::Get().CacheUse();
}

void ClearCache()
{
    SymbolEngine::Get().Forget();
}

} // namespace quorvex::symbols
