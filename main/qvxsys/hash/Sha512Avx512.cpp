// SHA-512 for processors with AVX-512, which rotate the elements of a vector and combine three vectors in one
// instruction each.

#include "Sha512Vectors.h"

namespace qvxsys::hash::avx512 {
namespace {

QVX_INLINE __m128i Xor(__m128i x, __m128i y, __m128i z) noexcept
{
    return _mm_ternarylogic_epi64(x, y, z, 0x96);
}
QVX_INLINE __m256i Xor(__m256i x, __m256i y, __m256i z) noexcept
{
    return _mm256_ternarylogic_epi64(x, y, z, 0x96);
}

template<int N>
QVX_INLINE __m128i Rotated(__m128i x) noexcept
{
    return _mm_ror_epi64(x, N);
}
template<int N>
QVX_INLINE __m256i Rotated(__m256i x) noexcept
{
    return _mm256_ror_epi64(x, N);
}

// Section 4.1.3 of FIPS 180-4.
struct Sigma
{
    template<class V>
    QVX_INLINE static typename V::Vector Zero(typename V::Vector x) noexcept
    {
        return Xor(Rotated<1>(x), Rotated<8>(x), V::template Shifted<7>(x));
    }
    template<class V>
    QVX_INLINE static typename V::Vector One(typename V::Vector x) noexcept
    {
        return Xor(Rotated<19>(x), Rotated<61>(x), V::template Shifted<6>(x));
    }
};

} // namespace

void Sha512(std::uint64_t* state, unsigned char const* blocks, std::size_t count) noexcept
{
    Compress<Sigma>(state, blocks, count);
}

} // namespace qvxsys::hash::avx512
