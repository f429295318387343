// Storage of strings: blocks, capacity, copying.

#include <qvxsys/TStringStorage.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <string>

#include <qvxsys/TMemory.h>
#include <qvxsys/TStringCore.h>

#include "StringLimits.h"
#include "TextErrors.h"

namespace text = qvxsys::text;
using text::Bytes;
using text::CopyUnits;

// A block sized to the next of the points 2^k and 3/4 x 2^(k+1), less 7 units: with the header and the allocator's own
// bookkeeping it then sits just under a round size.
int TStringStorage::GrownCapacity(int n) noexcept
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

int TStringStorage::AddLengths(int a, int b)
{
    if (b > text::kMaxLength - a) {
        text::ThrowOverflow();
    }
    return a + b;
}

// Gives a new block, or `block` itself moved to the capacity. When it throws, `block` is as it was.
TStringBlock* TStringStorage::Reallocate(TStringBlock* block, int capacity)
{
    if (capacity < 0) {
        text::ThrowOverflow();
    }
    if (block != nullptr && block->capacity == capacity) {
        return block;
    }
    // Comparing looks at more units (kFirstUnits) than the smallest capacity has.
    std::size_t const bytes = Bytes(std::max(capacity, static_cast<int>(qvxsys::detail::kFirstUnits)));
    auto* const result = static_cast<TStringBlock*>(TRealloc(block, sizeof(TStringBlock) + bytes));
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

// A block for a text of n units, which is to be written, and room to grow.
TStringBlock* TStringStorage::NewBlock(int n)
{
    TStringBlock* const block = Reallocate(nullptr, GrownCapacity(n));
    block->length = n;
    block->Text()[n] = 0;
    return block;
}

void TStringStorage::FreeBlock(TStringBlock* block) noexcept
{
    TFree(block);
}

void TStringStorage::Detach(int capacity)
{
    TStringBlock* const shared = Block();
    TStringBlock* const own = Reallocate(nullptr, capacity);
    own->length = std::min(shared->length, capacity - 1);
    CopyUnits(own->Text(), shared->Text(), own->length);
    own->Text()[own->length] = 0;
    Release(shared);
    SetBlock(own);
}

void TStringStorage::MoveToBlock(int capacity)
{
    if (capacity > kInlineCapacity || capacity < 0) {
        TStringBlock* const own = Reallocate(nullptr, capacity);
        own->length = length();
        // All of the object: two moves instead of a call. Every block has room for it.
        std::memcpy(own->Text(), m_units, sizeof m_units);
        SetBlock(own);
    }
}

char16_t* TStringStorage::SetLength(int n)
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
    TStringBlock* const block = Block();
    block->length = n;
    block->Text()[n] = 0;
    return block->Text();
}

// The length of a text that has room for it and is not shared.
void TStringStorage::StoreLength(int n) noexcept
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
char16_t* TStringStorage::Grow(int by)
{
    int const old = length();
    return SetLength(AddLengths(old, by)) + old;
}

void TStringStorage::SetCapacity(int target)
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

void TStringStorage::reserve(int n)
{
    if (n < 0) {
        text::Throw("Negative allocation size; probable overflow");
    }
    // One more than the largest int is negative, which the allocation refuses.
    SetCapacity(n >= capacity() ? static_cast<int>(static_cast<unsigned>(n) + 1u) : capacity());
}

void TStringStorage::squeeze()
{
    int const n = length();
    SetCapacity(n < kInlineCapacity ? kInlineCapacity : n + 1);
}

void TStringStorage::ThrowOutOfRange(char const* message)
{
    text::Throw(message);
}

void TStringStorage::AssignShared(TStringStorage const& other) noexcept
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

void TStringStorage::AssignMoved(TStringStorage& other) noexcept
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

bool TStringStorage::inSelf(char16_t const* p) const noexcept
{
    char16_t const* const own = constData();
    return !std::less<>()(p, own) && !std::less<>()(own + length(), p);
}

// ---- lengths

int TStringStorage::lengthInCodePoints() const noexcept
{
    return TStringView(constData(), size()).lengthInCodePoints();
}

int TStringStorage::length(char16_t const* s) noexcept
{
    return s == nullptr ? 0 : static_cast<int>(qvxsys::detail::TerminatedLength(s));
}

int TStringStorage::WideLength(wchar_t const* s) noexcept
{
    if (s == nullptr) {
        return 0;
    }
    std::size_t const count = std::char_traits<wchar_t>::length(s);
    auto const pair = [](wchar_t c) { return static_cast<char32_t>(c) - 0x10000u < 0x100000u; };
    return static_cast<int>(count) + static_cast<int>(qvxsys::kWideIsUtf16 ? 0 : std::count_if(s, s + count, pair));
}

int TStringStorage::WideLengthInCodePoints(wchar_t const* s)
{
    if constexpr (qvxsys::kWideIsUtf16) {
        return lengthInCodePoints(reinterpret_cast<char16_t const*>(s));
    } else {
        return TStringCore(s).lengthInCodePoints();
    }
}

std::size_t TStringStorage::lengthInBytes(char16_t const* s) noexcept
{
    return static_cast<std::size_t>(length(s)) * sizeof(char16_t);
}

int TStringStorage::lengthInCodePoints(char16_t const* s) noexcept
{
    return TStringView(s).lengthInCodePoints();
}
