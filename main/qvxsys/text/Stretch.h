#pragma once
// Converting a text in stretches: where it may be cut, and how a conversion is kept inside a destination that has room
// for the result but not for the kernels' worst case.

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstring>

#include <qvxsys/CharacterUtils.h>

namespace qvxsys::text {

/// The largest length of at most `stretch` (>= 4) units at which src can be cut so that the two parts convert as the
/// whole does. For UTF-8 that is before a byte that begins something, or where the last three bytes are continuations:
/// no sequence is longer than four bytes, so none reaches across then. For UTF-16 it is not behind a high surrogate.
inline std::size_t WholeCodePoints(char const* src, std::size_t stretch) noexcept
{
    for (std::size_t cut = stretch - 1; cut + 3 >= stretch; --cut) {
        if (CharacterUtils::IsFirstUtf8CodeUnit(src[cut])) {
            return static_cast<unsigned char>(src[cut]) < 0x80 ? cut + 1 : cut;
        }
    }
    return stretch;
}
inline std::size_t WholeCodePoints(char16_t const* src, std::size_t stretch) noexcept
{
    return CharacterUtils::IsHighSurrogate(src[stretch - 1]) ? stretch - 1 : stretch;
}
inline std::size_t WholeCodePoints(char32_t const*, std::size_t stretch) noexcept
{
    return stretch;
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
