// Date formats beside ICU's own.

#include <memory>

#include <qvxsys/ICUDecimalFormat.h>
#include <qvxsys/ICUPosition.h>
#include <qvxsys/ICUSimpleDateFormat.h>
#include <unicode/smpdtfmt.h>

#include "icu/DateOracle.h"

namespace {

using QvxICU::ICUCalendar;
using QvxICU::ICUDateFormat;
using QvxICU::ICUParsePosition;
using QvxICU::ICUSimpleDateFormat;

/// Whether both write and read alike: moments in all forms, and back from whole, cut and spoilt texts.
void ExpectAlike(ICUDateFormat const& ours, icu::DateFormat const& icu, double moment)
{
    icu::UnicodeString expected;
    ExpectSame([&](UErrorCode& c) { return icu.format(moment, expected, nullptr, c); },
               [&](Code& s) { return ours.format(moment, s); }, "format");
    auto appended = QvxICU::ICUString::createInstance(u">");
    Code status = Code::ZeroError;
    ours.format(moment, *appended, status);
    EXPECT_EQ(appended->toString(), u">" + Text(expected));
    ExpectSame([&](UErrorCode& c) { return icu.parse(expected, c); },
               [&](Code& s) { return ours.parse(Text(expected), s); }, "parse");
    for (icu::UnicodeString const& text :
         {expected, icu::UnicodeString(expected, 0, expected.length() / 2), u"12" + expected, expected + u"\xD800 1"}) {
        for (int const from : {0, 2, text.length(), text.length() + 5, -1}) {
            icu::ParsePosition theirs(from);
            auto const position = ICUParsePosition::createInstance(from);
            double const read = icu.parse(text, theirs);
            EXPECT_EQ(ours.parse(Text(text), *position), read) << Text(text).toStdString();
            EXPECT_EQ(position->getIndex(), theirs.getIndex());
            EXPECT_EQ(position->getErrorIndex(), theirs.getErrorIndex());
        }
    }
}

TEST(DateFormat, StylesOfEveryLocale)
{
    std::int32_t count = 0;
    icu::Locale const* const locales = icu::DateFormat::getAvailableLocales(count);
    Code status = Code::ZeroError;
    for (std::int32_t i = 0; i < count; ++i) {
        SCOPED_TRACE(locales[i].getName());
        auto const locale = Locale(locales[i].getName());
        int const n = i % 4;
        auto const theirs = [](int style) { return static_cast<icu::DateFormat::EStyle>(style); };
        As const style{n};
        std::pair<std::unique_ptr<ICUDateFormat>, icu::DateFormat*> const pairs[] = {
            {ICUDateFormat::createDateInstance(style, *locale),
             icu::DateFormat::createDateInstance(theirs(n), locales[i])},
            {ICUDateFormat::createTimeInstance(style, *locale),
             icu::DateFormat::createTimeInstance(theirs(n), locales[i])},
            {ICUDateFormat::createDateTimeInstance(style, As{3 - n}, *locale),
             icu::DateFormat::createDateTimeInstance(theirs(n), theirs(3 - n), locales[i])}};
        auto turn = static_cast<std::size_t>(i);
        for (auto const& [ours, icu] : pairs) {
            std::unique_ptr<icu::DateFormat> const owner(icu);
            char16_t const* const zone = kZones[turn % std::size(kZones)];
            icu->adoptTimeZone(icu::TimeZone::createTimeZone(zone));
            ours->setTimeZone(zone, status);
            EXPECT_EQ(ours->getTimeZone(), zone);
            ExpectAlike(*ours, *icu, kMoments[turn++ % std::size(kMoments)]);
        }
    }
    EXPECT_EQ(status, Code::ZeroError);
}

constexpr char16_t const* kPatterns[] = {u"yyyy-MM-dd'T'HH:mm:ss.SSS",
                                         u"EEEE d. MMMM y G",
                                         u"EEEEEE, dd/MM/yy h:mm a zzzz",
                                         u"YYYY-'W'ww-e k K D F g A",
                                         u"LLLL q QQQ U r u W",
                                         u"H:mm:ss XXX x O VV v Z B b",
                                         u"'o''clock' yy",
                                         u"",
                                         u"yyyy j n \u00F1 ''",
                                         u"\xD800 yyyy '",
                                         u"yyyy'unfinished"};

TEST(DateFormat, PatternsInCalendarsAndZones)
{
    std::size_t turn = 0;
    for (char const* const name : kLocales) {
        auto const locale = Locale(name);
        for (char16_t const* const pattern : kPatterns) {
            SCOPED_TRACE(name + TStringCore(u" ").toStdString() + TStringCore(pattern).toStdString());
            UErrorCode code = U_ZERO_ERROR;
            Code status = Code::ZeroError;
            icu::SimpleDateFormat icu(pattern, icu::Locale(name), code);
            auto const ours = ICUSimpleDateFormat::createInstance(pattern, *locale, status);
            EXPECT_EQ(Failure(status), Failure(code));
            icu.adoptTimeZone(icu::TimeZone::createTimeZone(kZones[turn % std::size(kZones)]));
            ours->setTimeZone(kZones[turn % std::size(kZones)], status);
            EXPECT_SAME(*ours, icu, set2DigitYearStart(kMoments[2], s));
            EXPECT_SAME(*ours, icu, setLenient(turn % 3 != 0));
            EXPECT_SAME(*ours, icu, setBooleanAttribute(As{UDAT_PARSE_ALLOW_NUMERIC}, turn % 2 == 0, s));
            EXPECT_SAME(*ours, icu, setContext(As{UDISPCTX_CAPITALIZATION_FOR_STANDALONE}, s));
            EXPECT_SAME(*ours, icu, get2DigitYearStart(s));
            EXPECT_SAME(*ours, icu, isCalendarLenient());
            EXPECT_EQ(ours->getContext(status), ICUDateFormat::CapitalizationForStandalone);
            for (std::size_t i = 0; i < 3; ++i) {
                ExpectAlike(*ours, icu, kMoments[++turn % std::size(kMoments)]);
            }
            double const moment = kMoments[turn % std::size(kMoments)];
            int const n = static_cast<int>(turn);
            for (int const field : {n % 37, n / 3 % 37, 1, 99}) {
                icu::FieldPosition theirs(field);
                auto const position = QvxICU::ICUFieldPosition::createInstance(field);
                position->setEndIndex(99); // of a use before
                icu::UnicodeString text;
                icu.format(moment, text, theirs);
                EXPECT_EQ(ours->format(moment, *position, status), Text(text));
                EXPECT_EQ(position->getBeginIndex(), theirs.getBeginIndex());
                EXPECT_EQ(position->getEndIndex(), theirs.getEndIndex());
            }
            auto const day = ICUCalendar::createInstance(*Locale(kLocales[turn % std::size(kLocales)]), status);
            day->setTimeInMillis(moment, status);
            auto& native = *static_cast<icu::Calendar*>(day->Native());
            icu::UnicodeString text;
            ExpectSame([&](UErrorCode& c) { return icu.format(native, text, nullptr, c); },
                       [&](Code& s) { return ours->format(*day, s); }, "calendar");
            auto const read = day->clone();
            native.clear();
            read->clear();
            icu::ParsePosition theirs;
            auto const position = ICUParsePosition::createInstance();
            icu.parse(text, native, theirs);
            ours->parse(Text(text), *read, *position);
            EXPECT_EQ(position->getIndex(), theirs.getIndex());
            EXPECT_EQ(read->getTimeInMillis(status), day->getTimeInMillis(status));
            EXPECT_EQ(ours->toPattern(), pattern);
            ExpectSame([&](UErrorCode& c) { return icu.toLocalizedPattern(text.remove(), c); },
                       [&](Code& s) { return ours->toLocalizedPattern(s); }, "localized pattern");
        }
    }
}

TEST(DateFormat, AllWaysOfCreation)
{
    Code status = Code::ZeroError;
    auto const locale = Locale("de");
    std::u16string pattern = u"d. MMMM y";
    auto const core = ICUSimpleDateFormat::createInstance(TStringCore(u"d. MMMM y"), *locale, status);
    TStringCore const text = core->format(0.0, status);
    std::unique_ptr<ICUSimpleDateFormat> const same[] = {
        ICUSimpleDateFormat::createInstance(u"d. MMMM y", *locale, status),
        ICUSimpleDateFormat::createInstance("d. MMMM y", *locale, status),
        ICUSimpleDateFormat::createInstance(L"d. MMMM y", *locale, status),
        ICUSimpleDateFormat::createInstance(pattern, *locale, status),
        ICUSimpleDateFormat::createInstance(TStringView(pattern), *locale, status),
        ICUSimpleDateFormat::createInstance(*core),
        ICUSimpleDateFormat::createFromDateFormat(*ICUDateFormat::createDateInstance(ICUDateFormat::kLong, *locale),
                                                  status)};
    for (auto const& format : same) {
        EXPECT_EQ(format->format(0.0, status), text);
        EXPECT_TRUE(*format == *core && *core == *format);
    }
    UErrorCode code = U_ZERO_ERROR;
    icu::UnicodeString expected;
    icu::SimpleDateFormat(u"d. MMMM y", code).format(0.0, expected);
    EXPECT_EQ(ICUSimpleDateFormat::createInstance(pattern, status)->format(0.0, status), Text(expected));
    EXPECT_EQ(ICUSimpleDateFormat::createInstance(TStringView(pattern), status)->format(0.0, status), Text(expected));
    icu::SimpleDateFormat(code).format(0.0, expected.remove());
    EXPECT_EQ(ICUSimpleDateFormat::createInstance(status)->format(0.0, status), Text(expected));
    EXPECT_EQ(ICUSimpleDateFormat::createInstance("\xFF'\xC3\xA9' y", *locale, status)->toPattern(),
              u"\uFFFD'\u00E9' y");
    EXPECT_TRUE(ICUSimpleDateFormat::createInstance(static_cast<char const*>(nullptr), *locale, status)
                    ->format(0.0, status)
                    .isEmpty());
    EXPECT_TRUE(QvxICU::ICU_SUCCESS(status));
}

// Everything that changes a format leaves its clones alone, whichever of the two is changed.
TEST(DateFormat, ClonesShareUntilChanged)
{
    Code status = Code::ZeroError;
    auto const locale = Locale("en");
    auto const hebrew = ICUCalendar::createInstance(*Locale("he@calendar=hebrew"), status);
    auto const numbers = QvxICU::ICUDecimalFormat::createInstance(*Locale("ar_EG"));
    auto const symbols = QvxICU::ICUDateFormatSymbols::createInstance(*Locale("fr"), status);
    using Change = std::function<void(ICUSimpleDateFormat&)>;
    Change const changes[] = {[&](auto& f) { f.setBooleanAttribute(ICUDateFormat::ParseAllowNumeric, false, status); },
                              [&](auto& f) { f.setLenient(false); },
                              [&](auto& f) { f.setCalendarLenient(false); },
                              [&](auto& f) { f.setCalendar(*hebrew, status); },
                              [&](auto& f) { f.setNumberFormat(*numbers, status); },
                              [&](auto& f) { f.setTimeZone(u"Asia/Tokyo", status); },
                              [&](auto& f) { f.setContext(ICUDateFormat::CapitalizationForStandalone, status); },
                              [&](auto& f) { f.applyPattern(u"y"); },
                              [&](auto& f) { f.applyLocalizedPattern(u"y", status); },
                              [&](auto& f) { f.set2DigitYearStart(0, status); },
                              [&](auto& f) { f.setDateFormatSymbols(*symbols, status); }};
    for (bool const changeClone : {true, false}) {
        auto const first = ICUSimpleDateFormat::createInstance(u"d MMMM yy H:mm z", *locale, status);
        auto const reference = ICUSimpleDateFormat::createFromDateFormat(*first, status); // shares nothing
        for (std::size_t i = 0; i < std::size(changes); ++i) {
            auto const one = ICUSimpleDateFormat::createInstance(*first);
            auto const two = ICUSimpleDateFormat::createInstance(*one);
            EXPECT_EQ(one->Native(), two->Native());
            changes[i](changeClone ? *two : *one);
            EXPECT_NE(one->Native(), two->Native());
            EXPECT_TRUE(*(changeClone ? one : two) == *reference) << i;
            EXPECT_EQ(*(changeClone ? two : one) == *reference, i == 0) << i;
            void const* const own = (changeClone ? two : one)->Native();
            changes[i](changeClone ? *two : *one);
            EXPECT_EQ((changeClone ? two : one)->Native(), own) << "copied again";
        }
    }
    EXPECT_TRUE(QvxICU::ICU_SUCCESS(status));
    auto const arabic = ICUSimpleDateFormat::createInstance(u"yyyy", *locale, status);
    arabic->setTimeZone(u"UTC", status);
    arabic->setNumberFormat(*numbers, status);
    EXPECT_EQ(arabic->format(0.0, status), u"\u0661\u0669\u0667\u0660");
    EXPECT_EQ(arabic->getNumberFormat(status)->format(7), u"\u0667");
}

TEST(DateFormat, RefusesWhatIsNoArgument)
{
    Code status = Code::MemoryAllocationError;
    auto const locale = Locale("en");
    auto const empty = ICUSimpleDateFormat::createInstance(u"y", *locale, status);
    auto const noCalendar = ICUCalendar::createInstance(*locale, status);
    auto const noNumbers = empty->getNumberFormat(status);
    auto const noSymbols = QvxICU::ICUDateFormatSymbols::createInstance(*locale, status);
    Code fine = Code::ZeroError;
    auto const whole = ICUSimpleDateFormat::createInstance(u"y", *locale, fine);
    auto const calendar = ICUCalendar::createInstance(*locale, fine);
    auto const symbols = QvxICU::ICUDateFormatSymbols::createInstance(*locale, fine);
    auto const strict = ICUSimpleDateFormat::createInstance(*whole);
    strict->setLenient(false);
    auto const text = QvxICU::ICUString::createInstance();
    auto const field = QvxICU::ICUFieldPosition::createInstance();

    auto const before = ICUSimpleDateFormat::createFromDateFormat(*whole, fine);
    ExpectRefused(
        Code::IllegalArgumentError,
        {[&](Code& s) { return whole->format(kNaN, s).size() != 0; },
         [&](Code& s) { return whole->format(kNaN, *text, s), text->length() != 0; },
         [&](Code& s) { return whole->format(kNaN, *field, s).size() != 0; },
         [&](Code& s) { return whole->format(*noCalendar, s).size() != 0; },
         [&](Code& s) { return strict->format(kInfinity, s).size() != 0; },
         [&](Code& s) { return strict->format(kInfinity, *field, s).size() != 0; },
         [&](Code& s) { return whole->parse(u"no year", s) != 0; },
         [&](Code& s) { return whole->parse(TStringView(), s) != 0; },
         [&](Code& s) { return whole->set2DigitYearStart(kNaN, s), false; },
         [&](Code& s) { return whole->setCalendar(*noCalendar, s), false; },
         [&](Code& s) { return whole->setDateFormatSymbols(*noSymbols, s), false; },
         [&](Code& s) { return whole->setNumberFormat(*noNumbers, s), false; },
         [&](Code& s) { return whole->setTimeZone(u"Nowhere/City", s), whole->getTimeZone() == u"Etc/Unknown"; },
         [&](Code& s) { return whole->getBooleanAttribute(As{64}, s); },
         [&](Code& s) { return whole->setBooleanAttribute(As{-1}, true, s), false; },
         [&](Code& s) { return whole->setContext(As{0x200}, s), false; },
         [&](Code& s) { return ICUSimpleDateFormat::createInstance(u"y", *noSymbols, s)->Native() != nullptr; },
         [&](Code& s) { return ICUSimpleDateFormat::createFromDateFormat(*empty, s)->Native() != nullptr; }});
    EXPECT_TRUE(*whole == *before);
    ExpectRefused(Code::InvalidStateError,
                  {[&](Code& s) { return empty->format(0.0, s).size() + empty->format(*calendar, s).size() != 0; },
                   [&](Code& s) { return empty->format(0.0, *text, s), empty->format(0.0, *field, s).size() != 0; },
                   [&](Code& s) { return empty->getCalendar(s)->Native() != nullptr || empty->parse(u"1970", s) != 0; },
                   [&](Code& s) { return empty->setTimeZone(u"UTC", s), !empty->getTimeZone().isEmpty(); },
                   [&](Code& s) { return empty->toLocalizedPattern(s).size() + empty->toPattern().size() != 0; },
                   [&](Code& s) { return empty->getNumberFormat(s)->Native() != nullptr; },
                   [&](Code& s) { return empty->setDateFormatSymbols(*symbols, s), empty->isLenient(); },
                   [&](Code& s) { return empty->getDateFormatSymbols(s)->Native() != nullptr; }});
    empty->setLenient(true);
    empty->applyPattern(u"y");
    auto const position = ICUParsePosition::createInstance(1);
    EXPECT_EQ(empty->parse(u"1970", *position), 0);
    EXPECT_EQ(position->getErrorIndex(), 1);
    empty->parse(u"1970", *calendar, *position);
    whole->parse(u"1970", *noCalendar, *position);
    EXPECT_FALSE(*empty == *whole || *whole == *empty);
    EXPECT_EQ(Failure(fine), 0);
}

// What docs/icu.md says of the space before AM and PM.
TEST(DateFormat, NarrowSpaceInTimes)
{
    Code status = Code::ZeroError;
    auto const format = ICUDateFormat::createTimeInstance(ICUDateFormat::kShort, *Locale("en_US"));
    format->setTimeZone(u"UTC", status);
    TStringCore const written = format->format(50700000.0, status);
    for (bool const lenient : {true, false}) {
        format->setLenient(lenient);
        EXPECT_EQ(format->parse(written, status), 50700000.0);
        Code plain = Code::ZeroError;
        EXPECT_EQ(format->parse(u"2:05 PM", plain), lenient || written == u"2:05 PM" ? 50700000.0 : 0.0);
    }
}

} // namespace
