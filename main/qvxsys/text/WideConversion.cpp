#include "WideConversion.h"

#include <algorithm>

#include "Stretch.h"
#include "TextErrors.h"
#include "kernels/Kernels.h"

namespace qvxsys::text {

std::size_t WideLength(TStringView text) noexcept
{
    return kWideIsUtf16 ? text.size() : kernels().countCodePoints(text.data(), text.size());
}

void ToWide(TStringView text, wchar_t* dst) noexcept
{
    if constexpr (kWideIsUtf16) {
        std::copy_n(text.data(), text.size(), dst);
    } else {
        std::size_t substitutions = 0;
        auto const convert = [&substitutions](char16_t const* from, std::size_t n, char32_t* to) {
            return kernels().utf16ToUtf32(from, n, to, substitutions);
        };
        ConvertTight(text.data(), text.size(), reinterpret_cast<char32_t*>(dst), WideLength(text), 1, convert);
        if (substitutions == 0) {
            return;
        }
        // Lone surrogates were replaced: put their values back.
        for (std::size_t i = 0; i < text.size(); ++i, ++dst) {
            if (!CharacterUtils::IsSurrogate(text[i])) {
                continue;
            }
            bool const pair = CharacterUtils::IsHighSurrogate(text[i]) && i + 1 < text.size() &&
                              CharacterUtils::IsLowSurrogate(text[i + 1]);
            if (pair) {
                ++i;
            } else {
                *dst = static_cast<wchar_t>(text[i]);
            }
        }
    }
}

int ToWideArray(TStringView text, wchar_t* dst, int capacity, char const* routine)
{
    std::size_t const length = WideLength(text);
    if (dst != nullptr) {
        if (capacity < 1 || length > static_cast<std::size_t>(capacity) - 1) {
            ThrowInsufficientCapacity(capacity, routine);
        }
        ToWide(text, dst);
        dst[length] = L'\0';
    }
    return static_cast<int>(length);
}

} // namespace qvxsys::text
