// The factories over ICU: the static functions of the wrappers as objects.

#include <qvxsys/ICUFactories.h>

#include <memory>

#include <qvxsys/QvxICU.h>

namespace QvxICU44 {
namespace {

using namespace QvxICU;

class CalendarFactory44Impl final : public ICalendarFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUCalendar> createInstance(ICUErrorCode& status) const override
    {
        return ICUCalendar::createInstance(status);
    }
    [[nodiscard]] std::unique_ptr<ICUCalendar> createInstance(ICULocale const& locale,
                                                              ICUErrorCode& status) const override
    {
        return ICUCalendar::createInstance(locale, status);
    }
};

class GregorianCalendarFactory44Impl final : public IGregorianCalendarFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUGregorianCalendar> createInstance(ICULocale const& locale,
                                                                       ICUErrorCode& status) const override
    {
        return ICUGregorianCalendar::createInstance(locale, status);
    }
};

class DateFormatFactory44Impl final : public IDateFormatFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUDateFormat> createDateInstance(ICUDateFormat::ICUEStyle style,
                                                                    ICULocale const& locale) const override
    {
        return ICUDateFormat::createDateInstance(style, locale);
    }
    [[nodiscard]] std::unique_ptr<ICUDateFormat> createTimeInstance(ICUDateFormat::ICUEStyle style,
                                                                    ICULocale const& locale) const override
    {
        return ICUDateFormat::createTimeInstance(style, locale);
    }
    [[nodiscard]] std::unique_ptr<ICUDateFormat> createDateTimeInstance(ICUDateFormat::ICUEStyle date,
                                                                        ICUDateFormat::ICUEStyle time,
                                                                        ICULocale const& locale) const override
    {
        return ICUDateFormat::createDateTimeInstance(date, time, locale);
    }
};

class SimpleDateFormatFactory44Impl final : public ISimpleDateFormatFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUSimpleDateFormat> createInstance(ICUErrorCode& status) const override
    {
        return ICUSimpleDateFormat::createInstance(status);
    }
    [[nodiscard]] std::unique_ptr<ICUSimpleDateFormat> createInstance(char const* pattern, ICULocale const& locale,
                                                                      ICUErrorCode& status) const override
    {
        return ICUSimpleDateFormat::createInstance(pattern, locale, status);
    }
    [[nodiscard]] std::unique_ptr<ICUSimpleDateFormat> createInstance(wchar_t const* pattern, ICULocale const& locale,
                                                                      ICUErrorCode& status) const override
    {
        return ICUSimpleDateFormat::createInstance(pattern, locale, status);
    }
    [[nodiscard]] std::unique_ptr<ICUSimpleDateFormat> createInstance(TStringView pattern,
                                                                      ICUErrorCode& status) const override
    {
        return ICUSimpleDateFormat::createInstance(pattern, status);
    }
    [[nodiscard]] std::unique_ptr<ICUSimpleDateFormat> createInstance(TStringView pattern, ICULocale const& locale,
                                                                      ICUErrorCode& status) const override
    {
        return ICUSimpleDateFormat::createInstance(pattern, locale, status);
    }
    [[nodiscard]] std::unique_ptr<ICUSimpleDateFormat>
    createInstance(TStringView pattern, ICUDateFormatSymbols const& symbols, ICUErrorCode& status) const override
    {
        return ICUSimpleDateFormat::createInstance(pattern, symbols, status);
    }
    [[nodiscard]] std::unique_ptr<ICUSimpleDateFormat> createInstance(ICUSimpleDateFormat const& other) const override
    {
        return ICUSimpleDateFormat::createInstance(other);
    }
};

class DateFormatSymbolsFactory44Impl final : public IDateFormatSymbolsFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUDateFormatSymbols> createInstance(ICULocale const& locale,
                                                                       ICUErrorCode& status) const override
    {
        return ICUDateFormatSymbols::createInstance(locale, status);
    }
    [[nodiscard]] std::unique_ptr<ICUDateFormatSymbols>
    createInstance(ICULocale const& locale, char const* calendarType, ICUErrorCode& status) const override
    {
        return ICUDateFormatSymbols::createInstance(locale, calendarType, status);
    }
    [[nodiscard]] TStringCore getMonth(int index, char const* locale) const override
    {
        return ICUDateFormatSymbols::getMonth(index, locale);
    }
    [[nodiscard]] TStringCore getQuarter(int index, char const* locale) const override
    {
        return ICUDateFormatSymbols::getQuarter(index, locale);
    }
    [[nodiscard]] TStringCore getWeekday(int index, char const* locale) const override
    {
        return ICUDateFormatSymbols::getWeekday(index, locale);
    }
};

class DateTimePatternGeneratorFactory44Impl final : public IDateTimePatternGeneratorFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUDateTimePatternGenerator> createInstance(char const* locale,
                                                                              ICUErrorCode& status) const override
    {
        return ICUDateTimePatternGenerator::createInstance(locale, status);
    }
};

class DecimalFormatFactory44Impl final : public IDecimalFormatFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUDecimalFormat> createInstance(ICULocale const& locale) const override
    {
        return ICUDecimalFormat::createInstance(locale);
    }
    [[nodiscard]] std::unique_ptr<ICUDecimalFormat> createCurrencyInstance(ICULocale const& locale) const override
    {
        return ICUDecimalFormat::createCurrencyInstance(locale);
    }
    [[nodiscard]] std::unique_ptr<ICUDecimalFormat> createInstance(ICULocale const& locale,
                                                                   ICUNumberFormatStyle style) const override
    {
        return ICUDecimalFormat::createInstance(locale, style);
    }
    [[nodiscard]] std::unique_ptr<ICUDecimalFormat> createInstance(TStringCore const& pattern,
                                                                   ICUDecimalFormatSymbols const& symbols,
                                                                   ICUErrorCode& status) const override
    {
        return ICUDecimalFormat::createInstance(pattern, symbols, status);
    }
};

class DecimalFormatSymbolsFactory44Impl final : public IDecimalFormatSymbolsFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUDecimalFormatSymbols> createInstance(ICULocale const& locale,
                                                                          ICUErrorCode& status) const override
    {
        return ICUDecimalFormatSymbols::createInstance(locale, status);
    }
};

class FieldPositionFactory44Impl final : public IFieldPositionFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUFieldPosition> createInstance() const override
    {
        return ICUFieldPosition::createInstance();
    }
    [[nodiscard]] std::unique_ptr<ICUFieldPosition> createInstance(int field) const override
    {
        return ICUFieldPosition::createInstance(field);
    }
};

class ParsePositionFactory44Impl final : public IParsePositionFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUParsePosition> createInstance() const override
    {
        return ICUParsePosition::createInstance();
    }
    [[nodiscard]] std::unique_ptr<ICUParsePosition> createInstance(int index) const override
    {
        return ICUParsePosition::createInstance(index);
    }
};

class LocaleFactory44Impl final : public ILocaleFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICULocale> createInstance() const override { return ICULocale::createInstance(); }
    [[nodiscard]] std::unique_ptr<ICULocale> createInstance(char const* language, char const* country,
                                                            char const* variant, char const* keywords) const override
    {
        return ICULocale::createInstance(language, country, variant, keywords);
    }
    [[nodiscard]] std::unique_ptr<ICULocale> createFromName(char const* name) const override
    {
        return ICULocale::createFromName(name);
    }
    [[nodiscard]] std::unique_ptr<ICULocale> createCanonical(char const* name) const override
    {
        return ICULocale::createCanonical(name);
    }
    [[nodiscard]] std::unique_ptr<ICULocale> forLanguageTag(char const* tag, ICUErrorCode& status) const override
    {
        return ICULocale::forLanguageTag(tag, status);
    }
    [[nodiscard]] std::unique_ptr<ICULocale> getDefault() const override { return ICULocale::getDefault(); }
    [[nodiscard]] std::unique_ptr<ICULocale> getRoot() const override { return ICULocale::getRoot(); }
    void setDefault(ICULocale const& locale, ICUErrorCode& status) const override
    {
        return ICULocale::setDefault(locale, status);
    }
    [[nodiscard]] std::vector<std::unique_ptr<ICULocale>> getAvailableLocales(int& count) const override
    {
        return ICULocale::getAvailableLocales(count);
    }
    [[nodiscard]] ICULocale const& getUS() const override { return ICULocale::getUS(); }
    [[nodiscard]] ICULocale const& getCanada() const override { return ICULocale::getCanada(); }
    [[nodiscard]] ICULocale const& getCanadaFrench() const override { return ICULocale::getCanadaFrench(); }
    [[nodiscard]] ICULocale const& getChina() const override { return ICULocale::getChina(); }
    [[nodiscard]] ICULocale const& getPRC() const override { return ICULocale::getPRC(); }
    [[nodiscard]] ICULocale const& getJapan() const override { return ICULocale::getJapan(); }
    [[nodiscard]] ICULocale const& getKorea() const override { return ICULocale::getKorea(); }
};

class RegexPatternFactory44Impl final : public IRegexPatternFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICURegexPattern> createInstance(ICUString const& pattern, unsigned flags,
                                                                  ICUErrorCode& status) const override
    {
        return ICURegexPattern::createInstance(pattern, flags, status);
    }
    [[nodiscard]] std::unique_ptr<ICURegexPattern> createInstance(TStringCore const& pattern, unsigned flags,
                                                                  ICUErrorCode& status) const override
    {
        return ICURegexPattern::createInstance(pattern, flags, status);
    }
    [[nodiscard]] std::unique_ptr<ICURegexPattern>
    createInstance(ICUString const& pattern, unsigned flags, ICUParseError& error, ICUErrorCode& status) const override
    {
        return ICURegexPattern::createInstance(pattern, flags, error, status);
    }
    [[nodiscard]] std::unique_ptr<ICURegexPattern> createInstance(TStringCore const& pattern, unsigned flags,
                                                                  ICUParseError& error,
                                                                  ICUErrorCode& status) const override
    {
        return ICURegexPattern::createInstance(pattern, flags, error, status);
    }
};

class StringFactory44Impl final : public IStringFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUString> createInstance() const override { return ICUString::createInstance(); }
    [[nodiscard]] std::unique_ptr<ICUString> createInstance(char const* utf8) const override
    {
        return ICUString::createInstance(utf8);
    }
    [[nodiscard]] std::unique_ptr<ICUString> createInstance(wchar_t const* text) const override
    {
        return ICUString::createInstance(text);
    }
    [[nodiscard]] std::unique_ptr<ICUString> createInstance(TStringView text) const override
    {
        return ICUString::createInstance(text);
    }
    [[nodiscard]] std::unique_ptr<ICUString> createAlias(TStringView text) const override
    {
        return ICUString::createAlias(text);
    }
    [[nodiscard]] std::unique_ptr<ICUString> createFromCodepage(char const* bytes, int length, char const* codepage,
                                                                ICUErrorCode& status) const override
    {
        return ICUString::createFromCodepage(bytes, length, codepage, status);
    }
};

class TransliteratorFactory44Impl final : public ITransliteratorFactory
{
public:
    [[nodiscard]] std::unique_ptr<ICUTransliterator> createInstance(TStringCore const& id, ICUTransDirection direction,
                                                                    ICUErrorCode& status) const override
    {
        return ICUTransliterator::createInstance(id, direction, status);
    }
    [[nodiscard]] std::unique_ptr<ICUTransliterator>
    createInstanceFromRules(TStringCore const& id, TStringCore const& rules, ICUTransDirection direction,
                            ICUParseError& error, ICUErrorCode& status) const override
    {
        return ICUTransliterator::createInstanceFromRules(id, rules, direction, error, status);
    }
};

class Module44Info final : public AbstractWrapperModuleInfoEx
{
public:
    [[nodiscard]] std::string getName() const override { return "ICU"; }
    [[nodiscard]] std::string getVersion() const override { return installedVersion(); }
    [[nodiscard]] std::string getUnicodeVersion() const override { return unicodeVersion(); }
    [[nodiscard]] ICUFactories const& getFactories() const noexcept override { return m_factories; }

private:
    CalendarFactory44Impl m_calendar;
    GregorianCalendarFactory44Impl m_gregorianCalendar;
    DateFormatFactory44Impl m_dateFormat;
    SimpleDateFormatFactory44Impl m_simpleDateFormat;
    DateFormatSymbolsFactory44Impl m_dateFormatSymbols;
    DateTimePatternGeneratorFactory44Impl m_dateTimePatternGenerator;
    DecimalFormatFactory44Impl m_decimalFormat;
    DecimalFormatSymbolsFactory44Impl m_decimalFormatSymbols;
    FieldPositionFactory44Impl m_fieldPosition;
    ParsePositionFactory44Impl m_parsePosition;
    LocaleFactory44Impl m_locale;
    RegexPatternFactory44Impl m_regexPattern;
    StringFactory44Impl m_string;
    TransliteratorFactory44Impl m_transliterator;
    ICUFactories m_factories{m_calendar,
                             m_gregorianCalendar,
                             m_dateFormat,
                             m_simpleDateFormat,
                             m_dateFormatSymbols,
                             m_dateTimePatternGenerator,
                             m_decimalFormat,
                             m_decimalFormatSymbols,
                             m_fieldPosition,
                             m_parsePosition,
                             m_locale,
                             m_regexPattern,
                             m_string,
                             m_transliterator};
};

} // namespace
} // namespace QvxICU44

namespace QvxICU {

ICalendarFactory::~ICalendarFactory() = default;
IGregorianCalendarFactory::~IGregorianCalendarFactory() = default;
IDateFormatFactory::~IDateFormatFactory() = default;
ISimpleDateFormatFactory::~ISimpleDateFormatFactory() = default;
IDateFormatSymbolsFactory::~IDateFormatSymbolsFactory() = default;
IDateTimePatternGeneratorFactory::~IDateTimePatternGeneratorFactory() = default;
IDecimalFormatFactory::~IDecimalFormatFactory() = default;
IDecimalFormatSymbolsFactory::~IDecimalFormatSymbolsFactory() = default;
IFieldPositionFactory::~IFieldPositionFactory() = default;
IParsePositionFactory::~IParsePositionFactory() = default;
ILocaleFactory::~ILocaleFactory() = default;
IRegexPatternFactory::~IRegexPatternFactory() = default;
IStringFactory::~IStringFactory() = default;
ITransliteratorFactory::~ITransliteratorFactory() = default;
AbstractWrapperModuleInfo::~AbstractWrapperModuleInfo() = default;
AbstractWrapperModuleInfoEx::~AbstractWrapperModuleInfoEx() = default;

AbstractWrapperModuleInfoEx const& Module() noexcept
{
    // Never freed: threads may still use it at exit.
    // NOLINTNEXTLINE(bugprone-unhandled-exception-at-new): no memory for it, no process
    static AbstractWrapperModuleInfoEx const& module = *new QvxICU44::Module44Info;
    return module;
}

} // namespace QvxICU
