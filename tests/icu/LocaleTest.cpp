// Locales, with ICU's own class as the oracle: the same calls on both, over all locales there are and names that are
// none.

#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/strenum.h>

#include "support/IcuOracle.h"

using QvxICU::ICULocale;
using namespace testing_support;

namespace {

// Where the wrapper's signature is another than ICU's.
template<class Code>
std::string Tag(icu::Locale const& locale, Code& code)
{
    return locale.toLanguageTag<std::string>(code);
}
std::string Tag(ICULocale const& locale, ICUErrorCode& code)
{
    return locale.toLanguageTag(code);
}
std::vector<std::string> Keywords(icu::Locale const& locale, bool unicode, UErrorCode& code)
{
    std::unique_ptr<icu::StringEnumeration> const all(unicode ? locale.createUnicodeKeywords(code)
                                                              : locale.createKeywords(code));
    std::vector<std::string> names;
    while (char const* const name = all ? all->next(nullptr, code) : nullptr) {
        names.emplace_back(name);
    }
    return names;
}
std::vector<std::string> Keywords(ICULocale const& locale, bool unicode, ICUErrorCode& code)
{
    return unicode ? locale.getUnicodeKeywords(code) : locale.getKeywords(code);
}
std::string Value(icu::Locale const& locale, bool unicode, char const* name, UErrorCode& code)
{
    return unicode ? locale.getUnicodeKeywordValue<std::string>(name, code)
                   : locale.getKeywordValue<std::string>(name, code);
}
std::string Value(ICULocale const& locale, bool unicode, char const* name, ICUErrorCode& code)
{
    return unicode ? locale.getUnicodeKeywordValue(name, code) : locale.getKeywordValue(name, code);
}

/// All that a locale tells of itself, and what its changes make of it.
template<class Code, class Locale>
std::string Facts(Locale const& locale)
{
    std::ostringstream out;
    auto const code = [](int c = 0) { return static_cast<Code>(c); };
    auto const names = [&](Locale const& l) {
        char const* const base = l.getBaseName(); // ICU's is null if the locale is bogus
        out << l.getName() << '|' << (base != nullptr ? base : "") << '|' << static_cast<bool>(l.isBogus()) << '\n';
    };
    names(locale);
    out << locale.getLanguage() << '|' << locale.getScript() << '|' << locale.getCountry() << '|' << locale.getVariant()
        << '|' << locale.getISO3Language() << '|' << locale.getISO3Country() << '|' << locale.getLCID() << '|'
        << locale.hashCode() << '|' << static_cast<bool>(locale.isRightToLeft()) << '\n';
    for (Code status : {code(), code(U_MEMORY_ALLOCATION_ERROR)}) {
        out << Tag(locale, status) << Number(status) << '\n';
        for (bool const unicode : {false, true}) {
            for (std::string const& name : Keywords(locale, unicode, status)) {
                out << name << '=' << Value(locale, unicode, name.c_str(), status) << ';';
            }
            out << Number(status) << '\n';
        }
    }
    using Change = void (Locale::*)(Code&);
    for (Change const change :
         {static_cast<Change>(&Locale::addLikelySubtags), static_cast<Change>(&Locale::minimizeSubtags),
          static_cast<Change>(&Locale::canonicalize)}) {
        Locale changed = locale;
        Code status = code();
        (changed.*change)(status);
        out << Number(status) << ' ';
        names(changed);
    }
    return out.str();
}

/// The names for people, in the words of a locale and of the default one.
std::vector<TStringCore> Shown(icu::Locale const& l, icu::Locale const& in)
{
    icu::UnicodeString s;
    return {Text(l.getDisplayLanguage(in, s)), Text(l.getDisplayScript(in, s)), Text(l.getDisplayCountry(in, s)),
            Text(l.getDisplayVariant(in, s)),  Text(l.getDisplayName(in, s)),   Text(l.getDisplayLanguage(s)),
            Text(l.getDisplayScript(s)),       Text(l.getDisplayCountry(s)),    Text(l.getDisplayVariant(s)),
            Text(l.getDisplayName(s))};
}
std::vector<TStringCore> Shown(ICULocale const& l, ICULocale const& in)
{
    return {l.getDisplayLanguage(in), l.getDisplayScript(in), l.getDisplayCountry(in), l.getDisplayVariant(in),
            l.getDisplayName(in),     l.getDisplayLanguage(), l.getDisplayScript(),    l.getDisplayCountry(),
            l.getDisplayVariant(),    l.getDisplayName()};
}

void ExpectSame(ICULocale const& ours, icu::Locale const& theirs, std::string const& what)
{
    EXPECT_EQ((Facts<ICUErrorCode>(ours)), (Facts<UErrorCode>(theirs))) << what;
    for (char const* const in : {"de", "ar", ""}) {
        EXPECT_EQ(Shown(ours, *ICULocale::createFromName(in)), Shown(theirs, icu::Locale(in))) << what << " in " << in;
    }
}

std::vector<std::string> OddNames()
{
    std::vector<std::string> names;
    std::istringstream list(
        "/root/C/en_US_POSIX/i-klingon/no_NO_NY/sh_YU/zh_TW_STROKE/de__PHONEBOOK/xx_YY_ZZ/@/@=;/de@collation/de@=x/"
        "de@collation=phonebook;currency=EUR/EN@Currency=eur; CALENDAR = japanese/en_US.utf8@euro/\xFF\xFE\x80/a "
        "b\tc/_/"
        "___/-/--x/x-private/und-Latn-x-foo/de-u-co-phonebk-ka-shifted/sr-latn-rs/zh-min-nan/en_US_OED/fr\n/de;CH");
    for (std::string name; std::getline(list, name, '/');) {
        names.push_back(name);
    }
    std::string many = "en@";
    for (int i = 0; i < 40; ++i) {
        many += "key" + std::to_string(i) + "=value;";
    }
    for (auto const& longName : {many, std::string(100, 'a'), std::string(200, '_'), "de_" + std::string(5000, 'X'),
                                 "en@x=" + std::string(10000, 'y')}) {
        names.push_back(longName);
    }
    return names;
}

TEST(Locale, EveryNameGivesWhatIcuMakesOfIt)
{
    std::vector<std::string> names = OddNames();
    int count = 0;
    auto const* const available = icu::Locale::getAvailableLocales(count);
    for (int i = 0; i < count; ++i) {
        names.emplace_back(available[i].getName());
    }
    for (std::string const& name : names) {
        char const* const n = name.c_str();
        ExpectSame(*ICULocale::createFromName(n), icu::Locale::createFromName(n), name);
        EXPECT_STREQ(ICULocale::createCanonical(n)->getName(), icu::Locale::createCanonical(n).getName());
        ICUErrorCode status = ICUErrorCode::ZeroError;
        UErrorCode code = U_ZERO_ERROR;
        auto const ours = ICULocale::forLanguageTag(n, status);
        auto const theirs = icu::Locale::forLanguageTag(n, code);
        EXPECT_EQ(Number(status), code) << name;
        EXPECT_STREQ(ours->getName(), theirs.getName());
        EXPECT_EQ(ours->isBogus(), theirs.isBogus());
    }
}

TEST(Locale, PartsMayBeMissing)
{
    std::string const longText(1000, 'q');
    char const* const parts[] = {nullptr, "", "de", "CH", "POSIX", "collation=phonebook", "@=;_", longText.c_str()};
    for (char const* const language : parts) {
        for (char const* const country : parts) {
            for (char const* const variant : parts) {
                for (char const* const keywords : parts) {
                    EXPECT_EQ(Facts<ICUErrorCode>(*ICULocale::createInstance(language, country, variant, keywords)),
                              Facts<UErrorCode>(icu::Locale(language, country, variant, keywords)));
                }
            }
        }
    }
    ICUErrorCode status = ICUErrorCode::ZeroError;
    EXPECT_EQ(*ICULocale::createFromName(nullptr), ICULocale());
    EXPECT_EQ(*ICULocale::createCanonical(nullptr), ICULocale());
    EXPECT_TRUE(ICULocale::forLanguageTag(nullptr, status)->getName()[0] == '\0');
    EXPECT_EQ(ICULocale::getUS().getKeywordValue(nullptr, status), "");
}

// The wrapper that is changed has the change, whatever made the others share its locale with it.
TEST(Locale, ChangesDoNotShowInCopies)
{
    using Change = void (*)(ICULocale&, ICUErrorCode&);
    std::pair<char const*, Change> const changes[] = {
        {"de@currency=EUR", [](ICULocale& l, ICUErrorCode& status) { l.setKeywordValue("currency", "CHF", status); }},
        {"de", [](ICULocale& l, ICUErrorCode& status) { l.setUnicodeKeywordValue("nu", "arab", status); }},
        {"zh_TW", [](ICULocale& l, ICUErrorCode& status) { l.addLikelySubtags(status); }},
        {"zh_Hant_TW", [](ICULocale& l, ICUErrorCode& status) { l.minimizeSubtags(status); }},
        {"sh_YU", [](ICULocale& l, ICUErrorCode& status) { l.canonicalize(status); }},
        {"de", [](ICULocale& l, ICUErrorCode&) { l.setToBogus(); }},
        {"de", [](ICULocale& l, ICUErrorCode&) { l = ICULocale::getPRC(); }},
    };
    for (auto const& [name, change] : changes) {
        ICUErrorCode status = ICUErrorCode::ZeroError;
        auto const original = ICULocale::createFromName(name);
        ICULocale copy = *original;
        auto const clone = copy.clone();
        ICULocale assigned;
        assigned = copy;
        EXPECT_EQ(copy.getName(), original->getName()) << "one locale, not a second one";
        change(copy, status);
        EXPECT_EQ(status, ICUErrorCode::ZeroError);
        EXPECT_NE(copy, *original) << name;
        for (ICULocale const& other : {*original, *clone, assigned}) {
            EXPECT_STREQ(other.getName(), name);
        }
    }
}

TEST(Locale, KeywordsAreSetAsIcuSetsThem)
{
    std::string const longText(3000, 'k');
    char const* const names[] = {"collation", "currency", "co", "", "bad name", "\xFF", longText.c_str()};
    char const* const values[] = {"phonebook", "phonebk", "", "a;b", "x=y", "\xC3\xA9", longText.c_str()};
    for (char const* const locale : {"de", "de@collation=eor", "", "@x=y;z=w"}) {
        for (char const* const name : names) {
            for (char const* const value : values) {
                for (int const before : {0, 7}) {
                    ICULocale ours = *ICULocale::createFromName(locale);
                    icu::Locale theirs(locale);
                    auto status = static_cast<ICUErrorCode>(before);
                    auto code = static_cast<UErrorCode>(before);
                    ours.setKeywordValue(name, value, status);
                    theirs.setKeywordValue(icu::StringPiece(name), icu::StringPiece(value), code);
                    EXPECT_EQ(Number(status), code) << name << '=' << value;
                    ours.setUnicodeKeywordValue(name, value, status);
                    theirs.setUnicodeKeywordValue(icu::StringPiece(name), icu::StringPiece(value), code);
                    EXPECT_EQ(Number(status), code) << name << '=' << value;
                    EXPECT_STREQ(ours.getName(), theirs.getName());
                    EXPECT_EQ(ours.getKeywordValue(name, status), Value(theirs, false, name, code));
                    EXPECT_EQ(ours.getUnicodeKeywordValue(name, status), Value(theirs, true, name, code));
                    EXPECT_EQ(Number(status), code);
                }
            }
        }
    }
    ICULocale locale = *ICULocale::createFromName("de@collation=phonebook");
    ICUErrorCode status = ICUErrorCode::ZeroError;
    locale.setKeywordValue("collation", nullptr, status);
    EXPECT_STREQ(locale.getName(), "de");
}

TEST(Locale, ConstantsAndListsAreIcus)
{
#define SAME(name)                                                                                                     \
    EXPECT_STREQ(ICULocale::get##name().getName(), icu::Locale::get##name().getName());                                \
    EXPECT_EQ(&ICULocale::get##name(), &ICULocale::get##name())
    // clang-format off
    SAME(English); SAME(French); SAME(German); SAME(Italian); SAME(Japanese); SAME(Korean);
    SAME(Chinese); SAME(SimplifiedChinese); SAME(TraditionalChinese); SAME(France); SAME(Germany); SAME(Italy);
    SAME(Japan); SAME(Korea); SAME(China); SAME(PRC); SAME(Taiwan); SAME(UK);
    SAME(US); SAME(Canada); SAME(CanadaFrench);
    // clang-format on
#undef SAME
    EXPECT_STREQ(ICULocale::getRoot()->getName(), icu::Locale::getRoot().getName());
    int ours = -1;
    int theirs = -1;
    auto const locales = ICULocale::getAvailableLocales(ours);
    auto const* const available = icu::Locale::getAvailableLocales(theirs);
    ASSERT_EQ(ours, theirs);
    ASSERT_EQ(locales.size(), static_cast<std::size_t>(ours));
    for (std::size_t i = 0; i < locales.size(); ++i) {
        EXPECT_STREQ(locales[i]->getName(), available[i].getName());
    }
    for (auto const& [list, oracle] : {std::pair(ICULocale::getISOCountries(), icu::Locale::getISOCountries()),
                                       std::pair(ICULocale::getISOLanguages(), icu::Locale::getISOLanguages())}) {
        for (std::size_t i = 0; i < list.size(); ++i) {
            EXPECT_STREQ(list[i], oracle[i]);
        }
        EXPECT_EQ(oracle[list.size()], nullptr);
    }
}

TEST(Locale, TheDefaultIsIcusAndCanBeChanged)
{
    auto const before = ICULocale::getDefault();
    EXPECT_STREQ(before->getName(), icu::Locale::getDefault().getName());
    ICUErrorCode status = ICUErrorCode::MemoryAllocationError;
    ICULocale::setDefault(ICULocale::getJapan(), status);
    EXPECT_EQ(*ICULocale::getDefault(), *before) << "nothing happens after a failure";
    status = ICUErrorCode::ZeroError;
    ICULocale::setDefault(*ICULocale::createFromName("de_CH@currency=CHF"), status);
    EXPECT_EQ(status, ICUErrorCode::ZeroError);
    EXPECT_STREQ(icu::Locale::getDefault().getName(), "de_CH@currency=CHF");
    EXPECT_EQ(ICULocale(), *ICULocale::createInstance());
    EXPECT_EQ(*ICULocale::getDefault(), ICULocale());
    EXPECT_EQ(ICULocale::getUS().getDisplayCountry(), u"Vereinigte Staaten");
    EXPECT_NE(ICULocale(), *before) << "what was made from the former default stays as it is";
    ICULocale::setDefault(*before, status);
    EXPECT_EQ(*ICULocale::getDefault(), *before);
}

} // namespace
