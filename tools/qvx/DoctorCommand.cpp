// The command line of `qvx doctor`.

#include <iostream>
#include <memory>

#include <CLI/CLI.hpp>

#include <qvxsys/std.h>

#include "Arguments.h"
#include "Doctor.h"
#include "Output.h"

namespace qvx {
namespace {

constexpr char const* kNotes =
    "What the library makes of this machine, and where each figure comes from. Memory and processors are what this\n"
    "process may use, within its affinity and its control groups; beside them is what the machine has.\n"
    "\n"
    "The exchange is that of resource managers: each of two listeners is to get each datagram once. It takes a port "
    "of\n"
    "its own for some tenths of a second.\n"
    "\n"
    "Exit status: 0, 1 if something does not work as it should, 2 if the command line is wrong.";

int Run(DoctorOptions const& options)
{
    Diagnosis const diagnosis = Diagnose(options);
    if (options.asJson) {
        std::cout << DiagnosisJson(diagnosis);
    } else {
        for (TStringCore const& line : DiagnosisLines(diagnosis)) {
            std::cout << line << '\n';
        }
    }
    return FinishOutput() && diagnosis.complaints.empty() ? 0 : 1;
}

} // namespace

Command AddDoctor(CLI::App& app)
{
    auto const options = std::make_shared<DoctorOptions>();
    CLI::App* const doctor = app.add_subcommand("doctor", "Show what the library sees of this machine");
    doctor->add_flag("--json", options->asJson, "Print JSON instead of a page");
    doctor->add_flag("!--no-exchange", options->checksExchange, "Leave out the check of the exchange");
    doctor->footer(kNotes);
    return {doctor, [options] { return Run(*options); }};
}

} // namespace qvx
