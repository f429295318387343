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
    static Hits Stops(Vector a, Vector b) noexcept
    {
        return _mm256_cmpeq_epi16(_mm256_and_si256(_mm256_cmpeq_epi16(a, b), a), _mm256_setzero_si256());
    }
    static Hits StopsFolded(Vector a, Vector b) noexcept
    {
        __m256i const caseBit = All(0x20);
        __m256i const lower = _mm256_add_epi16(_mm256_or_si256(a, caseBit), All(0x7FFF - u'z'));
        __m256i const letter = _mm256_cmpgt_epi16(lower, All(0x7FFF - 26));
        __m256i const sameLetter = _mm256_and_si256(letter, _mm256_cmpeq_epi16(_mm256_xor_si256(a, b), caseBit));
        __m256i const same = _mm256_or_si256(_mm256_cmpeq_epi16(a, b), sameLetter);
        return _mm256_cmpeq_epi16(_mm256_and_si256(same, a), _mm256_setzero_si256());
    }
};

} // namespace

QVX_DEFINE_SCANS(Avx2)

} // namespace qvxsys::text::avx2
