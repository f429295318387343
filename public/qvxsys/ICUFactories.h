#pragma once
// The factories of the locale services: an object to pass where a function's static creation calls would tie it to
// them, and what a module of wrappers tells of itself.
//
//     QvxICU::ICUFactories const& icu = QvxICU::Module().getFactories();
//     auto const locale = icu.locale.createFromName("fr_CA");
//     auto const format = icu.decimalFormat.createInstance(*locale);
//     std::string const version = QvxICU::Module().getVersion();    // "72.1": the ICU in use
//
// Each operation is the static function of the same name of the wrapper, with its arguments, errors and ownership: what
// is created belongs to the caller, ICU's failures are left in the ICUErrorCode and the wrapper then holds what ICU has
// returned. Factories have no state; they may be used from any thread, and live as long as the process.

#include <concepts>
#include <memory>
#include <string>
#include <vector>

#include <qvxsys/ICUCalendar.h>
#include <qvxsys/ICUDateFormat.h>
#include <qvxsys/ICUDateFormatSymbols.h>
#include <qvxsys/ICUDateTimePatternGenerator.h>
#include <qvxsys/ICUDecimalFormat.h>
#include <qvxsys/ICUDecimalFormatSymbols.h>
#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUPosition.h>
#include <qvxsys/ICURegexPattern.h>
#include <qvxsys/ICUSimpleDateFormat.h>
#include <qvxsys/ICUString.h>
#include <qvxsys/ICUTransliterator.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace QvxICU {

/// Makes objects of ICUCalendar, as its static functions do.
class QVXSYS_API ICalendarFactory
{
public:
    ICalendarFactory() = default;
    ICalendarFactory(ICalendarFactory const&) = default;
    ICalendarFactory& operator=(ICalendarFactory const&) = default;
    virtual ~ICalendarFactory();

    /// As ICUCalendar::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUCalendar> createInstance(ICUErrorCode& status) const = 0;
    /// As ICUCalendar::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUCalendar> createInstance(ICULocale const& locale,
                                                                      ICUErrorCode& status) const = 0;
};

/// Makes objects of ICUGregorianCalendar, as its static functions do.
class QVXSYS_API IGregorianCalendarFactory
{
public:
    IGregorianCalendarFactory() = default;
    IGregorianCalendarFactory(IGregorianCalendarFactory const&) = default;
    IGregorianCalendarFactory& operator=(IGregorianCalendarFactory const&) = default;
    virtual ~IGregorianCalendarFactory();

    /// As ICUGregorianCalendar::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUGregorianCalendar> createInstance(ICULocale const& locale,
                                                                               ICUErrorCode& status) const = 0;
};

/// Makes objects of ICUDateFormat, as its static functions do.
class QVXSYS_API IDateFormatFactory
{
public:
    IDateFormatFactory() = default;
    IDateFormatFactory(IDateFormatFactory const&) = default;
    IDateFormatFactory& operator=(IDateFormatFactory const&) = default;
    virtual ~IDateFormatFactory();

    /// As ICUDateFormat::createDateInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUDateFormat> createDateInstance(ICUDateFormat::ICUEStyle style,
                                                                            ICULocale const& locale) const = 0;
    /// As ICUDateFormat::createTimeInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUDateFormat> createTimeInstance(ICUDateFormat::ICUEStyle style,
                                                                            ICULocale const& locale) const = 0;
    /// As ICUDateFormat::createDateTimeInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUDateFormat> createDateTimeInstance(ICUDateFormat::ICUEStyle date,
                                                                                ICUDateFormat::ICUEStyle time,
                                                                                ICULocale const& locale) const = 0;
};

/// Makes objects of ICUSimpleDateFormat, as its static functions do.
class QVXSYS_API ISimpleDateFormatFactory
{
public:
    ISimpleDateFormatFactory() = default;
    ISimpleDateFormatFactory(ISimpleDateFormatFactory const&) = default;
    ISimpleDateFormatFactory& operator=(ISimpleDateFormatFactory const&) = default;
    virtual ~ISimpleDateFormatFactory();

    /// As ICUSimpleDateFormat::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUSimpleDateFormat> createInstance(ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual std::unique_ptr<ICUSimpleDateFormat>
    createInstance(char const* pattern, ICULocale const& locale, ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual std::unique_ptr<ICUSimpleDateFormat>
    createInstance(wchar_t const* pattern, ICULocale const& locale, ICUErrorCode& status) const = 0;
    /// As ICUSimpleDateFormat::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUSimpleDateFormat> createInstance(TStringView pattern,
                                                                              ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual std::unique_ptr<ICUSimpleDateFormat>
    createInstance(TStringView pattern, ICULocale const& locale, ICUErrorCode& status) const = 0;
    /// A string could be taken for either of the two on Windows.
    template<std::derived_from<TStringCore> S>
    [[nodiscard]] std::unique_ptr<ICUSimpleDateFormat> createInstance(S const& pattern, ICULocale const& locale,
                                                                      ICUErrorCode& status) const
    {
        return createInstance(pattern.view(), locale, status);
    }
    [[nodiscard]] virtual std::unique_ptr<ICUSimpleDateFormat>
    createInstance(TStringView pattern, ICUDateFormatSymbols const& symbols, ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual std::unique_ptr<ICUSimpleDateFormat>
    createInstance(ICUSimpleDateFormat const& other) const = 0;
};

/// Makes objects of ICUDateFormatSymbols, as its static functions do.
class QVXSYS_API IDateFormatSymbolsFactory
{
public:
    IDateFormatSymbolsFactory() = default;
    IDateFormatSymbolsFactory(IDateFormatSymbolsFactory const&) = default;
    IDateFormatSymbolsFactory& operator=(IDateFormatSymbolsFactory const&) = default;
    virtual ~IDateFormatSymbolsFactory();

    /// As ICUDateFormatSymbols::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUDateFormatSymbols> createInstance(ICULocale const& locale,
                                                                               ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual std::unique_ptr<ICUDateFormatSymbols>
    createInstance(ICULocale const& locale, char const* calendarType, ICUErrorCode& status) const = 0;
    /// As ICUDateFormatSymbols::getMonth.
    [[nodiscard]] virtual TStringCore getMonth(int index, char const* locale) const = 0;
    /// As ICUDateFormatSymbols::getQuarter.
    [[nodiscard]] virtual TStringCore getQuarter(int index, char const* locale) const = 0;
    /// As ICUDateFormatSymbols::getWeekday.
    [[nodiscard]] virtual TStringCore getWeekday(int index, char const* locale) const = 0;
};

/// Makes objects of ICUDateTimePatternGenerator, as its static functions do.
class QVXSYS_API IDateTimePatternGeneratorFactory
{
public:
    IDateTimePatternGeneratorFactory() = default;
    IDateTimePatternGeneratorFactory(IDateTimePatternGeneratorFactory const&) = default;
    IDateTimePatternGeneratorFactory& operator=(IDateTimePatternGeneratorFactory const&) = default;
    virtual ~IDateTimePatternGeneratorFactory();

    /// As ICUDateTimePatternGenerator::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUDateTimePatternGenerator> createInstance(char const* locale,
                                                                                      ICUErrorCode& status) const = 0;
};

/// Makes objects of ICUDecimalFormat, as its static functions do.
class QVXSYS_API IDecimalFormatFactory
{
public:
    IDecimalFormatFactory() = default;
    IDecimalFormatFactory(IDecimalFormatFactory const&) = default;
    IDecimalFormatFactory& operator=(IDecimalFormatFactory const&) = default;
    virtual ~IDecimalFormatFactory();

    /// As ICUDecimalFormat::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUDecimalFormat> createInstance(ICULocale const& locale) const = 0;
    /// As ICUDecimalFormat::createCurrencyInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUDecimalFormat> createCurrencyInstance(ICULocale const& locale) const = 0;
    /// As ICUDecimalFormat::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUDecimalFormat> createInstance(ICULocale const& locale,
                                                                           ICUNumberFormatStyle style) const = 0;
    [[nodiscard]] virtual std::unique_ptr<ICUDecimalFormat>
    createInstance(TStringCore const& pattern, ICUDecimalFormatSymbols const& symbols, ICUErrorCode& status) const = 0;
};

/// Makes objects of ICUDecimalFormatSymbols, as its static functions do.
class QVXSYS_API IDecimalFormatSymbolsFactory
{
public:
    IDecimalFormatSymbolsFactory() = default;
    IDecimalFormatSymbolsFactory(IDecimalFormatSymbolsFactory const&) = default;
    IDecimalFormatSymbolsFactory& operator=(IDecimalFormatSymbolsFactory const&) = default;
    virtual ~IDecimalFormatSymbolsFactory();

    /// As ICUDecimalFormatSymbols::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUDecimalFormatSymbols> createInstance(ICULocale const& locale,
                                                                                  ICUErrorCode& status) const = 0;
};

/// Makes objects of ICUFieldPosition, as its static functions do.
class QVXSYS_API IFieldPositionFactory
{
public:
    IFieldPositionFactory() = default;
    IFieldPositionFactory(IFieldPositionFactory const&) = default;
    IFieldPositionFactory& operator=(IFieldPositionFactory const&) = default;
    virtual ~IFieldPositionFactory();

    /// As ICUFieldPosition::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUFieldPosition> createInstance() const = 0;
    /// As ICUFieldPosition::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUFieldPosition> createInstance(int field) const = 0;
};

/// Makes objects of ICUParsePosition, as its static functions do.
class QVXSYS_API IParsePositionFactory
{
public:
    IParsePositionFactory() = default;
    IParsePositionFactory(IParsePositionFactory const&) = default;
    IParsePositionFactory& operator=(IParsePositionFactory const&) = default;
    virtual ~IParsePositionFactory();

    /// As ICUParsePosition::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUParsePosition> createInstance() const = 0;
    /// As ICUParsePosition::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUParsePosition> createInstance(int index) const = 0;
};

/// Makes objects of ICULocale, as its static functions do.
class QVXSYS_API ILocaleFactory
{
public:
    ILocaleFactory() = default;
    ILocaleFactory(ILocaleFactory const&) = default;
    ILocaleFactory& operator=(ILocaleFactory const&) = default;
    virtual ~ILocaleFactory();

    /// As ICULocale::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICULocale> createInstance() const = 0;
    [[nodiscard]] virtual std::unique_ptr<ICULocale>
    createInstance(char const* language, char const* country, char const* variant, char const* keywords) const = 0;
    /// As ICULocale::createFromName.
    [[nodiscard]] virtual std::unique_ptr<ICULocale> createFromName(char const* name) const = 0;
    /// As ICULocale::createCanonical.
    [[nodiscard]] virtual std::unique_ptr<ICULocale> createCanonical(char const* name) const = 0;
    /// As ICULocale::forLanguageTag.
    [[nodiscard]] virtual std::unique_ptr<ICULocale> forLanguageTag(char const* tag, ICUErrorCode& status) const = 0;
    /// As ICULocale::getDefault.
    [[nodiscard]] virtual std::unique_ptr<ICULocale> getDefault() const = 0;
    /// As ICULocale::getRoot.
    [[nodiscard]] virtual std::unique_ptr<ICULocale> getRoot() const = 0;
    /// As ICULocale::setDefault.
    virtual void setDefault(ICULocale const& locale, ICUErrorCode& status) const = 0;
    /// As ICULocale::getAvailableLocales.
    [[nodiscard]] virtual std::vector<std::unique_ptr<ICULocale>> getAvailableLocales(int& count) const = 0;
    /// As ICULocale::getUS.
    [[nodiscard]] virtual ICULocale const& getUS() const = 0;
    /// As ICULocale::getCanada.
    [[nodiscard]] virtual ICULocale const& getCanada() const = 0;
    /// As ICULocale::getCanadaFrench.
    [[nodiscard]] virtual ICULocale const& getCanadaFrench() const = 0;
    /// As ICULocale::getChina.
    [[nodiscard]] virtual ICULocale const& getChina() const = 0;
    /// As ICULocale::getPRC.
    [[nodiscard]] virtual ICULocale const& getPRC() const = 0;
    /// As ICULocale::getJapan.
    [[nodiscard]] virtual ICULocale const& getJapan() const = 0;
    /// As ICULocale::getKorea.
    [[nodiscard]] virtual ICULocale const& getKorea() const = 0;
};

/// Makes objects of ICURegexPattern, as its static functions do.
class QVXSYS_API IRegexPatternFactory
{
public:
    IRegexPatternFactory() = default;
    IRegexPatternFactory(IRegexPatternFactory const&) = default;
    IRegexPatternFactory& operator=(IRegexPatternFactory const&) = default;
    virtual ~IRegexPatternFactory();

    /// As ICURegexPattern::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICURegexPattern> createInstance(ICUString const& pattern, unsigned flags,
                                                                          ICUErrorCode& status) const = 0;
    /// As ICURegexPattern::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICURegexPattern> createInstance(TStringCore const& pattern, unsigned flags,
                                                                          ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual std::unique_ptr<ICURegexPattern>
    createInstance(ICUString const& pattern, unsigned flags, ICUParseError& error, ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual std::unique_ptr<ICURegexPattern>
    createInstance(TStringCore const& pattern, unsigned flags, ICUParseError& error, ICUErrorCode& status) const = 0;
};

/// Makes objects of ICUString, as its static functions do.
class QVXSYS_API IStringFactory
{
public:
    IStringFactory() = default;
    IStringFactory(IStringFactory const&) = default;
    IStringFactory& operator=(IStringFactory const&) = default;
    virtual ~IStringFactory();

    /// As ICUString::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUString> createInstance() const = 0;
    /// As ICUString::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUString> createInstance(char const* utf8) const = 0;
    /// As ICUString::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUString> createInstance(wchar_t const* text) const = 0;
    /// As ICUString::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUString> createInstance(TStringView text) const = 0;
    /// A string could be taken for either of the two on Windows.
    template<std::derived_from<TStringCore> S>
    [[nodiscard]] std::unique_ptr<ICUString> createInstance(S const& text) const
    {
        return createInstance(text.view());
    }
    /// As ICUString::createAlias.
    [[nodiscard]] virtual std::unique_ptr<ICUString> createAlias(TStringView text QVXSYS_LIFETIME_BOUND) const = 0;
    /// As ICUString::createFromCodepage.
    [[nodiscard]] virtual std::unique_ptr<ICUString>
    createFromCodepage(char const* bytes, int length, char const* codepage, ICUErrorCode& status) const = 0;
};

/// Makes objects of ICUTransliterator, as its static functions do.
class QVXSYS_API ITransliteratorFactory
{
public:
    ITransliteratorFactory() = default;
    ITransliteratorFactory(ITransliteratorFactory const&) = default;
    ITransliteratorFactory& operator=(ITransliteratorFactory const&) = default;
    virtual ~ITransliteratorFactory();

    /// As ICUTransliterator::createInstance.
    [[nodiscard]] virtual std::unique_ptr<ICUTransliterator>
    createInstance(TStringCore const& id, ICUTransDirection direction, ICUErrorCode& status) const = 0;
    /// As ICUTransliterator::createInstanceFromRules.
    [[nodiscard]] virtual std::unique_ptr<ICUTransliterator>
    createInstanceFromRules(TStringCore const& id, TStringCore const& rules, ICUTransDirection direction,
                            ICUParseError& error, ICUErrorCode& status) const = 0;
};

/// A module's factories, one per wrapper that can be created.
struct ICUFactories
{
    /// @name The factory of each wrapper
    /// They live as long as the module.
    /// @{
    ICalendarFactory const& calendar;
    IGregorianCalendarFactory const& gregorianCalendar;
    IDateFormatFactory const& dateFormat;
    ISimpleDateFormatFactory const& simpleDateFormat;
    IDateFormatSymbolsFactory const& dateFormatSymbols;
    IDateTimePatternGeneratorFactory const& dateTimePatternGenerator;
    IDecimalFormatFactory const& decimalFormat;
    IDecimalFormatSymbolsFactory const& decimalFormatSymbols;
    IFieldPositionFactory const& fieldPosition;
    IParsePositionFactory const& parsePosition;
    ILocaleFactory const& locale;
    IRegexPatternFactory const& regexPattern;
    IStringFactory const& string;
    ITransliteratorFactory const& transliterator;
    /// @}
};

/// What a module of wrappers tells of itself.
class QVXSYS_API AbstractWrapperModuleInfo
{
public:
    AbstractWrapperModuleInfo() = default;
    AbstractWrapperModuleInfo(AbstractWrapperModuleInfo const&) = default;
    AbstractWrapperModuleInfo& operator=(AbstractWrapperModuleInfo const&) = default;
    virtual ~AbstractWrapperModuleInfo();

    /// The name of what it wraps: "ICU".
    [[nodiscard]] virtual std::string getName() const = 0;
    /// The version of what it wraps: "72.1".
    [[nodiscard]] virtual std::string getVersion() const = 0;
};

/// The same with what is made by it.
class QVXSYS_API AbstractWrapperModuleInfoEx : public AbstractWrapperModuleInfo
{
public:
    AbstractWrapperModuleInfoEx() = default;
    AbstractWrapperModuleInfoEx(AbstractWrapperModuleInfoEx const&) = default;
    AbstractWrapperModuleInfoEx(AbstractWrapperModuleInfoEx&&) = default;
    AbstractWrapperModuleInfoEx& operator=(AbstractWrapperModuleInfoEx const&) = default;
    AbstractWrapperModuleInfoEx& operator=(AbstractWrapperModuleInfoEx&&) = default;
    ~AbstractWrapperModuleInfoEx() override;

    /// The version of the Unicode Standard that its data follow: "15.0".
    [[nodiscard]] virtual std::string getUnicodeVersion() const = 0;
    /// What makes its wrappers.
    [[nodiscard]] virtual ICUFactories const& getFactories() const noexcept = 0;
};

/// The module over ICU, the only one there is.
[[nodiscard]] QVXSYS_API AbstractWrapperModuleInfoEx const& Module() noexcept;

} // namespace QvxICU
