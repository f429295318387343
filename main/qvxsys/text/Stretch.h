#pragma once
// Converting a text in stretches: where it may be cut, and how a conversion is kept inside a destination that has room
// for the result but not for the kernels' worst case.

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstring>

#include <qvxsys/CharacterUtils.h>

namespace qvxsys::text {

/// The bytes of a UTF-8 sequence with this first byte; 1 for a byte that begins none (Unicode Standard 15.0, Table 3-7).
inline std::size_t SequenceLength(unsigned char lead) noexcept
{
    if (lead < 0xC2 || lead > 0xF4) {
        return 1;
    }
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// A length of at most n, and at least n - 3 for UTF-8 and n - 1 for UTF-16, at which a longer text can be cut so that
/// the two parts convert as the whole does. For UTF-8 it is enough to look at what the last lead byte announces: where
/// the bytes behind it rule that out already, they go to the second part, to the same result, as what is malformed never
/// extends over a byte that begins something.
inline std::size_t WholeCodePoints(char const* src, std::size_t n) noexcept
{
    for (std::size_t back = 1; back <= 3 && back <= n; ++back) {
        if (CharacterUtils::IsFirstUtf8CodeUnit(src[n - back])) {
            return SequenceLength(static_cast<unsigned char>(src[n - back])) > back ? n - back : n;
        }
    }
    return n;
}
inline std::size_t WholeCodePoints(char16_t const* src, std::size_t n) noexcept
{
    return n != 0 && CharacterUtils::IsHighSurrogate(src[n - 1]) ? n - 1 : n;
}
inline std::size_t WholeCodePoints(char32_t const*, std::size_t n) noexcept
{
    return n;
}

/// Runs convert(src, n, dst), which needs room for `worst` units a source unit, on a destination of exactly `length`
/// units, which must be the length of the whole result. While the room left is the worst case of a stretch, the kernel
/// writes straight to dst; the rest goes through a buffer.
template<class From, class To, class Convert>
void ConvertTight(From const* src, std::size_t n, To* dst, std::size_t length, std::size_t worst, Convert convert)
{
    constexpr std::size_t kBuffer = 256;
    To buffer[kBuffer];
    while (n != 0) {
        bool const direct = length >= kBuffer * worst;
        std::size_t const most = (direct ? length : kBuffer) / worst;
        std::size_t const stretch = n <= most ? n : WholeCodePoints(src, most);
        std::size_t const written = convert(src, stretch, direct ? dst : buffer);
        if (!direct) {
            std::memcpy(dst, buffer, written * sizeof(To));
        }
        src += stretch;
        n -= stretch;
        dst += written;
        length -= written;
    }
}

} // namespace qvxsys::text
