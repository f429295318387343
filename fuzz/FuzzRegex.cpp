// Regular expressions: any pattern on any text ends, with a status within the limits, and finds what lies in the text.

#include <qvxsys/ICURegexPattern.h>

#include "Fuzz.h"

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    using QvxICU::ICUErrorCode;
    if (size < 4) {
        return;
    }
    // Flags, the pattern's length, then units: bytes mostly, each 0xFF making a whole unit of the next two.
    unsigned const flags = data[0];
    std::u16string units;
    for (std::size_t i = 2; i < size; ++i) {
        bool const wide = data[i] == 0xFF && i + 2 < size;
        units += wide ? static_cast<char16_t>(data[i + 1] << 8 | data[i + 2]) : char16_t{data[i]};
        i += wide ? 2 : 0;
    }
    std::size_t const split = std::min<std::size_t>(data[1], units.size());
    ICUErrorCode status = ICUErrorCode::ZeroError;
    auto const pattern = QvxICU::ICURegexPattern::createInstance(TStringCore(units.substr(0, split)), flags, status);
    TStringView const text(units.data() + split, units.size() - split);
    auto const matcher = pattern->matcher(text, status);
    matcher->setTimeLimit(20, status);
    matcher->setStackLimit(1'000'000, status);
    int last = 0;
    while (matcher->find(status)) {
        int const start = matcher->start(status);
        int const end = matcher->end(status);
        Require(start >= last && end >= start && end <= text.length());
        last = end;
    }
    status = ICUErrorCode::ZeroError;
    static_cast<void>(matcher->replaceAll(u"<$0>", status));
    status = ICUErrorCode::ZeroError;
    static_cast<void>(matcher->split(status));
    status = ICUErrorCode::ZeroError;
    matcher->region(static_cast<int>(flags) - 64, data[2], status);
    static_cast<void>(matcher->matches(status));
}
