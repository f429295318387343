// Slices, trimmed and changed copies of strings and views.

#include <qvxsys/TTextReading.h>

#include <algorithm>
#include <bit>

#include <emmintrin.h>

#include <qvxsys/TStringCore.h>

#include "StringLimits.h"
#include "UnitSet.h"

namespace text = qvxsys::text;

namespace {

// The units of the first and of the last code point of a text that is not empty: 2 for a pair.
int FirstUnits(char16_t const* begin, char16_t const* end) noexcept
{
    return text::UnitSet::UnitsAt(begin, end);
}

int LastUnits(char16_t const* begin, char16_t const* end) noexcept
{
    return end - begin > 1 ? text::UnitSet::UnitsAt(end - 2, end) : 1;
}

constexpr unsigned kAllBlank = 0xFFFF;

// Two bits for each of eight units that is an ASCII blank: U+0020 and U+0009 to U+000D.
unsigned BlankBits(char16_t const* units) noexcept
{
    __m128i const c = _mm_loadu_si128(reinterpret_cast<__m128i const*>(units));
    __m128i const space = _mm_cmpeq_epi16(c, _mm_set1_epi16(0x20));
    // c - 9 as unsigned is at most 4: saturating subtraction leaves 0.
    __m128i const control =
        _mm_cmpeq_epi16(_mm_subs_epu16(_mm_sub_epi16(c, _mm_set1_epi16(9)), _mm_set1_epi16(4)), _mm_setzero_si128());
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(space, control)));
}

// What is dropped: whether one code point is, and how many units of a run at the front or at the back certainly are.
struct WhiteSpace
{
    static bool Drops(char16_t const* at, char16_t const* end) noexcept
    {
        char16_t const c = *at;
        if (c < 0x80) {
            return c == 0x20 || c - 9u < 5;
        }
        return TCType::isSpace32(qvxsys::detail::CodePointAt(at, static_cast<int>(end - at), 0));
    }
    static std::ptrdiff_t Front(char16_t const* begin, char16_t const* end) noexcept
    {
        char16_t const* at = begin;
        for (; end - at >= 8; at += 8) {
            unsigned const bits = BlankBits(at);
            if (bits != kAllBlank) {
                return at - begin + std::countr_one(bits) / 2;
            }
        }
        return at - begin;
    }
    static std::ptrdiff_t Back(char16_t const* begin, char16_t const* end) noexcept
    {
        char16_t const* at = end;
        for (; at - begin >= 8; at -= 8) {
            unsigned const bits = BlankBits(at - 8);
            if (bits != kAllBlank) {
                return end - at + std::countl_one(bits << 16) / 2;
            }
        }
        return end - at;
    }
};

struct InSet
{
    text::UnitSet set;
    bool Drops(char16_t const* at, char16_t const* end) const noexcept { return set.Match(at, end) != 0; }
    static std::ptrdiff_t Front(char16_t const*, char16_t const*) noexcept { return 0; }
    static std::ptrdiff_t Back(char16_t const*, char16_t const*) noexcept { return 0; }
};

template<class Drop>
TStringView TrimmedBy(TStringView view, bool left, bool right, Drop const& drop) noexcept
{
    char16_t const* begin = view.begin();
    char16_t const* end = view.end();
    while (left && begin != end) {
        int const units = FirstUnits(begin, end);
        if (!drop.Drops(begin, begin + units)) {
            break;
        }
        begin += units;
        begin += drop.Front(begin, end);
    }
    while (right && begin != end) {
        int const units = LastUnits(begin, end);
        if (!drop.Drops(end - units, end)) {
            break;
        }
        end -= units;
        end -= drop.Back(begin, end);
    }
    return {begin, static_cast<std::size_t>(end - begin)};
}

// A string of n units to be written; throws the overflow where no int holds n.
TStringCore Room(std::uint64_t n)
{
    TStringCore result;
    result.resize(text::CheckedUnits(n));
    return result;
}

} // namespace

namespace qvxsys::detail {

TStringView Trimmed(TStringView text, bool left, bool right) noexcept
{
    return TrimmedBy(text, left, right, WhiteSpace());
}

TStringView Trimmed(TStringView text, TStringView set, bool left, bool right) noexcept
{
    return TrimmedBy(text, left, right, InSet{text::UnitSet(set)});
}

int UnitsOfFirst(TStringView text, int codePoints) noexcept
{
    char16_t const* at = text.begin();
    for (; codePoints > 0 && at != text.end(); --codePoints) {
        at += FirstUnits(at, text.end());
    }
    return static_cast<int>(at - text.begin());
}

int UnitsOfLast(TStringView text, int codePoints) noexcept
{
    char16_t const* at = text.end();
    for (; codePoints > 0 && at != text.begin(); --codePoints) {
        at -= LastUnits(text.begin(), at);
    }
    return static_cast<int>(text.end() - at);
}

TStringCore Padded(TStringView text, int copies, UnitsOf fill, bool inFront)
{
    int const padding = copies > text::kMaxLength / fill.count ? -1 : copies * fill.count;
    TStringCore result = Room(padding < 0 ? ~std::uint64_t{0} : text.size() + static_cast<std::uint64_t>(padding));
    char16_t* const out = result.data();
    std::copy(text.begin(), text.end(), out + (inFront ? padding : 0));
    char16_t* const pad = out + (inFront ? 0 : text.length());
    for (int i = 0; i < padding; ++i) {
        pad[i] = fill.units[fill.count == 1 ? 0 : i % 2];
    }
    return result;
}

TStringCore Repeated(TStringView text, int n)
{
    std::size_t const length = text.size();
    TStringCore result = Room(n < 1 ? 0 : std::uint64_t{length} * static_cast<std::uint64_t>(n));
    if (!result.empty()) {
        // Doubles what is there.
        char16_t* const out = result.data();
        std::copy(text.begin(), text.end(), out);
        std::size_t const total = result.size();
        for (std::size_t done = length; done < total; done = std::min(2 * done, total)) {
            std::copy_n(out, std::min(done, total - done), out + done);
        }
    }
    return result;
}

TStringCore Reversed(TStringView text)
{
    TStringCore result(text);
    result.reverse();
    return result;
}

} // namespace qvxsys::detail

// ---- slices of strings

TStringCore TStringEditing::left(int n) const
{
    return n >= length() ? Self() : TStringCore(Self().view().left(n));
}

TStringCore TStringEditing::right(int n) const
{
    return n >= length() ? Self() : TStringCore(Self().view().right(n));
}

TStringCore TStringEditing::mid(int pos, int n) const
{
    if (pos < 0 || pos > length() || n == 0) {
        return {};
    }
    if (pos == 0) {
        return n < 0 ? Self() : left(n);
    }
    return TStringCore(n < 0 ? TStringView(constData() + pos) : Self().view().mid(pos, n));
}

TStringCore TStringEditing::mid(TConstCodePointIterator<TStringCore> const& first,
                                TConstCodePointIterator<TStringCore> const& last) const
{
    int const begin = Self().getInsertCodeUnitIndex(first);
    int const end = Self().getInsertCodeUnitIndex(last);
    return end > begin ? mid(begin, end - begin) : TStringCore();
}

TStringCore TStringEditing::mid(TConstCodePointIterator<TStringCore> const& first, int n) const
{
    int const begin = Self().getInsertCodeUnitIndex(first);
    if (n < 0) {
        return mid(begin, n);
    }
    TStringView const whole = Self().view();
    TStringView const part = whole.mid({-1, first.codeUnitIndex(), whole}, n);
    return mid(begin, part.length());
}
