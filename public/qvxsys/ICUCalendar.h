#pragma once
// Calendars: a moment as fields (year, month, day ...) of a calendar of some locale and time zone, and arithmetic with
// them. The locale chooses the calendar: "th_TH" or "ja_JP@calendar=japanese".
//
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     auto const day = QvxICU::ICUCalendar::createInstance(*QvxICU::ICULocale::createFromName("de_CH"), status);
//     day->setTimeZone(u"Europe/Zurich", status);
//     day->clear();
//     day->set(2024, QvxICU::ICUCalendar::January, 31);
//     day->add(QvxICU::ICUCalendar::Month, 1, status);                        // 2024-02-29: pinned to the month's end
//     int const last = day->getActualMaximum(QvxICU::ICUCalendar::DayOfMonth, status); // 29
//     double const time = day->getTimeInMillis(status);
//
// Moments are milliseconds since 1970-01-01T00:00Z as double, leap seconds not counted. Statuses are as everywhere over
// ICU: a call with a failed status does nothing and returns 0 or an empty text; warnings are no failures. Failures are
// never thrown. What a factory returns is never null; if ICU made no calendar, the status says why, and from then on
// calls report InvalidStateError, or do nothing and return 0 where they take no status.
//
// Values of the enumerations are checked: other ones throw QuorvexException, "Unknown calendar date field."
// (0xDECF1A87) and "Unknown day of week." (0xA4F1F77D), whatever the status.

#include <cstdint>
#include <memory>
#include <vector>

#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace QvxICU {

/// Setting a field only notes it; the moment is computed when it is asked for. Hence const calls compute, too: one
/// calendar is used by one thread at a time. Calendars share nothing.
class QVXSYS_API ICUCalendar
{
public:
    /// Fields; the same names in every calendar.
    enum ICUEDateFields : int {
        Year = 0,             ///< within the era, for most calendars
        Month = 1,            ///< 0 is the first
        DayOfMonth = 2,       ///< 1 is the first
        HourOfDay = 3,        ///< 0..23
        Minute = 4,           ///< 0..59
        Second = 5,           ///< 0..59
        Millisecond = 6,      ///< 0..999
        WeekOfYear = 7,       ///< 1 is the first
        YearOfWeekOfYear = 8, ///< the year that WeekOfYear counts in
        DayOfWeek = 9,        ///< ICUEDaysOfWeek
        DayOfYear = 10,       ///< 1 is the first
    };

    /// Months of the Gregorian calendar. Other calendars count their own from 0 likewise.
    enum ICUEMonths : int {
        January = 0,
        February = 1,
        March = 2,
        April = 3,
        May = 4,
        June = 5,
        July = 6,
        August = 7,
        September = 8,
        October = 9,
        November = 10,
        December = 11,
        Undecimber = 12, ///< the thirteenth of calendars that have one
    };

    /// Sunday is 1.
    enum ICUEDaysOfWeek : int {
        Sunday = 1,
        Monday = 2,
        Tuesday = 3,
        Wednesday = 4,
        Thursday = 5,
        Friday = 6,
        Saturday = 7,
    };

    /// Which moment a local time means that a change of the clocks repeats or skips.
    enum ICUEWallTime : int {
        LastWallTime = 0,      ///< of a repeated time the later; a skipped time as if the clocks had not yet changed
        FirstWallTime = 1,     ///< of a repeated time the earlier; a skipped time as if the clocks had changed already
        NextValidWallTime = 2, ///< of a skipped time the first after the gap; not for repeated times
    };

    /// What a day of the week is to a region.
    enum ICUEWeekdayType : int {
        Weekday = 0,
        Weekend = 1,
        WeekendOnset = 2, ///< the weekend begins during this day: getWeekendTransition()
        WeekendCease = 3, ///< the weekend ends during this day
    };

    /// The calendar and the week of the default locale, in the default time zone, at the current moment.
    [[nodiscard]] static std::unique_ptr<ICUCalendar> createInstance(ICUErrorCode& status);
    /// The calendar and the week of a locale, in the default time zone, at the current moment. An unknown locale's
    /// calendar is Gregorian.
    [[nodiscard]] static std::unique_ptr<ICUCalendar> createInstance(ICULocale const& locale, ICUErrorCode& status);

    /// The current moment, to the millisecond.
    [[nodiscard]] static double getNow() noexcept;
    /// The calendars that can be asked for with the keyword "calendar" in a locale's name; those in use for the
    /// locale's region first, or only those.
    [[nodiscard]] static std::vector<TStringCore> getTypesForLocale(ICULocale const& locale, bool onlyCommonlyUsed,
                                                                    ICUErrorCode& status);
    /// The names of all known time zones, older names included.
    [[nodiscard]] static std::vector<TStringCore> getTimeZones(ICUErrorCode& status);
    /// The time zone that calendars and formats get when they are made. Thread-safe.
    [[nodiscard]] static TStringCore getDefaultTimeZone();
    /// For the process. An unknown name: IllegalArgumentError, and nothing changes. Thread-safe.
    static void setDefaultTimeZone(TStringView name, ICUErrorCode& status);

    virtual ~ICUCalendar();

    /// A calendar of its own with the same state. Never null.
    [[nodiscard]] virtual std::unique_ptr<ICUCalendar> clone() const = 0;

    /// Makes all fields unset: those that are not set before the moment is computed have their values of 1970-01-01,
    /// midnight.
    virtual void clear() = 0;
    /// Other fields, the milliseconds too, stay as they are: clear() first for a whole second.
    virtual void set(int year, int month, int date, int hour, int minute, int second) = 0;
    virtual void set(int year, int month, int date) = 0;
    /// Any value while the calendar is lenient: the 32nd of January is the 1st of February. Days of the month are cut
    /// to 0x7F000000 each way, with all set(). Of fields that contradict each other those set last count.
    virtual void set(ICUEDateFields field, int value) = 0;

    /// The moment. IllegalArgumentError if the calendar is not lenient and a field is out of its range.
    [[nodiscard]] virtual double getTimeInMillis(ICUErrorCode& status) const = 0;
    /// From -184303902528000000 to 183882168921600000, about five million years each way. Beyond that, the nearest
    /// limit if the calendar is lenient, else IllegalArgumentError. Not a number: IllegalArgumentError.
    virtual void setTimeInMillis(double millis, ICUErrorCode& status) = 0;
    /// Computes all fields of the moment first, where necessary.
    [[nodiscard]] virtual int get(ICUEDateFields field, ICUErrorCode& status) const = 0;

    /// Whether fields out of their ranges are carried over into others (as at first), or are errors.
    virtual void setLenient(bool lenient) = 0;
    /// The day that weeks begin with; of the locale unless set. Throws "Unknown day of week." for values that are none.
    virtual void setFirstDayOfWeek(ICUEDaysOfWeek day) = 0;
    /// The day that weeks begin with.
    [[nodiscard]] virtual ICUEDaysOfWeek getFirstDayOfWeek(ICUErrorCode& status) const = 0;
    /// How many days of a new year or month make its first week: 1..7, the nearest of which is taken for other values.
    virtual void setMinimalDaysInFirstWeek(std::uint8_t days) = 0;
    /// How many days the first week of a year has at least.
    [[nodiscard]] virtual std::uint8_t getMinimalDaysInFirstWeek() const = 0;
    /// Whether fields out of range are understood.
    [[nodiscard]] virtual bool isLenient() const = 0;
    /// Whether the clocks of the time zone stand on summer time at the moment.
    [[nodiscard]] virtual bool inDaylightTime(ICUErrorCode& status) const = 0;

    /// @name Fields
    /// @{

    /// Moves the moment by so many years, months, days, hours ... Days and longer keep the time of day, across changes
    /// of the clocks, too; the day of the month is pinned to the month's length. Overflowing fields are carried over.
    virtual void add(ICUEDateFields field, int amount, ICUErrorCode& status) = 0;
    /// As add(), but larger fields stay: a month after December 2024 is January 2024.
    virtual void roll(ICUEDateFields field, int amount, ICUErrorCode& status) = 0;
    /// How many whole steps of the field lead towards a moment; negative for an earlier one. The calendar has then
    /// moved by them, so that asking for smaller and smaller fields tells "2 years, 1 month, 5 days".
    [[nodiscard]] virtual int fieldDifference(double millis, ICUEDateFields field, ICUErrorCode& status) = 0;
    /// Whether the field was set or computed since clear().
    [[nodiscard]] virtual bool isSet(ICUEDateFields field) const = 0;
    /// Makes one field unset.
    virtual void clear(ICUEDateFields field) = 0;

    /// The least value that the field ever has, whatever the moment.
    [[nodiscard]] virtual int getMinimum(ICUEDateFields field) const = 0;
    /// The greatest value that the field ever has: 31 for the day of a month.
    [[nodiscard]] virtual int getMaximum(ICUEDateFields field) const = 0;
    /// The greatest that the least value can be.
    [[nodiscard]] virtual int getGreatestMinimum(ICUEDateFields field) const = 0;
    /// The least that the greatest value can be: 28 for the day of a month.
    [[nodiscard]] virtual int getLeastMaximum(ICUEDateFields field) const = 0;
    /// The least value of the field at the moment: its month, its year.
    [[nodiscard]] virtual int getActualMinimum(ICUEDateFields field, ICUErrorCode& status) const = 0;
    /// The greatest value of the field at the moment: 29 for the day of the month in February 2024.
    /// Costly for years, which some calendars try one by one.
    [[nodiscard]] virtual int getActualMaximum(ICUEDateFields field, ICUErrorCode& status) const = 0;

    /// Counted from 0; 1 is AD of the Gregorian calendar. The Japanese calendar counts its eras on.
    [[nodiscard]] virtual int getEra(ICUErrorCode& status) const = 0;
    virtual void setEra(int era) = 0;
    /// Of lunisolar calendars (Chinese, Dangi): whether the month is one inserted after that of its number.
    [[nodiscard]] virtual bool isLeapMonth(ICUErrorCode& status) const = 0;
    /// @}

    /// @name Time zone
    /// @{

    /// By name: "Europe/Zurich", "UTC", "GMT+05:30". The moment stays unless fields are set that it is not computed
    /// from yet. An unknown name: IllegalArgumentError, and nothing changes ("Etc/Unknown" is known).
    virtual void setTimeZone(TStringView name, ICUErrorCode& status) = 0;
    [[nodiscard]] virtual TStringCore getTimeZone() const = 0;
    /// "Central European Summer Time", or "CEST" where the language has a short name, else like "GMT+2".
    [[nodiscard]] virtual TStringCore getTimeZoneDisplayName(bool daylight, bool longName,
                                                             ICULocale const& locale) const = 0;
    /// Milliseconds to be added to UTC at the moment, without summer time.
    [[nodiscard]] virtual int getRawOffset(ICUErrorCode& status) const = 0;
    /// Milliseconds that summer time adds at the moment.
    [[nodiscard]] virtual int getDstOffset(ICUErrorCode& status) const = 0;
    /// LastWallTime at first. NextValidWallTime and unknown options are ignored.
    virtual void setRepeatedWallTimeOption(ICUEWallTime option) = 0;
    [[nodiscard]] virtual ICUEWallTime getRepeatedWallTimeOption() const = 0;
    /// LastWallTime at first. Unknown options are ignored.
    virtual void setSkippedWallTimeOption(ICUEWallTime option) = 0;
    [[nodiscard]] virtual ICUEWallTime getSkippedWallTimeOption() const = 0;
    /// @}

    /// @name Weekend
    /// @{

    /// At the moment, to the millisecond. False if the moment cannot be computed.
    [[nodiscard]] virtual bool isWeekend() const = 0;
    [[nodiscard]] virtual bool isWeekend(double millis, ICUErrorCode& status) const = 0;
    /// By the region's custom.
    [[nodiscard]] virtual ICUEWeekdayType getDayOfWeekType(ICUEDaysOfWeek day, ICUErrorCode& status) const = 0;
    /// Milliseconds after midnight at which the weekend begins or ends on such a day; IllegalArgumentError for others.
    [[nodiscard]] virtual int getWeekendTransition(ICUEDaysOfWeek day, ICUErrorCode& status) const = 0;
    /// @}

    /// @name Comparison and origin
    /// @{

    /// Whether both stand at the same moment, whatever their calendars and time zones. IllegalArgumentError if ICU made
    /// no calendar for the other.
    [[nodiscard]] virtual bool equals(ICUCalendar const& other, ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual bool before(ICUCalendar const& other, ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual bool after(ICUCalendar const& other, ICUErrorCode& status) const = 0;
    /// Whether both are of one kind and set up alike (week, leniency, time zone), whatever their moments.
    [[nodiscard]] virtual bool isEquivalentTo(ICUCalendar const& other) const = 0;

    /// "gregorian", "japanese", "islamic-umalqura" ...; "" without a calendar.
    [[nodiscard]] virtual char const* getType() const = 0;
    /// Null only if the status is a failure.
    [[nodiscard]] virtual std::unique_ptr<ICULocale> getLocale(ICULocDataLocaleType type,
                                                               ICUErrorCode& status) const = 0;
    /// ICU's mark of the class of the calendar behind the wrapper; null without one.
    [[nodiscard]] virtual void const* getDynamicClassID() const noexcept = 0;
    /// @}

    /// For the library's own use: the icu::Calendar behind the wrapper, or null.
    [[nodiscard]] virtual void* Native() noexcept = 0;

protected:
    ICUCalendar() = default;
    ICUCalendar(ICUCalendar const&) = default;
    ICUCalendar& operator=(ICUCalendar const&) = default;
};

/// The Gregorian calendar, before its introduction the Julian. As ICUCalendar otherwise.
class QVXSYS_API ICUGregorianCalendar : public ICUCalendar
{
public:
    /// With the week of a locale, whatever calendar it uses; in the default time zone, at the current moment.
    [[nodiscard]] static std::unique_ptr<ICUGregorianCalendar> createInstance(ICULocale const& locale,
                                                                              ICUErrorCode& status);
    /// ICU's mark of Gregorian calendars, as getDynamicClassID() of one returns it.
    [[nodiscard]] static void const* getStaticClassID() noexcept;

    ~ICUGregorianCalendar() override;

    /// The moment from which on the calendar is Gregorian; at first 1582-10-15, before which came the 4th.
    virtual void setGregorianChange(double millis, ICUErrorCode& status) = 0;
    /// The moment of the change, in milliseconds since 1970.
    [[nodiscard]] virtual double getGregorianChange() const = 0;
    /// By the rule that the calendar has for the year. The year before 1 is 0, before that -1.
    [[nodiscard]] virtual bool isLeapYear(int year) const = 0;

protected:
    ICUGregorianCalendar() = default;
    ICUGregorianCalendar(ICUGregorianCalendar const&) = default;
    ICUGregorianCalendar& operator=(ICUGregorianCalendar const&) = default;
};

} // namespace QvxICU
