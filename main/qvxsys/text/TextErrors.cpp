#include "TextErrors.h"

#include <string>

#include <qvxsys/TStringCore.h>

namespace qvxsys::text {

void Throw(std::string_view message)
{
    throw TStringCore::Exception(TStringCore(message.data(), static_cast<int>(message.size())));
}

void ThrowOverflow()
{
    Throw("Allocation size less than zero; probable overflow");
}

void ThrowNonsenseLength(std::int64_t length, std::string_view routine)
{
    Throw("Nonsense string length: " + std::to_string(length) + " encountered in " + std::string(routine));
}

void ThrowIcuError(int status, std::string_view routine, std::string_view icuFunction)
{
    Throw("ICU error " + std::to_string(status) + " encountered while " + std::string(routine) + " was trying to use " +
          std::string(icuFunction));
}

void ThrowInsufficientCapacity(int capacity, std::string_view routine)
{
    Throw("Error insufficient destinationCapacity (" + std::to_string(capacity) + ") was passed into " +
          std::string(routine) + ".");
}

} // namespace qvxsys::text
