// The scans for processors with AVX-512: the same loops with masks for hits.

#include "kernels/ScanLoops.h"

#include <immintrin.h>

namespace qvxsys::text::avx512 {
namespace {

/// For texts of 16 to 31 units.
struct Half
{
    using Vector = __m256i;
    using Hits = __mmask16;
    using Narrower = Sse2;
    static constexpr std::size_t kUnits = 16;

    static Vector Load(char16_t const* p) noexcept { return _mm256_loadu_epi16(p); }
    static Vector All(unsigned unit) noexcept { return _mm256_set1_epi16(static_cast<short>(unit)); }
    static Hits Equal(Vector a, Vector b) noexcept { return _mm256_cmpeq_epi16_mask(a, b); }
    static Hits And(Hits a, Hits b) noexcept { return _kand_mask16(a, b); }
    static Hits Or(Hits a, Hits b) noexcept { return _kor_mask16(a, b); }
    static bool None(Hits hits) noexcept { return hits == 0; }
    static std::uint64_t Bits(Hits hits) noexcept { return hits; }
    static Hits Stops(Vector a, Vector b) noexcept
    {
        return _knot_mask16(_mm256_mask_test_epi16_mask(_mm256_cmpeq_epi16_mask(a, b), a, a));
    }
    static Hits StopsFolded(Vector a, Vector b) noexcept
    {
        __m256i const letter = _mm256_sub_epi16(_mm256_or_si256(a, All(0x20)), All(u'a'));
        Hits const differing = _mm256_cmpneq_epi16_mask(a, b);
        Hits const sameLetter = _mm256_mask_cmplt_epu16_mask(
            _mm256_mask_cmpeq_epi16_mask(differing, _mm256_xor_si256(a, b), All(0x20)), letter, All(26));
        return _kor_mask16(_kandn_mask16(sameLetter, differing), _mm256_testn_epi16_mask(a, a));
    }
};

struct Avx512
{
    using Vector = __m512i;
    using Hits = __mmask32;
    using Narrower = Half;
    static constexpr std::size_t kUnits = 32;
    static constexpr std::size_t kVectors = 2;

    static Vector Load(char16_t const* p) noexcept { return _mm512_loadu_si512(p); }
    static Vector All(unsigned unit) noexcept { return _mm512_set1_epi16(static_cast<short>(unit)); }
    static Hits Equal(Vector a, Vector b) noexcept { return _mm512_cmpeq_epi16_mask(a, b); }
    static Hits And(Hits a, Hits b) noexcept { return _kand_mask32(a, b); }
    static Hits Or(Hits a, Hits b) noexcept { return _kor_mask32(a, b); }
    static bool None(Hits hits) noexcept { return hits == 0; }
    static std::uint64_t Bits(Hits hits) noexcept { return hits; }
    static Hits Stops(Vector a, Vector b) noexcept
    {
        return _knot_mask32(_mm512_mask_test_epi16_mask(_mm512_cmpeq_epi16_mask(a, b), a, a));
    }
    static Hits StopsFolded(Vector a, Vector b) noexcept
    {
        __m512i const letter = _mm512_sub_epi16(_mm512_or_si512(a, All(0x20)), All(u'a'));
        Hits const differing = _mm512_cmpneq_epi16_mask(a, b);
        Hits const sameLetter = _mm512_mask_cmplt_epu16_mask(
            _mm512_mask_cmpeq_epi16_mask(differing, _mm512_xor_si512(a, b), All(0x20)), letter, All(26));
        return _kor_mask32(_kandn_mask32(sameLetter, differing), _mm512_testn_epi16_mask(a, a));
    }
};

} // namespace

QVX_DEFINE_SCANS(Avx512)

} // namespace qvxsys::text::avx512
