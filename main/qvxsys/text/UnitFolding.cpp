#include "UnitFolding.h"

#include <algorithm>
#include <array>

#include <qvxsys/QvxICU.h>

namespace qvxsys::text {
namespace {

// The classes as rings: next[c] ^ c is the next unit of c's class. Most units are alone in theirs and have a 0, so that
// most of the table is pages that are never written.
constinit std::array<char16_t, 0x10000> s_ring = {};

char16_t NextInRing(char16_t c) noexcept
{
    return static_cast<char16_t>(s_ring[c] ^ c);
}

// Every unit that does not fold to itself is put into the ring of the one that it folds to. That works in any order,
// since what a unit folds to folds to itself.
bool FillRings() noexcept
{
    for (unsigned unit = 0; unit < s_ring.size(); ++unit) {
        auto const c = static_cast<char16_t>(unit);
        auto const folded = static_cast<char16_t>(QvxICU::t_u_foldCase(c, 0));
        if (folded != c) {
            char16_t const next = NextInRing(folded);
            s_ring[folded] = static_cast<char16_t>(folded ^ c);
            s_ring[c] = static_cast<char16_t>(c ^ next);
        }
    }
    return true;
}

} // namespace

unsigned CasesOf(char16_t c, char16_t (&units)[kMostCases]) noexcept
{
    static bool const filled = FillRings();
    static_cast<void>(filled);
    std::fill_n(units, kMostCases, c);
    unsigned count = 1;
    for (char16_t next = NextInRing(c); next != c; next = NextInRing(next)) {
        if (count == kMostCases) {
            return 0;
        }
        units[count++] = next;
    }
    return count;
}

} // namespace qvxsys::text
