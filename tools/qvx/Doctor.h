#pragma once
// `qvx doctor`: what the library sees of this machine.

#include <string>
#include <vector>

#include <qvxsys/TStringCore.h>

#include "Facts.h"

namespace qvx {

struct Diagnosis
{
    std::vector<FactGroup> groups;
    std::vector<TStringCore> complaints; ///< what does not work as it should
};

struct DoctorOptions
{
    bool asJson = false;
    bool checksExchange = true;
};

/// Looks at the machine; with the exchange, which sends datagrams to this machine, for up to a second.
[[nodiscard]] Diagnosis Diagnose(DoctorOptions const& options);

[[nodiscard]] std::vector<TStringCore> DiagnosisLines(Diagnosis const& diagnosis);
/// An object with an object for each group; a fact that comes from a file or function K has that as "KFrom". What does
/// not work is in `complaints`.
[[nodiscard]] std::string DiagnosisJson(Diagnosis const& diagnosis);

} // namespace qvx
