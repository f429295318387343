// Calendars beside ICU's own, which are asked the same in the same order.

#include <cstring>
#include <memory>
#include <type_traits>

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

/// A wrapper and ICU's calendar, treated alike.
class Pair
{
public:
    Pair(char const* locale, char16_t const* zone)
    {
        UErrorCode code = U_ZERO_ERROR;
        Code status = Code::ZeroError;
        m_icu.reset(icu::Calendar::createInstance(icu::Locale(locale), code));
        m_ours = ICUCalendar::createInstance(*Locale(locale), status);
        m_icu->adoptTimeZone(icu::TimeZone::createTimeZone(zone));
        m_ours->setTimeZone(zone, status);
        m_icu->setTime(0, code);
        m_ours->setTimeInMillis(0, status);
        EXPECT_EQ(Failure(status), Failure(code));
    }

    template<class Random>
    void Change(Random& random)
    {
        auto const upTo = [&](int from, int to) { return std::uniform_int_distribution<>(from, to)(random); };
        int const i = upTo(0, 10);
        Field const field = static_cast<Field>(i);
        int const value = upTo(-40, 400);
        double const moment = kMoments[static_cast<std::size_t>(upTo(0, std::size(kMoments) - 1))];
        switch (upTo(0, 11)) {
        case 0:
            m_icu->clear();
            m_ours->clear();
            break;
        case 1:
            m_icu->set(value, i, 31, 2, 30, value);
            m_ours->set(value, i, 31, 2, 30, value);
            break;
        case 2:
            m_icu->set(1582, i, value);
            m_ours->set(1582, i, value);
            break;
        case 3:
            m_icu->set(kIcuFields[i], value);
            m_ours->set(field, value);
            break;
        case 4:
            Both([&](UErrorCode& c) { m_icu->setTime(moment, c); },
                 [&](Code& s) { m_ours->setTimeInMillis(moment, s); });
            break;
        case 5:
            m_icu->setLenient(value % 4 != 0);
            m_ours->setLenient(value % 4 != 0);
            break;
        case 6:
            m_icu->setFirstDayOfWeek(static_cast<UCalendarDaysOfWeek>(i % 7 + 1));
            m_ours->setFirstDayOfWeek(static_cast<Day>(i % 7 + 1));
            break;
        case 7:
            m_icu->setMinimalDaysInFirstWeek(static_cast<std::uint8_t>(i));
            m_ours->setMinimalDaysInFirstWeek(static_cast<std::uint8_t>(i));
            break;
        case 8:
            m_icu->clear(kIcuFields[i]);
            m_ours->clear(field);
            m_icu->setRepeatedWallTimeOption(static_cast<UCalendarWallTimeOption>(i % 3));
            m_ours->setRepeatedWallTimeOption(static_cast<ICUCalendar::ICUEWallTime>(i % 3));
            m_icu->setSkippedWallTimeOption(static_cast<UCalendarWallTimeOption>(i % 3));
            m_ours->setSkippedWallTimeOption(static_cast<ICUCalendar::ICUEWallTime>(i % 3));
            break;
        case 9:
            Both([&](UErrorCode& c) { m_icu->add(kIcuFields[i], value, c); },
                 [&](Code& s) { m_ours->add(field, value, s); });
            break;
        case 10:
            Both([&](UErrorCode& c) { m_icu->roll(kIcuFields[i], value, c); },
                 [&](Code& s) { m_ours->roll(field, value, s); });
            break;
        default:
            ExpectSame([&](UErrorCode& c) { return m_icu->fieldDifference(value * 1e10, kIcuFields[i], c); },
                       [&](Code& s) { return m_ours->fieldDifference(value * 1e10, field, s); }, "difference");
        }
    }

    void Compare() const
    {
        EXPECT_EQ(m_ours->isLenient(), m_icu->isLenient() != 0);
        EXPECT_EQ(m_ours->getMinimalDaysInFirstWeek(), m_icu->getMinimalDaysInFirstWeek());
        EXPECT_EQ(m_ours->getRepeatedWallTimeOption(), static_cast<int>(m_icu->getRepeatedWallTimeOption()));
        EXPECT_EQ(m_ours->getSkippedWallTimeOption(), static_cast<int>(m_icu->getSkippedWallTimeOption()));
        Same([](auto& c, auto& s) { return c.getFirstDayOfWeek(s); }, "first day");
        for (int i = 0; i < 11; ++i) {
            EXPECT_EQ(m_ours->isSet(static_cast<Field>(i)), m_icu->isSet(kIcuFields[i]) != 0) << i;
        }
        ExpectSame([&](UErrorCode& c) { return m_icu->getTime(c); },
                   [&](Code& s) { return m_ours->getTimeInMillis(s); }, "time");
        Same([](auto& c, auto& s) { return c.inDaylightTime(s) != 0; }, "daylight");
        EXPECT_EQ(m_ours->isWeekend(), m_icu->isWeekend() != 0);
        IcuGet(UCAL_ERA, &ICUCalendar::getEra);
        IcuGet(UCAL_ZONE_OFFSET, &ICUCalendar::getRawOffset);
        IcuGet(UCAL_DST_OFFSET, &ICUCalendar::getDstOffset);
        IcuGet(UCAL_IS_LEAP_MONTH, &ICUCalendar::isLeapMonth);
        for (int i = 0; i < 11; ++i) {
            Field const field = static_cast<Field>(i);
            auto const with = [&](auto theirs, auto ours, char const* what) {
                ExpectSame([&](UErrorCode& c) { return ((*m_icu).*theirs)(kIcuFields[i], c); },
                           [&](Code& s) { return ((*m_ours).*ours)(field, s); }, what);
            };
            using Limit = int32_t (icu::Calendar::*)(UCalendarDateFields, UErrorCode&) const;
            with(Limit(&icu::Calendar::get), &ICUCalendar::get, "get");
            if (field == ICUCalendar::Year || field == ICUCalendar::YearOfWeekOfYear) {
                continue; // ICU looks for their limits year by year
            }
            with(Limit(&icu::Calendar::getActualMinimum), &ICUCalendar::getActualMinimum, "actual minimum");
            with(Limit(&icu::Calendar::getActualMaximum), &ICUCalendar::getActualMaximum, "actual maximum");
        }
    }

private:
    template<class Theirs, class Own>
    static void Both(Theirs const& theirs, Own const& own)
    {
        ExpectSame([&](UErrorCode& c) { return theirs(c), 0; }, [&](Code& s) { return own(s), 0; }, "change");
    }
    template<class F>
    void Same(F const& f, char const* what) const
    {
        ExpectSame([&](UErrorCode& c) { return f(*m_icu, c); }, [&](Code& s) { return f(*m_ours, s); }, what);
    }
    template<class Getter>
    void IcuGet(UCalendarDateFields field, Getter getter) const
    {
        ExpectSame([&](UErrorCode& c) { return m_icu->get(field, c); }, [&](Code& s) { return ((*m_ours).*getter)(s); },
                   "other field");
    }

    std::unique_ptr<icu::Calendar> m_icu;
    std::unique_ptr<ICUCalendar> m_ours;
};

TEST(Calendar, DoesWhatIcuDoes)
{
    std::minstd_rand random(44);
    for (char const* const locale : kLocales) {
        for (char16_t const* const zone : kZones) {
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
                       [&](Code& s) { return ours->getDayOfWeekType(static_cast<Day>(day), s); }, "type of day");
            ExpectSame([&](UErrorCode& c) { return icu->getWeekendTransition(d, c); },
                       [&](Code& s) { return ours->getWeekendTransition(static_cast<Day>(day), s); }, "transition");
            ExpectSame([&](UErrorCode& c) { return icu->isWeekend(day * 8.64e7, c); },
                       [&](Code& s) { return ours->isWeekend(day * 8.64e7, s); }, "weekend");
        }
        for (int i = 0; i < 11; ++i) {
            Field const field = static_cast<Field>(i);
            EXPECT_EQ(ours->getMinimum(field), icu->getMinimum(kIcuFields[i]));
            EXPECT_EQ(ours->getMaximum(field), icu->getMaximum(kIcuFields[i]));
            EXPECT_EQ(ours->getGreatestMinimum(field), icu->getGreatestMinimum(kIcuFields[i]));
            EXPECT_EQ(ours->getLeastMaximum(field), icu->getLeastMaximum(kIcuFields[i]));
        }
    }
}

TEST(Calendar, ChecksFieldsAndDays)
{
    Code status = Code::MemoryAllocationError; // whatever the status
    auto const c = ICUCalendar::createInstance(*Locale("en"), status);
    for (int const i : {-1, 11, INT_MAX, INT_MIN}) {
        Field const field = static_cast<Field>(i);
        std::function<void()> const calls[] = {[&] { c->set(field, 1); },
                                               [&] { (void)c->get(field, status); },
                                               [&] { c->add(field, 1, status); },
                                               [&] { c->roll(field, 1, status); },
                                               [&] { c->clear(field); },
                                               [&] { (void)c->isSet(field); },
                                               [&] { (void)c->getMinimum(field); },
                                               [&] { (void)c->getMaximum(field); },
                                               [&] { (void)c->getGreatestMinimum(field); },
                                               [&] { (void)c->getLeastMaximum(field); },
                                               [&] { (void)c->getActualMinimum(field, status); },
                                               [&] { (void)c->getActualMaximum(field, status); },
                                               [&] { (void)c->fieldDifference(0, field, status); }};
        for (auto const& call : calls) {
            EXPECT_EQ(Thrown(call), kNoField);
        }
    }
    for (int const i : {0, 8, -1}) {
        Day const day = static_cast<Day>(i);
        EXPECT_EQ(Thrown([&] { c->setFirstDayOfWeek(day); }), kNoDay);
        EXPECT_EQ(Thrown([&] { (void)c->getDayOfWeekType(day, status); }), kNoDay);
        EXPECT_EQ(Thrown([&] { (void)c->getWeekendTransition(day, status); }), kNoDay);
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
        using Call = std::function<double(Code&)>;
        Call const calls[] = {[&](Code& s) { return c->getTimeInMillis(s); },
                              [&](Code& s) { return c->get(ICUCalendar::Year, s); },
                              [&](Code& s) { return c->getFirstDayOfWeek(s); },
                              [&](Code& s) { return c->inDaylightTime(s) || c->isWeekend(0.0, s); },
                              [&](Code& s) { return c->setTimeInMillis(1, s), c->setTimeZone(u"UTC", s), 0; },
                              [&](Code& s) { return c->add(ICUCalendar::Month, 1, s), 0; },
                              [&](Code& s) { return c->roll(ICUCalendar::Month, 1, s), 0; },
                              [&](Code& s) { return c->fieldDifference(1e9, ICUCalendar::Month, s); },
                              [&](Code& s) { return c->getEra(s) + c->getRawOffset(s) + c->getDstOffset(s); },
                              [&](Code& s) { return c->before(*whole, s) || c->after(*whole, s); },
                              [&](Code& s) { return c->getLocale(QvxICU::ICULocDataLocaleType::Valid, s) != nullptr; }};
        for (auto const& call : calls) {
            status = Code::ZeroError;
            EXPECT_EQ(call(status), 0);
            EXPECT_EQ(status, Code::InvalidStateError);
        }
        status = Code::ZeroError;
        EXPECT_FALSE(whole->equals(*c, status) || whole->isEquivalentTo(*c) || c->isEquivalentTo(*whole));
        EXPECT_EQ(status, Code::IllegalArgumentError);
        c->clear();
        c->set(1, 2, 3, 4, 5, 6);
        EXPECT_TRUE(c->getMaximum(ICUCalendar::Year) == 0 && c->getTimeZone().isEmpty() && *c->getType() == 0);
        EXPECT_TRUE(c->getTimeZoneDisplayName(true, true, *Locale("en")).isEmpty() && c->Native() == nullptr);
    }
}

TEST(Calendar, MomentsAtTheEndsAndBeyond)
{
    for (bool const lenient : {true, false}) {
        for (double const moment :
             {1e300, -1e300, kInfinity, -kInfinity, 183882168921600000.0, -184303902528000000.0}) {
            UErrorCode code = U_ZERO_ERROR;
            Code status = Code::ZeroError;
            std::unique_ptr<icu::Calendar> const icu(icu::Calendar::createInstance(icu::Locale("en"), code));
            auto const ours = ICUCalendar::createInstance(*Locale("en"), status);
            icu->setLenient(lenient);
            ours->setLenient(lenient);
            icu->setTime(moment, code);
            ours->setTimeInMillis(moment, status);
            EXPECT_EQ(Failure(status), Failure(code)) << moment;
            if (lenient) {
                EXPECT_EQ(ours->getTimeInMillis(status),
                          std::min(std::max(moment, -184303902528000000.0), 183882168921600000.0));
            }
        }
    }
    Code status = Code::ZeroError;
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
        std::unique_ptr<icu::TimeZone> const icu(icu::TimeZone::createTimeZone(ToIcu(zone)));
        calendar->setTimeZone(zone, status);
        icu::UnicodeString name;
        EXPECT_EQ(calendar->getTimeZoneDisplayName(true, false, *Locale("ja")),
                  Ours(icu->getDisplayName(true, icu::TimeZone::SHORT, icu::Locale("ja"), name)));
        EXPECT_EQ(calendar->getTimeZoneDisplayName(false, true, *Locale("ja")),
                  Ours(icu->getDisplayName(false, icu::TimeZone::LONG, icu::Locale("ja"), name)));
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

// Where a pointer to a virtual member function holds the offset in the table plus one (the Itanium C++ ABI on x86-64),
// the order of the operations shows.
template<class Member>
int Slot(Member member)
{
    std::intptr_t words[2] = {};
    static_assert(sizeof(member) == sizeof(words) || sizeof(void*) != 8 || !std::is_member_function_pointer_v<Member>);
    std::memcpy(words, &member, sizeof(words));
    return words[0] % 2 == 0 ? -1 : static_cast<int>((words[0] - 1) / static_cast<int>(sizeof(void*)));
}

TEST(Calendar, OrderOfSlots)
{
#if !defined(__GXX_ABI_VERSION) || !defined(__x86_64__)
    GTEST_SKIP() << "another ABI";
#else
    using C = ICUCalendar;
    int const slots[] = {
        Slot(&C::clone), // behind the two of the destructor
        Slot(static_cast<void (C::*)()>(&C::clear)),
        Slot(static_cast<void (C::*)(int, int, int, int, int, int)>(&C::set)),
        Slot(static_cast<void (C::*)(int, int, int)>(&C::set)),
        Slot(static_cast<void (C::*)(Field, int)>(&C::set)),
        Slot(&C::getTimeInMillis),
        Slot(&C::setTimeInMillis),
        Slot(&C::get),
        Slot(&C::setLenient),
        Slot(&C::setFirstDayOfWeek),
        Slot(&C::getFirstDayOfWeek),
        Slot(&C::setMinimalDaysInFirstWeek),
        Slot(&C::getMinimalDaysInFirstWeek),
        Slot(&C::isLenient),
        Slot(&C::inDaylightTime),
        Slot(&C::add),
    };
    for (std::size_t i = 0; i < std::size(slots); ++i) {
        EXPECT_EQ(slots[i], static_cast<int>(i) + 2);
    }
#endif
}

} // namespace
