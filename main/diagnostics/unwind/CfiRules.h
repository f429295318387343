#pragma once
// Reads from call frame information how one function's frame is left at one address.
//
// The format is that of DWARF 5, section 6.4, in the form of .eh_frame (Linux Standard Base Core 5.0, section 10.6),
// with the register numbers of the System V ABI for x86-64 (figure 3.36).

#include <cstddef>
#include <cstdint>

namespace qvxsys::unwind {

/// How to find the caller's registers. The return address is the word below the canonical frame address (CFA), except
/// behind a signal's frame.
struct FrameRule
{
    enum class Kind : std::uint8_t {
        Unsupported, ///< beyond these rules, or not well-formed
        Frame,       ///< the CFA is at a distance from a register
        Signal,      ///< a signal's frame: the stack pointer points to a ucontext_t
        End,         ///< the outermost frame
    };
    enum class Base : std::uint8_t { StackPointer, FramePointer };
    enum class Saved : std::uint8_t { No, FromCfa, FromFramePointer };

    Kind kind = Kind::Unsupported;
    Base cfaBase = Base::StackPointer;
    bool cfaInMemory = false;       ///< the sum is where the CFA is stored (functions that align their stack)
    Saved framePointer = Saved::No; ///< No: still in its register
    std::int64_t cfaOffset = 0;
    std::int64_t framePointerOffset = 0;

    bool operator==(FrameRule const&) const = default;
};

/// Where the frame of a signal has the registers of what it interrupted: offsets in a ucontext_t.
struct SignalFrame
{
    static constexpr std::uint64_t kFramePointer = 120;
    static constexpr std::uint64_t kStackPointer = 160;
    static constexpr std::uint64_t kInstruction = 168;
};

/// One entry of .eh_frame and what it refers to: from the first byte behind the length to the end.
struct CfiEntry
{
    std::uint8_t const* common; ///< the common information entry
    std::uint8_t const* commonEnd;
    std::uint8_t const* own; ///< the frame description entry
    std::uint8_t const* ownEnd;
    std::uint64_t function; ///< the first address it is for
};

/// The rule at `pc`. Reads nothing outside of the two ranges, whatever is in them; time is linear in their size.
[[nodiscard]] FrameRule ReadRule(CfiEntry const& entry, std::uint64_t pc) noexcept;

} // namespace qvxsys::unwind
