#pragma once
// Decoding UTF-8 in blocks of 64 bytes: the part of the vector kernels that does not depend on the instruction set.
//
// Every output unit is put where its last contributing byte stands. For each of the 64 byte positions the vector code
// computes, from the byte there and the two or three before it, the unit that would end there:
//
//   1 byte      0aaaaaaa                             the unit stands at the byte
//   2 bytes     110aaaaa 10bbbbbb                    at the second
//   3 bytes     1110aaaa 10bbbbbb 10cccccc           at the third
//   4 bytes     11110aaa 10bbbbbb 10cccccc 10dddddd  the high surrogate (which needs no bit below the top two of c) at
//                                                    the third, the low one at the fourth
//
// and then keeps the positions where a unit does end. Which those are, and whether the text is well-formed, is
// arithmetic on 64-bit masks with one bit a byte. The masks of lead bytes, shifted by one, two and three, say where
// continuation bytes must stand; bits shifted out of one block are shifted into the next one, so the blocks lie at
// fixed distances and nothing but the output position is carried from one to the next. What the masks do not show
// (overlong forms, surrogates, values above U+10FFFF) shows in the computed units.
//
// A block in which something is wrong is redone by DecodeExactly, from the beginning of the sequence that the blocks
// before it left unfinished. Table 3-7 of the Unicode Standard 15.0 is there turned into masks: c1, c2 and c3 are the
// continuation bytes that extend what stands before them in the way the table allows. A byte above 7F that is neither
// an allowed lead nor such a continuation is a maximal subpart of its own, and a sequence that breaks off is a maximal
// subpart that ends with its last accepted byte. So each subpart has one position to put U+FFFD at, and a block full
// of errors costs no more than a block with one.
//
// The instruction set is given by a class Isa:
//   kHistory             how many bytes before a block have to be readable
//   kFew                 up to this many bytes at the end are faster part by part than as a block
//   Load(s)              a block with all 64 bytes readable
//   LoadPart(s, n, room) a block of the first n bytes, kFew < n <= 64, followed by ASCII bytes
//   High(b)              positions of bytes above 7F
//   AtLeast(b, t)        positions of bytes >= t (t > 0x80)
//   Equal(b, t)          positions of bytes == t
//   HasZero(b)           whether a byte is 0
//   Widen(b, dst)        64 ASCII bytes as units
//   TryAscii(s, n, dst)  true if n <= 64 bytes are all ASCII, and then they are written to dst
//   Combine(b, p, v)     the units v of the block with the sequences p; false if a value is out of its range
//   Substitute(v, m)     replaces the units at the positions m by U+FFFD
//   Store(v, keep, dst)  writes the units at the positions `keep`; may write up to 64
//   StorePart(v, keep, dst, room)  the same, writing at most `room` units
// All of it has internal linkage, for the reason given in DecodeScalar.h.

#include "DecodeScalar.h"

#include <cstdint>

namespace qvxsys::text {
namespace {

using Mask = unsigned long long;

constexpr std::size_t kBlock = 64;

enum class Form { Utf16, Utf16Length, Utf32 };

/// Where the lead bytes of a block stand.
struct Leads
{
    Mask any;   // C2 and up, of sequences of two bytes or more
    Mask three; // E0 and up, of three or more
    Mask four;  // F0 and up, of four
};

/// Where the bytes of sequences stand; only the bytes before a position in `second`, `third` and `fourth` are read.
struct Sequences
{
    Mask second;
    Mask third;
    Mask thirdOfFour;
    Mask fourth;

    Mask Continuations() const noexcept { return second | third | fourth; }
    bool Wide() const noexcept { return (thirdOfFour | fourth) != 0; }
};

/// bits << count, with the bits that were shifted out of the block before.
inline Mask ShiftIn(Mask bits, Mask before, int count) noexcept
{
    return bits << count | before >> (64 - count);
}

inline Mask LowBits(std::size_t count) noexcept
{
    return count >= 64 ? ~Mask{0} : (Mask{1} << count) - 1;
}

inline std::size_t Count(Mask bits) noexcept
{
    return static_cast<std::size_t>(__builtin_popcountll(bits));
}

/// The bytes of the sequence that a (well-formed) block with these leads leaves unfinished.
inline std::size_t UnfinishedBytes(Leads const& leads) noexcept
{
    if ((leads.four >> 61 & 1) != 0) {
        return 3;
    }
    return (leads.three >> 62 & 1) != 0 ? 2 : static_cast<std::size_t>(leads.any >> 63);
}

/// The sequences that the lead bytes of a block and of the one before it promise.
inline Sequences PromisedSequences(Leads const& leads, Leads const& before) noexcept
{
    return {ShiftIn(leads.any, before.any, 1), ShiftIn(leads.three, before.three, 2),
            ShiftIn(leads.four, before.four, 2), ShiftIn(leads.four, before.four, 3)};
}

/// dst + count, or null where nothing is written.
template<Form kForm, class Unit>
inline Unit* At(Unit* dst, std::size_t count) noexcept
{
    return kForm == Form::Utf16Length ? nullptr : dst + count;
}

/// Converts the whole blocks of ASCII that s begins with and returns their bytes; for UTF-32 they may hold no 0.
template<Form kForm, class Isa, class Unit>
[[gnu::always_inline]] inline std::size_t DecodeAsciiBlocks(unsigned char const* s, std::size_t n, Unit* dst) noexcept
{
    std::size_t done = 0;
    for (; n - done >= kBlock; done += kBlock) {
        typename Isa::Block const block = Isa::Load(s + done);
        if (Isa::High(block) != 0 || (kForm == Form::Utf32 && Isa::HasZero(block))) {
            break;
        }
        if constexpr (kForm != Form::Utf16Length) {
            Isa::Widen(block, dst + done);
        }
    }
    return done;
}

/// The same; in a long run it goes back over a few units once, so that the stores to come cross no cache line.
template<Form kForm, class Isa, class Unit>
[[gnu::always_inline]] inline std::size_t DecodeAscii(unsigned char const* s, std::size_t n, Unit* dst) noexcept
{
    constexpr std::size_t kLongRun = 8 * kBlock;
    if (kForm == Form::Utf16Length || n <= kLongRun) {
        return DecodeAsciiBlocks<kForm, Isa>(s, n, dst);
    }
    std::size_t done = DecodeAsciiBlocks<kForm, Isa>(s, kLongRun, dst);
    if (done == kLongRun) {
        done -= reinterpret_cast<std::uintptr_t>(dst) % kBlock / sizeof(Unit);
        done += DecodeAsciiBlocks<kForm, Isa>(s + done, n - done, dst + done);
    }
    return done;
}

/// Converts whole blocks of well-formed text (for UTF-32, without 0) up to the first that is all ASCII, and then sets
/// `ascii`, or that is not what it should be.
template<Form kForm, class Isa, class Unit>
[[gnu::always_inline]] inline Progress DecodeMixed(unsigned char const* s, std::size_t n, Unit* dst, Progress progress,
                                                   bool& ascii) noexcept
{
    std::size_t in = progress.in;
    std::size_t out = progress.out;
    Leads before{};
    for (; n - in >= kBlock && in >= Isa::kHistory; in += kBlock) {
        typename Isa::Block const block = Isa::Load(s + in);
        if (kForm == Form::Utf32 && Isa::HasZero(block)) {
            break;
        }
        Mask const high = Isa::High(block);
        Mask const unfinished = before.any >> 63 | before.three >> 62 | before.four >> 61;
        ascii = (high | unfinished) == 0;
        if (ascii) {
            break;
        }
        Mask const continuations = high & ~Isa::AtLeast(block, 0xC0);
        Leads const leads{Isa::AtLeast(block, 0xC2), Isa::AtLeast(block, 0xE0), Isa::AtLeast(block, 0xF0)};
        Sequences const sequences = PromisedSequences(leads, before);
        typename Isa::Units units;
        bool const inRange = Isa::template Combine<kForm>(block, sequences, units);
        Mask const misplaced = (sequences.Continuations() ^ continuations) | (high ^ (continuations | leads.any));
        if (misplaced != 0 || !inRange) {
            break;
        }
        Mask keep = ~(leads.any | ShiftIn(leads.three, before.three, 1));
        if constexpr (kForm == Form::Utf32) {
            keep &= ~sequences.thirdOfFour;
        }
        if constexpr (kForm != Form::Utf16Length) {
            Isa::Store(units, keep, dst + out);
        }
        out += Count(keep);
        before = leads;
    }
    // The high surrogate of a sequence that lacks only its last byte is already written.
    std::size_t const unfinished = UnfinishedBytes(before);
    std::size_t const early = kForm != Form::Utf32 && unfinished == 3 ? 1 : 0;
    return {in - unfinished, out - early};
}

/// Converts whole blocks up to the first in which something is malformed (or, for UTF-32, 0) or which is not whole.
template<Form kForm, class Isa, class Unit>
[[gnu::always_inline]] inline Progress DecodeWellFormed(unsigned char const* s, std::size_t n, Unit* dst,
                                                        Progress progress) noexcept
{
    for (;;) {
        std::size_t const run = DecodeAscii<kForm, Isa>(s + progress.in, n - progress.in, At<kForm>(dst, progress.out));
        bool ascii = false;
        progress = DecodeMixed<kForm, Isa>(s, n, dst, {progress.in + run, progress.out + run}, ascii);
        if (!ascii) {
            return progress;
        }
    }
}

/// The second bytes that are continuations but not among those Table 3-7 allows after their lead.
template<class Isa>
inline Mask ForbiddenSeconds(typename Isa::Block const& block) noexcept
{
    Mask const from90 = Isa::AtLeast(block, 0x90);
    Mask const fromA0 = Isa::AtLeast(block, 0xA0);
    return (Isa::Equal(block, 0xE0) << 1 & ~fromA0) | (Isa::Equal(block, 0xED) << 1 & fromA0) |
           (Isa::Equal(block, 0xF0) << 1 & ~from90) | (Isa::Equal(block, 0xF4) << 1 & from90);
}

/// Converts up to 64 bytes of any text, well-formed or not. Leaves a sequence alone that goes on behind the block.
template<Form kForm, class Isa>
[[gnu::always_inline]] inline Progress DecodeExactly(unsigned char const* s, std::size_t n, char16_t* dst,
                                                     Progress progress, std::size_t& malformed) noexcept
{
    std::size_t const left = n - progress.in;
    std::size_t const size = left < kBlock ? left : kBlock;
    // The end of a long text is better read as part of a whole block of which the beginning is done already.
    std::size_t const done = n >= kBlock + Isa::kHistory ? kBlock - size : 0;
    typename Isa::Room room;
    typename Isa::Block const block =
        n >= kBlock + Isa::kHistory ? Isa::Load(s + progress.in - done) : Isa::LoadPart(s + progress.in, size, room);

    Mask const high = Isa::High(block) & ~LowBits(done);
    Mask const continuations = high & ~Isa::AtLeast(block, 0xC0);
    Mask const allowed = high & ~Isa::AtLeast(block, 0xF5);
    Leads const leads{Isa::AtLeast(block, 0xC2) & allowed, Isa::AtLeast(block, 0xE0) & allowed,
                      Isa::AtLeast(block, 0xF0) & allowed};
    Mask const c1 = leads.any << 1 & continuations & ~ForbiddenSeconds<Isa>(block);
    Mask const secondOfMore = c1 & leads.three << 1;
    Mask const c2 = secondOfMore << 1 & continuations;
    Mask const thirdOfFour = c2 & leads.four << 2;
    Mask const c3 = thirdOfFour << 1 & continuations;

    std::size_t taken = size;
    if (left > kBlock) {
        bool const lacksOne = thirdOfFour >> 63 != 0;
        taken -= lacksOne ? 3 : secondOfMore >> 63 != 0 ? 2 : static_cast<std::size_t>(leads.any >> 63);
    }
    Mask const here = LowBits(done + taken) & ~LowBits(done);
    Mask const brokenOff = (leads.any & ~(c1 >> 1)) | (secondOfMore & ~(c2 >> 1)) | (thirdOfFour & ~(c3 >> 1));
    Mask const wrong = ((high & ~(leads.any | c1 | c2 | c3)) | brokenOff) & here;
    Mask const keep = (~(leads.any | secondOfMore) | wrong) & here;
    if constexpr (kForm == Form::Utf16) {
        typename Isa::Units units;
        Isa::template Combine<kForm>(block, {c1, c2, thirdOfFour, c3}, units);
        Isa::Substitute(units, wrong);
        Isa::StorePart(units, keep, dst + progress.out, n - progress.out);
    }
    malformed += Count(wrong);
    return {progress.in + taken, progress.out + Count(keep)};
}

/// Goes on exactly until two blocks in a row had nothing malformed: where one error is others are likely, and finding
/// out each time anew costs more than the arithmetic.
template<Form kForm, class Isa>
[[gnu::noinline]] Progress DecodeUnruly(unsigned char const* s, std::size_t n, char16_t* dst, Progress progress,
                                        std::size_t& malformed) noexcept
{
    int clean = 0;
    do {
        std::size_t const before = malformed;
        progress = DecodeExactly<kForm, Isa>(s, n, dst, progress, malformed);
        clean = malformed == before ? clean + 1 : 0;
    } while (n - progress.in >= kBlock && clean < 2);
    return progress;
}

/// UTF-8 to UTF-16, or its length. dst is not used for the length.
template<Form kForm, class Isa>
[[gnu::always_inline]] inline std::size_t DecodeToUtf16(char const* src, std::size_t n, char16_t* dst,
                                                        std::size_t& malformed) noexcept
{
    auto const* const s = reinterpret_cast<unsigned char const*>(src);
    constexpr bool write = kForm == Form::Utf16;
    Progress progress;
    for (;;) {
        if (n - progress.in >= kBlock) {
            progress = DecodeWellFormed<kForm, Isa>(s, n, dst, progress);
        }
        std::size_t const left = n - progress.in;
        if (left < kBlock && Isa::template TryAscii<write>(s + progress.in, left, At<kForm>(dst, progress.out))) {
            return progress.out + left;
        }
        if (left <= Isa::kFew) {
            return DecodeByParts<write>(s, n, dst, progress, n, malformed).out;
        }
        if (left >= kBlock && progress.in < Isa::kHistory) {
            progress = DecodeByParts<write>(s, n, dst, progress, Isa::kHistory, malformed);
        } else {
            progress = DecodeUnruly<kForm, Isa>(s, n, dst, progress, malformed);
        }
    }
}

/// What Kernels::utf8PrefixToUtf32 does, up to the very byte it must not go past.
template<class Isa>
[[gnu::always_inline]] inline std::size_t DecodeToUtf32(char const* src, std::size_t n, char32_t* dst,
                                                        std::size_t& consumed) noexcept
{
    auto const* const s = reinterpret_cast<unsigned char const*>(src);
    Progress progress;
    if (n >= kBlock) {
        progress = DecodeWellFormed<Form::Utf32, Isa>(s, n, dst, progress);
        if (progress.in < Isa::kHistory) {
            progress = DecodePrefixByParts(s, n, dst, progress, Isa::kHistory);
            progress = DecodeWellFormed<Form::Utf32, Isa>(s, n, dst, progress);
        }
    }
    progress = DecodePrefixByParts(s, n, dst, progress, n);
    consumed = progress.in;
    return progress.out;
}

} // namespace
} // namespace qvxsys::text
