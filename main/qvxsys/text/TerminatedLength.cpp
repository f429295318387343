#include <qvxsys/TextArguments.h>

#include <cstdint>

#include <emmintrin.h>

namespace qvxsys::detail {

// Eight units at a time in aligned loads. A load that begins before the text or ends behind the terminator stays within
// the 16 bytes, hence the page, in which text stands; what is outside the text does not enter the result, whoever may
// be writing there. The sanitizers cannot know that, so they are told to look away here.
__attribute__((no_sanitize("address", "thread"))) std::size_t TerminatedLength(char16_t const* text) noexcept
{
    auto const address = reinterpret_cast<std::uintptr_t>(text);
    if ((address & 1) != 0) [[unlikely]] {
        std::size_t n = 0;
        while (text[n] != 0) {
            ++n;
        }
        return n;
    }
    __m128i const zero = _mm_setzero_si128();
    auto const* block = reinterpret_cast<__m128i const*>(address & ~std::uintptr_t{15});
    // Two mask bits a unit; those of units before the text are shifted out.
    unsigned const before = static_cast<unsigned>(address & 15);
    auto found = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_load_si128(block), zero))) >> before;
    if (found != 0) {
        return static_cast<unsigned>(__builtin_ctz(found)) / 2;
    }
    std::size_t units = (16 - before) / 2;
    for (;; units += 8) {
        ++block;
        found = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_load_si128(block), zero)));
        if (found != 0) {
            return units + static_cast<unsigned>(__builtin_ctz(found)) / 2;
        }
    }
}

} // namespace qvxsys::detail
