// Comparison, search, sets and the search table on arbitrary units.

#include "Fuzz.h"
#include "support/SearchChecks.h"

// The units that bytes stand for when matches are to be frequent: several letters each with all their cases, and
// others.
constexpr char16_t kFrequent[16] = {u'a',      u'A',      u'b',      u'k',      u'K',  u'\u212A', u's', u'\u017F',
                                    u'\u0434', u'\u0414', u'\u03B8', u'\u03F4', u'\0', u'\xD83D', u' ', u'\xFFFF'};

// The first byte: folded or not, and whether the rest are units as they are or choose from the frequent ones; the
// second: how many units the needle has; then needle and text.
void Fuzz(std::uint8_t const* data, std::size_t size)
{
    if (size < 4) {
        return;
    }
    bool const folded = (data[0] & 1) != 0;
    std::u16string units;
    if ((data[0] & 2) != 0) {
        units = Units<char16_t>(data + 2, size - 2);
    } else {
        for (std::size_t i = 2; i < size; ++i) {
            units += kFrequent[data[i] & (data[0] >> 4)];
        }
    }
    static SearchChecks const& checks = *new SearchChecks;
    std::size_t const n = 1 + data[1] % units.size();
    reference::Text const all = units;
    checks.Compare(all.substr(0, n), all.substr(n));
    checks.Compare(all.substr(n), all.substr(n / 2));
    checks.Search(all.substr(n), all.substr(0, n), folded, [](std::size_t length) { return length - 1; });
    checks.Sets(all.substr(n), all.substr(0, n));
}
