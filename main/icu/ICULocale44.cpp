// Locales over ICU.

#include <qvxsys/ICULocale.h>

#include <memory>
#include <utility>

#include "ICULocale44Impl.h"
#include "IcuBridge.h"

using QvxICU44::ICULocale44Impl;

namespace QvxICU44 {

icu::Locale const& Icu(QvxICU::ICULocale const& locale) noexcept
{
    return locale.Implementation().Get();
}

} // namespace QvxICU44

namespace QvxICU {

ICULocale::ICULocale() : ICULocale(std::make_shared<ICULocale44Impl>(icu::Locale()))
{}

ICULocale::ICULocale(std::shared_ptr<ICULocale44Impl> implementation) : m_implementation(std::move(implementation))
{}

ICULocale::ICULocale(ICULocale const&) = default;
ICULocale& ICULocale::operator=(ICULocale const&) = default;
ICULocale::~ICULocale() = default;

std::unique_ptr<ICULocale> ICULocale::createInstance()
{
    return std::make_unique<ICULocale>();
}

std::unique_ptr<ICULocale> ICULocale::createInstance(char const* language, char const* country, char const* variant,
                                                     char const* keywords)
{
    return std::unique_ptr<ICULocale>(
        new ICULocale(std::make_shared<ICULocale44Impl>(icu::Locale(language, country, variant, keywords))));
}

std::unique_ptr<ICULocale> ICULocale::createFromName(char const* name)
{
    return std::unique_ptr<ICULocale>(
        new ICULocale(std::make_shared<ICULocale44Impl>(icu::Locale::createFromName(name))));
}

char const* ICULocale::getName() const noexcept
{
    return Implementation().Get().getName();
}

ICULocale44Impl const& ICULocale::Implementation() const noexcept
{
    return **std::any_cast<std::shared_ptr<ICULocale44Impl>>(&m_implementation);
}

} // namespace QvxICU
