#pragma once
// The ICU locale behind the wrapper.

#include <utility>

#include <unicode/locid.h>

namespace QvxICU44 {

class ICULocale44Impl
{
public:
    explicit ICULocale44Impl(icu::Locale const& locale) : m_locale(locale) {}
    explicit ICULocale44Impl(icu::Locale&& locale) noexcept : m_locale(std::move(locale)) {}

    [[nodiscard]] icu::Locale const& Get() const noexcept { return m_locale; }
    [[nodiscard]] icu::Locale& Get() noexcept { return m_locale; }

private:
    icu::Locale m_locale;
};

} // namespace QvxICU44
