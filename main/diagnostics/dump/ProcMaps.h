#pragma once
// Reading /proc/PID/maps, whose file names are chosen by whoever mapped them.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qvxsys::dump {

struct Mapping
{
    std::uint64_t start;
    std::uint64_t end;
    std::uint64_t offset; ///< in the file
    std::uint64_t inode;  ///< 0: no file
    bool readable;
    bool writable;
    bool executable;
    bool shared;
    std::string_view name; ///< as it stands in the text: line feeds as \012, " (deleted)" behind a removed file's

    bool operator==(Mapping const&) const noexcept = default;
    [[nodiscard]] std::uint64_t Size() const noexcept { return end - start; }
    [[nodiscard]] bool IsFile() const noexcept { return !name.empty() && name.front() == '/'; }
};

/// Reads one line, without its line feed. False when it is none: numbers missing or too large, an end not above the
/// start.
bool ParseMapping(std::string_view line, Mapping& mapping) noexcept;

/// Calls `each` with every mapping of the text; lines that are none are passed over.
template<class Each>
void ForEachMapping(std::string_view text, Each const& each)
{
    while (!text.empty()) {
        std::size_t const end = text.find('\n');
        Mapping mapping;
        if (ParseMapping(text.substr(0, end), mapping)) {
            each(mapping);
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

/// The file's name as it was when it was mapped: without " (deleted)", escapes undone. Writes at most `capacity`
/// bytes; how many.
std::size_t FileNameOf(Mapping const& mapping, char* name, std::size_t capacity) noexcept;

} // namespace qvxsys::dump
