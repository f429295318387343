// The compression functions for any processor, as FIPS 180-4 has them. The message schedule is kept as the last sixteen
// words, each replaced when it is read for the last time; the working variables are not moved from round to round, the
// rounds are written out for each of their places instead.

#include "ShaKernels.h"

#include <bit>
#include <utility>

namespace qvxsys::hash::portable {
namespace {

template<class Word>
QVX_INLINE Word Load(unsigned char const* p) noexcept
{
    Word word = 0;
    for (std::size_t i = 0; i < sizeof word; ++i) {
        word = word << 8 | p[i];
    }
    return word;
}

template<class Word>
QVX_INLINE Word Choose(Word x, Word y, Word z) noexcept
{
    return z ^ (x & (y ^ z));
}

template<class Word>
QVX_INLINE Word Majority(Word x, Word y, Word z) noexcept
{
    return (x & y) | (z & (x | y));
}

// The functions of section 4.1.2 and 4.1.3.
struct Functions32
{
    using Word = std::uint32_t;
    static constexpr unsigned kRounds = 64;
    static constexpr auto& kConstants = kSha256Constants;
    QVX_INLINE static Word Sum0(Word x) noexcept { return std::rotr(x, 2) ^ std::rotr(x, 13) ^ std::rotr(x, 22); }
    QVX_INLINE static Word Sum1(Word x) noexcept { return std::rotr(x, 6) ^ std::rotr(x, 11) ^ std::rotr(x, 25); }
    QVX_INLINE static Word Sigma0(Word x) noexcept { return std::rotr(x, 7) ^ std::rotr(x, 18) ^ x >> 3; }
    QVX_INLINE static Word Sigma1(Word x) noexcept { return std::rotr(x, 17) ^ std::rotr(x, 19) ^ x >> 10; }
};

struct Functions64
{
    using Word = std::uint64_t;
    static constexpr unsigned kRounds = 80;
    static constexpr auto& kConstants = kSha512Constants;
    QVX_INLINE static Word Sum0(Word x) noexcept { return std::rotr(x, 28) ^ std::rotr(x, 34) ^ std::rotr(x, 39); }
    QVX_INLINE static Word Sum1(Word x) noexcept { return std::rotr(x, 14) ^ std::rotr(x, 18) ^ std::rotr(x, 41); }
    QVX_INLINE static Word Sigma0(Word x) noexcept { return std::rotr(x, 1) ^ std::rotr(x, 8) ^ x >> 7; }
    QVX_INLINE static Word Sigma1(Word x) noexcept { return std::rotr(x, 19) ^ std::rotr(x, 61) ^ x >> 6; }
};

template<class F, unsigned T>
QVX_INLINE void Round(typename F::Word* v, typename F::Word* w, typename F::Word const* constants, bool extend) noexcept
{
    auto const at = [v](unsigned i) -> typename F::Word& { return v[(i - T) & 7]; };
    if (extend) {
        w[T] += F::Sigma1(w[(T + 14) & 15]) + w[(T + 9) & 15] + F::Sigma0(w[(T + 1) & 15]);
    }
    typename F::Word const t = at(7) + F::Sum1(at(4)) + Choose(at(4), at(5), at(6)) + constants[T] + w[T];
    at(3) += t;
    at(7) = t + F::Sum0(at(0)) + Majority(at(0), at(1), at(2));
}

template<class F, unsigned... T>
QVX_INLINE void Compress(typename F::Word* state, unsigned char const* blocks, std::size_t count,
                         std::integer_sequence<unsigned, T...>) noexcept
{
    using Word = typename F::Word;
    for (; count != 0; --count, blocks += 16 * sizeof(Word)) {
        Word w[16] = {Load<Word>(blocks + T * sizeof(Word))...};
        Word v[8];
        for (unsigned i = 0; i < 8; ++i) {
            v[i] = state[i];
        }
        (Round<F, T>(v, w, F::kConstants, false), ...);
        for (unsigned t = 16; t < F::kRounds; t += 16) {
            (Round<F, T>(v, w, F::kConstants + t, true), ...);
        }
        for (unsigned i = 0; i < 8; ++i) {
            state[i] += v[i];
        }
    }
}

// Section 6.1.2. `T` is the round within its group of twenty, `Group` tells function and constant.
template<unsigned Group, unsigned T>
QVX_INLINE void Sha1Round(std::uint32_t* v, std::uint32_t* w) noexcept
{
    constexpr unsigned kRound = Group * 20 + T;
    constexpr std::uint32_t kConstants[] = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xCA62C1D6};
    auto const at = [v](unsigned i) -> std::uint32_t& { return v[(i + 80 - kRound) % 5]; };
    std::uint32_t& word = w[kRound & 15];
    if constexpr (kRound >= 16) {
        word = std::rotl(w[(kRound + 13) & 15] ^ w[(kRound + 8) & 15] ^ w[(kRound + 2) & 15] ^ word, 1);
    }
    std::uint32_t mixed = at(1) ^ at(2) ^ at(3);
    if constexpr (Group == 0) {
        mixed = Choose(at(1), at(2), at(3));
    } else if constexpr (Group == 2) {
        mixed = Majority(at(1), at(2), at(3));
    }
    at(4) += std::rotl(at(0), 5) + mixed + kConstants[Group] + word;
    at(1) = std::rotl(at(1), 30);
}

template<unsigned... T>
QVX_INLINE void CompressSha1(std::uint32_t* state, unsigned char const* blocks, std::size_t count,
                             std::integer_sequence<unsigned, T...>) noexcept
{
    for (; count != 0; --count, blocks += 64) {
        std::uint32_t w[16];
        for (unsigned i = 0; i < 16; ++i) {
            w[i] = Load<std::uint32_t>(blocks + i * 4);
        }
        std::uint32_t v[5] = {state[0], state[1], state[2], state[3], state[4]};
        (Sha1Round<0, T>(v, w), ...);
        (Sha1Round<1, T>(v, w), ...);
        (Sha1Round<2, T>(v, w), ...);
        (Sha1Round<3, T>(v, w), ...);
        for (unsigned i = 0; i < 5; ++i) {
            state[i] += v[i];
        }
    }
}

} // namespace

void Sha1(std::uint32_t* state, unsigned char const* blocks, std::size_t count) noexcept
{
    CompressSha1(state, blocks, count, std::make_integer_sequence<unsigned, 20>());
}

void Sha256(std::uint32_t* state, unsigned char const* blocks, std::size_t count) noexcept
{
    Compress<Functions32>(state, blocks, count, std::make_integer_sequence<unsigned, 16>());
}

void Sha512(std::uint64_t* state, unsigned char const* blocks, std::size_t count) noexcept
{
    Compress<Functions64>(state, blocks, count, std::make_integer_sequence<unsigned, 16>());
}

} // namespace qvxsys::hash::portable
