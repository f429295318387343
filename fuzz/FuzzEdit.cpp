// Programs of edits against a naive model, and case mapping against ICU.

#include "Fuzz.h"
#include "support/EditModel.h"
#include "support/IcuConvert.h"

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    std::string const error = testing_support::EditModel(data, size).Run();
    Require(error.empty(), error);
    // As units, and as Latin, where most of the special mappings are one byte away.
    TStringCore const latin = TStringCore::fromLatin1(Bytes(data, size).data(), static_cast<int>(size));
    for (std::u16string const& units : {Units<char16_t>(data, size), latin.toStdUString()}) {
        TStringView const text = units;
        Require(text.toUpper().toStdUString() == icu_reference::InCase(true, units));
        Require(text.toLower().toStdUString() == icu_reference::InCase(false, units));
    }
}
