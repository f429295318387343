#pragma once
// The names that dates are written with: months, days of the week, quarters, eras, morning and afternoon.
//
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     using Symbols = QvxICU::ICUDateFormatSymbols;
//     TStringCore const may = Symbols::getMonth(4, "fr");                        // u"mai"
//     auto const polish = Symbols::createInstance(*QvxICU::ICULocale::createFromName("pl"), status);
//     auto const months = polish->getMonths(Symbols::Format, Symbols::Wide);     // months[0] == u"stycznia"
//
// Widths and contexts are checked: other values than 0..3 and 0..2 throw QuorvexException, "Unknown width type."
// (0x8AAE7D56) and "Unknown context type." (0x0EF0FAE5). For the context 2, of which ICU has no names, lists are empty
// and cannot be set. Only days of the week have short names of their own: Short of others is read as Abbreviated and
// cannot be set.

#include <memory>
#include <vector>

#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>

namespace QvxICU {

/// May be read from several threads at once. If ICU made no symbols, all lists are empty and cannot be set.
class QVXSYS_API ICUDateFormatSymbols
{
public:
    /// Within a date or alone, as in a heading.
    enum ICUEContext : int {
        Format = 0,     ///< within a date: "5 maja"
        Standalone = 1, ///< by itself: "maj"
        NoContext = 2,  ///< accepted, but without names
    };

    /// How long a name is.
    enum ICUEWidth : int {
        Abbreviated = 0, ///< Sept, Wed, Q3
        Wide = 1,        ///< September, Wednesday, 3rd quarter
        Narrow = 2,      ///< S, W; not unique
        Short = 3,       ///< We: days of the week only
    };

    /// The names of the Gregorian calendar in a locale's language, whatever calendar the locale uses.
    [[nodiscard]] static std::unique_ptr<ICUDateFormatSymbols> createInstance(ICULocale const& locale,
                                                                              ICUErrorCode& status);
    /// Of another calendar: "hebrew" (ICUCalendar::getType() of the locale's). An unknown one, or null, is Gregorian.
    [[nodiscard]] static std::unique_ptr<ICUDateFormatSymbols>
    createInstance(ICULocale const& locale, char const* calendarType, ICUErrorCode& status);

    /// @name One name
    /// Of the Gregorian calendar; a null locale is the default one. By itself and whole, if not said otherwise. Each
    /// call reads the locale's data: for more than a few names, make an instance. Thread-safe.
    /// @{

    /// From 0 (January). Empty if there is no such month.
    [[nodiscard]] static TStringCore getMonth(int index, char const* locale, ICUEContext context = Standalone,
                                              ICUEWidth width = Wide);
    /// From 0 to 3; empty for others.
    [[nodiscard]] static TStringCore getQuarter(int index, char const* locale, ICUEContext context = Standalone,
                                                ICUEWidth width = Wide);
    /// From 1 (Sunday) to 7. Others throw "Unknown day of week.", 0xA4F1F77D.
    [[nodiscard]] static TStringCore getWeekday(int index, char const* locale, ICUEContext context = Standalone,
                                                ICUEWidth width = Wide);
    /// @}

    virtual ~ICUDateFormatSymbols();

    /// A copy of its own. Never null.
    [[nodiscard]] virtual std::unique_ptr<ICUDateFormatSymbols> clone() const = 0;

    /// @name Lists
    /// @{

    /// From January.
    [[nodiscard]] virtual std::vector<TStringCore> getMonths(ICUEContext context, ICUEWidth width) const = 0;
    virtual void setMonths(std::vector<TStringCore> const& months, ICUEContext context, ICUEWidth width) = 0;
    /// The first, [0], is empty; [1] is Sunday.
    [[nodiscard]] virtual std::vector<TStringCore> getWeekdays(ICUEContext context, ICUEWidth width) const = 0;
    virtual void setWeekdays(std::vector<TStringCore> const& weekdays, ICUEContext context, ICUEWidth width) = 0;
    [[nodiscard]] virtual std::vector<TStringCore> getQuarters(ICUEContext context, ICUEWidth width) const = 0;
    virtual void setQuarters(std::vector<TStringCore> const& quarters, ICUEContext context, ICUEWidth width) = 0;
    /// From the oldest: "AD", "Anno Domini", "A".
    [[nodiscard]] virtual std::vector<TStringCore> getEras(ICUEWidth width) const = 0;
    virtual void setEras(std::vector<TStringCore> const& eras, ICUEWidth width) = 0;
    /// Before noon, after noon.
    [[nodiscard]] virtual std::vector<TStringCore> getAmPmStrings() const = 0;
    virtual void setAmPmStrings(std::vector<TStringCore> const& amPm) = 0;
    /// Of calendars with named years (Chinese: a cycle of sixty). ICU has one list for all contexts and widths.
    [[nodiscard]] virtual std::vector<TStringCore> getYearNames(ICUEContext context, ICUEWidth width) const = 0;
    /// The animals of such years, twelve.
    [[nodiscard]] virtual std::vector<TStringCore> getZodiacNames(ICUEContext context, ICUEWidth width) const = 0;
    /// @}

    /// The letters of localized patterns, in the order of ICUDateFormat::ICUEField.
    [[nodiscard]] virtual TStringCore getLocalPatternChars() const = 0;
    /// Null only if the status is a failure.
    [[nodiscard]] virtual std::unique_ptr<ICULocale> getLocale(ICULocDataLocaleType type,
                                                               ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual bool operator==(ICUDateFormatSymbols const& other) const = 0;

    /// For the library's own use: the icu::DateFormatSymbols behind the wrapper, or null.
    [[nodiscard]] virtual void const* Native() const noexcept = 0;

protected:
    ICUDateFormatSymbols() = default;
    ICUDateFormatSymbols(ICUDateFormatSymbols const&) = default;
    ICUDateFormatSymbols& operator=(ICUDateFormatSymbols const&) = default;
};

} // namespace QvxICU
