#include "IcuBridge.h"

#include <algorithm>
#include <iterator>

namespace QvxICU44 {

void Own(UParseError const& from, QvxICU::ICUParseError& to) noexcept
{
    to.line = from.line;
    to.offset = from.offset;
    std::copy(std::begin(from.preContext), std::end(from.preContext), to.preContext);
    std::copy(std::begin(from.postContext), std::end(from.postContext), to.postContext);
}

} // namespace QvxICU44
