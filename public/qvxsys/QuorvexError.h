#pragma once
// QuorvexError: a 32-bit error code and its symbolic name.
//
//     QuorvexError const error = QuorvexError::MakeError(0x10000042, u"HostError_NoSpace");
//     if (error.GetCode() != 0) {
//         std::cerr << error.GetCodeName().toStdString() << '\n';
//     }
//
// Codes and names are opaque and never change once given out: callers and logs match on them. A value; as thread-safe
// as the string in it.

#include <cstdint>

#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>

/// An error's code and the name of the code.
class QVXSYS_API QuorvexError
{
public:
    /// From both.
    [[nodiscard]] static QuorvexError MakeError(unsigned int code, TStringCore name);
    /// Code 0, no name.
    [[nodiscard]] static QuorvexError NoError();

    QuorvexError(QuorvexError const&) = default;
    QuorvexError& operator=(QuorvexError const&) = default;
    ~QuorvexError() = default;

    /// 0 means no error.
    [[nodiscard]] unsigned int GetCode() const noexcept { return m_code; }
    /// The name.
    [[nodiscard]] TStringCore const& GetCodeName() const noexcept QVXSYS_LIFETIME_BOUND { return m_codeName; }

    /// Same code and same name.
    friend bool operator==(QuorvexError const& a, QuorvexError const& b) noexcept
    {
        return a.m_code == b.m_code && a.m_codeName == b.m_codeName;
    }

private:
    QuorvexError(unsigned int code, TStringCore&& name) noexcept;

    std::uint32_t m_code;
    TStringCore m_codeName;
};
static_assert(sizeof(QuorvexError) == 40);
