#pragma once
// Strings that ICU writes in place, without a UnicodeString between.

#include <new>

#include <unicode/utypes.h>

#include <qvxsys/TStringCore.h>

namespace QvxICU44 {

/// What write(units, capacity, status) writes; it returns the length and is called again, with as much room, when it
/// needs more than `room` units. `otherwise` is the result when it fails. Throws std::bad_alloc when ICU had no memory,
/// and what making a string throws.
template<class Write>
[[nodiscard]] TStringCore Written(int room, TStringView otherwise, Write write)
{
    for (;;) {
        TStringCore result;
        if (room > TStringCore::kInlineLength) {
            result.reserve(room);
        }
        UErrorCode status = U_ZERO_ERROR;
        result.resize(room);
        int const length = write(result.data(), result.capacity(), status);
        if (status == U_MEMORY_ALLOCATION_ERROR) {
            throw std::bad_alloc();
        }
        if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR) {
            return TStringCore(otherwise);
        }
        if (length < result.capacity()) {
            result.resize(length);
            return result;
        }
        room = length;
    }
}

} // namespace QvxICU44
