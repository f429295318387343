// Programs of edits against a naive model, and case mapping against ICU.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "support/EditModel.h"
#include "support/IcuConvert.h"

namespace {

void CheckCase(TStringView text)
{
    std::u16string const units(text.begin(), text.end());
    if (text.toUpper().toStdUString() != icu_reference::InCase(true, units) ||
        text.toLower().toStdUString() != icu_reference::InCase(false, units)) {
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
