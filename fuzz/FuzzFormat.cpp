// The positional formatter on arbitrary formats and arguments, against the naive one. The input: the number of
// arguments, their lengths, then units.

#include "Fuzz.h"
#include "support/ReferenceFormat.h"

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    std::uint8_t const* const end = data + size;
    auto const byte = [&]() -> std::size_t { return data == end ? 0 : *data++; };
    // Bytes below 0x80 stand for themselves, so that '%' and digits are frequent; others make a unit with the next.
    auto const text = [&](std::size_t most) {
        std::u16string units;
        while (units.size() < most && data != end) {
            std::size_t const c = byte();
            units += static_cast<char16_t>(c < 0x80 ? c : (c << 8 | byte()) ^ 0x8000);
        }
        return units;
    };
    std::vector<std::u16string> arguments(byte() % 101);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        arguments[i] = text(i < 4 ? byte() % 32 : 1);
    }
    reference::CheckFormat(text(4096), arguments);
}
