#pragma once
// The positional formatter written the slow way, as an oracle: one marker at a time, digits by ICU. And a check against
// that, for tests and the fuzzer. What differs is thrown.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include <qvxsys/qvxsys.h>
#include <unicode/uchar.h>

namespace reference {

struct Formatted
{
    std::uint32_t fault = 0; ///< the code of the error; 0 for none
    int need = 0;            ///< the highest marker
    std::u16string text;
};

inline Formatted Format(std::u16string const& format, std::vector<std::u16string> const& arguments)
{
    Formatted out;
    std::u16string rest = format;
    std::vector<int> missing;
    while (!rest.empty()) {
        char16_t const c = rest[0];
        rest.erase(0, 1);
        if (c != u'%') {
            out.text += c;
            continue;
        }
        if (rest.empty()) {
            return {0xA33EDF83, 0, u""};
        }
        if (rest[0] == u'%') {
            out.text += u'%';
            rest.erase(0, 1);
            continue;
        }
        if (!u_isdigit(rest[0])) {
            return {0xF7AF5E37, 0, u""};
        }
        if (rest[0] == u'0') {
            return {0xB3668D59, 0, u""};
        }
        int number = rest[0] - u'0';
        rest.erase(0, 1);
        while (!rest.empty() && u_isdigit(rest[0])) {
            number = number * 10 + rest[0] - u'0';
            rest.erase(0, 1);
            if (number > 99) {
                return {0xCA249FEE, 0, u""};
            }
        }
        out.need = number > out.need ? number : out.need;
        if (number <= static_cast<int>(arguments.size())) {
            out.text += arguments[static_cast<std::size_t>(number - 1)];
        }
    }
    if (out.need > static_cast<int>(arguments.size())) {
        out.fault = 0x0E2B86FB;
        out.text.clear();
    }
    return out;
}

inline void CheckFormat(std::u16string const& format, std::vector<std::u16string> const& arguments)
{
    Formatted const expected = Format(format, arguments);
    auto const require = [&format](bool holds) {
        if (!holds) {
            throw std::logic_error(TStringCore(format).toStdString());
        }
    };
    std::uint32_t fault = 0;
    TStringCore result;
    try {
        TFormatStringCore f(u"%1");
        f.arg(std::vector<TStringCore>(arguments.begin(), arguments.end()));
        f = TStringCore(format);
        result = f.result();
        require(TFormatStringCore(f).result().view() == result.view() && f.formatString().toStdUString() == format);
    } catch (TFormatStringCore::Exception const& e) {
        fault = e.GetErrorCode();
        require(fault != 0x0E2B86FB ||
                e.GetMessagesFront().toStdString() == "Insufficient parameters to format string (have " +
                                                          std::to_string(arguments.size()) + ", need " +
                                                          std::to_string(expected.need) + ": format string = \"" +
                                                          TStringCore(format).toStdString() + "\")");
    }
    require(fault == expected.fault && (fault != 0 || result.view() == TStringView(expected.text)));
}

} // namespace reference
