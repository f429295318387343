// Programs of edits against a naive model, and case mapping against ICU.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <unicode/ustring.h>

#include "support/EditModel.h"

namespace {

void CheckCase(TStringView text)
{
    auto const same = [&](auto map, TStringCore const& own) {
        std::u16string expected(3 * text.size() + 1, u'\0');
        UErrorCode status = U_ZERO_ERROR;
        int const length =
            map(expected.data(), static_cast<int>(expected.size()), text.data(), text.length(), nullptr, &status);
        return own.view() == TStringView(expected.data(), static_cast<std::size_t>(length));
    };
    if (!same(u_strToUpper, text.toUpper()) || !same(u_strToLower, text.toLower())) {
        std::abort();
    }
}

} // namespace

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const error = testing_support::EditModel(data, size).Run();
    if (!error.empty()) {
        std::fprintf(stderr, "%s\n", error.c_str());
        std::abort();
    }
    std::u16string units(size / 2, u'\0');
    if (!units.empty()) {
        std::memcpy(units.data(), data, units.size() * 2);
    }
    CheckCase(units);
    // As Latin, where most of the special mappings are one byte away.
    CheckCase(TStringCore::fromLatin1(reinterpret_cast<char const*>(data), static_cast<int>(size)));
    return 0;
}
