#pragma once
// Formats of dates and times in the styles of a locale: a moment as text and back. ICUSimpleDateFormat is the one for
// patterns of one's own.
//
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     using Format = QvxICU::ICUDateFormat;
//     auto const french = Format::createDateInstance(Format::kLong, *QvxICU::ICULocale::createFromName("fr"));
//     french->setTimeZone(u"UTC", status);
//     TStringCore const text = french->format(0.0, status);     // u"1 janvier 1970"
//     double const moment = french->parse(text, status);        // 0.0
//
// Moments are milliseconds since 1970-01-01T00:00Z. A call with a failed status does nothing and returns 0 or an empty
// text. What a factory returns is never null; if ICU made no format, calls report InvalidStateError from then on, or do
// nothing where they take no status.
//
// Since version 72 ICU writes times with a NARROW NO-BREAK SPACE (U+202F) before AM and PM in English and some other
// languages, where a space was before; it reads either only while the format is lenient. See docs/icu.md.

#include <memory>

#include <qvxsys/ICUCalendar.h>
#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUString.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace QvxICU {

class ICUDecimalFormat;
class ICUFieldPosition;
class ICUParsePosition;

/// A clone shares the ICU format with the original until one of them is changed; the one that is changed then gets its
/// own, so neither sees the other's changes. That makes clones cheap and is safe with each in a thread of its own.
/// One format may be used by several threads at once as long as only const functions are called.
class QVXSYS_API ICUDateFormat
{
public:
    /// How much is said. Other values throw QuorvexException, "Unknown UEStyle", 0x80A9CA1D.
    enum ICUEStyle : int {
        kFull = 0,   ///< Tuesday, January 30, 2024; 2:05:09 PM Central European Standard Time
        kLong = 1,   ///< January 30, 2024; 2:05:09 PM GMT+1
        kMedium = 2, ///< Jan 30, 2024; 2:05:09 PM
        kShort = 3,  ///< 1/30/24; 2:05 PM
        kDefault = kMedium,
    };

    /// The fields of a format, for ICUFieldPosition; in brackets their letters in patterns.
    enum ICUEField : int {
        EraField = 0,                ///< G
        YearField = 1,               ///< y
        MonthField = 2,              ///< M
        DateField = 3,               ///< d
        HourOfDay1Field = 4,         ///< k, 1..24
        HourOfDay0Field = 5,         ///< H, 0..23
        MinuteField = 6,             ///< m
        SecondField = 7,             ///< s
        FractionalSecondField = 8,   ///< S
        DayOfWeekField = 9,          ///< E
        DayOfYearField = 10,         ///< D
        DayOfWeekInMonthField = 11,  ///< F
        WeekOfYearField = 12,        ///< w
        WeekOfMonthField = 13,       ///< W
        AmPmField = 14,              ///< a
        Hour1Field = 15,             ///< h, 1..12
        Hour0Field = 16,             ///< K, 0..11
        TimeZoneField = 17,          ///< z
        YearWoyField = 18,           ///< Y
        DowLocalField = 19,          ///< e
        ExtendedYearField = 20,      ///< u
        JulianDayField = 21,         ///< g
        MillisecondsInDayField = 22, ///< A
        TimeZoneRfcField = 23,       ///< Z
        TimeZoneGenericField = 24,   ///< v
        StandaloneDayField = 25,     ///< c
        StandaloneMonthField = 26,   ///< L
        QuarterField = 27,           ///< Q
        StandaloneQuarterField = 28, ///< q
        TimeZoneSpecialField = 29,   ///< V
        YearNameField = 30,          ///< U
        TimeZoneGmtField = 31,       ///< O
        TimeZoneIsoField = 32,       ///< X
        TimeZoneIsoLocalField = 33,  ///< x
        RelatedYearField = 34,       ///< r
        AmPmMidnightNoonField = 35,  ///< b
        FlexibleDayPeriodField = 36, ///< B
    };

    /// What a lenient format forgives when it reads; all are on while a format is lenient.
    enum ICUEBooleanAttribute : int {
        ParseAllowWhitespace = 0,          ///< spaces that are missing or too many
        ParseAllowNumeric = 1,             ///< a number where a name is expected
        ParsePartialLiteralMatch = 2,      ///< parts of the pattern's own words
        ParseMultiplePatternsForMatch = 3, ///< names of other widths than the pattern's
    };

    /// Where the text will stand: some languages write months and days with a capital letter only there.
    enum ICUECapitalization : int {
        CapitalizationNone = 0x100, ///< as at first
        CapitalizationForMiddleOfSentence = 0x101,
        CapitalizationForBeginningOfSentence = 0x102,
        CapitalizationForUIListOrMenu = 0x103,
        CapitalizationForStandalone = 0x104,
    };

    /// The date alone, in the default time zone.
    [[nodiscard]] static std::unique_ptr<ICUDateFormat> createDateInstance(ICUEStyle style, ICULocale const& locale);
    /// The time alone.
    [[nodiscard]] static std::unique_ptr<ICUDateFormat> createTimeInstance(ICUEStyle style, ICULocale const& locale);
    /// Of dates with times.
    [[nodiscard]] static std::unique_ptr<ICUDateFormat> createDateTimeInstance(ICUEStyle date, ICUEStyle time,
                                                                               ICULocale const& locale);

    virtual ~ICUDateFormat();

    /// Of the same kind and never null; shares the ICU format until one of the two is changed.
    [[nodiscard]] virtual std::unique_ptr<ICUDateFormat> clone() const = 0;

    /// @name Format
    /// @{

    /// In the format's time zone. Moments beyond the calendar's range as ICUCalendar::setTimeInMillis. A pattern with
    /// letters that mean nothing: InvalidFormatError.
    [[nodiscard]] virtual TStringCore format(double millis, ICUErrorCode& status) const = 0;
    /// Appends.
    virtual void format(double millis, ICUString& appendTo, ICUErrorCode& status) const = 0;
    /// The position's field is sought: its first place in the text is where the position then begins and ends; 0 and 0
    /// if the text has no such field. Letters that mean nothing are left out.
    [[nodiscard]] virtual TStringCore format(double millis, ICUFieldPosition& position, ICUErrorCode& status) const = 0;
    /// The calendar's moment in the calendar's time zone; in the format's calendar if they are of different kinds.
    /// IllegalArgumentError if ICU made no calendar.
    [[nodiscard]] virtual TStringCore format(ICUCalendar const& calendar, ICUErrorCode& status) const = 0;
    /// @}

    /// @name Parse
    /// @{

    /// From the start of the text; what comes after the date is ignored. ParseError and InvalidFormatError do not come
    /// up: a text that does not begin with a date is an IllegalArgumentError.
    [[nodiscard]] virtual double parse(TStringView text, ICUErrorCode& status) const = 0;
    /// From the position, which moves behind the date. Without one: 0, the position stays and its error index is where
    /// the text stopped being one. The text is read in place.
    [[nodiscard]] virtual double parse(TStringView text, ICUParsePosition& position) const = 0;
    /// Sets the calendar to what is read, its time zone included if the text has one; fields that the text does not
    /// have keep their values: clear() it first.
    virtual void parse(TStringView text, ICUCalendar& calendar, ICUParsePosition& position) const = 0;
    /// Whether more is read than what the format writes, as at first: isCalendarLenient() and all attributes.
    [[nodiscard]] virtual bool isLenient() const = 0;
    virtual void setLenient(bool lenient) = 0;
    /// Whether numbers may be out of their ranges: the 32nd of January.
    [[nodiscard]] virtual bool isCalendarLenient() const = 0;
    virtual void setCalendarLenient(bool lenient) = 0;
    /// Unknown attributes: IllegalArgumentError.
    [[nodiscard]] virtual bool getBooleanAttribute(ICUEBooleanAttribute attribute, ICUErrorCode& status) const = 0;
    virtual void setBooleanAttribute(ICUEBooleanAttribute attribute, bool value, ICUErrorCode& status) = 0;
    /// @}

    /// @name Set-up
    /// @{

    /// A copy of the format's calendar, whose moment means nothing.
    [[nodiscard]] virtual std::unique_ptr<ICUCalendar> getCalendar(ICUErrorCode& status) const = 0;
    /// Takes a copy, with its time zone and leniency. IllegalArgumentError if ICU made no calendar.
    virtual void setCalendar(ICUCalendar const& calendar, ICUErrorCode& status) = 0;
    /// A copy of what writes and reads the numbers.
    [[nodiscard]] virtual std::unique_ptr<ICUDecimalFormat> getNumberFormat(ICUErrorCode& status) const = 0;
    /// Takes a copy, without its groups and fractions. IllegalArgumentError if ICU made no number format.
    virtual void setNumberFormat(ICUDecimalFormat const& format, ICUErrorCode& status) = 0;
    [[nodiscard]] virtual TStringCore getTimeZone() const = 0;
    /// By name, as ICUCalendar::setTimeZone. An unknown one: IllegalArgumentError, and nothing changes.
    virtual void setTimeZone(TStringView name, ICUErrorCode& status) = 0;
    [[nodiscard]] virtual ICUECapitalization getContext(ICUErrorCode& status) const = 0;
    /// Other values: IllegalArgumentError.
    virtual void setContext(ICUECapitalization context, ICUErrorCode& status) = 0;
    /// Whether both are of one kind and set up alike; boolean attributes are not compared.
    [[nodiscard]] virtual bool operator==(ICUDateFormat const& other) const = 0;
    /// @}

    /// For the library's own use: the icu::DateFormat behind the wrapper, which may be shared, or null.
    [[nodiscard]] virtual void const* Native() const noexcept = 0;

protected:
    ICUDateFormat() = default;
    ICUDateFormat(ICUDateFormat const&) = default;
    ICUDateFormat& operator=(ICUDateFormat const&) = default;
};

} // namespace QvxICU
