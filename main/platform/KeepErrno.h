#pragma once
// Functions that leave no trace in errno.

#include <cerrno>

namespace qvxsys::platform {

/// Puts errno back as it was when the object was made.
class KeepErrno
{
public:
    KeepErrno() noexcept = default;
    ~KeepErrno() { errno = m_errno; }
    KeepErrno(KeepErrno const&) = delete;
    KeepErrno& operator=(KeepErrno const&) = delete;

private:
    int const m_errno = errno;
};

} // namespace qvxsys::platform
