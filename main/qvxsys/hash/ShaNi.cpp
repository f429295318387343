// SHA-1 and SHA-256 with the SHA extensions. Two (SHA-256) or four (SHA-1) rounds are one instruction, and each needs
// the result of the one before: the chain of them sets the speed, the message schedule runs beside it. The layouts of
// the registers are those of the instructions' descriptions in the processor's manual.

#include "ShaKernels.h"

#include <immintrin.h>

#include <utility>

namespace qvxsys::hash::sha_ni {
namespace {

QVX_INLINE __m128i Load(void const* p) noexcept
{
    return _mm_loadu_si128(static_cast<__m128i const*>(p));
}

QVX_INLINE void Store(void* p, __m128i value) noexcept
{
    _mm_storeu_si128(static_cast<__m128i*>(p), value);
}

// Four rounds; then the words of the schedule that come into use sixteen rounds later take the place of these.
template<unsigned I>
QVX_INLINE void Sha256Rounds(__m128i& abef, __m128i& cdgh, __m128i* w) noexcept
{
    __m128i& words = w[I % 4];
    __m128i const summands = _mm_add_epi32(words, Load(kSha256Constants + I * 4));
    cdgh = _mm_sha256rnds2_epu32(cdgh, abef, summands);
    abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(summands, 0x0E));
    if constexpr (I < 12) {
        __m128i const last = w[(I + 3) % 4];
        __m128i const sevenBack = _mm_alignr_epi8(last, w[(I + 2) % 4], 4);
        words = _mm_add_epi32(_mm_sha256msg1_epu32(words, w[(I + 1) % 4]), sevenBack);
        words = _mm_sha256msg2_epu32(words, last);
    }
}

template<unsigned... I>
QVX_INLINE void Sha256Block(__m128i& abef, __m128i& cdgh, __m128i* w, std::integer_sequence<unsigned, I...>) noexcept
{
    (Sha256Rounds<I>(abef, cdgh, w), ...);
}

// The state of SHA-1 between two groups of four rounds. `e` is in the highest element; what the other elements hold
// counts only while words of the message are added to it.
struct Sha1State
{
    __m128i abcd;
    __m128i before; ///< abcd four rounds earlier: its a, rotated, is e now
};

template<unsigned I>
QVX_INLINE void Sha1Rounds(Sha1State& state, __m128i* w) noexcept
{
    __m128i& words = w[I % 4];
    __m128i const summands = I == 0 ? _mm_add_epi32(state.before, words) : _mm_sha1nexte_epu32(state.before, words);
    state.before = state.abcd;
    state.abcd = _mm_sha1rnds4_epu32(state.abcd, summands, I / 5);
    if constexpr (I < 16) {
        words = _mm_xor_si128(_mm_sha1msg1_epu32(words, w[(I + 1) % 4]), w[(I + 2) % 4]);
        words = _mm_sha1msg2_epu32(words, w[(I + 3) % 4]);
    }
}

template<unsigned... I>
QVX_INLINE void Sha1Block(Sha1State& state, __m128i* w, std::integer_sequence<unsigned, I...>) noexcept
{
    (Sha1Rounds<I>(state, w), ...);
}

} // namespace

void Sha256(std::uint32_t* state, unsigned char const* blocks, std::size_t count) noexcept
{
    __m128i const bigEndian = _mm_set_epi8(12, 13, 14, 15, 8, 9, 10, 11, 4, 5, 6, 7, 0, 1, 2, 3);
    __m128i const abcd = Load(state);
    __m128i const efgh = Load(state + 4);
    __m128i abef = _mm_shuffle_epi32(_mm_unpacklo_epi64(efgh, abcd), 0xB1);
    __m128i cdgh = _mm_shuffle_epi32(_mm_unpackhi_epi64(efgh, abcd), 0xB1);
    for (; count != 0; --count, blocks += 64) {
        __m128i w[4] = {_mm_shuffle_epi8(Load(blocks), bigEndian), _mm_shuffle_epi8(Load(blocks + 16), bigEndian),
                        _mm_shuffle_epi8(Load(blocks + 32), bigEndian), _mm_shuffle_epi8(Load(blocks + 48), bigEndian)};
        __m128i const abefBefore = abef;
        __m128i const cdghBefore = cdgh;
        Sha256Block(abef, cdgh, w, std::make_integer_sequence<unsigned, 16>());
        abef = _mm_add_epi32(abef, abefBefore);
        cdgh = _mm_add_epi32(cdgh, cdghBefore);
    }
    __m128i const efab = _mm_shuffle_epi32(abef, 0xB1);
    __m128i const ghcd = _mm_shuffle_epi32(cdgh, 0xB1);
    Store(state, _mm_unpackhi_epi64(efab, ghcd));
    Store(state + 4, _mm_unpacklo_epi64(efab, ghcd));
}

void Sha1(std::uint32_t* state, unsigned char const* blocks, std::size_t count) noexcept
{
    __m128i const reversed = _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    __m128i abcd = _mm_shuffle_epi32(Load(state), 0x1B);
    __m128i e = _mm_slli_si128(_mm_cvtsi32_si128(static_cast<int>(state[4])), 12);
    for (; count != 0; --count, blocks += 64) {
        __m128i w[4] = {_mm_shuffle_epi8(Load(blocks), reversed), _mm_shuffle_epi8(Load(blocks + 16), reversed),
                        _mm_shuffle_epi8(Load(blocks + 32), reversed), _mm_shuffle_epi8(Load(blocks + 48), reversed)};
        Sha1State now{abcd, e};
        Sha1Block(now, w, std::make_integer_sequence<unsigned, 20>());
        abcd = _mm_add_epi32(abcd, now.abcd);
        e = _mm_sha1nexte_epu32(now.before, e);
    }
    Store(state, _mm_shuffle_epi32(abcd, 0x1B));
    state[4] = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(e, 12)));
}

} // namespace qvxsys::hash::sha_ni
