#include "IcuObject.h"

namespace QvxICU44 {

using QvxICU::ICUErrorCode;

std::vector<TStringCore> Own(icu::UnicodeString const* texts, int count)
{
    std::vector<TStringCore> own;
    if (texts != nullptr) {
        own.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            own.push_back(Own(texts[i]));
        }
    }
    return own;
}

std::vector<TStringCore> Own(std::unique_ptr<icu::StringEnumeration> texts, UErrorCode& code)
{
    std::vector<TStringCore> own;
    if (texts != nullptr) {
        while (icu::UnicodeString const* const text = texts->snext(code)) {
            own.push_back(Own(*text));
        }
    }
    return own;
}

std::unique_ptr<QvxICU::ICULocale> Own(icu::Locale const& locale)
{
    return QvxICU::ICULocale::createFromName(locale.getName());
}

std::unique_ptr<icu::TimeZone> MakeTimeZone(TStringView name, ICUErrorCode& status)
{
    if (QvxICU::ICU_FAILURE(status)) {
        return nullptr;
    }
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(Alias(name)));
    bool const known = zone != nullptr && (*zone != icu::TimeZone::getUnknown() || name == u"Etc/Unknown");
    if (!known) {
        status = ICUErrorCode::IllegalArgumentError;
        return nullptr;
    }
    return zone;
}

TStringCore NameOf(icu::TimeZone const& zone)
{
    icu::UnicodeString name;
    return Own(zone.getID(name));
}

} // namespace QvxICU44
