#pragma once
// The library's one way of taking a call stack.

namespace qvxsys::unwind {

/// Up to `capacity` return addresses of the calling thread, innermost first: the first is where this function returns
/// to in its caller, after `skip` of them. The address of code that a signal interrupted is that of the instruction
/// itself. Returns how many there are: 0 when there are none, or no room.
///
/// May be called anywhere: in signal handlers and on their stacks, on the stacks of fibres, in allocation functions,
/// with any lock held. It allocates nothing, takes no lock of its own, keeps errno, and never faults: on a stack that
/// was overwritten it ends early. (On a stack in order but with frames whose rules only the compiler's unwinder knows,
/// the frames up to and with such a one are given to that; registers overwritten there are its own affair.)
///
/// Costs a few nanoseconds per frame once the frames' rules are known, one search in the module's unwind tables for
/// each that is not. Stops at code without such tables.
int CaptureStack(void** frames, int capacity, int skip) noexcept;

} // namespace qvxsys::unwind
