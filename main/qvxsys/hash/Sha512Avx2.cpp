// SHA-512 for processors with AVX2 and BMI2 (rotations of general registers into another one).

#include "Sha512Vectors.h"

namespace qvxsys::hash::avx2 {
namespace {

// Section 4.1.3 of FIPS 180-4. A rotation by eight bits moves bytes.
struct Sigma
{
    template<class V>
    QVX_INLINE static typename V::Vector Zero(typename V::Vector x) noexcept
    {
        __m128i const rotated = _mm_set_epi8(8, 15, 14, 13, 12, 11, 10, 9, 0, 7, 6, 5, 4, 3, 2, 1);
        auto const byOne = V::Xor(V::template Shifted<1>(x), V::template ShiftedLeft<63>(x), V::template Shifted<7>(x));
        return V::Xor(byOne, V::Shuffle(x, rotated));
    }
    template<class V>
    QVX_INLINE static typename V::Vector One(typename V::Vector x) noexcept
    {
        auto const by19 = V::Xor(V::template Shifted<19>(x), V::template ShiftedLeft<45>(x), V::template Shifted<6>(x));
        return V::Xor(by19, V::template Shifted<61>(x), V::template ShiftedLeft<3>(x));
    }
};

} // namespace

void Sha512(std::uint64_t* state, unsigned char const* blocks, std::size_t count) noexcept
{
    Compress<Sigma>(state, blocks, count);
}

} // namespace qvxsys::hash::avx2
