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

bool IsBlank(char16_t c) noexcept
{
    return c < 0x80 ? c == 0x20 || c - 9u < 5 : TCType::isSpace(c);
}

// The ends of a text without its white space. All white space is in the basic plane, so units serve. Most of it is
// ASCII, which vectors skip.
char16_t const* FirstOtherThanBlank(char16_t const* begin, char16_t const* end) noexcept
{
    for (;; ++begin) {
        for (; end - begin >= 8; begin += 8) {
            if (unsigned const bits = BlankBits(begin); bits != kAllBlank) {
                begin += std::countr_one(bits) / 2;
                break;
            }
        }
        if (begin == end || !IsBlank(*begin)) {
            return begin;
        }
    }
}

char16_t const* EndOfOtherThanBlank(char16_t const* begin, char16_t const* end) noexcept
{
    for (;; --end) {
        for (; end - begin >= 8; end -= 8) {
            if (unsigned const bits = BlankBits(end - 8); bits != kAllBlank) {
                end -= std::countl_one(bits << 16) / 2;
                break;
            }
        }
        if (begin == end || !IsBlank(end[-1])) {
            return end;
        }
    }
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
    char16_t const* const begin = left ? FirstOtherThanBlank(text.begin(), text.end()) : text.begin();
    char16_t const* const end = right ? EndOfOtherThanBlank(begin, text.end()) : text.end();
    return {begin, static_cast<std::size_t>(end - begin)};
}

TStringView Trimmed(TStringView text, TStringView set, bool left, bool right) noexcept
{
    text::UnitSet const members(set);
    char16_t const* begin = text.begin();
    char16_t const* end = text.end();
    while (left && begin != end && members.Match(begin, end) != 0) {
        begin += FirstUnits(begin, end);
    }
    while (right && begin != end) {
        int const units = LastUnits(begin, end);
        if (members.Match(end - units, end) == 0) {
            break;
        }
        end -= units;
    }
    return {begin, static_cast<std::size_t>(end - begin)};
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
