// Conversions from UTF-16 and UTF-32: all instruction sets of this processor against each other and against ICU. The
// input is taken as UTF-16 and, in another run, as UTF-32; buffers have exactly the room the kernels may use, so that
// the address sanitizer sees what goes beyond.

#include "support/KernelSets.h"
#include "support/ReferenceEncode.h"

#include <unicode/ustring.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

using namespace qvxsys::test;
using qvxsys::text::Kernels;

void Require(bool holds)
{
    if (!holds)
        std::abort();
}

/// What a kernel wrote into a buffer of exactly `room` units, and the substitutions it counted.
template<class Unit, class Convert>
Converted<std::basic_string<Unit>> Run(std::size_t room, Convert convert)
{
    std::unique_ptr<Unit[]> const dst(new Unit[room]);
    Converted<std::basic_string<Unit>> result;
    std::size_t const length = convert(dst.get(), result.substitutions);
    Require(length <= room);
    result.text.assign(dst.get(), length);
    return result;
}

template<class Unit, class Convert>
void RequireOutput(Converted<std::basic_string<Unit>> const& expected, std::size_t room, Convert convert)
{
    auto const result = Run<Unit>(room, convert);
    Require(result.text == expected.text && result.substitutions == expected.substitutions);
}

/// The same through one of ICU's conversions.
template<class Unit, class Convert>
Converted<std::basic_string<Unit>> RunIcu(std::size_t room, Convert convert)
{
    return Run<Unit>(room + 1, [&](Unit* dst, std::size_t& substitutions) {
        int32_t length = 0;
        int32_t count = 0;
        UErrorCode error = U_ZERO_ERROR;
        convert(dst, static_cast<int32_t>(room + 1), &length, &count, &error);
        Require(U_SUCCESS(error));
        substitutions = static_cast<std::size_t>(count);
        return static_cast<std::size_t>(length);
    });
}

void CheckUtf16(char16_t const* src, std::size_t n)
{
    auto const count = static_cast<int32_t>(n);
    auto const bytes = RunIcu<char>(3 * n, [&](char* dst, int32_t room, int32_t* length, int32_t* subs, UErrorCode* e) {
        u_strToUTF8WithSub(dst, room, length, src, count, 0xFFFD, subs, e);
    });
    auto const points =
        RunIcu<char32_t>(n, [&](char32_t* dst, int32_t room, int32_t* length, int32_t* subs, UErrorCode* e) {
            u_strToUTF32WithSub(reinterpret_cast<UChar32*>(dst), room, length, src, count, 0xFFFD, subs, e);
        });
    Converted<std::u16string> copy = ReferenceUtf16(points.text, false);
    copy.substitutions = points.substitutions;
    char16_t const unit = n > 0 ? src[n / 2] : u'a';
    std::size_t found = 0;
    for (std::size_t i = 0; i < n; ++i)
        found += src[i] == unit ? 1 : 0;
    for (Kernels const* const set : kernel_sets::Available()) {
        Kernels const& k = *set;
        RequireOutput<char>(bytes, 3 * n, [&](char* dst, std::size_t& s) { return k.utf16ToUtf8(src, n, dst, s); });
        RequireOutput<char32_t>(points, n,
                                [&](char32_t* dst, std::size_t& s) { return k.utf16ToUtf32(src, n, dst, s); });
        RequireOutput<char16_t>(copy, n, [&](char16_t* dst, std::size_t& s) {
            k.copyWellFormed(src, n, dst, s);
            return n;
        });
        Require(k.utf8LengthOfUtf16(src, n) == bytes.text.size());
        Require(k.countCodePoints(src, n) == points.text.size());
        Require(k.countUnit(src, n, unit) == found);
    }
}

void CheckUtf32(char32_t const* src, std::size_t n)
{
    auto const strict =
        RunIcu<char16_t>(2 * n, [&](char16_t* dst, int32_t room, int32_t* length, int32_t* subs, UErrorCode* e) {
            auto const* const points = reinterpret_cast<UChar32 const*>(src);
            u_strFromUTF32WithSub(dst, room, length, points, static_cast<int32_t>(n), 0xFFFD, subs, e);
        });
    std::u32string_view const text(src, n);
    auto const raw = ReferenceUtf16(text, true);
    Converted<std::string> const bytes{ReferenceUtf8Raw(text)};
    for (Kernels const* const set : kernel_sets::Available()) {
        Kernels const& k = *set;
        RequireOutput<char16_t>(strict, 2 * n,
                                [&](char16_t* dst, std::size_t& s) { return k.utf32ToUtf16(src, n, dst, s); });
        RequireOutput<char16_t>(raw, 2 * n,
                                [&](char16_t* dst, std::size_t& s) { return k.utf32ToUtf16Raw(src, n, dst, s); });
        RequireOutput<char>(bytes, 4 * n, [&](char* dst, std::size_t&) { return k.utf32ToUtf8Raw(src, n, dst); });
    }
}

/// The input in memory of exactly its size, as text of `Unit`. Random bytes hold few surrogates and fewer values that
/// fit, so in a second run each unit is folded to one of the interesting ranges by its highest bits.
template<class Unit, class Fold>
void Check(std::uint8_t const* data, std::size_t size, Fold fold, void (*check)(Unit const*, std::size_t))
{
    std::size_t const n = size / sizeof(Unit);
    std::unique_ptr<Unit[]> const units(new Unit[n]);
    if (n > 0)
        std::memcpy(units.get(), data, n * sizeof(Unit));
    check(units.get(), n);
    for (std::size_t i = 0; i < n; ++i)
        units[i] = fold(units[i]);
    check(units.get(), n);
    // The first few repeated: blocks of one kind, which random texts never have.
    for (std::size_t i = 0, period = 1 + n % 5; i < n; ++i)
        units[i] = i == 0 ? units[0] : units[1 + (i - 1) % period];
    check(units.get(), n);
}

struct Range
{
    unsigned first;
    unsigned mask;
};

char16_t FoldUnit(char16_t u)
{
    static Range const ranges[] = {{0, 0x7F},       {0, 0x7F},       {0, 0x7FF},      {0x4000, 0x3FFF},
                                   {0xD800, 0x3FF}, {0xDC00, 0x3FF}, {0xD800, 0x7FF}, {0xE000, 0x1FFF}};
    return static_cast<char16_t>(ranges[u >> 13].first | (u & ranges[u >> 13].mask));
}

char32_t FoldPoint(char32_t c)
{
    static Range const ranges[] = {{0, 0x7F},     {0, 0x7FF},      {0, 0xFFFF},      {0, 0xFFFFF},
                                   {0, 0x1FFFFF}, {0xD800, 0x7FF}, {0x10FFF0, 0x1F}, {0, 0xFFFFFFFF}};
    return ranges[c >> 29].first | (c & ranges[c >> 29].mask);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Check<char16_t>(data, size, FoldUnit, CheckUtf16);
    Check<char32_t>(data, size, FoldPoint, CheckUtf32);
    return 0;
}
