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

void SetTime(icu::Calendar& c, double millis, UErrorCode& code)
{
    c.setTime(millis, code);
}
void SetTime(ICUCalendar& c, double millis, Code& status)
{
    c.setTimeInMillis(millis, status);
}
double Time(icu::Calendar& c, UErrorCode& code)
{
    return c.getTime(code);
}
double Time(ICUCalendar& c, Code& status)
{
    return c.getTimeInMillis(status);
}

/// A wrapper and ICU's calendar, treated alike.
class Pair
{
public:
    Pair(char const* locale, TStringView zone)
    {
        UErrorCode code = U_ZERO_ERROR;
        Code status = Code::ZeroError;
        m_icu.reset(icu::Calendar::createInstance(icu::Locale(locale), code));
        m_ours = ICUCalendar::createInstance(*Locale(locale), status);
        m_icu->adoptTimeZone(icu::TimeZone::createTimeZone(Unicode(zone)));
        m_ours->setTimeZone(zone, status);
        EXPECT_EQ(Failure(status), Failure(code));
        Both([](auto& c, auto, auto& s) { return SetTime(c, 0, s), 0; });
    }

    template<class Random>
    void Change(Random& random)
    {
        auto const upTo = [&](int from, int to) { return std::uniform_int_distribution<>(from, to)(random); };
        int const i = upTo(0, 10);
        int const n = upTo(-40, 400);
        double const moment = kMoments[static_cast<std::size_t>(upTo(0, std::size(kMoments) - 1))];
        std::function<void()> const changes[] = {
            [&] { Both([&](auto& c, auto, auto&) { return c.clear(), 0; }); },
            [&] { Both([&](auto& c, auto, auto&) { return c.set(n, i, 31, 2, 30, n), 0; }); },
            [&] { Both([&](auto& c, auto, auto&) { return c.set(1582, i, n), 0; }); },
            [&] { Both([&](auto& c, auto f, auto&) { return c.set(f, n), 0; }, i); },
            [&] { Both([&](auto& c, auto f, auto&) { return c.clear(f), c.isSet(f) != 0; }, i); },
            [&] { Both([&](auto& c, auto, auto& s) { return SetTime(c, moment, s), 0; }); },
            [&] { Both([&](auto& c, auto, auto&) { return c.setLenient(n % 4 != 0), c.isLenient() != 0; }); },
            [&] {
                Both(
                    [&](auto& c, auto, auto&) { return c.setMinimalDaysInFirstWeek(static_cast<std::uint8_t>(i)), 0; });
            },
            [&] { Both([&](auto& c, auto f, auto& s) { return c.add(f, n, s), 0; }, i); },
            [&] { Both([&](auto& c, auto f, auto& s) { return c.roll(f, n, s), 0; }, i); },
            [&] { Both([&](auto& c, auto f, auto& s) { return c.fieldDifference(n * 1e10, f, s); }, i); },
            [&] {
                m_icu->setFirstDayOfWeek(static_cast<UCalendarDaysOfWeek>(i % 7 + 1));
                m_ours->setFirstDayOfWeek(static_cast<Day>(i % 7 + 1));
                m_icu->setRepeatedWallTimeOption(static_cast<UCalendarWallTimeOption>(i % 3));
                m_ours->setRepeatedWallTimeOption(static_cast<ICUCalendar::ICUEWallTime>(i % 3));
                m_icu->setSkippedWallTimeOption(static_cast<UCalendarWallTimeOption>(i % 3));
                m_ours->setSkippedWallTimeOption(static_cast<ICUCalendar::ICUEWallTime>(i % 3));
            }};
        changes[upTo(0, std::size(changes) - 1)]();
    }

    void Compare() const
    {
        Both([](auto& c, auto, auto&) { return static_cast<int>(c.getRepeatedWallTimeOption()); });
        Both([](auto& c, auto, auto&) { return static_cast<int>(c.getSkippedWallTimeOption()); });
        Both([](auto& c, auto, auto& s) { return static_cast<int>(c.getFirstDayOfWeek(s)); });
        Both([](auto& c, auto, auto&) { return c.getMinimalDaysInFirstWeek(); });
        for (int i = 0; i < 11; ++i) {
            Both([](auto& c, auto field, auto&) { return c.isSet(field) != 0; }, i);
        }
        Both([](auto& c, auto, auto& s) { return Time(c, s); });
        Both([](auto& c, auto, auto& s) { return c.inDaylightTime(s) != 0; });
        Both([](auto& c, auto, auto&) { return c.isWeekend() != 0; });
        Other(UCAL_ERA, &ICUCalendar::getEra);
        Other(UCAL_ZONE_OFFSET, &ICUCalendar::getRawOffset);
        Other(UCAL_DST_OFFSET, &ICUCalendar::getDstOffset);
        Other(UCAL_IS_LEAP_MONTH, &ICUCalendar::isLeapMonth);
        for (int i = 0; i < 11; ++i) {
            Both([](auto& c, auto field, auto& s) { return c.get(field, s); }, i);
            if (i != ICUCalendar::Year && i != ICUCalendar::YearOfWeekOfYear) { // whose limits ICU seeks year by year
                Both([](auto& c, auto field, auto& s) { return c.getActualMinimum(field, s); }, i);
                Both([](auto& c, auto field, auto& s) { return c.getActualMaximum(field, s); }, i);
            }
        }
    }

    template<class F>
    void Both(F const& f, int field = 0) const
    {
        ExpectSame([&](UErrorCode& code) { return f(*m_icu, kIcuFields[field], code); },
                   [&](Code& status) { return f(*m_ours, static_cast<Field>(field), status); }, field);
    }

private:
    template<class Getter>
    void Other(UCalendarDateFields field, Getter getter) const
    {
        ExpectSame([&](UErrorCode& c) { return m_icu->get(field, c); }, [&](Code& s) { return ((*m_ours).*getter)(s); },
                   field);
    }

    std::unique_ptr<icu::Calendar> m_icu;
    std::unique_ptr<ICUCalendar> m_ours;
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
        UErrorCode code = U_ZERO_ERROR;
        Code status = Code::ZeroError;
        std::unique_ptr<icu::Calendar> const icu(icu::Calendar::createInstance(locales[n], code));
        auto const ours = ICUCalendar::createInstance(*Locale(locales[n].getName()), status);
        ASSERT_EQ(Failure(status), Failure(code));
        EXPECT_STREQ(ours->getType(), icu->getType());
        EXPECT_EQ(ours->getDynamicClassID(), icu->getDynamicClassID());
        EXPECT_STREQ(ours->getLocale(QvxICU::ICULocDataLocaleType::Valid, status)->getName(),
                     icu->getLocale(ULOC_VALID_LOCALE, code).getName());
        for (int day = 1; day <= 7; ++day) {
            auto const d = static_cast<UCalendarDaysOfWeek>(day);
            ExpectSame([&](UErrorCode& c) { return icu->getDayOfWeekType(d, c); },
                       [&](Code& s) { return ours->getDayOfWeekType(static_cast<Day>(day), s); }, day);
            ExpectSame([&](UErrorCode& c) { return icu->getWeekendTransition(d, c); },
                       [&](Code& s) { return ours->getWeekendTransition(static_cast<Day>(day), s); }, day);
            ExpectSame([&](UErrorCode& c) { return icu->isWeekend(day * 8.64e7, c); },
                       [&](Code& s) { return ours->isWeekend(day * 8.64e7, s); }, day);
        }
        Pair const pair(locales[n].getName(), u"UTC");
        for (int i = 0; i < 11; ++i) {
            pair.Both([](auto& c, auto field, auto&) { return c.getMinimum(field); }, i);
            pair.Both([](auto& c, auto field, auto&) { return c.getMaximum(field); }, i);
            pair.Both([](auto& c, auto field, auto&) { return c.getGreatestMinimum(field); }, i);
            pair.Both([](auto& c, auto field, auto&) { return c.getLeastMaximum(field); }, i);
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
        std::function<double(Code&)> const calls[] = {
            [&](Code& s) { return c->getTimeInMillis(s); },
            [&](Code& s) { return c->get(ICUCalendar::Year, s) + c->getFirstDayOfWeek(s) + c->getEra(s); },
            [&](Code& s) { return c->setTimeInMillis(1, s), c->isWeekend(0.0, s); },
            [&](Code& s) { return c->setTimeZone(u"UTC", s), !c->getTimeZone().isEmpty(); },
            [&](Code& s) { return c->add(ICUCalendar::Month, 1, s), c->fieldDifference(1, ICUCalendar::Month, s); },
            [&](Code& s) { return c->before(*whole, s) || c->isEquivalentTo(*whole); },
            [&](Code& s) { return c->getLocale(QvxICU::ICULocDataLocaleType::Valid, s) != nullptr; }};
        for (auto const& call : calls) {
            status = Code::ZeroError;
            EXPECT_EQ(call(status), 0);
            EXPECT_EQ(status, Code::InvalidStateError);
        }
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
            pair.Both([=](auto& c, auto, auto& s) { return c.setLenient(lenient), SetTime(c, moment, s), 0; });
            pair.Both([](auto& c, auto, auto& s) { return Time(c, s); });
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
    std::function<void(Code&)> const calls[] = {
        [&](Code& s) { calendar->setTimeInMillis(kNaN, s); }, [&](Code& s) { (void)calendar->isWeekend(kNaN, s); },
        [&](Code& s) { calendar->setGregorianChange(kNaN, s); },
        [&](Code& s) { (void)calendar->fieldDifference(kNaN, ICUCalendar::Year, s); }};
    for (auto const& call : calls) {
        Code refused = Code::ZeroError;
        call(refused);
        EXPECT_EQ(refused, Code::IllegalArgumentError);
    }
    EXPECT_EQ(calendar->getTimeInMillis(status), 5);
}

TEST(Calendar, TimeZonesByName)
{
    Code status = Code::ZeroError;
    auto const calendar = ICUCalendar::createInstance(*Locale("de"), status);
    calendar->setTimeZone(u"Europe/Zurich", status);
    for (TStringView const unknown : {u"Nowhere/City", u"", u"\xD800", u"europe/zuric", u"GMT+99:99"}) {
        Code refused = Code::ZeroError;
        calendar->setTimeZone(unknown, refused);
        EXPECT_EQ(refused, Code::IllegalArgumentError);
        ICUCalendar::setDefaultTimeZone(unknown, refused);
        EXPECT_EQ(calendar->getTimeZone(), u"Europe/Zurich");
    }
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
