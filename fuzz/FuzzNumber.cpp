// Numbers: texts of arbitrary bytes read in every base and as floating-point numbers, values written and read back,
// with the C++ library as the oracle.

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <qvxsys/qvxsys.h>

#include "support/NumberReference.h"

namespace {

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

void CheckInteger(TStringCore const& text, std::string const& bytes, int base)
{
    bool ok = false;
    long long const value = text.toLongLong(&ok, base);
    int const left = text.leftIntegerLength(base);
    Require(left >= 0 && left <= text.length());
    bool narrow = false;
    int const asInt = text.toInt(&narrow, base);
    Require(narrow == (ok && value == asInt) && (asInt == 0 || asInt == value));
    // What from_chars reads to its end must be read alike, and what it refuses for its size never passes as exact.
    long long exact = 0;
    auto const [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), exact, base);
    if (!bytes.empty() && end == bytes.data() + bytes.size()) {
        number_reference::Accumulated const expected(bytes, base);
        Require(ok == expected.ok && value == expected.value);
        Require(error != std::errc() || (ok && value == exact));
        Require(left == text.length());
    }
    // The measured start is a number by itself, unless it is too large.
    if (left > 0) {
        bool whole = false;
        static_cast<void>(text.view().left(left).toLongLong(&whole, base));
        std::string const start =
            bytes.substr(bytes[0] == '+' ? 1 : 0, static_cast<std::size_t>(left) - (bytes[0] == '+' ? 1 : 0));
        bool const prefixed = base == 16 && start.find_first_of("xX") != std::string::npos;
        Require(prefixed || whole == number_reference::Accumulated(start, base).ok);
    }
}

template<class Float>
void CheckFloat(TStringCore const& text, std::string const& bytes, Float (TStringCore::*read)(bool*) const)
{
    bool ok = false;
    Float const value = (text.*read)(&ok);
    int const left = text.leftDoubleLength();
    Require(left >= 0 && left <= text.length());
    std::string const start = bytes.substr(0, static_cast<std::size_t>(left));
    if (start.find_first_of("nN") == std::string::npos && left > 0) {
        Float const expected = number_reference::Read<Float>(start);
        bool whole = false;
        Require((TStringCore(text.view().left(left)).*read)(&whole) == expected);
        bool const zero = start.find_first_of("123456789") >= std::min(start.find_first_of("eE"), start.size());
        Require(whole == (std::isfinite(expected) && (expected != 0 || zero)));
        // What follows changes nothing.
        Require(value == expected);
    }
    Require(!ok || left > 0 || TCType::isSpace(text.front()));
}

void CheckValue(std::uint64_t bits, int base, int width, char16_t fill)
{
    std::string const digits = number_reference::Digits(bits, base);
    TStringCore const text = TStringCore::number(bits, base, width, fill);
    Require(text.length() == std::max(static_cast<int>(digits.size()), width));
    Require(text.view().right(static_cast<int>(digits.size())) == TStringCore(digits.c_str()).view());
    auto const value = static_cast<long long>(bits);
    bool ok = false;
    Require(TStringCore::number(value).toLongLong(&ok) == value && ok);

    auto const number = std::bit_cast<double>(bits);
    auto const single = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
    if (std::isfinite(number)) {
        Require(TStringCore::numberShortest(number).toDouble(&ok) == number && ok);
        Require(TStringCore::number(number, 'e', 16).toDouble() == number);
        int const precision = width - 3;
        for (char const format : {'e', 'f', 'G'}) {
            Require(TStringCore::number(number, format, precision).toStdString() ==
                    number_reference::Printed(number, format, precision < 0 ? 6 : precision));
        }
    }
    if (std::isfinite(single)) {
        Require(TStringCore::numberShortest(single).toFloat(&ok) == single && ok);
    }
}

} // namespace

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    int const base = 2 + data[0] % 35;
    int const width = data[1];
    std::string const bytes(reinterpret_cast<char const*>(data) + 2, size - 2);
    TStringCore const text = TStringCore::fromLatin1(bytes.data(), static_cast<int>(bytes.size()));
    CheckInteger(text, bytes, base);
    CheckFloat<double>(text, bytes, &TStringCore::toDouble);
    CheckFloat<float>(text, bytes, &TStringCore::toFloat);
    std::uint64_t bits = 0;
    std::memcpy(&bits, bytes.data(), std::min(bytes.size(), sizeof bits));
    CheckValue(bits, base, width, static_cast<char16_t>(data[0] << 8 | data[1]));

    // As units: any text at all is read without reading outside it.
    std::vector<char16_t> units(size / 2);
    std::memcpy(units.data(), data, units.size() * sizeof(char16_t));
    TStringView const any(units.data(), units.size());
    for (int const anyBase : {0, base}) {
        Require(any.leftIntegerLength(anyBase) <= any.length());
        static_cast<void>(any.toULongLong(nullptr, anyBase));
    }
    static_cast<void>(any.toDouble());
    return 0;
}
