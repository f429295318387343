// Symbols of dates and generators of patterns beside ICU's own.

#include <memory>

#include <qvxsys/ICUDateFormatSymbols.h>
#include <qvxsys/ICUDateTimePatternGenerator.h>
#include <qvxsys/ICUSimpleDateFormat.h>
#include <unicode/dtfmtsym.h>
#include <unicode/dtptngen.h>

#include "icu/DateOracle.h"

namespace {

using Symbols = QvxICU::ICUDateFormatSymbols;
using Generator = QvxICU::ICUDateTimePatternGenerator;
using Texts = std::vector<TStringCore>;
using IcuSymbols = icu::DateFormatSymbols;
using Context = Symbols::ICUEContext;
using Width = Symbols::ICUEWidth;

using Getter = icu::UnicodeString const* (IcuSymbols::*)(std::int32_t&, IcuSymbols::DtContextType,
                                                         IcuSymbols::DtWidthType) const;
using OwnGetter = Texts (Symbols::*)(Context, Width) const;
constexpr std::pair<OwnGetter, Getter> kLists[] = {{&Symbols::getMonths, &IcuSymbols::getMonths},
                                                   {&Symbols::getWeekdays, &IcuSymbols::getWeekdays},
                                                   {&Symbols::getQuarters, &IcuSymbols::getQuarters},
                                                   {&Symbols::getYearNames, &IcuSymbols::getYearNames},
                                                   {&Symbols::getZodiacNames, &IcuSymbols::getZodiacNames}};

/// ICU's list; `call` gets the count to set.
template<class Call>
Texts ListOf(Call const& call)
{
    std::int32_t count = 0;
    icu::UnicodeString const* const texts = call(count);
    Texts own;
    for (std::int32_t i = 0; i < count; ++i) {
        own.push_back(Text(texts[i]));
    }
    return own;
}

/// The n-th, or nothing.
TStringCore At(Texts const& texts, int n)
{
    return n < 0 || n >= static_cast<int>(texts.size()) ? TStringCore() : texts[static_cast<std::size_t>(n)];
}

TEST(DateFormatSymbols, ListsOfIcu)
{
    for (char const* const name : kLocales) {
        for (char const* const type : {"", "gregorian", "hebrew", "chinese", "japanese", "nonsense"}) {
            SCOPED_TRACE(std::string(name) + ' ' + type);
            UErrorCode code = U_ZERO_ERROR;
            Code status = Code::ZeroError;
            bool const plain = *type == 0;
            IcuSymbols const icu =
                plain ? IcuSymbols(icu::Locale(name), code) : IcuSymbols(icu::Locale(name), type, code);
            auto const made = plain ? Symbols::createInstance(*Locale(name), status)
                                    : Symbols::createInstance(*Locale(name), type, status);
            EXPECT_EQ(Failure(status), Failure(code));
            auto const ours = made->clone();
            EXPECT_TRUE(*ours == *made);
            for (int i = 0; i < 12; ++i) {
                for (auto const& list : kLists) {
                    EXPECT_EQ(((*ours).*list.first)(As{i / 4}, As{i % 4}), ListOf([&](std::int32_t& count) {
                                  return i / 4 > 1 ? nullptr : (icu.*list.second)(count, As{i / 4}, As{i % 4});
                              }))
                        << &list - kLists << " in context " << i / 4 << ", width " << i % 4;
                }
            }
            EXPECT_EQ(ours->getEras(Symbols::Abbreviated), ListOf([&](auto& n) { return icu.getEras(n); }));
            EXPECT_EQ(ours->getEras(Symbols::Wide), ListOf([&](auto& n) { return icu.getEraNames(n); }));
            EXPECT_EQ(ours->getEras(Symbols::Narrow), ListOf([&](auto& n) { return icu.getNarrowEras(n); }));
            EXPECT_EQ(ours->getAmPmStrings(), ListOf([&](auto& n) { return icu.getAmPmStrings(n); }));
            icu::UnicodeString letters;
            EXPECT_EQ(ours->getLocalPatternChars(), Text(icu.getLocalPatternChars(letters)));
            EXPECT_STREQ(ours->getLocale(QvxICU::ICULocDataLocaleType::Actual, status)->getName(),
                         icu.getLocale(ULOC_ACTUAL_LOCALE, code).getName());
            // One by one, by the locale's name, which need not be known.
            for (int n = -1; plain && n < 14; ++n) {
                auto const names = [&](OwnGetter getter) {
                    return ((*made).*getter)(Symbols::Standalone, Symbols::Wide);
                };
                EXPECT_EQ(Symbols::getMonth(n, name), At(names(&Symbols::getMonths), n));
                EXPECT_EQ(Symbols::getQuarter(n, name), At(names(&Symbols::getQuarters), n));
                if (n >= 1 && n <= 7) {
                    EXPECT_EQ(Symbols::getWeekday(n, name), At(names(&Symbols::getWeekdays), n));
                }
            }
        }
    }
    EXPECT_EQ(Symbols::getWeekday(1, "en", Symbols::Format, Symbols::Short), u"Su");
    EXPECT_EQ(Symbols::getMonth(0, "en", Symbols::NoContext), TStringCore());
    EXPECT_FALSE(Symbols::getMonth(0, nullptr).isEmpty() || Symbols::getMonth(0, "xx_unknown").isEmpty());
}

TEST(DateFormatSymbols, ChecksAndSets)
{
    Code status = Code::ZeroError;
    auto const locale = Locale("en");
    auto const symbols = Symbols::createInstance(*locale, status);
    Code failed = Code::MemoryAllocationError;
    auto const empty = Symbols::createInstance(*locale, failed);
    Texts const names = {u"a", u"b\xD800", u"c"};
    auto const before = symbols->clone();
    symbols->setMonths(names, Symbols::NoContext, Symbols::Wide);
    symbols->setMonths(names, Symbols::Format, Symbols::Short);
    symbols->setEras(names, Symbols::Short);
    EXPECT_TRUE(*symbols == *before);
    symbols->setMonths(names, Symbols::Format, Symbols::Wide);
    symbols->setWeekdays(names, Symbols::Format, Symbols::Short);
    symbols->setQuarters({}, Symbols::Format, Symbols::Wide);
    symbols->setEras(names, Symbols::Wide);
    symbols->setAmPmStrings({u"vorm.", u"nachm."});
    EXPECT_EQ(symbols->getMonths(Symbols::Format, Symbols::Wide), names);
    EXPECT_EQ(symbols->getWeekdays(Symbols::Format, Symbols::Short), names);
    EXPECT_TRUE(symbols->getQuarters(Symbols::Format, Symbols::Wide).empty() &&
                symbols->getEras(Symbols::Wide) == names);
    auto const format = QvxICU::ICUSimpleDateFormat::createInstance(u"MMMM a QQQQ EEEEEE GGGG", *symbols, status);
    format->setTimeZone(u"UTC", status);
    EXPECT_EQ(format->format(50700000.0, status), u"a nachm.   b\xD800"); // what has no name is left out
    EXPECT_EQ(format->getDateFormatSymbols(status)->getMonths(Symbols::Format, Symbols::Wide), names);
    EXPECT_TRUE(QvxICU::ICU_SUCCESS(status));

    empty->setMonths(names, Symbols::Format, Symbols::Wide);
    empty->setAmPmStrings(names);
    empty->setEras(names, Symbols::Wide);
    EXPECT_TRUE(empty->getMonths(Symbols::Format, Symbols::Wide).empty() && empty->getAmPmStrings().empty());
    EXPECT_TRUE(empty->clone()->getEras(Symbols::Wide).empty() && empty->getLocalPatternChars().isEmpty());
    EXPECT_FALSE(*empty == *symbols || *symbols == *empty);
    ExpectRefused(Code::InvalidStateError,
                  {[&](Code& s) { return empty->getLocale(QvxICU::ICULocDataLocaleType::Valid, s) != nullptr; }});
}

constexpr char16_t const* kSkeletons[] = {u"yMMMMd", u"yMd",    u"jmm",          u"Hms",   u"EEEEdMMM",
                                          u"GyMMM",  u"yQQQQ",  u"hmsSSS",       u"Jmmz",  u"yyyyMMddHHmm",
                                          u"",       u"zzzzyw", u"\xD800\xD800", u"CCCmm", u"''abcLTZ"};

TEST(DateTimePatternGenerator, AnswersOfIcu)
{
    for (char const* const name : kLocales) {
        UErrorCode code = U_ZERO_ERROR;
        Code status = Code::ZeroError;
        std::unique_ptr<icu::DateTimePatternGenerator> const icu(
            icu::DateTimePatternGenerator::createInstance(icu::Locale(name), code));
        auto const made = Generator::createInstance(name, status);
        EXPECT_EQ(Failure(status), Failure(code));
        Generator* const ours = made.get();
        auto const copy = ours->clone();
        EXPECT_TRUE(*ours == *copy);
        icu::UnicodeString theirs;
        TStringCore conflicting;
        for (char16_t const* const pattern : {u"d 'of' MMMM y", u"H:mm:ss v", u"yMMMd", u"\xD800", u"d-M"}) {
            for (bool const replace : {false, true}) {
                ExpectSame([&](UErrorCode& c) { return icu->addPattern(pattern, replace, theirs.remove(), c); },
                           [&](Code& s) { return ours->addPattern(pattern, replace, conflicting, s); }, "add");
                EXPECT_EQ(conflicting, Text(theirs));
            }
        }
        EXPECT_SAME(*ours, *icu, setDateTimeFormat(u"{1} at {0}"));
        EXPECT_SAME(*ours, *icu, setDecimal(u"_"));
        for (int i = -1; i < 18; ++i) {
            As const field{i};
            if (i >= 0 && i < UDATPG_FIELD_COUNT) {
                EXPECT_SAME(*ours, *icu, setAppendItemName(field, u"name"));
                EXPECT_SAME(*ours, *icu, setAppendItemFormat(field, u"{0} ({2}: {1})"));
                EXPECT_SAME(*ours, *icu, getFieldDisplayName(field, As{UDATPG_NARROW}));
                EXPECT_SAME(*ours, *icu, getAppendItemName(field));
                EXPECT_SAME(*ours, *icu, getAppendItemFormat(field));
            } else {
                ours->setAppendItemName(field, u"name");
                ours->setAppendItemFormat(field, u"{0} ({2}: {1})");
                EXPECT_TRUE(ours->getAppendItemName(field).isEmpty() && ours->getAppendItemFormat(field).isEmpty());
            }
        }
        EXPECT_TRUE(ours->getFieldDisplayName(Generator::DayField, Generator::ICUEDisplayWidth(3)).isEmpty());
        for (char16_t const* const skeleton : kSkeletons) {
            SCOPED_TRACE(name + TStringCore(skeleton).toStdString());
            EXPECT_SAME(*ours, *icu, getBestPattern(skeleton, s));
            EXPECT_SAME(*ours, *icu, getBestPattern(skeleton, As{UDATPG_MATCH_ALL_FIELDS_LENGTH}, s));
            EXPECT_SAME(*ours, *icu, replaceFieldTypes(u"d MMM y, H:mm", skeleton, s));
            EXPECT_SAME(*ours, *icu, getSkeleton(skeleton, s));
            EXPECT_SAME(*ours, *icu, getBaseSkeleton(skeleton, s));
            EXPECT_SAME(*ours, *icu, getPatternForSkeleton(skeleton));
        }
        EXPECT_SAME(*ours, *icu, getDefaultHourCycle(s));
        EXPECT_SAME(*ours, *icu, getDateTimeFormat());
        EXPECT_SAME(*ours, *icu, getDecimal());
        for (bool const base : {false, true}) {
            std::unique_ptr<icu::StringEnumeration> const all(base ? icu->getBaseSkeletons(code)
                                                                   : icu->getSkeletons(code));
            auto const listed = base ? ours->getBaseSkeletons(status) : ours->getSkeletons(status);
            ASSERT_EQ(static_cast<int>(listed.size()), all->count(code));
            for (TStringCore const& skeleton : listed) {
                EXPECT_EQ(skeleton, Text(*all->snext(code)));
            }
        }
        EXPECT_FALSE(*ours == *copy);
        EXPECT_TRUE(*copy == *Generator::createInstance(name, status));
    }
}

TEST(DateTimePatternGenerator, WithoutIcusGenerator)
{
    Code status = Code::MemoryAllocationError;
    auto const empty = Generator::createInstance("en", status)->clone();
    EXPECT_EQ(status, Code::MemoryAllocationError);
    ExpectRefused(Code::InvalidStateError, {[&](Code& s) { return !empty->getBestPattern(u"yMd", s).isEmpty(); },
                                            [&](Code& s) { return !empty->getSkeletons(s).empty(); }});
    empty->setDecimal(u".");
    empty->setDateTimeFormat(u"");
    EXPECT_TRUE(empty->getDecimal().isEmpty() && empty->getPatternForSkeleton(u"y").isEmpty() && *empty != *empty);
}

} // namespace
