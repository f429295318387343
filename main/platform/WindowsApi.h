#pragma once
// The one place where <windows.h> comes in, for the sources that are built for Windows only (X_win.cpp), with what they
// all need beside it.

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef UNICODE
#define UNICODE
#endif

#include <windows.h>

namespace qvxsys::platform {

/// Puts the calling thread's last error back as it was when the object was made.
class KeepLastError
{
public:
    KeepLastError() noexcept = default;
    ~KeepLastError() { ::SetLastError(m_code); }
    KeepLastError(KeepLastError const&) = delete;
    KeepLastError& operator=(KeepLastError const&) = delete;

private:
    DWORD const m_code = ::GetLastError();
};

} // namespace qvxsys::platform
