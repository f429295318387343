#pragma once
// TError: what an exception knows about its error besides the messages: code, source, and the error that caused it.
//
//     try {
//         Load(file);
//     } catch (QuorvexException const& e) {
//         TError::ErrorInfo const& info = e.GetErrorInfo();
//         Log(info.error.GetCodeName(), info.source, info.inner != nullptr);
//     }
//
// An ErrorInfo is shared by all copies of an exception and never changed once an exception holds it, so it may be read
// from any thread.

#include <cstdint>
#include <memory>

#include <qvxsys/Platform.h>
#include <qvxsys/QuorvexError.h>

class QuorvexException;

namespace TError {

/// Where an error comes from. 0 and 1 are not used by this library; values above 5 are the host's own.
enum ErrorSource : std::int32_t {
    SourceUnspecified = 0,
    SourceReserved = 1,
    SourcePathIterator = 2, ///< misuse of the path element iterator
    SourceNone = 3,         ///< no error
    SourceLibrary = 4,      ///< every other throw site of the library
    SourceTest = 5,         ///< ErrorInfo::TestError()
};

/// What exceptions share: an error, its source, and its cause.
struct QVXSYS_API ErrorInfo
{
    QuorvexError error;               ///< code and name
    ErrorSource source;               ///< where it came from
    std::shared_ptr<ErrorInfo> inner; ///< of the exception that caused this error; null when there is none

    /// Without a cause.
    ErrorInfo(QuorvexError const& anError, ErrorSource aSource);
    /// With the exception's source; `inner` is a new copy of its ErrorInfo.
    ErrorInfo(QuorvexError const& anError, QuorvexException const& cause);
    ErrorInfo(QuorvexError const& anError, QuorvexException const& cause, ErrorSource aSource);
    /// Copies share `inner`.
    ErrorInfo(ErrorInfo const&) = default;
    ErrorInfo& operator=(ErrorInfo const&) = default;
    virtual ~ErrorInfo();

    /// No error, source 3.
    [[nodiscard]] static ErrorInfo NoError();
    /// No error, source 5.
    [[nodiscard]] static ErrorInfo TestError();

protected:
    /// As NoError().
    ErrorInfo();
};
static_assert(sizeof(ErrorInfo) == 72 && sizeof(ErrorSource) == 4);

} // namespace TError
