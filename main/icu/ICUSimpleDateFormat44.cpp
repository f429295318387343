// Date formats by patterns over ICU.

#include <qvxsys/ICUSimpleDateFormat.h>

#include <memory>
#include <string>

#include <unicode/smpdtfmt.h>

#include "ICUDateFormat44Impl.h"
#include "ICUDateFormatSymbols44Impl.h"

namespace QvxICU44 {

class ICUSimpleDateFormat44Impl final
    : public DateFormatBase<ICUSimpleDateFormat44Impl, QvxICU::ICUSimpleDateFormat, icu::SimpleDateFormat>
{
public:
    [[nodiscard]] TStringCore toPattern() const override
    {
        return With([](icu::SimpleDateFormat const& format) {
            icu::UnicodeString pattern;
            return Own(format.toPattern(pattern));
        });
    }
    [[nodiscard]] TStringCore toLocalizedPattern(ErrorCode& status) const override
    {
        return Text(status, [](auto& format, auto& text, UErrorCode& code) { format.toLocalizedPattern(text, code); });
    }
    void applyPattern(TStringView pattern) override
    {
        Change([pattern](icu::SimpleDateFormat& format) { format.applyPattern(Alias(pattern)); });
    }
    void applyLocalizedPattern(TStringView pattern, ErrorCode& status) override
    {
        Change(status, [pattern](icu::SimpleDateFormat& format, UErrorCode& code) {
            format.applyLocalizedPattern(Alias(pattern), code);
        });
    }
    [[nodiscard]] double get2DigitYearStart(ErrorCode& status) const override
    {
        return With(status, [](icu::SimpleDateFormat const& format, UErrorCode& code) {
            return format.get2DigitYearStart(code);
        });
    }
    void set2DigitYearStart(double millis, ErrorCode& status) override
    {
        if (IsMoment(millis, status)) {
            Change(status, [millis](icu::SimpleDateFormat& format, UErrorCode& code) {
                format.set2DigitYearStart(millis, code);
            });
        }
    }
    [[nodiscard]] std::unique_ptr<QvxICU::ICUDateFormatSymbols> getDateFormatSymbols(ErrorCode& status) const override
    {
        auto symbols = std::make_unique<ICUDateFormatSymbols44Impl>();
        With(status, [&](icu::SimpleDateFormat const& format, UErrorCode&) {
            symbols->Adopt(std::make_unique<icu::DateFormatSymbols>(*format.getDateFormatSymbols()));
        });
        return symbols;
    }
    void setDateFormatSymbols(QvxICU::ICUDateFormatSymbols const& symbols, ErrorCode& status) override
    {
        auto const* const names = Icu(symbols);
        if (names == nullptr) {
            Fail(status, ErrorCode::IllegalArgumentError);
        }
        Change(status, [names](icu::SimpleDateFormat& format, UErrorCode&) { format.setDateFormatSymbols(*names); });
    }
};

namespace {

/// A wrapper around the format that make(code) returns, unless the status is or becomes a failure.
template<class Make>
std::unique_ptr<QvxICU::ICUSimpleDateFormat> Wrapped(QvxICU::ICUErrorCode& status, Make const& make)
{
    auto format = std::make_unique<ICUSimpleDateFormat44Impl>();
    if (QvxICU::ICU_SUCCESS(status)) {
        icu::SimpleDateFormat* const made = make(Status(status));
        format->Adopt(Made(made, status));
    }
    return format;
}

} // namespace
} // namespace QvxICU44

namespace QvxICU {

using QvxICU44::Alias;
using QvxICU44::Wrapped;

ICUSimpleDateFormat::~ICUSimpleDateFormat() = default;

std::unique_ptr<ICUSimpleDateFormat> ICUSimpleDateFormat::createInstance(ICUErrorCode& status)
{
    return Wrapped(status, [](UErrorCode& code) { return new icu::SimpleDateFormat(code); });
}

std::unique_ptr<ICUSimpleDateFormat> ICUSimpleDateFormat::createInstance(TStringView pattern, ICULocale const& locale,
                                                                         ICUErrorCode& status)
{
    return Wrapped(status, [&](UErrorCode& code) {
        return new icu::SimpleDateFormat(Alias(pattern), QvxICU44::Icu(locale), code);
    });
}

std::unique_ptr<ICUSimpleDateFormat> ICUSimpleDateFormat::createInstance(TStringView pattern, ICUErrorCode& status)
{
    return createInstance(pattern, ICULocale(), status);
}

std::unique_ptr<ICUSimpleDateFormat> ICUSimpleDateFormat::createInstance(char const* pattern, ICULocale const& locale,
                                                                         ICUErrorCode& status)
{
    return createInstance(TStringCore::fromUtf8(pattern).view(), locale, status);
}

std::unique_ptr<ICUSimpleDateFormat> ICUSimpleDateFormat::createInstance(std::u16string& pattern, ICUErrorCode& status)
{
    return createInstance(TStringView(pattern), status);
}

std::unique_ptr<ICUSimpleDateFormat> ICUSimpleDateFormat::createInstance(std::u16string& pattern,
                                                                         ICULocale const& locale, ICUErrorCode& status)
{
    return createInstance(TStringView(pattern), locale, status);
}

std::unique_ptr<ICUSimpleDateFormat>
ICUSimpleDateFormat::createInstance(TStringView pattern, ICUDateFormatSymbols const& symbols, ICUErrorCode& status)
{
    auto const* const names = QvxICU44::Icu(symbols);
    if (names == nullptr) {
        QvxICU44::Fail(status, ICUErrorCode::IllegalArgumentError);
    }
    return Wrapped(status, [&](UErrorCode& code) { return new icu::SimpleDateFormat(Alias(pattern), *names, code); });
}

std::unique_ptr<ICUSimpleDateFormat> ICUSimpleDateFormat::createInstance(ICUSimpleDateFormat const& other)
{
    return std::unique_ptr<ICUSimpleDateFormat>(static_cast<ICUSimpleDateFormat*>(other.clone().release()));
}

std::unique_ptr<ICUSimpleDateFormat> ICUSimpleDateFormat::createFromDateFormat(ICUDateFormat const& format,
                                                                               ICUErrorCode& status)
{
    auto const* const simple = dynamic_cast<icu::SimpleDateFormat const*>(QvxICU44::Icu(format));
    if (simple == nullptr) {
        QvxICU44::Fail(status, ICUErrorCode::IllegalArgumentError);
    }
    return Wrapped(status, [simple](UErrorCode&) { return simple->clone(); });
}

} // namespace QvxICU
