#pragma once
// Where an error was thrown: source line and raw call stack, recorded beside its ErrorInfo when a program asks for it.
// Messages and logs are the same with and without.
//
//     TError::SetOriginHook(TError::RecordTrace);          // once, at start
//     ...
//     } catch (QuorvexException const& e) {
//         if (TError::ErrorOrigin const* const origin = TError::GetOrigin(e.GetErrorInfo())) {
//             std::cerr << origin->location.file << ':' << origin->location.line << '\n';
//             for (int i = 0; i < origin->frameCount; ++i) {
//                 std::cerr << "  " << origin->frames[i] << '\n';    // return addresses, for a symbolizer
//             }
//         }
//     }
//
// An origin is recorded when an exception makes its own copy of an ErrorInfo, that is at the throw; copies, clones and
// rethrown exceptions share it. Without a hook nothing is recorded: the cost is one load. The hook may be set at any
// time from any thread and is called on the thread that throws.

#include <cstdint>

#include <qvxsys/Platform.h>
#include <qvxsys/TError.h>

namespace TError {

/// A place in the source, as std::source_location has it (which not every supported compiler offers). Static texts.
struct SourceLocation
{
    char const* file = "";     ///< the source file, as the compiler knows it
    char const* function = ""; ///< the function, as the compiler knows it
    std::uint32_t line = 0;    ///< 0: unknown

    constexpr SourceLocation() noexcept = default;
    /// From its parts, which must outlive it.
    constexpr SourceLocation(char const* aFile, char const* aFunction, std::uint32_t aLine) noexcept
        : file(aFile), function(aFunction), line(aLine)
    {}
    /// From a std::source_location or alike.
    template<class Location>
    requires requires(Location const& l)
    {
        l.file_name();
        l.function_name();
        l.line();
    }
    constexpr SourceLocation(Location const& l) noexcept
        : file(l.file_name()), function(l.function_name()), line(static_cast<std::uint32_t>(l.line()))
    {}
    /// The caller's place; as a default argument that of the function's caller.
    [[nodiscard]] static constexpr SourceLocation Current(char const* aFile = __builtin_FILE(),
                                                          char const* aFunction = __builtin_FUNCTION(),
                                                          std::uint32_t aLine = __builtin_LINE()) noexcept
    {
        return {aFile, aFunction, aLine};
    }
};

/// Where an error was made.
struct ErrorOrigin
{
    static constexpr int kMaxFrames = 32; ///< return addresses that are kept at most

    SourceLocation location;       ///< known for the library's own throw sites and for LocatedErrorInfo
    int frameCount = 0;            ///< how many of them there are
    void* frames[kMaxFrames] = {}; ///< return addresses, innermost first
};

/// Called for each error thrown; may fill in the frames. `location` is there already. Must not throw.
using OriginHook = void (*)(ErrorInfo const& info, ErrorOrigin& origin) noexcept;

/// Null turns recording off. Returns the hook that was set before.
QVXSYS_API OriginHook SetOriginHook(OriginHook hook) noexcept;
[[nodiscard]] QVXSYS_API OriginHook GetOriginHook() noexcept;

/// Ready-made hooks: the location only, and the location with the addresses of the calling functions (symbols are
/// not looked up).
QVXSYS_API void RecordLocation(ErrorInfo const& info, ErrorOrigin& origin) noexcept;
QVXSYS_API void RecordTrace(ErrorInfo const& info, ErrorOrigin& origin) noexcept;

/// What was recorded for an exception's ErrorInfo; null when nothing was. Lives as long as `info`.
[[nodiscard]] QVXSYS_API ErrorOrigin const* GetOrigin(ErrorInfo const& info QVXSYS_LIFETIME_BOUND) noexcept;

/// An ErrorInfo that knows where it was made, for a program's own throw sites:
///     throw QuorvexException(u"No space left.", TError::LocatedErrorInfo(TError::ErrorInfo(error, source)));
struct QVXSYS_API LocatedErrorInfo : ErrorInfo
{
    /// An error with the place where this constructor is called.
    explicit LocatedErrorInfo(ErrorInfo const& info, SourceLocation const& aLocation = SourceLocation::Current());
    LocatedErrorInfo(LocatedErrorInfo const&) = default;
    LocatedErrorInfo& operator=(LocatedErrorInfo const&) = default;
    ~LocatedErrorInfo() override;

    SourceLocation location; ///< the place
};

} // namespace TError
