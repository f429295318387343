// The scans for processors with AVX2.

#include "kernels/ScanLoops.h"

#include <immintrin.h>

namespace qvxsys::text::avx2 {
namespace {

struct Avx2
{
    using Vector = __m256i;
    using Hits = __m256i;
    using Narrower = Sse2;
    static constexpr std::size_t kUnits = 16;
    static constexpr std::size_t kVectors = 4;

    static Vector Load(char16_t const* p) noexcept
    {
        return _mm256_loadu_si256(static_cast<__m256i const*>(static_cast<void const*>(p)));
    }
    static Vector All(unsigned unit) noexcept { return _mm256_set1_epi16(static_cast<short>(unit)); }
    static Hits Equal(Vector a, Vector b) noexcept { return _mm256_cmpeq_epi16(a, b); }
    static Hits And(Hits a, Hits b) noexcept { return _mm256_and_si256(a, b); }
    static Hits Or(Hits a, Hits b) noexcept { return _mm256_or_si256(a, b); }
    static bool None(Hits hits) noexcept { return _mm256_testz_si256(hits, hits) != 0; }
    static std::uint64_t Bits(Hits hits) noexcept
    {
        __m128i const bytes = _mm_packs_epi16(_mm256_castsi256_si128(hits), _mm256_extracti128_si256(hits, 1));
        return static_cast<unsigned>(_mm_movemask_epi8(bytes));
    }
    static Hits Pairs(Vector a, Vector b, CaseRun run) noexcept
    {
        __m256i const above = _mm256_subs_epu16(a, b);
        __m256i const distance = _mm256_or_si256(above, _mm256_subs_epu16(b, a));
        __m256i const low = _mm256_add_epi16(_mm256_sub_epi16(a, above), All(0x8000u - run.low));
        return _mm256_and_si256(_mm256_cmpeq_epi16(distance, All(run.distance)),
                                _mm256_cmpgt_epi16(All(0x8000u + run.count), low));
    }
    static Hits NotOrZero(Hits hits, Vector a) noexcept
    {
        return _mm256_cmpeq_epi16(_mm256_and_si256(hits, a), _mm256_setzero_si256());
    }
};

} // namespace

QVX_DEFINE_SCANS(Avx2)

} // namespace qvxsys::text::avx2
