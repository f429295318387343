#pragma once
// The kernels of every instruction set that this processor has, for tests of all of them on one machine.

#include <array>
#include <string>
#include <vector>

#include <qvxsys/Processor.h>

#include "kernels/Kernels.h"

namespace kernel_sets {

using quorvex::cpu::InstructionSet;

inline constexpr std::array kAll = {InstructionSet::Portable, InstructionSet::Avx2, InstructionSet::Avx512};

/// The table of a set; null when the processor lacks it.
inline qvxsys::text::Kernels const* Of(InstructionSet set)
{
    InstructionSet const before = quorvex::cpu::LimitInstructionSet(set);
    bool const available = quorvex::cpu::CurrentInstructionSet() == set;
    qvxsys::text::Kernels const* const kernels = available ? &qvxsys::text::kernels() : nullptr;
    quorvex::cpu::LimitInstructionSet(before);
    return kernels;
}

inline std::vector<qvxsys::text::Kernels const*> const& Available()
{
    static std::vector<qvxsys::text::Kernels const*> const sets = [] {
        std::vector<qvxsys::text::Kernels const*> found;
        for (InstructionSet const set : kAll) {
            if (Of(set) != nullptr) {
                found.push_back(Of(set));
            }
        }
        return found;
    }();
    return sets;
}

/// For the names of parameterised tests.
template<class Info>
std::string NameOf(Info const& test)
{
    return quorvex::cpu::InstructionSetName(test.param);
}

} // namespace kernel_sets
