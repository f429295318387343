// Arbitrary bytes as what the kernel tells: lines in pieces against the whole text cut by hand, and every parser's
// promises.

#include "ControlGroup.h"
#include "Fuzz.h"
#include "KernelText.h"
#include "ProcessText.h"

namespace {

using namespace qvxsys::system;

constexpr std::size_t kBuffer = 64;

void CheckLine(std::string_view line)
{
    // A number is made of digits, and grows with them.
    std::string_view rest = line;
    std::string_view const word = TakeWord(rest);
    Require(word.size() + rest.size() <= line.size());
    bool const isDigits = !word.empty() && word.find_first_not_of("0123456789") == std::string_view::npos;
    auto const number = ParseNumber(word);
    Require(number.has_value() == isDigits);
    Require(!number || word.size() < 2 || *number >= *ParseNumber(word.substr(0, word.size() - 1)));
    std::uint64_t count = 0;
    ForEachOfList(line.substr(0, 16), [&](std::uint64_t each) { count += each <= 65'535 ? 1 : 1'000'000; });
    Require(count <= 16 * 65'536);

    ControlGroupMounts mounts;
    mounts.Take(line);
    bool unified = false;
    auto const path = ParseGroupLine(line, Controller::Memory, unified);
    Require(!path || (!path->empty() && line.ends_with(*path)));
    ControlGroupMount mount;
    mount.folder = PathText("/cg");
    mount.root = PathText(line.substr(0, line.size() / 2));
    Require(GroupFolder(mount, line).View().starts_with("/cg"));
}

} // namespace

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    std::string_view const text = Bytes(data, size);
    std::size_t at = 0;
    auto const read = [&](char* to, std::size_t room) {
        std::size_t const step = at < size ? data[at] % 40u + 1 : 0;
        std::size_t const length = text.substr(at).copy(to, std::min(room, step));
        at += length;
        return length;
    };
    LineReader<decltype(read), kBuffer> lines(read);
    for (std::string_view rest = text; rest.find('\n') != std::string_view::npos;) {
        std::string_view const expected = TakeUntil(rest, '\n');
        if (expected.size() < kBuffer) {
            auto const line = lines.Next();
            Require(line == expected);
            CheckLine(*line);
        }
    }
    Require(!lines.Next());
    auto const stat = qvxsys::monitor::ParseStat(text);
    Require(!stat || text.ends_with('\n'));
    auto const pages = qvxsys::monitor::ParsePrivatePages(text);
    Require(!pages || text.ends_with('\n'));
}
