// The positional formatter on arbitrary formats and arguments, against the naive one. The input: the number of
// arguments, their lengths, then units.

#include <algorithm>
#include <cstdint>

#include "support/ReferenceFormat.h"

namespace {

class Input
{
public:
    Input(std::uint8_t const* data, std::size_t size) : m_data(data), m_end(data + size) {}

    std::size_t Byte() { return m_data == m_end ? 0 : *m_data++; }
    /// Bytes below 0x80 stand for themselves, so that '%' and digits are frequent; others make a unit with the next.
    std::u16string Units(std::size_t most)
    {
        std::u16string units;
        while (units.size() < most && m_data != m_end) {
            std::size_t const c = Byte();
            units += static_cast<char16_t>(c < 0x80 ? c : (c << 8 | Byte()) ^ 0x8000);
        }
        return units;
    }

private:
    std::uint8_t const* m_data;
    std::uint8_t const* m_end;
};

} // namespace

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Input input(data, size);
    std::vector<std::u16string> arguments(input.Byte() % 101);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        arguments[i] = input.Units(i < 4 ? input.Byte() % 32 : 1);
    }
    reference::CheckFormat(input.Units(4096), arguments);
    return 0;
}
