#pragma once
// Reading the short texts by which a kernel tells of itself (/proc, /sys, control groups). Nothing here allocates, and
// no text can do harm: what is not as expected is passed over, what is too great for 64 bits counts as the greatest
// number, and a last line without its line feed, which has been cut off, does not count at all.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>

namespace qvxsys::system {

inline constexpr std::uint64_t kGreatest = std::numeric_limits<std::uint64_t>::max();

constexpr std::uint64_t SaturatedProduct(std::uint64_t a, std::uint64_t b) noexcept
{
    return b != 0 && a > kGreatest / b ? kGreatest : a * b;
}
constexpr std::uint64_t SaturatedSum(std::uint64_t a, std::uint64_t b) noexcept
{
    return a > kGreatest - b ? kGreatest : a + b;
}

/// A word of decimal digits and nothing else.
constexpr std::optional<std::uint64_t> ParseNumber(std::string_view word) noexcept
{
    std::uint64_t value = 0;
    for (char const c : word) {
        if (c < '0' || c > '9') {
            return std::nullopt;
        }
        value = SaturatedSum(SaturatedProduct(value, 10), static_cast<std::uint64_t>(c - '0'));
    }
    return word.empty() ? std::nullopt : std::optional(value);
}

/// Takes what stands before the first `end` from the text, and drops that; all when there is none.
constexpr std::string_view TakeUntil(std::string_view& text, char end) noexcept
{
    std::size_t const length = std::min(text.find(end), text.size());
    std::string_view const piece = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return piece;
}

/// Takes the next word from the text; words stand between blanks, tabs and line feeds. Empty when there is none.
constexpr std::string_view TakeWord(std::string_view& text) noexcept
{
    constexpr std::string_view kBlanks = " \t\n";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    std::size_t const length = std::min(text.find_first_of(kBlanks), text.size());
    std::string_view const word = text.substr(0, length);
    text.remove_prefix(length);
    return word;
}

/// A line "KEY NUMBER" or "KEY NUMBER kB": the number in bytes.
constexpr std::optional<std::uint64_t> ParseBytes(std::string_view line, std::string_view key) noexcept
{
    if (TakeWord(line) != key) {
        return std::nullopt;
    }
    std::optional<std::uint64_t> const number = ParseNumber(TakeWord(line));
    return number && TakeWord(line) == "kB" ? SaturatedProduct(*number, 1024) : number;
}

/// Calls visit(number) for each number of a list such as "0-3,8", as far as it is one; numbers end at 65,535.
template<class Visit>
constexpr void ForEachOfList(std::string_view list, Visit visit)
{
    constexpr std::uint64_t kMost = 65'535;
    while (!list.empty()) {
        std::string_view range = TakeUntil(list, ',');
        bool const isRange = range.find('-') != std::string_view::npos;
        std::optional<std::uint64_t> const first = ParseNumber(TakeUntil(range, '-'));
        std::optional<std::uint64_t> const last = isRange ? ParseNumber(range) : first;
        if (!first || !last) {
            return;
        }
        for (std::uint64_t number = *first; number <= std::min(*last, kMost); ++number) {
            visit(number);
        }
    }
}

/// The lines of a text that comes in pieces: `read(to, size)` gives how many bytes it has put there, 0 at the end.
/// Lines longer than the buffer are passed over.
template<class Read, std::size_t Size = 4096>
class LineReader
{
public:
    explicit LineReader(Read read) : m_read(read) {}

    /// The next line without its line feed, good until the next call.
    std::optional<std::string_view> Next()
    {
        for (;;) {
            std::string_view const rest(m_buffer + m_begin, m_end - m_begin);
            std::size_t const length = rest.find('\n');
            if (length != std::string_view::npos) {
                m_begin += length + 1;
                if (!m_tooLong) {
                    return rest.substr(0, length);
                }
                m_tooLong = false;
            } else if (!Fill()) {
                return std::nullopt;
            }
        }
    }

private:
    bool Fill()
    {
        std::memmove(m_buffer, m_buffer + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
        if (m_end == Size) {
            m_tooLong = true;
            m_end = 0;
        }
        std::size_t const length = m_read(m_buffer + m_end, Size - m_end);
        m_end += length;
        return length != 0;
    }

    Read m_read;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    bool m_tooLong = false;
    char m_buffer[Size];
};

/// A text of limited length in itself, for paths. What does not fit makes it bad: then it is "".
class PathText
{
public:
    static constexpr std::size_t kCapacity = 1024;

    PathText() noexcept { m_text[0] = 0; }
    explicit PathText(std::string_view text) noexcept : PathText() { Append(text); }
    PathText(PathText const& other) noexcept : PathText() { *this = other; }
    PathText& operator=(PathText const& other) noexcept
    {
        if (this != &other) {
            m_good = other.m_good;
            Cut(0);
            Append(other.View());
        }
        return *this;
    }

    PathText& Append(std::string_view text) noexcept
    {
        m_good = m_good && text.size() < kCapacity - m_length;
        if (m_good) {
            std::copy(text.begin(), text.end(), m_text + m_length);
        }
        m_length = m_good ? m_length + text.size() : 0;
        m_text[m_length] = 0;
        return *this;
    }
    /// Keeps the first `length` bytes, if there are so many.
    void Cut(std::size_t length) noexcept
    {
        m_length = std::min(m_length, length);
        m_text[m_length] = 0;
    }
    [[nodiscard]] std::string_view View() const noexcept { return {m_text, m_length}; }
    [[nodiscard]] char const* Terminated() const noexcept { return m_text; }

private:
    std::size_t m_length = 0;
    bool m_good = true;
    char m_text[kCapacity];
};

} // namespace qvxsys::system
