// Hashing, ordering and streaming for the standard library, under <qvxsys/std.h>.

#include <qvxsys/std.h>

#include <algorithm>
#include <ostream>
#include <string>

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/TCType.h>

#include "UnitCompare.h"

namespace qvxsys::detail {
namespace {

// As many units as are folded and hashed in one go.
constexpr std::size_t kHashed = 64;

constexpr auto kFolded = [](char16_t c) noexcept { return TCType::FoldCase(c); };

} // namespace

std::size_t Hash(TStringView text) noexcept
{
    std::u16string_view const units = text;
    return std::hash<std::u16string_view>()(units.substr(0, units.find(u'\0')));
}

std::size_t HashFolded(TStringView text) noexcept
{
    std::u16string_view const units = text;
    std::size_t hash = 0;
    for (std::size_t i = 0; i < units.size(); i += kHashed) {
        char16_t folded[kHashed];
        std::u16string_view const some = units.substr(i, kHashed);
        std::transform(some.begin(), some.end(), folded, kFolded);
        // The odd factor keeps the order of the pieces in the result.
        hash = hash * 0x9E3779B97F4A7C15u + std::hash<std::u16string_view>()({folded, some.size()});
    }
    return hash;
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
