#pragma once
// What the other headers need to know of compiler and platform. The only public header with conditionals on them.

#if defined(_WIN32)
#if defined(QVXSYS_BUILDING)
#define QVXSYS_API __declspec(dllexport)
/// On constants that are members of an exported class: programs refer to the library's, which would not be in the DLL
/// unless one of its sources did, too.
#define QVXSYS_API_CONSTANT [[gnu::used]]
#else
#define QVXSYS_API __declspec(dllimport)
#define QVXSYS_API_CONSTANT
#endif
#else
#define QVXSYS_API_CONSTANT
#define QVXSYS_API __attribute__((visibility("default")))
#endif

/// Thread-local data at a fixed offset from the thread pointer, where the platform has it.
#if defined(_WIN32)
#define QVXSYS_TLS_INITIAL_EXEC
#else
#define QVXSYS_TLS_INITIAL_EXEC [[gnu::tls_model("initial-exec")]]
#endif

/// The result may point into the argument (or the object): the compiler can warn where a temporary is passed.
#if defined(__clang__)
#define QVXSYS_LIFETIME_BOUND [[clang::lifetimebound]]
#else
#define QVXSYS_LIFETIME_BOUND
#endif

#if defined(_WIN32)
#define QVXSYS_LINES_END_IN_CR_LF true
#else
#define QVXSYS_LINES_END_IN_CR_LF false
#endif

/// Where the running thread's own control block begins: the first word of its thread-local storage holds its own
/// address (x86-64 ABI supplements; Windows: the thread environment block's Self).
#if defined(_WIN32)
#define QVXSYS_THREAD_POINTER "%%gs:0x30"
#else
#define QVXSYS_THREAD_POINTER "%%fs:0"
#endif

/// Its argument where the system's own headers never declare the names of dbghelp.h, nothing where they may.
#if defined(_WIN32)
#define QVXSYS_WITHOUT_DBGHELP(declaration)
#else
#define QVXSYS_WITHOUT_DBGHELP(declaration) declaration
#endif

namespace qvxsys::detail {

/// A word that differs between any two threads alive, read in one instruction and the same in every module of the
/// process. Never 0. Not kept over a point where the compiler cannot know the thread, such as a suspended coroutine.
[[nodiscard]] inline unsigned long long ThreadTag() noexcept
{
    unsigned long long tag;
    asm volatile("movq " QVXSYS_THREAD_POINTER ", %0" : "=r"(tag));
    return tag;
}

/// Tells the processor that this is a waiting loop.
inline void SpinPause() noexcept
{
    __builtin_ia32_pause();
}

} // namespace qvxsys::detail

namespace qvxsys {

/// How the platform ends lines of text files: CR LF or LF.
inline constexpr bool kLinesEndInCrLf = QVXSYS_LINES_END_IN_CR_LF;

/// True where wchar_t is a 16-bit UTF-16 unit (Windows); elsewhere it is a 32-bit code point. Wide text is taken
/// everywhere: as it is in the first case, converted as UTF-32 in the second.
inline constexpr bool kWideIsUtf16 = sizeof(wchar_t) == sizeof(char16_t);

} // namespace qvxsys
