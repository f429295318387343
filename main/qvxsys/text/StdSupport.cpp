// Hashing, ordering and streaming for the standard library, under <qvxsys/std.h>.

#include <qvxsys/std.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/TCType.h>

#include "UnitCompare.h"

namespace qvxsys::detail {
namespace {

[[gnu::noinline]] std::uint64_t FoldedOneByOne(std::uint64_t four) noexcept
{
    char16_t units[4];
    std::memcpy(units, &four, sizeof units);
    std::transform(units, units + 4, units, [](char16_t c) noexcept { return TCType::FoldCase(c); });
    std::memcpy(&four, units, sizeof units);
    return four;
}

// Four units, folded. ASCII, the usual case, by arithmetic on all four: a lane's bit 7 tells what is 'A' or above and
// what is above 'Z', and letters between get bit 5.
[[gnu::always_inline]] inline std::uint64_t Folded(std::uint64_t four) noexcept
{
    constexpr std::uint64_t kLanes = 0x0001000100010001;
    if ((four & 0xFF80 * kLanes) != 0) [[unlikely]] {
        return FoldedOneByOne(four);
    }
    std::uint64_t const letters = (four + (0x80 - 'A') * kLanes) & ~(four + (0x7F - 'Z') * kLanes) & 0x80 * kLanes;
    return four | letters >> 2;
}

} // namespace

std::size_t Hash(TStringView text) noexcept
{
    std::u16string_view const units = text;
    return std::hash<std::u16string_view>()(units.substr(0, units.find(u'\0')));
}

std::size_t HashFolded(TStringView text) noexcept
{
    // Odd, with about as many ones as zeros: the golden ratio.
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
    auto const mixed = [](std::uint64_t hash, std::uint64_t four) {
        hash = (hash ^ four) * kFactor;
        return hash ^ hash >> 32; // multiplying mixes upwards only
    };
    auto const at = [text](std::size_t i) {
        std::uint64_t four;
        std::memcpy(&four, text.data() + i, sizeof four);
        return Folded(four);
    };
    // Two chains of multiplications, neither of which waits for the other.
    std::uint64_t even = text.size();
    std::uint64_t odd = kFactor;
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        even = mixed(even, at(i));
        odd = mixed(odd, at(i + 4));
    }
    if (i + 4 <= text.size()) {
        even = mixed(even, at(i));
        i += 4;
    }
    std::uint64_t rest = 0;
    for (; i < text.size(); ++i) {
        rest = rest << 16 | text[i];
    }
    odd = mixed(odd, Folded(rest));
    return mixed(mixed(even, odd), 0);
}

int Order(TStringView a, TStringView b) noexcept
{
    return text::OrderUnits(a.data(), a.size(), b.data(), b.size(), false);
}

int OrderFolded(TStringView a, TStringView b) noexcept
{
    return text::OrderUnits(a.data(), a.size(), b.data(), b.size(), true);
}

void Write(std::ostream& out, TStringView text)
{
    std::string utf8 = StringUtils::toStdString(text);
    auto const width = out.width(0);
    if (width > 0) {
        auto const length = static_cast<std::streamsize>(text.lengthInCodePoints());
        auto const padding = static_cast<std::size_t>(std::max(width - length, std::streamsize{0}));
        bool const left = (out.flags() & std::ios_base::adjustfield) == std::ios_base::left;
        utf8.insert(left ? utf8.size() : 0, padding, out.fill());
    }
    out << utf8;
}

void WriteForTests(std::ostream& out, TStringView text)
{
    TStringCore shown;
    char32_t c = 0;
    for (int i = 0; i < text.length(); i += c < 0x10000 ? 1 : 2) {
        c = CodePointAt(text.data(), text.length(), i);
        char16_t const unit = text[static_cast<std::size_t>(i)];
        if (c != CharacterUtils::kReplacement && TCType::isPrint(c)) {
            shown.append32(c);
        } else {
            // A lone surrogate as the unit it is.
            shown.append(u"\\u{").append(TStringCore::number(c < 0x10000 ? unit : c, 16, 4, '0')).append(u'}');
        }
    }
    out << '"' << shown.toStdString() << "\" (" << text.size() << " units)";
}

} // namespace qvxsys::detail
