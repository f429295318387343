#include "Parking.h"

#include <algorithm>

#include "WindowsApi.h"

namespace qvxsys::sync {

namespace {

/// At least until the deadline; the caller's loop comes back when it was cut short.
DWORD MillisecondsUntil(Deadline const& deadline) noexcept
{
    if (!deadline) {
        return INFINITE;
    }
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
    return static_cast<DWORD>(std::clamp<long long>(left.count(), 0, INFINITE - 1));
}

} // namespace

Parked SystemParking::Park(void const* address, std::uint32_t expected, Deadline const& deadline) noexcept
{
    DWORD const before = GetLastError();
    if (WaitOnAddress(const_cast<void*>(address), &expected, sizeof(expected), MillisecondsUntil(deadline))) {
        return Parked::Awake;
    }
    if (GetLastError() != ERROR_TIMEOUT) {
        return Parked::Refused;
    }
    SetLastError(before);
    // The system's clock ticks are coarser than the deadline's.
    return deadline && std::chrono::steady_clock::now() >= *deadline ? Parked::TimedOut : Parked::Awake;
}

bool SystemParking::WakeOne(void const* address) noexcept
{
    WakeByAddressSingle(const_cast<void*>(address));
    return true;
}

bool SystemParking::WakeAll(void const* address) noexcept
{
    WakeByAddressAll(const_cast<void*>(address));
    return true;
}

unsigned long CodeOf(SystemError error) noexcept
{
    return error == SystemError::InvalidArgument ? ERROR_INVALID_PARAMETER : ERROR_TOO_MANY_POSTS;
}

unsigned int UsableProcessors() noexcept
{
    DWORD_PTR process = 0;
    DWORD_PTR system = 0;
    if (!GetProcessAffinityMask(GetCurrentProcess(), &process, &system) || process == 0) {
        // More processor groups than one.
        return std::max<DWORD>(1, GetActiveProcessorCount(ALL_PROCESSOR_GROUPS));
    }
    return static_cast<unsigned int>(__builtin_popcountll(process));
}

} // namespace qvxsys::sync
