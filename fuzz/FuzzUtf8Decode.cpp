// All UTF-8 decoding kernels against each other and against ICU.

#include "support/KernelSets.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace text = qvxsys::text;

namespace {

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

// Each buffer has exactly the room that is promised, for the address sanitizer to watch over it.
void CheckSet(char const* src, std::size_t n, std::u16string const& expected, std::size_t expectedSubstitutions,
              text::Kernels const& kernels)
{
    std::unique_ptr<char16_t[]> const units(new char16_t[n]);
    std::size_t substitutions = 0;
    Require(kernels.utf8ToUtf16(src, n, units.get(), substitutions) == expected.size());
    Require(std::equal(expected.begin(), expected.end(), units.get()));
    Require(substitutions == expectedSubstitutions);
    Require(kernels.utf16LengthOfUtf8(src, n) == expected.size());

    std::unique_ptr<char32_t[]> const values(new char32_t[n]);
    std::size_t consumed = n + 1;
    std::size_t const count = kernels.utf8PrefixToUtf32(src, n, values.get(), consumed);
    Require(consumed <= n);
    std::u16string again;
    for (std::size_t i = 0; i < count; ++i) {
        Require(values[i] != 0);
        if (values[i] > 0xFFFF) {
            again += static_cast<char16_t>(U16_LEAD(values[i]));
            again += static_cast<char16_t>(U16_TRAIL(values[i]));
        } else {
            again += static_cast<char16_t>(values[i]);
        }
    }
    Require(expected.compare(0, again.size(), again) == 0);
    Require(kernels.utf16LengthOfUtf8(src, consumed) == again.size());
    if (substitutions == 0 && std::find(src, src + n, '\0') == src + n) {
        Require(n - consumed <= 64);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t n)
{
    std::unique_ptr<char[]> const copy(new char[n]);
    std::copy(data, data + n, copy.get());
    std::u16string expected(n + 1, u'\0');
    std::int32_t length = 0;
    std::int32_t substitutions = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8WithSub(expected.data(), static_cast<std::int32_t>(n + 1), &length, copy.get(),
                         static_cast<std::int32_t>(n), 0xFFFD, &substitutions, &error);
    Require(U_SUCCESS(error));
    expected.resize(static_cast<std::size_t>(length));

    for (text::Kernels const* const kernels : kernel_sets::Available()) {
        CheckSet(copy.get(), n, expected, static_cast<std::size_t>(substitutions), *kernels);
    }
    return 0;
}
