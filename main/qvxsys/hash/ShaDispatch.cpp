#include <cpuid.h>

#include <atomic>

#include <qvxsys/Processor.h>

#include "ShaKernels.h"

namespace qvxsys::hash {
namespace {

// Indexed by InstructionSet, and by whether there are the SHA extensions.
constexpr ShaKernels kTables[][2] = {
    {{portable::Sha1, portable::Sha256, portable::Sha512}, {portable::Sha1, portable::Sha256, portable::Sha512}},
    {{portable::Sha1, portable::Sha256, avx2::Sha512}, {sha_ni::Sha1, sha_ni::Sha256, avx2::Sha512}},
    {{portable::Sha1, portable::Sha256, avx512::Sha512}, {sha_ni::Sha1, sha_ni::Sha256, avx512::Sha512}},
};

// Their registers are those of SSE2, so no support by the operating system has to be asked for.
bool DetectShaNi() noexcept
{
    constexpr unsigned kNeeded = bit_SSSE3 | bit_SSE4_1;
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & kNeeded) != kNeeded) {
        return false;
    }
    return __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0 && (ebx & bit_SHA) != 0;
}

// Nothing runs before main; racing threads find the same.
enum : signed char { kUnknown = -1, kNo = 0, kYes = 1 };
constinit std::atomic<signed char> g_hasShaNi{kUnknown};

} // namespace

ShaKernels const& CurrentShaKernels() noexcept
{
    signed char hasShaNi = g_hasShaNi.load(std::memory_order_relaxed);
    if (hasShaNi == kUnknown) [[unlikely]] {
        hasShaNi = DetectShaNi() ? kYes : kNo;
        g_hasShaNi.store(hasShaNi, std::memory_order_relaxed);
    }
    return kTables[static_cast<int>(quorvex::cpu::CurrentInstructionSet())][hasShaNi];
}

} // namespace qvxsys::hash
