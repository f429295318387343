// The conversion kernels on arbitrary bytes, units and code points, against ICU.

#include "support/KernelChecks.h"

#include <cstdint>
#include <cstring>

namespace {

struct Range
{
    unsigned first;
    unsigned mask;
};

// Random bytes hold few surrogates and fewer values that fit, so each unit is folded to one of the interesting ranges
// by its highest bits.
char16_t Fold(char16_t u)
{
    static Range const ranges[] = {{0, 0x7F},       {0, 0x7F},       {0, 0x7FF},      {0x4000, 0x3FFF},
                                   {0xD800, 0x3FF}, {0xDC00, 0x3FF}, {0xD800, 0x7FF}, {0xE000, 0x1FFF}};
    return static_cast<char16_t>(ranges[u >> 13].first | (u & ranges[u >> 13].mask));
}

char32_t Fold(char32_t c)
{
    static Range const ranges[] = {{0, 0x7F},     {0, 0x7FF},      {0, 0xFFFF},      {0, 0xFFFFF},
                                   {0, 0x1FFFFF}, {0xD800, 0x7FF}, {0x10FFF0, 0x1F}, {0, 0xFFFFFFFF}};
    return ranges[c >> 29].first | (c & ranges[c >> 29].mask);
}

template<class Unit>
void Check(KernelChecks const& checks, std::uint8_t const* data, std::size_t size)
{
    std::basic_string<Unit> units(size / sizeof(Unit), Unit{});
    std::memcpy(units.data(), data, units.size() * sizeof(Unit));
    checks.Check(units);
    for (Unit& unit : units) {
        unit = Fold(unit);
    }
    checks.Check(units);
    // The first few repeated: blocks of one kind, which random texts never have.
    for (std::size_t i = 1, period = 1 + units.size() % 5; i < units.size(); ++i) {
        units[i] = units[1 + (i - 1) % period];
    }
    checks.Check(units);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static KernelChecks const& checks = *new KernelChecks;
    checks.Check(std::string(reinterpret_cast<char const*>(data), size));
    Check<char16_t>(checks, data, size);
    Check<char32_t>(checks, data, size);
    return 0;
}
