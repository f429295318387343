#pragma once
// The lines of the calling thread's stack for a path's exception; none unless walking is switched on.

#include <list>
#include <string>

namespace qvxsys::path {

[[nodiscard]] inline std::list<std::string> CallStack()
{
    return {};
}

} // namespace qvxsys::path
