#pragma once
// ICU's own classes beside the wrappers: short forms for tests that make the same calls on both.

#include <string>

#include <qvxsys/qvxsys.h>
#include <unicode/unistr.h>
#include <unicode/utypes.h>

namespace testing_support {

using QvxICU::ICUErrorCode;

/// What ICU has written, as our text.
inline TStringCore Text(icu::UnicodeString const& text)
{
    return TStringCore(text.getBuffer(), text.isBogus() ? 0 : text.length());
}
inline TStringCore Text(TStringCore const& text)
{
    return text;
}
inline TStringCore Text(QvxICU::ICUString const& text)
{
    return text.toString();
}

inline icu::UnicodeString Unicode(TStringView text)
{
    return icu::UnicodeString(text.data(), text.length());
}

inline int Number(ICUErrorCode code)
{
    return static_cast<int>(code);
}
inline int Number(UErrorCode code)
{
    return code;
}

/// Without warnings, which ICU gives to whoever comes first.
template<class Code>
int Failure(Code code)
{
    return Number(code) > 0 ? Number(code) : 0;
}

} // namespace testing_support
