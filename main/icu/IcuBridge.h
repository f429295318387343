#pragma once
// What the wrappers share: how statuses, texts, locales and enumerations go to ICU and come back.

#include <algorithm>
#include <climits>
#include <cstddef>

#include <unicode/fieldpos.h>
#include <unicode/locid.h>
#include <unicode/parseerr.h>
#include <unicode/parsepos.h>
#include <unicode/unistr.h>

#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUPosition.h>
#include <qvxsys/ICUString.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace QvxICU44 {

/// Carries the caller's status through an ICU call and back at the end of the full expression or scope.
class Status
{
public:
    explicit Status(QvxICU::ICUErrorCode& status) noexcept : m_status(status), m_code(static_cast<UErrorCode>(status))
    {}
    Status(Status const&) = delete;
    Status& operator=(Status const&) = delete;
    ~Status() { m_status = static_cast<QvxICU::ICUErrorCode>(m_code); }

    operator UErrorCode&() noexcept { return m_code; }

private:
    QvxICU::ICUErrorCode& m_status;
    UErrorCode m_code;
};

/// The length as ICU counts it. A text of more than 0x7FFFFFFF units, which ICU has no texts of, ends there.
[[nodiscard]] inline int Length(TStringView text) noexcept
{
    return static_cast<int>(std::min(text.size(), static_cast<std::size_t>(INT_MAX)));
}

/// The text in place, without a copy, for as long as the view's text lives. Read-only.
[[nodiscard]] inline icu::UnicodeString const Alias(TStringView text) noexcept
{
    return icu::UnicodeString(static_cast<UBool>(false), text.data(), Length(text));
}

/// What ICU has written, in place; a bogus string is empty.
[[nodiscard]] inline TStringView View(icu::UnicodeString const& text) noexcept
{
    return TStringView(text.getBuffer(), text.isBogus() ? 0U : static_cast<std::size_t>(text.length()));
}

/// A copy of what ICU has written.
[[nodiscard]] inline TStringCore Own(icu::UnicodeString const& text)
{
    return TStringCore(View(text));
}

[[nodiscard]] inline icu::UnicodeString& Icu(QvxICU::ICUString& text) noexcept
{
    return *static_cast<icu::UnicodeString*>(text.Native());
}

[[nodiscard]] inline icu::UnicodeString const& Icu(QvxICU::ICUString const& text) noexcept
{
    return Icu(const_cast<QvxICU::ICUString&>(text));
}

/// For ICU's services, which read the null name of a bogus locale: that becomes the root locale.
[[nodiscard]] icu::Locale const& Icu(QvxICU::ICULocale const& locale) noexcept;

[[nodiscard]] inline icu::FieldPosition& Icu(QvxICU::ICUFieldPosition& position) noexcept
{
    return *static_cast<icu::FieldPosition*>(position.Native());
}

[[nodiscard]] inline icu::ParsePosition& Icu(QvxICU::ICUParsePosition& position) noexcept
{
    return *static_cast<icu::ParsePosition*>(position.Native());
}

void Own(UParseError const& from, QvxICU::ICUParseError& to) noexcept;

} // namespace QvxICU44
