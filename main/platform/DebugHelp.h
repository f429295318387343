#pragma once
// Windows' debug-help library, which symbols and dumps use, is not made for several threads at once.

#include <mutex>

namespace qvxsys {

/// Who holds it may call the library. Never given back: threads may ask for it until the process ends.
inline std::mutex& DebugHelpTurn()
{
    static std::mutex* const turn = new std::mutex;
    return *turn;
}

} // namespace qvxsys
