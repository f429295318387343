#include <qvxsys/Symbols.h>

#include <iterator>
#include <utility>

#include "SymbolEngine.h"

namespace quorvex::symbols {
namespace {

using qvxsys::stack::Record;
using qvxsys::stack::SymbolEngine;

/// "0x" and sixteen digits.
class HexText
{
public:
    HexText(std::uint64_t value, char const* digits) noexcept
    {
        for (char* digit = std::end(m_text); value != 0; value >>= 4) {
            *--digit = digits[value & 0xF];
        }
    }
    operator std::string_view() const noexcept { return {m_text, sizeof(m_text)}; }

private:
    char m_text[18] = {'0', 'x', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0'};
};

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
    HexText const threadText(threadId, "0123456789abcdef");
    std::string_view const thread = config.includeThreadInfo != 0 ? threadText : std::string_view();
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
            HexText const address(reinterpret_cast<std::uintptr_t>(returnAddresses[i]), "0123456789ABCDEF");
            AddLine(lines, thread, " "sv, std::string_view(address), " "sv, names);
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
