// Numbers: texts of arbitrary bytes read in every base and as floating-point numbers, values written and read back,
// with the C++ library as the oracle.

#include <cstdint>
#include <cstring>
#include <vector>

#include "support/NumberReference.h"

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    int const base = 2 + data[0] % 35;
    std::string const bytes(reinterpret_cast<char const*>(data) + 2, size - 2);
    number_reference::CheckInteger(bytes, base);
    number_reference::CheckFloat<double>(bytes);
    number_reference::CheckFloat<float>(bytes);
    std::uint64_t bits = 0;
    std::memcpy(&bits, bytes.data(), std::min(bytes.size(), sizeof bits));
    number_reference::CheckValue(bits, base, data[1], static_cast<char16_t>(data[0] << 8 | data[1]));

    // As units: any text at all is read without reading outside it.
    std::vector<char16_t> units(size / 2);
    std::memcpy(units.data(), data, units.size() * sizeof(char16_t));
    TStringView const any(units.data(), units.size());
    for (int const anyBase : {0, base}) {
        static_cast<void>(any.toULongLong(nullptr, anyBase));
        if (any.leftIntegerLength(anyBase) > any.length()) {
            throw std::logic_error("leftIntegerLength");
        }
    }
    static_cast<void>(any.toDouble());
    return 0;
}
