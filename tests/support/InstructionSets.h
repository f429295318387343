#pragma once
// Every instruction set that this processor has, for tests of all of them on one machine.

#include <qvxsys/Processor.h>

/// Calls `check` with each set in force, one after the other. When it throws, the set stays as it is, for whoever asks.
template<class Check>
void OnEverySet(Check check)
{
    using quorvex::cpu::InstructionSet;
    for (InstructionSet const set : {InstructionSet::Portable, InstructionSet::Avx2, InstructionSet::Avx512}) {
        InstructionSet const before = quorvex::cpu::LimitInstructionSet(set);
        if (quorvex::cpu::CurrentInstructionSet() == set) {
            check();
        }
        quorvex::cpu::LimitInstructionSet(before);
    }
}
