// Storage: blocks, capacity, copying, assigning and appending.

#include <qvxsys/TStringCore.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <limits>
#include <utility>

#include <emmintrin.h>

#include <qvxsys/TMemory.h>

#include "Stretch.h"
#include "TextErrors.h"
#include "kernels/Kernels.h"

namespace text = qvxsys::text;

namespace {

constexpr int kMaxLength = std::numeric_limits<int>::max();

std::size_t Bytes(int units) noexcept
{
    return static_cast<std::size_t>(units) * sizeof(char16_t);
}

void CopyUnits(char16_t* to, char16_t const* from, int n) noexcept
{
    std::memcpy(to, from, Bytes(n));
}

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

// A block sized to the next of the points 2^k and 3/4 x 2^(k+1), less 7 units: with the header and the allocator's own
// bookkeeping it then sits just under a round size.
int TStringCore::GrownCapacity(int n) noexcept
{
    if (n >= 0x7FFFFFF9) {
        // Out of range for an int: negative, which Reallocate refuses.
        return static_cast<int>(static_cast<unsigned>(n) + 7u);
    }
    std::uint64_t const m = static_cast<std::uint64_t>(n) + 7;
    std::uint64_t const power = std::bit_floor(m) * 2;
    std::uint64_t const between = power / 4 * 3;
    return static_cast<int>((m < between ? between : power) - 7);
}

int TStringCore::AddLengths(int a, int b)
{
    if (b > kMaxLength - a) {
        text::ThrowOverflow();
    }
    return a + b;
}

// Gives a new block, or `block` itself moved to the capacity. When it throws, `block` is as it was.
TStringBlock* TStringCore::Reallocate(TStringBlock* block, int capacity)
{
    if (capacity < 0) {
        text::ThrowOverflow();
    }
    if (block != nullptr && block->capacity == capacity) {
        return block;
    }
    auto* const result = static_cast<TStringBlock*>(TRealloc(block, sizeof(TStringBlock) + Bytes(capacity)));
    if (result == nullptr) {
        text::Throw("Out of memory");
    }
    if (block == nullptr) {
        result->references = 1;
        result->length = 0;
        result->Text()[0] = 0;
    } else if (capacity <= result->length) {
        result->length = capacity - 1;
        result->Text()[capacity - 1] = 0;
    }
    result->capacity = capacity;
    return result;
}

void TStringCore::FreeBlock(TStringBlock* block) noexcept
{
    TFree(block);
}

void TStringCore::Detach(int capacity)
{
    TStringBlock* const shared = Block();
    TStringBlock* const own = Reallocate(nullptr, capacity);
    own->length = std::min(shared->length, capacity - 1);
    CopyUnits(own->Text(), shared->Text(), own->length);
    own->Text()[own->length] = 0;
    Release(shared);
    SetBlock(own);
}

void TStringCore::MoveToBlock(int capacity)
{
    if (capacity > kInlineCapacity || capacity < 0) {
        TStringBlock* const own = Reallocate(nullptr, capacity);
        own->length = length();
        CopyUnits(own->Text(), m_units, own->length + 1);
        SetBlock(own);
    }
}

char16_t* TStringCore::SetLength(int n)
{
    n = std::max(n, 0);
    if (!IsBlock()) {
        if (n <= kInlineLength) {
            SetInlineLength(n);
            return m_units;
        }
        MoveToBlock(GrownCapacity(n));
    } else {
        TStringBlock* const block = Block();
        int const target = n >= block->capacity ? GrownCapacity(n) : block->capacity;
        if (IsShared(block)) {
            Detach(target);
        } else if (target != block->capacity) {
            // Larger, or negative where no int holds it: refused there.
            SetBlock(Reallocate(block, target));
        }
    }
    StoreLength(n);
    return Block()->Text();
}

// The length of a text that has room for it and is not shared.
void TStringCore::StoreLength(int n) noexcept
{
    if (IsBlock()) {
        TStringBlock* const block = Block();
        block->length = n;
        block->Text()[n] = 0;
    } else {
        SetInlineLength(n);
    }
}

// Makes the text longer by `by` units and returns where they are to be written.
char16_t* TStringCore::Grow(int by)
{
    int const old = length();
    return SetLength(AddLengths(old, by)) + old;
}

void TStringCore::SetCapacity(int target)
{
    if (target == capacity() && (!IsBlock() || !IsShared(Block()))) {
        return;
    }
    if (!IsBlock()) {
        MoveToBlock(target);
        return;
    }
    TStringBlock* const block = Block();
    if (IsShared(block)) {
        Detach(target);
    } else if (target < 0 || target > kInlineCapacity) {
        SetBlock(Reallocate(block, target));
    } else {
        int const kept = std::min(block->length, kInlineLength);
        BecomeEmpty();
        CopyUnits(m_units, block->Text(), kept);
        SetInlineLength(kept);
        Release(block);
    }
}

void TStringCore::reserve(int n)
{
    if (n < 0) {
        text::Throw("Negative allocation size; probable overflow");
    }
    // One more than the largest int is negative, which the allocation refuses.
    SetCapacity(n >= capacity() ? static_cast<int>(static_cast<unsigned>(n) + 1u) : capacity());
}

void TStringCore::squeeze()
{
    int const n = length();
    SetCapacity(n < kInlineCapacity ? kInlineCapacity : n + 1);
}

void TStringCore::ThrowOutOfRange(char const* message)
{
    text::Throw(message);
}

// ---- construction

TStringCore::TStringCore(wchar_t const* s, int n)
{
    BecomeEmpty();
    append(s, n);
}

// ---- assignment

void TStringCore::AssignShared(TStringCore const& other) noexcept
{
    if (this == &other) {
        return;
    }
    if (other.IsBlock()) {
        // Taken before ours is let go: both may be the same block.
        References(other.Block()).fetch_add(1, std::memory_order_relaxed);
        if (IsBlock()) {
            Release(Block());
        }
        std::memcpy(m_units, other.m_units, sizeof m_units);
        return;
    }
    TStringBlock* const block = Block();
    if (IsShared(block)) {
        Release(block);
        std::memcpy(m_units, other.m_units, sizeof m_units);
    } else {
        // An unshared block is kept for what comes next; it always has room for inline text.
        block->length = other.length();
        CopyUnits(block->Text(), other.m_units, block->length + 1);
    }
}

void TStringCore::AssignMoved(TStringCore& other) noexcept
{
    if (other.IsBlock()) {
        if (IsBlock()) {
            Release(Block());
        }
        std::memcpy(m_units, other.m_units, sizeof m_units);
    } else {
        *this = other;
    }
    other.BecomeEmpty();
}

bool TStringCore::inSelf(char16_t const* p) const noexcept
{
    char16_t const* const own = constData();
    return !std::less<>()(p, own) && !std::less<>()(own + length(), p);
}

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

TStringCore& TStringCore::AssignCopies(qvxsys::detail::UnitsOf units, int n)
{
    n = std::max(n, 0);
    if (n > kMaxLength / units.count) {
        text::ThrowOverflow();
    }
    char16_t* out = SetLength(n * units.count);
    if (units.count == 1) {
        std::fill_n(out, n, units.units[0]);
    } else {
        for (int i = 0; i < n; ++i) {
            *out++ = units.units[0];
            *out++ = units.units[1];
        }
    }
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
        SetBlock(Reallocate(nullptr, GrownCapacity(count)));
        CopyUnits(Block()->Text(), s, count);
        StoreLength(count);
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

// ---- inserting

// Replaces `count` units at `pos` by n units that do not lie in the own text.
void TStringCore::ReplaceUnits(int pos, int count, char16_t const* units, int n)
{
    int const old = length();
    int const tail = old - pos - count;
    int const sum = AddLengths(old - count, n);
    if (sum > old) {
        SetLength(sum);
    }
    char16_t* const at = data() + pos;
    std::memmove(at + n, at + count, Bytes(tail));
    if (n > 0) {
        CopyUnits(at, units, n);
    }
    SetLength(sum);
}

TStringCore& TStringCore::insert(int pos, TStringView v)
{
    if (v.length() > 0) {
        if (inSelf(v.data())) {
            TStringCore const copy(v.data(), v.length());
            return insert(pos, copy.view());
        }
        ReplaceUnits(std::clamp(pos, 0, length()), 0, v.data(), v.length());
    }
    return *this;
}

TStringCore& TStringCore::InsertUnits(int pos, char16_t const* s, int n)
{
    if (s == nullptr) {
        return *this;
    }
    int count = n < 0 ? length(s) : n;
    if (inSelf(s)) {
        count = std::min(count, length() - static_cast<int>(s - constData()));
    }
    return insert(pos, TStringView(s, static_cast<std::size_t>(count)));
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
