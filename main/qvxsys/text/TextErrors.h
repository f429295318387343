#pragma once
// The messages of the text layer and the functions that throw them. Out of line and cold, so that the paths which do
// not fail stay short.

#include <cstdint>
#include <string_view>

namespace qvxsys::text {

/// Throws TStringCore::Exception with an ASCII message.
[[noreturn]] void Throw(std::string_view message);

/// "Allocation size less than zero; probable overflow"
[[noreturn]] void ThrowOverflow();

/// "Nonsense string length: N encountered in ROUTINE"
[[noreturn]] void ThrowNonsenseLength(std::int64_t length, std::string_view routine);

/// "ICU error STATUS encountered while ROUTINE was trying to use FUNCTION"
[[noreturn]] void ThrowIcuError(int status, std::string_view routine, std::string_view icuFunction);

/// "Error insufficient destinationCapacity (N) was passed into ROUTINE."
[[noreturn]] void ThrowInsufficientCapacity(int capacity, std::string_view routine);

} // namespace qvxsys::text
