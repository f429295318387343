// Hashing, ordering and streaming for the standard library, under <qvxsys/std.h>.

#include <qvxsys/std.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <string>

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/TCType.h>

namespace qvxsys::detail {
namespace {

// As many units as are compared, or folded and hashed, in one go.
constexpr std::size_t kBlock = 8;
constexpr std::size_t kHashed = 64;

constexpr auto kSame = [](char16_t c) noexcept { return c; };
constexpr auto kFolded = [](char16_t c) noexcept { return TCType::FoldCase(c); };

template<class Fold>
int OrderUnits(TStringView a, TStringView b, Fold fold) noexcept
{
    std::size_t const n = std::min(a.size(), b.size());
    char16_t const* const left = a.data();
    char16_t const* const right = b.data();
    for (std::size_t i = 0; i < n;) {
        if (n - i >= kBlock && std::memcmp(left + i, right + i, kBlock * sizeof(char16_t)) == 0) {
            i += kBlock;
            continue;
        }
        for (std::size_t const stop = std::min(n, i + kBlock); i < stop; ++i) {
            char16_t const l = fold(left[i]);
            char16_t const r = fold(right[i]);
            if (l != r) {
                return l < r ? -1 : 1;
            }
        }
    }
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

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
    return OrderUnits(a, b, kSame);
}

int OrderFolded(TStringView a, TStringView b) noexcept
{
    return OrderUnits(a, b, kFolded);
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
