// Calendars beside ICU's own, which are asked the same in the same order.

#include <cstring>
#include <memory>
#include <vector>

#include <unicode/gregocal.h>

#include "icu/DateOracle.h"

namespace {

using QvxICU::ICUCalendar;
using QvxICU::ICUGregorianCalendar;
using Field = ICUCalendar::ICUEDateFields;
using Day = ICUCalendar::ICUEDaysOfWeek;

constexpr UCalendarDateFields kIcuFields[] = {UCAL_YEAR,     UCAL_MONTH,       UCAL_DATE,        UCAL_HOUR_OF_DAY,
                                              UCAL_MINUTE,   UCAL_SECOND,      UCAL_MILLISECOND, UCAL_WEEK_OF_YEAR,
                                              UCAL_YEAR_WOY, UCAL_DAY_OF_WEEK, UCAL_DAY_OF_YEAR};

/// Fields and days, as either class has them.
struct DayNumber
{
    int number;
    operator Day() const { return static_cast<Day>(number); }
    operator UCalendarDaysOfWeek() const { return static_cast<UCalendarDaysOfWeek>(number); }
};
struct FieldNumber
{
    int number;
    operator Field() const { return static_cast<Field>(number); }
    operator UCalendarDateFields() const { return kIcuFields[number]; }
};

/// A wrapper and ICU's calendar, treated alike.
class Pair
{
public:
    Pair(char const* locale, TStringView zone)
    {
        UErrorCode code = U_ZERO_ERROR;
        Code status = Code::ZeroError;
        icus.reset(icu::Calendar::createInstance(icu::Locale(locale), code));
        ours = ICUCalendar::createInstance(*Locale(locale), status);
        icus->adoptTimeZone(icu::TimeZone::createTimeZone(Unicode(zone)));
        ours->setTimeZone(zone, status);
        EXPECT_EQ(Failure(status), Failure(code));
        SetTime(0);
    }

#define SAME(...) EXPECT_SAME(*ours, *icus, __VA_ARGS__)

    void SetTime(double millis) const
    {
        ExpectSame([&](UErrorCode& c) { icus->setTime(millis, c); }, [&](Code& s) { ours->setTimeInMillis(millis, s); },
                   millis);
    }
    void CompareTime() const
    {
        ExpectSame([&](UErrorCode& c) { return icus->getTime(c); }, [&](Code& s) { return ours->getTimeInMillis(s); },
                   "time");
    }

    template<class Random>
    void Change(Random& random) const
    {
        auto const upTo = [&](int from, int to) { return std::uniform_int_distribution<>(from, to)(random); };
        int const i = upTo(0, 10);
        int const n = upTo(-40, 400);
        FieldNumber const field{i};
        As const option{i % 3};
        std::function<void()> const changes[] = {[&] { SAME(clear()); },
                                                 [&] { SAME(set(n, i, 31, 2, 30, n)); },
                                                 [&] { SAME(set(1582, i, n)); },
                                                 [&] { SAME(set(field, n)); },
                                                 [&] { SAME(clear(field)); },
                                                 [&] { SetTime(kMoments[upTo(0, std::size(kMoments) - 1)]); },
                                                 [&] { SAME(setLenient(n % 4 != 0)); },
                                                 [&] { SAME(setMinimalDaysInFirstWeek(static_cast<std::uint8_t>(i))); },
                                                 [&] { SAME(setFirstDayOfWeek(DayNumber{i % 7 + 1})); },
                                                 [&] { SAME(setRepeatedWallTimeOption(option)); },
                                                 [&] { SAME(setSkippedWallTimeOption(option)); },
                                                 [&] { icus->set(UCAL_ERA, i % 2), ours->setEra(i % 2); },
                                                 [&] { SAME(add(field, n, s)); },
                                                 [&] { SAME(roll(field, n, s)); },
                                                 [&] { SAME(fieldDifference(n * 1e10, field, s)); }};
        changes[upTo(0, std::size(changes) - 1)]();
    }

    void Compare() const
    {
        SAME(isLenient());
        SAME(getRepeatedWallTimeOption());
        SAME(getSkippedWallTimeOption());
        SAME(getFirstDayOfWeek(s));
        SAME(getMinimalDaysInFirstWeek());
        for (int i = 0; i < 11; ++i) {
            SAME(isSet(FieldNumber{i}));
        }
        CompareTime();
        SAME(inDaylightTime(s));
        SAME(isWeekend());
        Other(UCAL_ERA, &ICUCalendar::getEra);
        Other(UCAL_ZONE_OFFSET, &ICUCalendar::getRawOffset);
        Other(UCAL_DST_OFFSET, &ICUCalendar::getDstOffset);
        Other(UCAL_IS_LEAP_MONTH, &ICUCalendar::isLeapMonth);
        for (int i = 0; i < 11; ++i) {
            FieldNumber const field{i};
            SAME(get(field, s));
            if (i != ICUCalendar::Year && i != ICUCalendar::YearOfWeekOfYear) { // whose limits ICU seeks year by year
                SAME(getActualMinimum(field, s));
                SAME(getActualMaximum(field, s));
            }
        }
    }

    std::unique_ptr<icu::Calendar> icus;
    std::unique_ptr<ICUCalendar> ours;

private:
    template<class Getter>
    void Other(UCalendarDateFields field, Getter getter) const
    {
        ExpectSame([&](UErrorCode& c) { return icus->get(field, c); }, [&](Code& s) { return ((*ours).*getter)(s); },
                   field);
    }
};

TEST(Calendar, DoesWhatIcuDoes)
{
    std::minstd_rand random(44);
    for (char const* const locale : kLocales) {
        for (TStringView const zone : kZones) {
            SCOPED_TRACE(locale + TStringCore(zone).toStdString());
            Pair pair(locale, zone);
            for (int step = 0; step < 15 && !::testing::Test::HasFailure(); ++step) {
                pair.Change(random);
                pair.Compare();
            }
        }
    }
}

TEST(Calendar, OfEveryLocale)
{
    std::int32_t count = 0;
    icu::Locale const* const locales = icu::Calendar::getAvailableLocales(count);
    for (std::int32_t n = 0; n < count; ++n) {
        SCOPED_TRACE(locales[n].getName());
        Pair const pair(locales[n].getName(), u"UTC");
        auto const& icus = pair.icus;
        auto const& ours = pair.ours;
        EXPECT_STREQ(ours->getType(), icus->getType());
        EXPECT_EQ(ours->getDynamicClassID(), icus->getDynamicClassID());
        UErrorCode code = U_ZERO_ERROR;
        Code status = Code::ZeroError;
        EXPECT_STREQ(ours->getLocale(QvxICU::ICULocDataLocaleType::Valid, status)->getName(),
                     icus->getLocale(ULOC_VALID_LOCALE, code).getName());
        for (int day = 1; day <= 7; ++day) {
            SAME(getDayOfWeekType(DayNumber{day}, s));
            SAME(getWeekendTransition(DayNumber{day}, s));
            SAME(isWeekend(day * 8.64e7, s));
        }
        for (int i = 0; i < 11; ++i) {
            FieldNumber const field{i};
            SAME(getMinimum(field));
            SAME(getMaximum(field));
            SAME(getGreatestMinimum(field));
            SAME(getLeastMaximum(field));
        }
    }
}

TEST(Calendar, WithoutIcusCalendarNothingHappens)
{
    Code status = Code::MemoryAllocationError;
    std::unique_ptr<ICUCalendar> const made[] = {ICUCalendar::createInstance(status),
                                                 ICUCalendar::createInstance(*Locale("en"), status),
                                                 ICUGregorianCalendar::createInstance(*Locale("en"), status)};
    EXPECT_EQ(status, Code::MemoryAllocationError);
    Code fine = Code::ZeroError;
    auto const whole = ICUCalendar::createInstance(fine);
    for (auto const& empty : made) {
        auto const c = empty->clone();
        ExpectRefused(
            Code::InvalidStateError,
            {[&](Code& s) { return c->getTimeInMillis(s) != 0; },
             [&](Code& s) { return c->get(ICUCalendar::Year, s) + c->getFirstDayOfWeek(s) + c->getEra(s) != 0; },
             [&](Code& s) { return c->setTimeInMillis(1, s), c->isWeekend(0.0, s); },
             [&](Code& s) { return c->setTimeZone(u"UTC", s), !c->getTimeZone().isEmpty(); },
             [&](Code& s) { return c->add(ICUCalendar::Month, 1, s), c->fieldDifference(1, ICUCalendar::Month, s); },
             [&](Code& s) { return c->before(*whole, s) || c->isEquivalentTo(*whole); },
             [&](Code& s) { return c->getLocale(QvxICU::ICULocDataLocaleType::Valid, s) != nullptr; }});
        status = Code::ZeroError;
        EXPECT_FALSE(whole->equals(*c, status) || whole->isEquivalentTo(*c));
        EXPECT_EQ(status, Code::IllegalArgumentError);
        c->set(1, 2, 3, 4, 5, 6);
        EXPECT_TRUE(c->getMaximum(ICUCalendar::Year) == 0 && *c->getType() == 0 && c->Native() == nullptr);
    }
}

TEST(Calendar, MomentsAtTheEndsAndBeyond)
{
    for (double const moment : {1e300, -1e300, kInfinity, -kInfinity, 183882168921600000.0, -184303902528000000.0}) {
        Pair const pair("en", u"UTC");
        for (bool const lenient : {true, false}) {
            EXPECT_SAME(*pair.ours, *pair.icus, setLenient(lenient));
            pair.SetTime(moment);
            pair.CompareTime();
        }
    }
    Code status = Code::ZeroError;
    for (int const day : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        auto const chinese = ICUCalendar::createInstance(*Locale("zh@calendar=chinese"), status);
        std::function<void()> const sets[] = {[&] { chinese->set(ICUCalendar::DayOfMonth, day); },
                                              [&] { chinese->set(1, 1, day); },
                                              [&] { chinese->set(1, 1, day, 0, 0, 0); }};
        for (auto const& set : sets) {
            chinese->setTimeInMillis(0, status);
            set();
            EXPECT_EQ(chinese->getTimeInMillis(status) > 0, day > 0); // and the stack is still there
        }
        chinese->setSkippedWallTimeOption(static_cast<ICUCalendar::ICUEWallTime>(day));
        EXPECT_EQ(chinese->getSkippedWallTimeOption(), ICUCalendar::LastWallTime);
    }
    auto const calendar = ICUGregorianCalendar::createInstance(*Locale("th_TH"), status);
    calendar->setTimeInMillis(5, status);
    ExpectRefused(Code::IllegalArgumentError,
                  {[&](Code& s) { return calendar->setTimeInMillis(kNaN, s), false; },
                   [&](Code& s) { return calendar->isWeekend(kNaN, s); },
                   [&](Code& s) { return calendar->setGregorianChange(kNaN, s), false; },
                   [&](Code& s) { return calendar->fieldDifference(kNaN, ICUCalendar::Year, s) != 0; }});
    EXPECT_EQ(calendar->getTimeInMillis(status), 5);
}

TEST(Calendar, TimeZonesByName)
{
    Code status = Code::ZeroError;
    auto const calendar = ICUCalendar::createInstance(*Locale("de"), status);
    calendar->setTimeZone(u"Europe/Zurich", status);
    for (TStringView const unknown : {u"Nowhere/City", u"", u"\xD800", u"europe/zuric", u"GMT+99:99"}) {
        ExpectRefused(Code::IllegalArgumentError,
                      {[&](Code& s) { return calendar->setTimeZone(unknown, s), false; },
                       [&](Code& s) { return ICUCalendar::setDefaultTimeZone(unknown, s), false; }});
        EXPECT_EQ(calendar->getTimeZone(), u"Europe/Zurich");
    }
    Code failed = Code::MemoryAllocationError;
    calendar->setTimeZone(u"UTC", failed);
    EXPECT_TRUE(failed == Code::MemoryAllocationError && calendar->getTimeZone() == u"Europe/Zurich");
    calendar->setTimeZone(u"Etc/Unknown", status);
    EXPECT_EQ(calendar->getTimeZone(), u"Etc/Unknown");
    auto const zones = ICUCalendar::getTimeZones(status);
    for (TStringCore const& zone : zones) {
        std::unique_ptr<icu::TimeZone> const icu(icu::TimeZone::createTimeZone(Unicode(zone)));
        calendar->setTimeZone(zone, status);
        icu::UnicodeString name;
        EXPECT_EQ(calendar->getTimeZoneDisplayName(true, false, *Locale("ja")),
                  Text(icu->getDisplayName(true, icu::TimeZone::SHORT, icu::Locale("ja"), name)));
    }
    EXPECT_GT(zones.size(), 400U);
    double const now = icu::Calendar::getNow();
    EXPECT_GE(ICUCalendar::getNow(), now);
    TStringCore const before = ICUCalendar::getDefaultTimeZone();
    ICUCalendar::setDefaultTimeZone(u"Asia/Tokyo", status);
    EXPECT_EQ(ICUCalendar::createInstance(status)->getTimeZone(), u"Asia/Tokyo");
    ICUCalendar::setDefaultTimeZone(before, status);
    EXPECT_TRUE(QvxICU::ICU_SUCCESS(status));
    auto const types = ICUCalendar::getTypesForLocale(*Locale("th_TH"), true, status);
    EXPECT_EQ(types, (std::vector<TStringCore>{u"buddhist", u"gregorian"}));
}

TEST(Calendar, GregorianAndComparisons)
{
    UErrorCode code = U_ZERO_ERROR;
    Code status = Code::ZeroError;
    icu::GregorianCalendar icu(icu::Locale("th_TH"), code);
    auto const ours = ICUGregorianCalendar::createInstance(*Locale("th_TH"), status);
    EXPECT_EQ(ours->getDynamicClassID(), ICUGregorianCalendar::getStaticClassID());
    for (double const change : {icu.getGregorianChange(), 0.0, -kInfinity, kInfinity, -6857222400000.0}) {
        icu.setGregorianChange(change, code);
        ours->setGregorianChange(change, status);
        EXPECT_EQ(ours->getGregorianChange(), icu.getGregorianChange());
        for (int const year : {-4, 0, 4, 1500, 1752, 1800, 1900, 2000, 2023, 2024, 2100}) {
            EXPECT_EQ(ours->isLeapYear(year), icu.isLeapYear(year) != 0) << change << ' ' << year;
        }
    }
    ours->setTimeInMillis(0, status);
    auto const later = ours->clone();
    EXPECT_TRUE(later->equals(*ours, status) && later->isEquivalentTo(*ours));
    later->add(ICUCalendar::Second, 1, status);
    EXPECT_TRUE(later->after(*ours, status) && ours->before(*later, status) && !ours->equals(*later, status));
    EXPECT_EQ(ours->getTimeInMillis(status), 0);
    EXPECT_FALSE(later->isEquivalentTo(*ICUCalendar::createInstance(*Locale("th_TH"), status)));
    EXPECT_NE(dynamic_cast<ICUGregorianCalendar*>(later.get()), nullptr);
    EXPECT_EQ(Failure(status), Failure(code));
}

#if defined(__GXX_ABI_VERSION) && defined(__x86_64__)
// In the Itanium C++ ABI a pointer to a virtual member function holds the offset in the table plus one.
template<class... Members>
std::vector<std::size_t> Slots(Members... members)
{
    auto const slot = [](auto member) {
        std::size_t words[sizeof(member) / sizeof(std::size_t)] = {};
        std::memcpy(words, &member, sizeof(words));
        return (words[0] - 1) / sizeof(void*);
    };
    return {slot(members)...};
}

TEST(Calendar, OrderOfSlots)
{
    using C = ICUCalendar;
    std::vector<std::size_t> const slots = Slots(
        &C::clone, static_cast<void (C::*)()>(&C::clear),
        static_cast<void (C::*)(int, int, int, int, int, int)>(&C::set),
        static_cast<void (C::*)(int, int, int)>(&C::set), static_cast<void (C::*)(Field, int)>(&C::set),
        &C::getTimeInMillis, &C::setTimeInMillis, &C::get, &C::setLenient, &C::setFirstDayOfWeek, &C::getFirstDayOfWeek,
        &C::setMinimalDaysInFirstWeek, &C::getMinimalDaysInFirstWeek, &C::isLenient, &C::inDaylightTime, &C::add);
    for (std::size_t i = 0; i < slots.size(); ++i) {
        EXPECT_EQ(slots[i], i + 2); // behind the two of the destructor
    }
}
#endif

} // namespace
