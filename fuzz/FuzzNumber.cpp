// Numbers: texts of arbitrary bytes read in every base and as floating-point numbers, values written and read back,
// with the C++ library as the oracle.

#include "Fuzz.h"
#include "support/NumberReference.h"

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    if (size < 2) {
        return;
    }
    int const base = 2 + data[0] % 35;
    std::string const bytes(Bytes(data + 2, size - 2));
    number_reference::CheckInteger(bytes, base);
    number_reference::CheckFloat<double>(bytes);
    number_reference::CheckFloat<float>(bytes);
    std::uint64_t bits = 0;
    std::memcpy(&bits, bytes.data(), std::min(bytes.size(), sizeof bits));
    number_reference::CheckValue(bits, base, data[1], static_cast<char16_t>(data[0] << 8 | data[1]));

    // As units: any text at all is read without reading outside it.
    auto const units = Exact<char16_t>(data, size / 2);
    TStringView const any(units.get(), size / 2);
    for (int const anyBase : {0, base}) {
        static_cast<void>(any.toULongLong(nullptr, anyBase));
        Require(any.leftIntegerLength(anyBase) <= any.length());
    }
    static_cast<void>(any.toDouble());
}
