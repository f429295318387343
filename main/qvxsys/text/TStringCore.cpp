// Making, assigning and appending.

#include <qvxsys/TStringCore.h>

#include <algorithm>
#include <utility>

#include <emmintrin.h>

#include "Stretch.h"
#include "StringLimits.h"
#include "TextErrors.h"
#include "kernels/Kernels.h"

namespace text = qvxsys::text;
using text::Bytes;
using text::CopyUnits;
using text::kMaxLength;

namespace {

template<class Word>
Word LoadWord(char const* from) noexcept
{
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

void StoreWide(char16_t* to, __m128i bytes) noexcept
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
}

// Widens up to 14 bytes by two possibly overlapping moves when all of them are ASCII; else does nothing.
bool WidenShortAscii(char16_t* to, char const* from, std::size_t n) noexcept
{
    if (n >= 8) {
        auto const first = LoadWord<std::uint64_t>(from);
        auto const last = LoadWord<std::uint64_t>(from + n - 8);
        if (((first | last) & 0x8080808080808080u) != 0) {
            return false;
        }
        StoreWide(to, _mm_cvtsi64_si128(static_cast<long long>(first)));
        StoreWide(to + n - 8, _mm_cvtsi64_si128(static_cast<long long>(last)));
        return true;
    }
    if (n >= 4) {
        auto const first = LoadWord<std::uint32_t>(from);
        auto const last = LoadWord<std::uint32_t>(from + n - 4);
        if (((first | last) & 0x80808080u) != 0) {
            return false;
        }
        // Eight units are written: the object has room for them.
        StoreWide(to, _mm_cvtsi32_si128(static_cast<int>(first)));
        StoreWide(to + n - 4, _mm_cvtsi32_si128(static_cast<int>(last)));
        return true;
    }
    for (std::size_t i = 0; i < n; ++i) {
        if (static_cast<unsigned char>(from[i]) >= 0x80) {
            return false;
        }
        to[i] = static_cast<unsigned char>(from[i]);
    }
    return true;
}

} // namespace

// ---- construction

TStringCore::TStringCore(wchar_t const* s, int n)
{
    append(s, n);
}

// ---- assignment

// Handles a source inside the own text; false when it is not.
bool TStringCore::_assignHandleSelf(char16_t const* s, int n)
{
    char16_t const* const own = constData();
    int const old = length();
    if (s == own) {
        if (n >= 0 && n < old) {
            SetLength(n);
        }
        return true;
    }
    if (!inSelf(s)) {
        return false;
    }
    auto const k = static_cast<int>(s - own);
    int const rest = old - k;
    int const count = n < 0 ? length(s) : std::min(n, rest);
    char16_t* const text = data();
    std::memmove(text, text + k, Bytes(count));
    SetLength(count);
    return true;
}

TStringCore& TStringCore::assign(char16_t const* s, int n)
{
    if (s == nullptr || !_assignHandleSelf(s, n)) {
        int const count = s == nullptr ? 0 : n < 0 ? length(s) : n;
        // Room first, so that a failure leaves the old text.
        char16_t* const text = SetLength(count);
        if (count > 0) {
            CopyUnits(text, s, count);
        }
    }
    return *this;
}

TStringCore& TStringCore::assign(wchar_t const* s, int n)
{
    if constexpr (qvxsys::kWideIsUtf16) {
        return assign(reinterpret_cast<char16_t const*>(s), n);
    } else {
        ConvertUtf32(0, s, n, true);
        return *this;
    }
}

TStringCore& TStringCore::assign(char const* utf8, int n)
{
    ConvertUtf8(0, utf8, n);
    return *this;
}

// ---- appending

void TStringCore::AppendUnitSlow(char16_t c)
{
    *Grow(1) = c;
}

void TStringCore::appendHandleSingleCodeUnit(char16_t c)
{
    if (c != 0) {
        AppendUnit(c);
    }
}

void TStringCore::appendFromSelf(char16_t const* s, int n)
{
    auto const k = static_cast<int>(s - constData());
    int const rest = length() - k;
    int const count = n < 0 || n > rest ? rest : n;
    if (count > 0) {
        char16_t* const out = Grow(count);
        CopyUnits(out, constData() + k, count);
    }
}

bool TStringCore::appendHandleSelf(char16_t const* s, int n)
{
    bool const own = inSelf(s);
    if (own) {
        appendFromSelf(s, n);
    }
    return own;
}

// From a source outside the own text.
void TStringCore::AppendForeign(char16_t const* s, int n)
{
    if (s == nullptr) {
        return;
    }
    int const count = n < 0 ? length(s) : n;
    if (count > kInlineLength && !IsBlock() && m_units[kFormSlot] == 0) {
        // The usual way of long strings into being.
        SetBlock(NewBlock(count));
        CopyUnits(Block()->Text(), s, count);
    } else if (count > 0) {
        CopyUnits(Grow(count), s, count);
    }
}

TStringCore& TStringCore::AppendUnits(char16_t const* s, int n)
{
    if (s != nullptr && !appendHandleSelf(s, n)) {
        AppendForeign(s, n);
    }
    return *this;
}

TStringCore& TStringCore::append(TStringCore const& other)
{
    int const count = other.length();
    if (count > 0) {
        // The source is addressed after the growth: it may be this string.
        char16_t* const out = Grow(count);
        CopyUnits(out, other.constData(), count);
    }
    return *this;
}

TStringCore& TStringCore::append(wchar_t const* s, int n)
{
    if constexpr (qvxsys::kWideIsUtf16) {
        return append(reinterpret_cast<char16_t const*>(s), n);
    } else {
        if (s != nullptr && n != 0) {
            ConvertUtf32(length(), s, n, true);
        }
        return *this;
    }
}

TStringCore& TStringCore::append(char const* utf8, int n)
{
    if (utf8 != nullptr && n != 0) {
        ConvertUtf8(length(), utf8, n);
    }
    return *this;
}

// Makes the converted source the text from unit `at` on. The room is got first, so a failure leaves the old text.
void TStringCore::ConvertUtf8(int at, char const* s, int n)
{
    std::size_t const count = s == nullptr ? 0 : n < 0 ? std::strlen(s) : static_cast<std::size_t>(n);
    if (count > static_cast<std::size_t>(kMaxLength)) {
        text::Throw("Appended string is too long");
    }
    if (count <= kInlineLength && at == 0 && !IsBlock() && WidenShortAscii(m_units, s, count)) {
        SetInlineLength(static_cast<int>(count));
        return;
    }
    if (count == 0 && at == length()) {
        return;
    }
    bool const isNew = !IsBlock() && length() == 0 && count > kInlineLength;
    if (isNew) {
        SetBlock(Reallocate(nullptr, GrownCapacity(static_cast<int>(count))));
    }
    char16_t* const out = isNew ? Block()->Text() : SetLength(AddLengths(at, static_cast<int>(count))) + at;
    std::size_t substitutions = 0;
    StoreLength(at + static_cast<int>(text::kernels().utf8ToUtf16(s, count, out, substitutions)));
}

// The same from UTF-32, by the rule of CharacterUtils::Utf32ToUtf16; a 0 is text unless it is the terminator. Room is
// got for two units a code point, or, where `measured`, for what the text needs.
template<class CodePoint>
void TStringCore::ConvertUtf32(int at, CodePoint const* s, int n, bool measured)
{
    std::size_t const count = s == nullptr ? 0
                              : n < 0      ? std::char_traits<CodePoint>::length(s)
                                           : static_cast<std::size_t>(n);
    if (count == 0 && at == length()) {
        return;
    }
    auto const* const codePoints = reinterpret_cast<char32_t const*>(s);
    auto const isPair = [](char32_t c) { return c - 0x10000u < 0x100000u; };
    std::size_t const units =
        measured ? count + static_cast<std::size_t>(std::count_if(codePoints, codePoints + count, isPair)) : 2 * count;
    if (units > static_cast<std::size_t>(kMaxLength)) {
        text::ThrowOverflow();
    }
    char16_t* const out = SetLength(AddLengths(at, static_cast<int>(units))) + at;
    std::size_t substitutions = 0;
    auto const convert = [&substitutions](char32_t const* from, std::size_t some, char16_t* to) {
        return text::kernels().utf32ToUtf16Raw(from, some, to, substitutions);
    };
    if (measured) {
        text::ConvertTight(codePoints, count, out, units, 2, convert);
    } else {
        StoreLength(at + static_cast<int>(convert(codePoints, count, out)));
    }
}

TStringCore TStringCore::fromUtf32(char32_t const* s, int n)
{
    TStringCore result;
    result.ConvertUtf32(0, s, n, false);
    return result;
}

// What copying a and appending b gives, made in one allocation.
TStringCore TStringCore::ConcatenatedInBlock(TStringCore const& a, TStringView b)
{
    int const left = a.length();
    int const right = b.length();
    if (right <= 0) {
        // Nothing to append, or a negative count: up to the first 0 unit.
        return TStringCore(a).append(b);
    }
    int const sum = AddLengths(left, right);
    TStringCore result;
    result.SetBlock(Reallocate(nullptr, sum >= a.capacity() ? GrownCapacity(sum) : a.capacity()));
    char16_t* const out = result.Block()->Text();
    CopyUnits(out, a.constData(), left);
    CopyUnits(out + left, b.data(), right);
    result.StoreLength(sum);
    return result;
}

// ---- exception

TStringCore::Exception::~Exception() = default;

TStringCore::Exception* TStringCore::Exception::Clone() const
{
    return new Exception(*this);
}

void TStringCore::Exception::Throw() const
{
    throw Exception(*this);
}

TStringCore TStringCore::Exception::CollateMessagesForLog() const
{
    return *this;
}

TStringCore TStringCore::Exception::GetConcatenatedMessages() const
{
    return *this;
}
