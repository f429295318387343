// The examples of the headers of call stacks and symbols.

#include <iostream>

#include <qvxsys/qvxsys.h>

namespace {

bool Lines()
{
    TStackWalker walker;
    if (walker.GenerateCallstack()) {
        return false; // not switched on yet
    }
    TStackWalker::InitSym(true); // once, at start: walking is off until then
    if (walker.GenerateCallstack()) {
        for (std::string const& line : walker.GetCollected()) {
            std::cout << line << '\n';
        }
    }
    return !walker.GetCollected().empty() && walker.GetCollected().front().starts_with("0x");
}

bool Names()
{
    auto const trace = quorvex::StackTrace::Current();
    for (auto const& frame : quorvex::symbols::Resolve(trace.Frames())) {
        std::cout << frame.Module() << ' ' << frame.Symbol() << ' ' << frame.File() << ':' << frame.Line() << '\n';
    }
    return !trace.IsEmpty();
}

} // namespace

int main()
{
    bool const ok = Lines() && Names();
    std::cout << (ok ? "ok\n" : "not as documented\n");
    return ok ? 0 : 1;
}
