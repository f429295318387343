#pragma once
// The tool's own errors. Their codes and names are printed, so scripts may rely on them.

#include <list>
#include <string>

#include <qvxsys/QuorvexException.h>

namespace qvx {

enum class Failure : unsigned {
    CannotAccess = 1,    ///< a file or folder that is not there, or that may not be opened
    CannotRead = 2,      ///< a file that was opened, but could not be read to its end
    NotAFile = 3,        ///< a FIFO, a device, ...
    NotText = 4,         ///< a binary file
    CannotDecode = 5,    ///< the library has failed to decode a text
    CommandNotFound = 6, ///< a command of which there is no program
    CannotRun = 7,       ///< a command that could not be started
    CannotListen = 8,    ///< a port that cannot be listened on
    NoTerminal = 9,      ///< what is to be shown on a terminal is not
};

/// An error of the user's, with the source 6.
[[nodiscard]] QuorvexUserErrorException MakeFailure(Failure failure, TStringCore const& message);

/// All messages on one line, the innermost first, and the code name: "MESSAGE; CONTEXT; ... (NAME)".
[[nodiscard]] TStringCore Describe(QuorvexException const& error);

/// The calls that were recorded when it was made, innermost first, a line for each as of a TStackWalker without thread
/// ids; empty when none were.
[[nodiscard]] std::list<std::string> TraceOf(QuorvexException const& error);

} // namespace qvx
