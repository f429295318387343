#include "ShaCore.h"

#include <emmintrin.h>

#include <cstring>
#include <stdexcept>

#include <qvxsys/Hash.h>

#include "ShaKernels.h"

namespace qvxsys::hash {
namespace {

// Section 5.3: SHA-1; SHA-224 and SHA-256. The words of the latter are the fractional parts of the square roots of
// prime numbers.
constexpr std::uint32_t kInitial32[][8] = {
    {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0},
    {0xc1059ed8, 0x367cd507, 0x3070dd17, 0xf70e5939, 0xffc00b31, 0x68581511, 0x64f98fa7, 0xbefa4fa4},
    {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19},
};
// SHA-384 and SHA-512.
constexpr std::uint64_t kInitial64[][8] = {
    {0xcbbb9d5dc1059ed8, 0x629a292a367cd507, 0x9159015a3070dd17, 0x152fecd8f70e5939, 0x67332667ffc00b31,
     0x8eb44a8768581511, 0xdb0c2e0d64f98fa7, 0x47b5481dbefa4fa4},
    {0x6a09e667f3bcc908, 0xbb67ae8584caa73b, 0x3c6ef372fe94f82b, 0xa54ff53a5f1d36f1, 0x510e527fade682d1,
     0x9b05688c2b3e6c1f, 0x1f83d9abfb41bd6b, 0x5be0cd19137e2179},
};

// What the algorithms on 32-bit words and those on 64-bit words do alike (sections 5.1, 5.2, 6).
template<class Word>
struct Family
{
    static constexpr std::size_t kBlock = 16 * sizeof(Word);
    static constexpr std::size_t kLength = 2 * sizeof(Word); ///< of the message's length at the end of the padding

    static Word* Words(ShaState& state) noexcept;
    static Word const* Initial(sha2::SHA_TYPE type) noexcept;
    static void Compress(sha2::SHA_TYPE type, Word* words, void const* blocks, std::size_t count) noexcept;
    static Word BigEndian(Word word) noexcept;

    static void Store(void* to, Word word) noexcept
    {
        word = BigEndian(word);
        std::memcpy(to, &word, sizeof word);
    }

    static void Absorb(ShaState& state, sha2::SHA_TYPE type, unsigned char const* data, std::size_t size) noexcept;
    static void Close(sha2::SHA_TYPE type, Word* words, void const* rest, std::uint64_t const* bits,
                      void* digest) noexcept;
    static void Digest(sha2::SHA_TYPE type, unsigned char const* data, std::size_t size, void* digest) noexcept;
};

using Family32 = Family<std::uint32_t>;
using Family64 = Family<std::uint64_t>;

template<>
std::uint32_t* Family32::Words(ShaState& state) noexcept
{
    return state.words32;
}
template<>
std::uint64_t* Family64::Words(ShaState& state) noexcept
{
    return state.words64;
}

template<>
std::uint32_t const* Family32::Initial(sha2::SHA_TYPE type) noexcept
{
    return kInitial32[type - sha2::SHA160];
}
template<>
std::uint64_t const* Family64::Initial(sha2::SHA_TYPE type) noexcept
{
    return kInitial64[type - sha2::SHA384];
}

template<>
void Family32::Compress(sha2::SHA_TYPE type, std::uint32_t* words, void const* blocks, std::size_t count) noexcept
{
    ShaKernels const& kernels = CurrentShaKernels();
    (type == sha2::SHA160 ? kernels.sha1 : kernels.sha256)(words, static_cast<unsigned char const*>(blocks), count);
}
template<>
void Family64::Compress(sha2::SHA_TYPE, std::uint64_t* words, void const* blocks, std::size_t count) noexcept
{
    CurrentShaKernels().sha512(words, static_cast<unsigned char const*>(blocks), count);
}

template<>
std::uint32_t Family32::BigEndian(std::uint32_t word) noexcept
{
    return __builtin_bswap32(word);
}
template<>
std::uint64_t Family64::BigEndian(std::uint64_t word) noexcept
{
    return __builtin_bswap64(word);
}

// Bits modulo 2^128. Where the length has 64 bits the high word is not used.
void AddBytes(std::uint64_t* bits, std::uint64_t bytes) noexcept
{
    std::uint64_t const low = bits[0] + (bytes << 3);
    bits[1] += (bytes >> 61) + (low < bits[0] ? 1 : 0);
    bits[0] = low;
}

template<class Word>
void Family<Word>::Absorb(ShaState& state, sha2::SHA_TYPE type, unsigned char const* data, std::size_t size) noexcept
{
    std::size_t const used = state.bits[0] / 8 % kBlock;
    AddBytes(state.bits, size);
    if (used != 0) {
        std::size_t const room = kBlock - used;
        std::size_t const taken = size < room ? size : room;
        std::memcpy(state.block + used, data, taken);
        if (taken < room) {
            return;
        }
        Compress(type, Words(state), state.block, 1);
        data += taken;
        size -= taken;
    }
    if (size >= kBlock) {
        Compress(type, Words(state), data, size / kBlock);
        data += size / kBlock * kBlock;
    }
    if (size % kBlock != 0) {
        std::memcpy(state.block, data, size % kBlock);
    }
}

// The last block or two: the rest of the message, a bit, and the length at the end. Writes the digest.
template<class Word>
void Family<Word>::Close(sha2::SHA_TYPE type, Word* words, void const* rest, std::uint64_t const* bits,
                         void* digest) noexcept
{
    alignas(16) unsigned char block[2 * kBlock] = {};
    std::size_t const used = bits[0] / 8 % kBlock;
    if (used != 0) {
        std::memcpy(block, rest, used);
    }
    block[used] = 0x80;
    std::size_t const blocks = used + 1 + kLength <= kBlock ? 1 : 2;
    unsigned char* const end = block + blocks * kBlock;
    Family64::Store(end - 8, bits[0]);
    if constexpr (kLength == 16) {
        Family64::Store(end - 16, bits[1]);
    }
    Compress(type, words, block, blocks);
    auto* out = static_cast<unsigned char*>(digest);
    for (std::size_t i = 0; i < quorvex::hash::DigestLength(type) / sizeof(Word); ++i) {
        Store(out + i * sizeof(Word), words[i]);
    }
}

template<class Word>
void Family<Word>::Digest(sha2::SHA_TYPE type, unsigned char const* data, std::size_t size, void* digest) noexcept
{
    Word words[8];
    std::memcpy(words, Initial(type), sizeof words);
    if (size >= kBlock) {
        Compress(type, words, data, size / kBlock);
    }
    std::uint64_t bits[2] = {};
    AddBytes(bits, size);
    Close(type, words, data + size / kBlock * kBlock, bits, digest);
}

bool Has64BitWords(sha2::SHA_TYPE type) noexcept
{
    return type >= sha2::SHA384;
}

} // namespace

void RequireType(sha2::SHA_TYPE type)
{
    if (!IsType(type)) {
        throw std::runtime_error("Invalid SHA_TYPE type!");
    }
}

void Start(ShaState& state, sha2::SHA_TYPE type) noexcept
{
    std::memset(&state, 0, offsetof(ShaState, block));
    if (Has64BitWords(type)) {
        std::memcpy(state.words64, Family64::Initial(type), sizeof state.words64);
    } else {
        std::memcpy(state.words32, Family32::Initial(type), sizeof state.words32);
    }
}

void Absorb(ShaState& state, sha2::SHA_TYPE type, void const* data, std::size_t size) noexcept
{
    if (size != 0) {
        (Has64BitWords(type) ? Family64::Absorb : Family32::Absorb)(state, type,
                                                                    static_cast<unsigned char const*>(data), size);
    }
}

void Finish(ShaState& state, sha2::SHA_TYPE type, void* digest) noexcept
{
    if (Has64BitWords(type)) {
        Family64::Close(type, state.words64, state.block, state.bits, digest);
    } else {
        Family32::Close(type, state.words32, state.block, state.bits, digest);
    }
}

// A digit is '0' and its value, those above 9 lie farther on. Instructions that every x86-64 has.
void WriteHex(unsigned char const* bytes, std::size_t count, char* hex) noexcept
{
    __m128i const low = _mm_set1_epi8(0x0F);
    auto const digits = [](__m128i values) {
        __m128i const above = _mm_and_si128(_mm_cmpgt_epi8(values, _mm_set1_epi8(9)), _mm_set1_epi8('a' - '0' - 10));
        return _mm_add_epi8(_mm_add_epi8(values, _mm_set1_epi8('0')), above);
    };
    for (std::size_t i = 0; i < count; i += 16) {
        __m128i const values = _mm_loadu_si128(static_cast<__m128i const*>(static_cast<void const*>(bytes + i)));
        __m128i const first = digits(_mm_and_si128(_mm_srli_epi16(values, 4), low));
        __m128i const second = digits(_mm_and_si128(values, low));
        auto* const out = static_cast<__m128i*>(static_cast<void*>(hex + i * 2));
        _mm_storeu_si128(out, _mm_unpacklo_epi8(first, second));
        _mm_storeu_si128(out + 1, _mm_unpackhi_epi8(first, second));
    }
}

} // namespace qvxsys::hash

void qvxsys::detail::ShaOf(sha2::SHA_TYPE type, std::byte const* data, std::size_t size, std::byte* digest) noexcept
{
    auto const* const bytes = static_cast<unsigned char const*>(static_cast<void const*>(data));
    (hash::Has64BitWords(type) ? hash::Family64::Digest : hash::Family32::Digest)(type, bytes, size, digest);
}
