// The positional formatter on arbitrary formats and arguments, against the naive one. The input: the number of
// arguments, their lengths, then units.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <qvxsys/qvxsys.h>

#include "support/ReferenceFormat.h"

namespace {

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

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
    std::size_t const count = input.Byte() % 101;
    std::vector<std::u16string> arguments;
    std::vector<TStringCore> texts;
    for (std::size_t i = 0; i < count; ++i) {
        arguments.push_back(input.Units(i < 4 ? input.Byte() % 32 : 1));
        texts.push_back(TStringCore(TStringView(arguments.back())));
    }
    std::u16string const format = input.Units(4096);
    reference::Formatted const expected = reference::Format(format, arguments);

    std::uint32_t fault = 0;
    TStringCore result;
    try {
        TFormatStringCore f(u"%1");
        f.arg(texts);
        f = TStringCore(TStringView(format));
        result = f.result();
        Require(TFormatStringCore(f).result().view() == result.view());
        Require(f.formatString().view() == TStringView(format));
    } catch (TFormatStringCore::Exception const& e) {
        fault = e.GetErrorCode();
        if (fault == 0x0E2B86FB) {
            std::string const text = e.GetMessagesFront().toStdString();
            std::string const begin = "Insufficient parameters to format string (have " + std::to_string(count) +
                                      ", need " + std::to_string(expected.need) + ": format string = \"";
            Require(text.starts_with(begin) && text.ends_with("\")"));
        }
    }
    Require(fault == expected.fault);
    Require(fault != 0 || result.view() == TStringView(expected.text));
    return 0;
}
