#include <qvxsys/Processor.h>

#include <algorithm>
#include <atomic>

#include "kernels/Kernels.h"

namespace qvxsys::text {
namespace {

using quorvex::cpu::InstructionSet;

#define QVX_KERNEL_TABLE(set)                                                                                          \
    {                                                                                                                  \
        set::Utf8ToUtf16, set::Utf16LengthOfUtf8, set::Utf8PrefixToUtf32, set::Utf16ToUtf8, set::Utf8LengthOfUtf16,    \
            set::Utf16ToUtf32, set::Utf32ToUtf16, set::Utf32ToUtf16Raw, set::Utf32ToUtf8Raw, set::CopyWellFormed,      \
            set::CountCodePoints, set::CountUnit, set::FirstStop, set::FirstStopFolded, set::NextHits,                 \
            set::PreviousHits                                                                                          \
    }

// Indexed by InstructionSet.
constexpr Kernels kTables[] = {QVX_KERNEL_TABLE(portable), QVX_KERNEL_TABLE(avx2), QVX_KERNEL_TABLE(avx512)};

#undef QVX_KERNEL_TABLE

InstructionSet Detect() noexcept
{
    __builtin_cpu_init();
    bool const avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
                      __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
    bool const avx512 = avx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
                        __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2");
    return avx512 ? InstructionSet::Avx512 : avx2 ? InstructionSet::Avx2 : InstructionSet::Portable;
}

} // namespace

// Null until first used: nothing runs before main.
constinit std::atomic<Kernels const*> g_kernels{nullptr};

Kernels const& ChooseKernels() noexcept
{
    // Racing threads find the same set; a limit set meanwhile is not overwritten.
    Kernels const* chosen = nullptr;
    Kernels const* const detected = &kTables[static_cast<int>(Detect())];
    return g_kernels.compare_exchange_strong(chosen, detected, std::memory_order_relaxed) ? *detected : *chosen;
}

} // namespace qvxsys::text

namespace quorvex::cpu {

using qvxsys::text::g_kernels;
using qvxsys::text::kTables;

InstructionSet DetectedInstructionSet() noexcept
{
    return qvxsys::text::Detect();
}

InstructionSet CurrentInstructionSet() noexcept
{
    return static_cast<InstructionSet>(&qvxsys::text::kernels() - kTables);
}

InstructionSet LimitInstructionSet(InstructionSet limit) noexcept
{
    InstructionSet const set = std::clamp(limit, InstructionSet::Portable, DetectedInstructionSet());
    static_cast<void>(qvxsys::text::kernels());
    return static_cast<InstructionSet>(g_kernels.exchange(&kTables[static_cast<int>(set)]) - kTables);
}

char const* InstructionSetName(InstructionSet set) noexcept
{
    switch (set) {
    case InstructionSet::Avx512:
        return "avx512";
    case InstructionSet::Avx2:
        return "avx2";
    case InstructionSet::Portable:
        break;
    }
    return "portable";
}

} // namespace quorvex::cpu
