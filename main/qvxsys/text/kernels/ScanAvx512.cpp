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
    static Hits Pairs(Vector a, Vector b, CaseRun run) noexcept
    {
        __m256i const low = _mm256_min_epu16(a, b);
        __m256i const distance = _mm256_sub_epi16(_mm256_max_epu16(a, b), low);
        return _mm256_mask_cmplt_epu16_mask(_mm256_cmpeq_epi16_mask(distance, All(run.distance)),
                                            _mm256_sub_epi16(low, All(run.low)), All(run.count));
    }
    static Hits NotOrZero(Hits hits, Vector a) noexcept
    {
        return _knot_mask16(_mm256_mask_test_epi16_mask(hits, a, a));
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
    static Hits Pairs(Vector a, Vector b, CaseRun run) noexcept
    {
        __m512i const low = _mm512_min_epu16(a, b);
        __m512i const distance = _mm512_sub_epi16(_mm512_max_epu16(a, b), low);
        return _mm512_mask_cmplt_epu16_mask(_mm512_cmpeq_epi16_mask(distance, All(run.distance)),
                                            _mm512_sub_epi16(low, All(run.low)), All(run.count));
    }
    static Hits NotOrZero(Hits hits, Vector a) noexcept
    {
        return _knot_mask32(_mm512_mask_test_epi16_mask(hits, a, a));
    }
};

} // namespace

QVX_DEFINE_SCANS(Avx512)

} // namespace qvxsys::text::avx512
