// Call stacks taken where something happens and told later: beside the library's errors, and in exceptions of one's
// own.

#include <iostream>
#include <stdexcept>

#include <qvxsys/qvxsys.h>

namespace {

/// Takes the stack where it is made, for the price of some additions and 330 bytes.
class TracedError : public std::runtime_error
{
public:
    explicit TracedError(char const* what) : std::runtime_error(what), trace(Trace::Current()) {}

    using Trace = quorvex::BasicStackTrace<32>;
    Trace const trace;
};

[[noreturn]] void Fail()
{
    throw TracedError("no space left");
}

bool OwnException()
{
    try {
        Fail();
    } catch (TracedError const& e) {
        std::cout << e.what() << '\n' << e.trace.ToText();
        return !e.trace.IsEmpty() && e.trace.ModuleOf(0) != nullptr;
    }
}

bool LibraryError()
{
    TError::SetOriginHook(TError::RecordTrace); // once, at start
    bool traced = false;
    try {
        TScanStringCore(u"x").skipInt();
    } catch (QuorvexException const& e) {
        if (TError::ErrorOrigin const* const origin = TError::GetOrigin(e.GetErrorInfo())) {
            quorvex::StackTrace const trace(
                std::span<void* const>(origin->frames, static_cast<std::size_t>(origin->frameCount)));
            std::cout << trace.ToText();
            traced = !trace.IsEmpty();
        }
    }
    TError::SetOriginHook(nullptr);
    return traced;
}

} // namespace

int main()
{
    bool const ok = OwnException() && LibraryError();
    std::cout << (ok ? "ok\n" : "not as documented\n");
    return ok ? 0 : 1;
}
