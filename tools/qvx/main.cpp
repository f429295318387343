// qvx: what the library is good for, as a program.

#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <qvxsys/Format.h>
#include <qvxsys/Version.h>
#include <qvxsys/std.h>

#include "Arguments.h"
#include "Failures.h"
#include "Host.h"

namespace qvx {
namespace {

int Run(std::vector<std::string> const& arguments)
{
    host::Prepare();
    CLI::App app("Scans text files, and keeps programs within limits.", "qvx");
    app.set_version_flag("--version",
                         std::string("qvx " QVXSYS_VERSION_STRING " (qvxsys ") + qvxsys::LoadedVersionText() + ")");
    app.require_subcommand(1);
    app.failure_message([](CLI::App const*, CLI::Error const& error) {
        return "qvx: " + std::string(error.what()) + "\nTry \"qvx --help\" or \"qvx COMMAND --help\".\n";
    });
    Command const commands[] = {AddScan(app), AddWatch(app), AddTop(app), AddDoctor(app), AddLocale(app)};
    try {
        app.parse(Guarded(arguments));
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? kSuccess : kUsageError;
    }
    return std::ranges::find_if(commands, [](Command const& command) { return command.app->parsed(); })->run();
}

} // namespace

int Main(std::vector<std::string> const& arguments)
{
    try {
        return Run(arguments);
    } catch (QuorvexException const& exception) {
        std::cerr << qvxsys::Format(u"qvx: %1\n", Describe(exception));
    } catch (TStringCore::Exception const& exception) {
        std::cerr << "qvx: " << exception.toStdString() << '\n';
    } catch (std::exception const& exception) {
        std::cerr << "qvx: " << exception.what() << '\n';
    }
    return kSomeFailed;
}

} // namespace qvx
