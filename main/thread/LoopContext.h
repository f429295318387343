#pragma once
// What a loop takes along from its calling thread to its helpers.

namespace qvxsys::task {

class LoopContext
{
public:
    [[nodiscard]] bool IsCancelled() const noexcept { return false; }
    static void ThrowCancelled() {}
    struct Scope
    {
        explicit Scope(LoopContext const&) noexcept {}
    };
};

} // namespace qvxsys::task
