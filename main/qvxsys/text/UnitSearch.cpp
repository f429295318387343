#include "UnitSearch.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string_view>

#include <qvxsys/TCType.h>

namespace qvxsys::text {
namespace {

// Up to this many needle units the failure table needs no allocation.
constexpr std::size_t kSmallNeedle = 64;

// Knuth, Morris and Pratt (SIAM J. Comput. 6, 1977) over the units that `at` yields: failure[i] is the length of the
// longest proper border of needle[0..i].
template<class At, class NeedleAt>
std::size_t FindByBorders(std::size_t length, At at, std::size_t n, NeedleAt needleAt)
{
    std::size_t small[kSmallNeedle];
    std::unique_ptr<std::size_t[]> const large(n > kSmallNeedle ? new std::size_t[n] : nullptr);
    std::size_t* const border = large != nullptr ? large.get() : small;
    border[0] = 0;
    for (std::size_t i = 1, k = 0; i < n; ++i) {
        while (k != 0 && needleAt(i) != needleAt(k)) {
            k = border[k - 1];
        }
        k += needleAt(i) == needleAt(k) ? 1u : 0u;
        border[i] = k;
    }
    for (std::size_t i = 0, k = 0; i < length; ++i) {
        char16_t const c = at(i);
        while (k != 0 && c != needleAt(k)) {
            k = border[k - 1];
        }
        k += c == needleAt(k) ? 1u : 0u;
        if (k == n) {
            return i + 1 - n;
        }
    }
    return kNotFound;
}

auto Exactly(char16_t const* s)
{
    return [s](std::size_t i) { return s[i]; };
}

auto Folded(char16_t const* s)
{
    return [s](std::size_t i) { return TCType::FoldCase(s[i]); };
}

auto Backwards(std::size_t length, auto at)
{
    return [=](std::size_t i) { return at(length - 1 - i); };
}

} // namespace

std::size_t FindFirst(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n, bool folded)
{
    if (n > length) {
        return kNotFound;
    }
    if (n == 1 && !folded) {
        std::size_t const at = std::u16string_view(text, length).find(*needle);
        return at == std::u16string_view::npos ? kNotFound : at;
    }
    return folded ? FindByBorders(length, Folded(text), n, Folded(needle))
                  : FindByBorders(length, Exactly(text), n, Exactly(needle));
}

std::size_t FindLast(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n, bool folded)
{
    if (n > length) {
        return kNotFound;
    }
    std::size_t const fromEnd =
        folded ? FindByBorders(length, Backwards(length, Folded(text)), n, Backwards(n, Folded(needle)))
               : FindByBorders(length, Backwards(length, Exactly(text)), n, Backwards(n, Exactly(needle)));
    return fromEnd == kNotFound ? kNotFound : length - fromEnd - n;
}

} // namespace qvxsys::text
