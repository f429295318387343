#pragma once
// SHA-512 with the message schedule in vectors and the rounds in general registers. Only for the sources of one
// instruction set each: everything here has internal linkage.
//
// Rounds form one long chain; each needs the result of the one before. The vector units have nothing to do with that,
// so they prepare the words of rounds to come meanwhile, already added to the round constants: the rounds of sixteen
// words are written out with the steps that make the next sixteen words between them. A step makes two words, not more,
// because two words later its result is looked back at (sigma1). To use the whole width of a vector it makes two words
// each of two blocks: the schedule of the second block is then ready when the rounds of the first are through. A block
// without a second one has a schedule of its own in vectors of half the width.

#include "ShaKernels.h"

#include <immintrin.h>

#include <cstddef>
#include <utility>

namespace qvxsys::hash {
namespace {

constexpr std::size_t kBlock = 128;
constexpr unsigned kRounds = 80;

/// Two words of one block.
struct OneBlock
{
    using Vector = __m128i;
    static constexpr std::size_t kWords = 2;

    QVX_INLINE static Vector Constants(std::uint64_t const* p) noexcept
    {
        return _mm_load_si128(static_cast<__m128i const*>(static_cast<void const*>(p)));
    }
    QVX_INLINE static Vector Message(unsigned char const* p) noexcept
    {
        __m128i const bigEndian = _mm_set_epi8(8, 9, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3, 4, 5, 6, 7);
        return _mm_shuffle_epi8(_mm_loadu_si128(static_cast<__m128i const*>(static_cast<void const*>(p))), bigEndian);
    }
    QVX_INLINE static void Store(std::uint64_t* p, Vector value) noexcept
    {
        _mm_storeu_si128(static_cast<__m128i*>(static_cast<void*>(p)), value);
    }
    QVX_INLINE static Vector Add(Vector x, Vector y) noexcept { return _mm_add_epi64(x, y); }
    QVX_INLINE static Vector Xor(Vector x, Vector y, Vector z) noexcept
    {
        return _mm_xor_si128(_mm_xor_si128(x, y), z);
    }
    QVX_INLINE static Vector SecondAndFirst(Vector x, Vector y) noexcept { return _mm_alignr_epi8(y, x, 8); }
    QVX_INLINE static Vector Xor(Vector x, Vector y) noexcept { return _mm_xor_si128(x, y); }
    QVX_INLINE static Vector Shuffle(Vector x, __m128i order) noexcept { return _mm_shuffle_epi8(x, order); }
    template<int N>
    QVX_INLINE static Vector Shifted(Vector x) noexcept
    {
        return _mm_srli_epi64(x, N);
    }
    template<int N>
    QVX_INLINE static Vector ShiftedLeft(Vector x) noexcept
    {
        return _mm_slli_epi64(x, N);
    }
};

/// Two words of a block, and the same two of the next one.
struct TwoBlocks
{
    using Vector = __m256i;
    static constexpr std::size_t kWords = 4;

    QVX_INLINE static Vector Constants(std::uint64_t const* p) noexcept
    {
        return _mm256_broadcastsi128_si256(OneBlock::Constants(p));
    }
    QVX_INLINE static Vector Message(unsigned char const* p) noexcept
    {
        return _mm256_set_m128i(OneBlock::Message(p + kBlock), OneBlock::Message(p));
    }
    QVX_INLINE static void Store(std::uint64_t* p, Vector value) noexcept
    {
        _mm256_storeu_si256(static_cast<__m256i*>(static_cast<void*>(p)), value);
    }
    QVX_INLINE static Vector Add(Vector x, Vector y) noexcept { return _mm256_add_epi64(x, y); }
    QVX_INLINE static Vector Xor(Vector x, Vector y, Vector z) noexcept
    {
        return _mm256_xor_si256(_mm256_xor_si256(x, y), z);
    }
    QVX_INLINE static Vector SecondAndFirst(Vector x, Vector y) noexcept { return _mm256_alignr_epi8(y, x, 8); }
    QVX_INLINE static Vector Xor(Vector x, Vector y) noexcept { return _mm256_xor_si256(x, y); }
    QVX_INLINE static Vector Shuffle(Vector x, __m128i order) noexcept
    {
        return _mm256_shuffle_epi8(x, _mm256_broadcastsi128_si256(order));
    }
    template<int N>
    QVX_INLINE static Vector Shifted(Vector x) noexcept
    {
        return _mm256_srli_epi64(x, N);
    }
    template<int N>
    QVX_INLINE static Vector ShiftedLeft(Vector x) noexcept
    {
        return _mm256_slli_epi64(x, N);
    }
};

// Not std::rotr: its code might be shared with others.
QVX_INLINE std::uint64_t Rotated(std::uint64_t x, int n) noexcept
{
    return x >> n | x << (64 - n);
}

template<unsigned T>
QVX_INLINE void Round(std::uint64_t* v, std::uint64_t summand, std::uint64_t& bXorC) noexcept
{
    auto const at = [v](unsigned i) -> std::uint64_t& { return v[(i - T) & 7]; };
    std::uint64_t const a = at(0), e = at(4);
    std::uint64_t const known = at(7) + summand;
    std::uint64_t const choice = (~e & at(6)) + (e & at(5)); // no bit is set in both
    std::uint64_t const sum1 = Rotated(e, 14) ^ Rotated(e, 18) ^ Rotated(e, 41);
    std::uint64_t const sum0 = Rotated(a, 28) ^ Rotated(a, 34) ^ Rotated(a, 39);
    // The next round waits for the new e, so it is not made of the sum that the new a is made of.
    at(3) = at(3) + known + choice + sum1;
    // The majority: what b and c agree on, and a where they do not. What a ^ b is now is b ^ c next.
    at(7) = known + choice + sum1 + (at(1) & at(2)) + (a & bXorC) + sum0;
    std::uint64_t const aXorB = a ^ at(1);
    bXorC = aXorB;
}

/// Rounds 2I and 2I + 1 of sixteen. `V` is the vectors' layout.
template<class V, std::size_t I>
QVX_INLINE void RoundPair(std::uint64_t* v, std::uint64_t const* summands, std::uint64_t& bXorC) noexcept
{
    Round<I * 2>(v, summands[I * V::kWords], bXorC);
    Round<I * 2 + 1>(v, summands[I * V::kWords + 1], bXorC);
}

/// Words 2I and 2I + 1 of the next sixteen, in the place of those of these.
template<class V, class Sigma, std::size_t I>
QVX_INLINE void Extend(typename V::Vector* w, std::uint64_t* next, std::uint64_t const* nextConstants) noexcept
{
    auto const fifteenBack = V::SecondAndFirst(w[I], w[(I + 1) % 8]);
    auto const sevenBack = V::SecondAndFirst(w[(I + 4) % 8], w[(I + 5) % 8]);
    auto const sigmas = V::Add(Sigma::template Zero<V>(fifteenBack), Sigma::template One<V>(w[(I + 7) % 8]));
    w[I] = V::Add(V::Add(w[I], sevenBack), sigmas);
    V::Store(next + I * V::kWords, V::Add(w[I], V::Constants(nextConstants + I * 2)));
}

/// The rounds of the (first) block; the summands of all rounds are left in `summands`, kRounds / 2 vectors.
template<class V, class Sigma, std::size_t... I>
QVX_INLINE void BlockRounds(std::uint64_t* v, unsigned char const* block, std::uint64_t* summands,
                            std::index_sequence<I...>) noexcept
{
    typename V::Vector w[8] = {V::Message(block + I * 16)...};
    (V::Store(summands + I * V::kWords, V::Add(w[I], V::Constants(kSha512Constants + I * 2))), ...);
    std::uint64_t bXorC = v[1] ^ v[2];
    std::uint64_t* const end = summands + (kRounds - 16) / 2 * V::kWords;
    for (std::uint64_t const* k = kSha512Constants + 16; summands != end; summands += 8 * V::kWords, k += 16) {
        ((RoundPair<V, I>(v, summands, bXorC), Extend<V, Sigma, I>(w, summands + 8 * V::kWords, k)), ...);
    }
    (RoundPair<V, I>(v, summands, bXorC), ...);
}

/// The rounds of a block whose summands are there already.
template<class V, std::size_t... I>
QVX_INLINE void ReadyRounds(std::uint64_t* v, std::uint64_t const* summands, std::index_sequence<I...>) noexcept
{
    std::uint64_t bXorC = v[1] ^ v[2];
    for (unsigned t = 0; t < kRounds; t += 16, summands += 8 * V::kWords) {
        (RoundPair<V, I>(v, summands, bXorC), ...);
    }
}

template<std::size_t... I>
QVX_INLINE void AddTo(std::uint64_t* state, std::uint64_t* v, std::index_sequence<I...>) noexcept
{
    ((v[I] = state[I] += v[I]), ...);
}

template<class Sigma>
QVX_INLINE void Compress(std::uint64_t* state, unsigned char const* blocks, std::size_t count) noexcept
{
    constexpr auto kEight = std::make_index_sequence<8>();
    alignas(32) std::uint64_t summands[kRounds / 2 * TwoBlocks::kWords];
    std::uint64_t v[8] = {state[0], state[1], state[2], state[3], state[4], state[5], state[6], state[7]};
    for (; count >= 2; count -= 2, blocks += 2 * kBlock) {
        BlockRounds<TwoBlocks, Sigma>(v, blocks, summands, kEight);
        AddTo(state, v, kEight);
        ReadyRounds<TwoBlocks>(v, summands + 2, kEight);
        AddTo(state, v, kEight);
    }
    if (count != 0) {
        BlockRounds<OneBlock, Sigma>(v, blocks, summands, kEight);
        AddTo(state, v, kEight);
    }
}

} // namespace
} // namespace qvxsys::hash
