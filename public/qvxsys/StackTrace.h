#pragma once
// A call stack as it is taken: addresses, and which modules they lie in. Symbols are looked up later or elsewhere.
//
//     auto const trace = quorvex::StackTrace::Current();      // well below a microsecond; nothing is allocated
//     ...
//     std::clog << trace.ToText();                            // later, on any thread, modules unloaded or not
//
//     #0 0x00005581c7d0a1f4 /usr/bin/service+0x41f4 6f0c5e6a0d1e7f3b2a908b7c6d5e4f3a2b1c0d9e
//     #1 0x00007f5a3c22724a /usr/lib/x86_64-linux-gnu/libc.so.6+0x2724a 93ac0d2a...
//
// A trace is a plain value without pointers to anything that ends: it can be copied, kept in an exception, or be handed
// to another thread. Each module is told by file, place in memory and build-id, so a line of the text is enough to name
// the function on a machine that has the same file or its debug file:
//
//     addr2line -Cfie /usr/bin/service 0x41f3
//     llvm-symbolizer --obj=/usr/bin/service 0x41f3           # or --build-id=6f0c... with debuginfod
//
// The addresses are those that functions return to, so what called lies before them: tools are to be asked for one
// less. (An instruction that a signal interrupted is told by its own address.)
//
// Threads: a trace is a value; Current may be called anywhere, in signal handlers too.

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>

#include <qvxsys/Platform.h>

namespace quorvex {

/// A program or shared library as it was loaded. Records of modules live until the process ends, and never change.
struct StackModule
{
    static constexpr unsigned kMaxBuildId = 32; ///< bytes of a build-id that are kept at most

    std::uintptr_t begin = 0; ///< the first byte of its memory
    std::uintptr_t end = 0;   ///< behind the last one
    /// What the addresses in memory are above those in the file's own tables: 0 for programs that are not relocated.
    /// On Windows, where tools count from the image's begin, the same as `begin`.
    std::uintptr_t bias = 0;
    unsigned char buildId[kMaxBuildId] = {}; ///< GNU build-id; Windows: the GUID and age of the PDB, or time and size
    std::uint8_t buildIdLength = 0;          ///< 0: the module has none
    char name[256] = {};                     ///< path of the file in UTF-8; of a longer one its end
};

} // namespace quorvex

namespace qvxsys::detail {

QVXSYS_API int CaptureTrace(void** frames, std::uint16_t* modules, int capacity, int skip) noexcept;
QVXSYS_API void FindTraceModules(void* const* frames, std::uint16_t* modules, int count) noexcept;
[[nodiscard]] QVXSYS_API quorvex::StackModule const* TraceModule(std::uint16_t number) noexcept;
[[nodiscard]] QVXSYS_API std::string TraceText(void* const* frames, std::uint16_t const* modules, int count);

} // namespace qvxsys::detail

namespace quorvex {

/// Up to `Capacity` frames, 10 bytes each. Trivially copyable.
template<int Capacity>
class BasicStackTrace
{
    static_assert(Capacity > 0 && Capacity < 65536);

public:
    static constexpr int kCapacity = Capacity; ///< frames that are kept at most

    /// No frames.
    BasicStackTrace() noexcept : m_count(0) {}
    /// Of addresses taken by other means, innermost first; the modules are looked up now. What is over the capacity is
    /// left out.
    explicit BasicStackTrace(std::span<void* const> addresses) noexcept
        : m_count(static_cast<int>(std::min(addresses.size(), std::size_t{Capacity})))
    {
        std::copy_n(addresses.begin(), m_count, m_frames);
        qvxsys::detail::FindTraceModules(m_frames, m_modules, m_count);
    }

    /// The calling thread's stack, beginning with the calling function, or `skip` frames above it (below 0: none).
    /// Functions that the compiler inlined have no frames of their own.
    [[nodiscard]] [[gnu::always_inline]] static BasicStackTrace Current(int skip = 0) noexcept
    {
        BasicStackTrace trace;
        trace.m_count = qvxsys::detail::CaptureTrace(trace.m_frames, trace.m_modules, Capacity, skip);
        return trace;
    }

    /// The addresses, innermost first.
    [[nodiscard]] std::span<void* const> Frames() const noexcept QVXSYS_LIFETIME_BOUND
    {
        return {m_frames, static_cast<std::size_t>(m_count)};
    }
    /// Whether there is no frame.
    [[nodiscard]] bool IsEmpty() const noexcept { return m_count == 0; }
    /// As many frames as there is room for: the stack may go on.
    [[nodiscard]] bool IsFull() const noexcept { return m_count == Capacity; }

    /// The module that had the frame's address when the trace was taken; null if none had, as with code made at run
    /// time, and when more modules than the 1023 that are recorded in a process were met. `index` must be that of a
    /// frame.
    [[nodiscard]] StackModule const* ModuleOf(std::size_t index) const noexcept
    {
        return qvxsys::detail::TraceModule(m_modules[index]);
    }

    /// One line for each frame, each with a line feed: "#", its number, the address with 16 digits, the module's name,
    /// "+", the address in the numbering of the module's file, and the build-id in hexadecimal digits or "-". Of a
    /// frame in no module the rest is "?". Control characters in names become "?"; names may have spaces in them, what
    /// stands behind has none.
    [[nodiscard]] std::string ToText() const { return qvxsys::detail::TraceText(m_frames, m_modules, m_count); }

private:
    int m_count;
    std::uint16_t m_modules[std::size_t{Capacity}];
    void* m_frames[std::size_t{Capacity}];
};

/// As deep as the library ever looks.
using StackTrace = BasicStackTrace<200>;

} // namespace quorvex
