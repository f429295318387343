#pragma once
// The ICU calendars behind the wrappers.

#include <algorithm>
#include <memory>
#include <utility>

#include <unicode/calendar.h>
#include <unicode/gregocal.h>

#include <qvxsys/ICUCalendar.h>

#include "IcuMappings.h"
#include "IcuObject.h"

namespace QvxICU44 {

[[nodiscard]] inline icu::Calendar* Icu(QvxICU::ICUCalendar const& calendar) noexcept
{
    return static_cast<icu::Calendar*>(const_cast<QvxICU::ICUCalendar&>(calendar).Native());
}

/// All operations of ICUCalendar, for the interface that Impl implements and the ICU class that it owns.
template<class Impl, class Interface, class IcuType>
class CalendarBase : public Interface
{
public:
    using Field = QvxICU::ICUCalendar::ICUEDateFields;
    using Day = QvxICU::ICUCalendar::ICUEDaysOfWeek;
    using WallTime = QvxICU::ICUCalendar::ICUEWallTime;
    using ErrorCode = QvxICU::ICUErrorCode;

    CalendarBase() = default;
    explicit CalendarBase(std::unique_ptr<IcuType> calendar) noexcept : m_calendar(std::move(calendar)) {}

    void Adopt(std::unique_ptr<IcuType> calendar) noexcept { m_calendar = std::move(calendar); }

    [[nodiscard]] std::unique_ptr<QvxICU::ICUCalendar> clone() const override
    {
        return std::make_unique<Impl>(std::unique_ptr<IcuType>(m_calendar ? m_calendar->clone() : nullptr));
    }
    void clear() override
    {
        With([](auto& c) { c.clear(); });
    }
    void set(int year, int month, int date, int hour, int minute, int second) override
    {
        With([&](auto& c) { c.set(year, month, Days(date), hour, minute, second); });
    }
    void set(int year, int month, int date) override
    {
        With([&](auto& c) { c.set(year, month, Days(date)); });
    }
    void set(Field field, int value) override
    {
        auto const f = DateField(field);
        With([f, v = f == UCAL_DATE ? Days(value) : value](auto& c) { c.set(f, v); });
    }
    [[nodiscard]] double getTimeInMillis(ErrorCode& status) const override
    {
        return With(status, [](auto& c, UErrorCode& code) { return c.getTime(code); });
    }
    void setTimeInMillis(double millis, ErrorCode& status) override
    {
        if (IsMoment(millis, status)) {
            With(status, [millis](auto& c, UErrorCode& code) { c.setTime(millis, code); });
        }
    }
    [[nodiscard]] int get(Field field, ErrorCode& status) const override
    {
        return With(status, [f = DateField(field)](auto& c, UErrorCode& code) { return c.get(f, code); });
    }
    void setLenient(bool lenient) override
    {
        With([lenient](auto& c) { c.setLenient(lenient); });
    }
    void setFirstDayOfWeek(Day day) override
    {
        With([d = DayOfWeek(day)](auto& c) { c.setFirstDayOfWeek(d); });
    }
    [[nodiscard]] Day getFirstDayOfWeek(ErrorCode& status) const override
    {
        int const day = With(status, [](auto& c, UErrorCode& code) { return c.getFirstDayOfWeek(code); });
        return QvxICU::ICU_FAILURE(status) ? Day() : static_cast<Day>(DayOfWeek(day));
    }
    void setMinimalDaysInFirstWeek(std::uint8_t days) override
    {
        With([days](auto& c) { c.setMinimalDaysInFirstWeek(days); });
    }
    [[nodiscard]] std::uint8_t getMinimalDaysInFirstWeek() const override
    {
        return With([](auto& c) { return c.getMinimalDaysInFirstWeek(); });
    }
    [[nodiscard]] bool isLenient() const override
    {
        return With([](auto& c) { return c.isLenient(); });
    }
    [[nodiscard]] bool inDaylightTime(ErrorCode& status) const override
    {
        return With(status, [](auto& c, UErrorCode& code) { return c.inDaylightTime(code); });
    }

    void add(Field field, int amount, ErrorCode& status) override
    {
        With(status, [amount, f = DateField(field)](auto& c, UErrorCode& code) { c.add(f, amount, code); });
    }
    void roll(Field field, int amount, ErrorCode& status) override
    {
        With(status, [amount, f = DateField(field)](auto& c, UErrorCode& code) { c.roll(f, amount, code); });
    }
    [[nodiscard]] int fieldDifference(double millis, Field field, ErrorCode& status) override
    {
        auto const f = DateField(field);
        return !IsMoment(millis, status)
                   ? 0
                   : With(status, [&](auto& c, UErrorCode& code) { return c.fieldDifference(millis, f, code); });
    }
    [[nodiscard]] bool isSet(Field field) const override
    {
        return With([f = DateField(field)](auto& c) { return c.isSet(f); });
    }
    void clear(Field field) override
    {
        With([f = DateField(field)](auto& c) { c.clear(f); });
    }
    [[nodiscard]] int getMinimum(Field field) const override
    {
        return With([f = DateField(field)](auto& c) { return c.getMinimum(f); });
    }
    [[nodiscard]] int getMaximum(Field field) const override
    {
        return With([f = DateField(field)](auto& c) { return c.getMaximum(f); });
    }
    [[nodiscard]] int getGreatestMinimum(Field field) const override
    {
        return With([f = DateField(field)](auto& c) { return c.getGreatestMinimum(f); });
    }
    [[nodiscard]] int getLeastMaximum(Field field) const override
    {
        return With([f = DateField(field)](auto& c) { return c.getLeastMaximum(f); });
    }
    [[nodiscard]] int getActualMinimum(Field field, ErrorCode& status) const override
    {
        return With(status, [f = DateField(field)](auto& c, UErrorCode& code) { return c.getActualMinimum(f, code); });
    }
    [[nodiscard]] int getActualMaximum(Field field, ErrorCode& status) const override
    {
        return With(status, [f = DateField(field)](auto& c, UErrorCode& code) { return c.getActualMaximum(f, code); });
    }
    [[nodiscard]] int getEra(ErrorCode& status) const override { return Get(UCAL_ERA, status); }
    void setEra(int era) override
    {
        With([era](auto& c) { c.set(UCAL_ERA, era); });
    }
    [[nodiscard]] bool isLeapMonth(ErrorCode& status) const override { return Get(UCAL_IS_LEAP_MONTH, status) != 0; }

    void setTimeZone(TStringView name, ErrorCode& status) override
    {
        if (auto zone = MakeTimeZone(name, status)) {
            With(status, [&](auto& c, UErrorCode&) { c.adoptTimeZone(zone.release()); });
        }
    }
    [[nodiscard]] TStringCore getTimeZone() const override
    {
        return With([](auto& c) { return NameOf(c.getTimeZone()); });
    }
    [[nodiscard]] TStringCore getTimeZoneDisplayName(bool daylight, bool longName,
                                                     QvxICU::ICULocale const& locale) const override
    {
        return With([&](auto& c) {
            icu::UnicodeString name;
            auto const type = longName ? icu::TimeZone::LONG : icu::TimeZone::SHORT;
            return Own(c.getTimeZone().getDisplayName(daylight, type, QvxICU44::Icu(locale), name));
        });
    }
    [[nodiscard]] int getRawOffset(ErrorCode& status) const override { return Get(UCAL_ZONE_OFFSET, status); }
    [[nodiscard]] int getDstOffset(ErrorCode& status) const override { return Get(UCAL_DST_OFFSET, status); }
    void setRepeatedWallTimeOption(WallTime option) override
    {
        With([o = static_cast<UCalendarWallTimeOption>(option)](auto& c) { c.setRepeatedWallTimeOption(o); });
    }
    [[nodiscard]] WallTime getRepeatedWallTimeOption() const override
    {
        return static_cast<WallTime>(With([](auto& c) { return c.getRepeatedWallTimeOption(); }));
    }
    void setSkippedWallTimeOption(WallTime option) override
    {
        if (option >= Interface::LastWallTime && option <= Interface::NextValidWallTime) {
            With([o = static_cast<UCalendarWallTimeOption>(option)](auto& c) { c.setSkippedWallTimeOption(o); });
        }
    }
    [[nodiscard]] WallTime getSkippedWallTimeOption() const override
    {
        return static_cast<WallTime>(With([](auto& c) { return c.getSkippedWallTimeOption(); }));
    }

    [[nodiscard]] bool isWeekend() const override
    {
        return With([](auto& c) { return c.isWeekend(); });
    }
    [[nodiscard]] bool isWeekend(double millis, ErrorCode& status) const override
    {
        return IsMoment(millis, status) &&
               With(status, [millis](auto& c, UErrorCode& code) { return c.isWeekend(millis, code); });
    }
    [[nodiscard]] QvxICU::ICUCalendar::ICUEWeekdayType getDayOfWeekType(Day day, ErrorCode& status) const override
    {
        return static_cast<QvxICU::ICUCalendar::ICUEWeekdayType>(
            With(status, [d = DayOfWeek(day)](auto& c, UErrorCode& code) { return c.getDayOfWeekType(d, code); }));
    }
    [[nodiscard]] int getWeekendTransition(Day day, ErrorCode& status) const override
    {
        return With(status,
                    [d = DayOfWeek(day)](auto& c, UErrorCode& code) { return c.getWeekendTransition(d, code); });
    }

    [[nodiscard]] bool equals(QvxICU::ICUCalendar const& other, ErrorCode& status) const override
    {
        return Compare(other, status, &icu::Calendar::equals);
    }
    [[nodiscard]] bool before(QvxICU::ICUCalendar const& other, ErrorCode& status) const override
    {
        return Compare(other, status, &icu::Calendar::before);
    }
    [[nodiscard]] bool after(QvxICU::ICUCalendar const& other, ErrorCode& status) const override
    {
        return Compare(other, status, &icu::Calendar::after);
    }
    [[nodiscard]] bool isEquivalentTo(QvxICU::ICUCalendar const& other) const override
    {
        icu::Calendar const* const to = QvxICU44::Icu(other);
        return With([to](auto& c) { return to != nullptr && c.isEquivalentTo(*to); });
    }
    [[nodiscard]] char const* getType() const override { return m_calendar ? m_calendar->getType() : ""; }
    [[nodiscard]] std::unique_ptr<QvxICU::ICULocale> getLocale(QvxICU::ICULocDataLocaleType type,
                                                               ErrorCode& status) const override
    {
        auto const kind = static_cast<ULocDataLocaleType>(type);
        return With(status, [kind](auto& c, UErrorCode& code) { return QvxICU44::Own(c.getLocale(kind, code)); });
    }
    [[nodiscard]] void const* getDynamicClassID() const noexcept override
    {
        return m_calendar ? m_calendar->getDynamicClassID() : nullptr;
    }
    [[nodiscard]] void* Native() noexcept override { return static_cast<icu::Calendar*>(m_calendar.get()); }

protected:
    template<class Call>
    auto With(ErrorCode& status, Call const& call) const
    {
        return Forward(m_calendar.get(), status, call);
    }
    template<class Call>
    auto With(Call const& call) const
    {
        return Forward(m_calendar.get(), call);
    }

private:
    /// No calendar reaches so far. ICU counts days in 32 bits, and at their ends looks for a Chinese new moon until its
    /// stack overflows.
    [[nodiscard]] static int Days(int days) noexcept { return std::clamp(days, -0x7F000000, 0x7F000000); }

    [[nodiscard]] int Get(UCalendarDateFields field, ErrorCode& status) const
    {
        return With(status, [field](auto& c, UErrorCode& code) { return c.get(field, code); });
    }

    [[nodiscard]] bool Compare(QvxICU::ICUCalendar const& other, ErrorCode& status,
                               UBool (icu::Calendar::*comparison)(icu::Calendar const&, UErrorCode&) const) const
    {
        icu::Calendar const* const to = QvxICU44::Icu(other);
        if (to == nullptr) {
            Fail(status, ErrorCode::IllegalArgumentError);
        }
        return With(status, [&](auto& c, UErrorCode& code) { return (c.*comparison)(*to, code) != 0; });
    }

    std::unique_ptr<IcuType> m_calendar;
};

class ICUCalendar44Impl final : public CalendarBase<ICUCalendar44Impl, QvxICU::ICUCalendar, icu::Calendar>
{
public:
    using CalendarBase::CalendarBase;
};

class ICUGregorianCalendar44Impl final
    : public CalendarBase<ICUGregorianCalendar44Impl, QvxICU::ICUGregorianCalendar, icu::GregorianCalendar>
{
public:
    using CalendarBase::CalendarBase;

    void setGregorianChange(double millis, ErrorCode& status) override
    {
        if (IsMoment(millis, status)) {
            With(status, [millis](auto& c, UErrorCode& code) { c.setGregorianChange(millis, code); });
        }
    }
    [[nodiscard]] double getGregorianChange() const override
    {
        return With([](auto& c) { return c.getGregorianChange(); });
    }
    [[nodiscard]] bool isLeapYear(int year) const override
    {
        return With([year](auto& c) { return c.isLeapYear(year); });
    }
};

} // namespace QvxICU44
