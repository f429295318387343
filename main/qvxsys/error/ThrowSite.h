#pragma once
// How the library's throw sites name their errors:
//
//     throw TScanStringCore::Exception(u"TScanStringCore::skip: String mismatch.", ThrowSite(0x9DAC629F));
//
// The identifier is a literal of eight upper-case hexadecimal digits, opaque, unique in the library, and stays with the
// site for ever (a test collects them all). A new one is drawn at random.

#include <cstdint>

#include <qvxsys/ErrorOrigin.h>

namespace qvxsys::error {

/// The error of a throw site: the identifier as code, "QuorvexException_AutoGen_0x" and its eight digits as name.
[[nodiscard]] TError::LocatedErrorInfo
ThrowSite(std::uint32_t identifier, TError::ErrorSource source = TError::SourceLibrary,
          TError::SourceLocation const& location = TError::SourceLocation::Current());

} // namespace qvxsys::error
