#include "StackCapture.h"

#include <cstdint>

#include <sys/syscall.h>
#include <unwind.h>

#include <qvxsys/Platform.h>

#include "CfiRules.h"
#include "ModuleTable.h"
#include "RuleCache.h"

// The walk from frame to frame by rules that are worked out once for each address (CfiRules), kept (RuleCache) and then
// cost some instructions each: two additions, two loads, and the checks.
//
// Nothing is read that is not known to be readable. The stack is one stretch of memory from the innermost frame upward,
// so it is enough to know its end: every frame must begin above the one before and below that end. Where the end is,
// nobody says in a way that is cheap, right on every stack and allowed in a signal handler; so it is felt for, page by
// page, with a system call that reads memory for us and fails where there is none, and each thread remembers two such
// stretches (there may be a signal stack). After the first walk of a thread no call is needed until it gets deeper than
// ever.
//
// What a rule cannot say (a register other than the stack and the frame pointer is needed) is left to the compiler's
// unwinder, for that one frame.

extern "C" {
struct dwarf_eh_bases // of libgcc
{
    void* text;
    void* data;
    void* function;
};
/// The frame description entry for the address; null without one. Knows the modules' tables and those of code that was
/// made at run time and registered.
// NOLINTNEXTLINE(bugprone-reserved-identifier): libgcc's name
void const* _Unwind_Find_FDE(void* pc, dwarf_eh_bases* bases);
}

namespace qvxsys::unwind {
namespace {

using Address = std::uintptr_t;

constinit RuleCache g_rules;

constexpr Address kPage = 4096;
constexpr Address kLargestFrame = Address{16} << 20; // as much is felt for beyond what is known

/// A word of the stack. Sanitizers do not know that these may be read.
[[gnu::always_inline]] inline Address Load(Address at) noexcept
{
    Address value;
    asm volatile("movq %1, %0" : "=r"(value) : "m"(*reinterpret_cast<Address const*>(at)));
    return value;
}

/// Whether the eight bytes can be read: the kernel looks at the new mask before it looks at what to do with it, which
/// is nothing there is. Not by the C library's function, which would change errno.
bool IsReadable(Address at) noexcept
{
    constexpr long kFault = -14;
    constexpr long kNoSuchAction = 0x7FFFFFFF;
    long result = SYS_rt_sigprocmask;
    register long size asm("r10") = 8;
    asm volatile("syscall" : "+a"(result) : "D"(kNoSuchAction), "S"(at), "d"(0L), "r"(size) : "rcx", "r11", "memory");
    return result != kFault;
}

/// Readable memory.
struct Stretch
{
    Address low;
    Address high;

    [[nodiscard]] bool Has(Address at) const noexcept { return low <= at && at < high; }
};

/// What a thread remembers. A signal handler may come in between: it changes nothing while `busy`.
struct ThreadStacks
{
    Stretch known[2];
    bool busy;
};
QVXSYS_TLS_INITIAL_EXEC constinit thread_local ThreadStacks t_stacks{};

/// The stretch that has the address; an empty one in its page if none is known.
Stretch FindStretch(Address sp) noexcept
{
    if (!t_stacks.busy) {
        for (Stretch const& known : t_stacks.known) {
            if (known.Has(sp)) {
                return known;
            }
        }
    }
    Address const page = sp & ~(kPage - 1);
    return {page, page};
}

void Remember(Stretch const& stretch) noexcept
{
    ThreadStacks& stacks = t_stacks;
    if (stacks.busy) {
        return;
    }
    auto const isPart = [&](Stretch const& known) { return known.low < stretch.high && stretch.low < known.high; };
    std::size_t const index = isPart(stacks.known[0]) ? 0 : 1;
    stacks.busy = true;
    asm volatile("" ::: "memory");
    if (index == 1 && !isPart(stacks.known[1])) {
        stacks.known[1] = stacks.known[0];
        stacks.known[0] = stretch;
    } else {
        stacks.known[index] = stretch;
    }
    asm volatile("" ::: "memory");
    stacks.busy = false;
}

/// A frame's registers.
struct Position
{
    Address ip;
    Address sp; ///< where the frame of the function it called begins
    Address bp;
    bool interrupted = false; ///< by a signal; else the address is one to return to
    bool unfetched = false;   ///< by the fault that there is no code at the address

    /// The instruction that the frame is at: a call is what lies before the address it returns to.
    [[nodiscard]] Address At() const noexcept { return interrupted ? ip : ip - 1; }
};

FrameRule ReadRuleAt(Address pc) noexcept
{
    dwarf_eh_bases bases{};
    auto const* const own = static_cast<std::uint8_t const*>(_Unwind_Find_FDE(reinterpret_cast<void*>(pc), &bases));
    FrameRule end;
    end.kind = FrameRule::Kind::End;
    if (own == nullptr) {
        return end;
    }
    std::uint32_t length;
    std::int32_t toCommon;
    std::uint32_t commonLength;
    __builtin_memcpy(&length, own, sizeof length);
    __builtin_memcpy(&toCommon, own + 4, sizeof toCommon);
    std::uint8_t const* const common = own + 4 - toCommon;
    __builtin_memcpy(&commonLength, common, sizeof commonLength);
    constexpr std::uint32_t kLong = 0xFFFFFFFF; // the 64-bit form, which is not for what fits in memory
    if (length == kLong || commonLength == kLong) {
        return {};
    }
    return ReadRule({common + 4, common + 4 + commonLength, own + 4, own + 4 + length,
                     reinterpret_cast<std::uint64_t>(bases.function)},
                    pc);
}

struct Registers
{
    Position from;
    bool isNext = false;
    bool found = false;
};

_Unwind_Reason_Code TakeRegisters(_Unwind_Context* context, void* argument)
{
    Registers& registers = *static_cast<Registers*>(argument);
    int interrupted = 0;
    Address const ip = _Unwind_GetIPInfo(context, &interrupted);
    Address const sp = _Unwind_GetCFA(context);
    if (registers.isNext) {
        registers.from = {ip, sp, _Unwind_GetGR(context, 6), interrupted != 0};
        registers.found = true;
        return _URC_END_OF_STACK;
    }
    registers.isNext = ip == registers.from.ip && sp == registers.from.sp;
    return _URC_NO_REASON;
}

/// The part of a walk that is off the straight way.
class Walk
{
public:
    explicit Walk(Address sp) noexcept : m_stack(FindStretch(sp)) {}

    [[nodiscard]] Address StackEnd() const noexcept { return m_stack.high; }

    /// Whether a rule of a module that can be unloaded is still of what is loaded there.
    bool IsValid(std::uint16_t module, Address pc) noexcept
    {
        for (std::uint16_t const valid : m_valid) {
            if (valid == module) {
                return true;
            }
        }
        if (!IsStill(module, pc)) {
            return false;
        }
        m_valid[m_next++ % 4] = module;
        return true;
    }

    /// Goes on to the caller; false at the end of the stack, or where it makes no sense any more.
    [[gnu::noinline]] bool Step(Position& at) noexcept
    {
        FrameRule const rule = at.At() >> 47 == 0 ? RuleAt(at.At()) : FrameRule{FrameRule::Kind::End};
        switch (rule.kind) {
        case FrameRule::Kind::Frame:
            return Leave(rule, at);
        case FrameRule::Kind::Signal:
            return LeaveSignal(at);
        case FrameRule::Kind::Unsupported:
            return Ask(at);
        case FrameRule::Kind::End:
            break;
        }
        if (at.unfetched) {
            // A call through a wrong pointer: all that has happened is that the return address was pushed.
            FrameRule called;
            called.kind = FrameRule::Kind::Frame;
            called.cfaOffset = 8;
            return Leave(called, at);
        }
        m_regular = true;
        return false;
    }

    /// The walk came to its end; `full`: because there was no more room.
    void End(bool full) noexcept
    {
        // What a corrupted stack pointed to is not remembered to be one.
        if (m_grown && (full || m_regular)) {
            Remember(m_stack);
        }
    }

private:
    FrameRule RuleAt(Address pc) noexcept
    {
        RuleCache::Entry const entry = g_rules.Find(pc);
        if (entry.Is() != RuleCache::None && (entry.Module() == 0 || IsValid(entry.Module(), pc))) {
            return RuleCache::Unpack(entry);
        }
        FrameRule const rule = ReadRuleAt(pc);
        // Code in no module may be other code soon.
        if (std::uint16_t const module = ModuleAt(pc)) {
            bool const permanent = Module(module).isPermanent;
            if (permanent || IsStill(module, pc)) {
                g_rules.Insert(pc, rule, permanent ? std::uint16_t{0} : module);
            }
        }
        return rule;
    }

    /// Whether the stack goes up to there.
    bool Reach(Address end) noexcept
    {
        if (end - m_stack.low > kLargestFrame + (m_stack.high - m_stack.low)) {
            return false;
        }
        while (m_stack.high < end) {
            Stretch const known = FindStretch(m_stack.high);
            if (known.low < known.high) {
                m_stack.high = known.high;
            } else if (IsReadable(m_stack.high)) {
                m_stack.high += kPage;
            } else {
                return false;
            }
            m_grown = true;
        }
        return true;
    }

    /// Whether a register can have been saved there, in the frame that ends at `cfa`.
    bool IsIn(Position const& at, Address saved, Address cfa) const noexcept
    {
        if (saved % 8 != 0 || saved > cfa - 8) {
            return false;
        }
        // A function that was interrupted while it took its frame down may have the value below the stack pointer;
        // nobody writes the 128 bytes there (x86-64 ABI, 3.2.2).
        return saved >= at.sp ? saved >= m_stack.low
                              : at.interrupted && at.sp - saved <= 128 && (saved >= m_stack.low || IsReadable(saved));
    }

    bool Leave(FrameRule const& rule, Position& at) noexcept
    {
        Address cfa =
            (rule.cfaBase == FrameRule::Base::StackPointer ? at.sp : at.bp) + static_cast<Address>(rule.cfaOffset);
        if (rule.cfaInMemory) {
            if (cfa < at.sp || cfa < m_stack.low || cfa % 8 != 0 || cfa + 8 < cfa || !Reach(cfa + 8)) {
                return false;
            }
            cfa = Load(cfa);
        }
        if (cfa <= at.sp || cfa <= m_stack.low || cfa % 8 != 0 || at.sp % 8 != 0 || !Reach(cfa)) {
            return false;
        }
        if (rule.framePointer != FrameRule::Saved::No) {
            Address const from = rule.framePointer == FrameRule::Saved::FromCfa ? cfa : at.bp;
            Address const saved = from + static_cast<Address>(rule.framePointerOffset);
            if (!IsIn(at, saved, cfa)) {
                return false;
            }
            at.bp = Load(saved);
        }
        at = {Load(cfa - 8), cfa, at.bp};
        return true;
    }

    /// Goes on where the signal came, on whatever stack that is.
    bool LeaveSignal(Position& at) noexcept
    {
        constexpr Address kTrap = 200; // offsets as those of SignalFrame
        constexpr Address kFaultAddress = 216;
        constexpr Address kPageFault = 14;
        if (at.sp % 8 != 0 || at.sp + kFaultAddress + 8 < at.sp || !Reach(at.sp + kFaultAddress + 8)) {
            return false;
        }
        Address const ip = Load(at.sp + SignalFrame::kInstruction);
        bool const unfetched = Load(at.sp + kTrap) == kPageFault && Load(at.sp + kFaultAddress) == ip;
        at = {ip, Load(at.sp + SignalFrame::kStackPointer), Load(at.sp + SignalFrame::kFramePointer), true, unfetched};
        ComeTo(at.sp);
        return true;
    }

    /// The walk goes on there, perhaps on another stack.
    void ComeTo(Address sp) noexcept
    {
        if (!m_stack.Has(sp)) {
            End(true);
            m_stack = FindStretch(sp);
            m_grown = false;
            // A stack that overflowed begins above the stack pointer, behind its guard pages.
            for (int pages = 0; m_stack.low == m_stack.high && pages < 256 && !IsReadable(m_stack.low); ++pages) {
                m_stack.low = m_stack.high += kPage;
            }
        }
    }

    /// Has the compiler's unwinder go over one frame.
    [[gnu::noinline]] bool Ask(Position& at) noexcept
    {
        Registers registers{at};
        _Unwind_Backtrace(TakeRegisters, &registers);
        at = registers.from;
        ComeTo(at.sp);
        return registers.found;
    }

    Stretch m_stack;
    std::uint16_t m_valid[4] = {};
    unsigned m_next = 0;
    bool m_grown = false;
    bool m_regular = false;
};

/// What the walk's caller gets.
struct Frames
{
    void** frames;
    int capacity;
    int skip;
    int count = 0;

    /// False when there is no room for more.
    [[gnu::always_inline]] bool Add(Address ip) noexcept
    {
        if (skip > 0) {
            --skip;
            return true;
        }
        frames[count++] = reinterpret_cast<void*>(ip);
        return count < capacity;
    }
};

/// Goes on to the next frame that is one of a call, adding those on the way that were interrupted.
[[gnu::noinline]] bool StepToCall(Walk& walk, Position& at, Frames& out) noexcept
{
    do {
        if (!walk.Step(at) || (at.interrupted && !out.Add(at.ip))) {
            return false;
        }
    } while (at.interrupted);
    return true;
}

int WalkStack(Frames out, Position at) noexcept
{
    constexpr Address kCodeEnd = Address{1} << 47; // and there is none at 0
    Walk walk(at.sp);
    Address stackEnd = walk.StackEnd();
    while (at.ip - 1 < kCodeEnd && out.Add(at.ip)) {
        RuleCache::Entry const entry = g_rules.Find(at.ip - 1);
        Address const base = entry.Is() == RuleCache::FromStack ? at.sp : at.bp;
        Address const cfa = base + entry.CfaOffset();
        Address const saved = cfa - 8 * entry.Saved();
        bool const known = entry.Is() == RuleCache::FromStack || entry.Is() == RuleCache::FromFrame;
        if (known && cfa > at.sp && cfa <= stackEnd && saved >= at.sp && saved <= cfa && ((cfa | at.sp) & 7) == 0 &&
            (entry.Module() == 0 || walk.IsValid(entry.Module(), at.ip - 1))) [[likely]] {
            at.bp = entry.Saved() != 0 ? Load(saved) : at.bp;
            at.ip = Load(cfa - 8);
            at.sp = cfa;
        } else if (StepToCall(walk, at, out)) {
            stackEnd = walk.StackEnd();
        } else {
            break;
        }
    }
    walk.End(out.count == out.capacity);
    return out.count;
}

} // namespace

[[gnu::noinline]] int CaptureStack(void** frames, int capacity, int skip) noexcept
{
    if (capacity <= 0) {
        return 0;
    }
    auto const frame = reinterpret_cast<Address>(__builtin_frame_address(0));
    return WalkStack({frames, capacity, skip}, {Load(frame + 8), frame + 16, Load(frame)});
}

} // namespace qvxsys::unwind
