// The conversion kernels on arbitrary bytes, units and code points, against ICU.

#include "Fuzz.h"
#include "support/KernelChecks.h"

namespace {

struct Range
{
    std::uint32_t first;
    std::uint32_t mask;
};

// Random bytes hold few surrogates and fewer values that fit, so each unit is folded to one of the interesting ranges
// by its highest bits.
constexpr Range kRanges16[] = {{0, 0x7F},       {0, 0x7F},       {0, 0x7FF},      {0x4000, 0x3FFF},
                               {0xD800, 0x3FF}, {0xDC00, 0x3FF}, {0xD800, 0x7FF}, {0xE000, 0x1FFF}};
constexpr Range kRanges32[] = {{0, 0x7F},     {0, 0x7FF},      {0, 0xFFFF},      {0, 0xFFFFF},
                               {0, 0x1FFFFF}, {0xD800, 0x7FF}, {0x10FFF0, 0x1F}, {0, 0xFFFFFFFF}};

template<class Unit>
void Check(KernelChecks const& checks, std::basic_string<Unit> units, Range const* ranges)
{
    checks.Check(units);
    for (Unit& unit : units) {
        Range const& range = ranges[unit >> (8 * sizeof(Unit) - 3)];
        unit = static_cast<Unit>(range.first | (unit & range.mask));
    }
    checks.Check(units);
    // The first few repeated: blocks of one kind, which random texts never have.
    for (std::size_t i = 1, period = 1 + units.size() % 5; i < units.size(); ++i) {
        units[i] = units[1 + (i - 1) % period];
    }
    checks.Check(units);
}

} // namespace

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    static KernelChecks const& checks = *new KernelChecks;
    checks.Check(Bytes(data, size));
    Check(checks, Units<char16_t>(data, size), kRanges16);
    Check(checks, Units<char32_t>(data, size), kRanges32);
}
