// Transliterators: every one that ICU has, on the wrapper and on ICU's own class.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/strenum.h>
#include <unicode/translit.h>
#include <unicode/uniset.h>

#include "support/IcuOracle.h"

using namespace QvxICU;
using namespace testing_support;

namespace {

using Ours = ICUTransliterator;
using Icus = icu::Transliterator;

constexpr char16_t kText[] =
    u"Stra\u00DFe \u041C\u043E\u0441\u043A\u0432\u0430 \u0395\u03BB\u03BB\u03AC\u03C2 \u6771\u4EAC "
    u"\uD55C\uAD6D \u0939\u093F\u0928\u094D\u0926\u0940 \u0639\u0631\u0628\u064A \U0001F600 caf\u00E9 "
    u"e\u0301 \xD800 \xDC00 123 \\u0041 &amp; <<>>";
constexpr TStringView kSample(kText, std::size(kText) - 1);

/// A text typed by threes, then a code point, then the rest.
void ExpectSameTyping(Ours const& ours, Icus const& icus)
{
    icu::UnicodeString text;
    auto const string = ICUString::createInstance();
    UTransPosition position{};
    ICUTransPosition ourPosition;
    UErrorCode code = U_ZERO_ERROR;
    ICUErrorCode status{};
    for (int i = 0; i < kSample.length(); i += 3) {
        icus.transliterate(text, position, Unicode(kSample.mid(i, 3)), code);
        ours.transliterate(*string, ourPosition, kSample.mid(i, 3), status);
    }
    icus.transliterate(text, position, static_cast<UChar32>(0x1F600), code);
    ours.transliterate(*string, ourPosition, U'\U0001F600', status);
    icus.transliterate(text, position, code);
    ours.transliterate(*string, ourPosition, status);
    EXPECT_EQ(Failure(status), Failure(code));
    EXPECT_EQ(ourPosition.start, position.start);
    icus.finishTransliteration(text, position);
    ours.finishTransliteration(*string, ourPosition);
    EXPECT_EQ(string->toString(), Text(text));
    EXPECT_EQ(ourPosition.limit, position.limit);
    ourPosition.limit = 1'000'000;
    status = ICUErrorCode::ZeroError;
    ours.transliterate(*string, ourPosition, status);
    EXPECT_EQ(status, ICUErrorCode::IllegalArgumentError);
}

void ExpectSame(Ours const& ours, Icus const& icus)
{
    auto expected = Unicode(kSample);
    icus.transliterate(expected);
    EXPECT_EQ(ours.transliterate(kSample), Text(expected));
    for (auto const& [start, limit] : {std::pair{0, 8}, {3, 20}, {5, 5}, {0, 1000}, {-1, 3}, {4, 2}}) {
        auto text = Unicode(kSample);
        auto const string = ICUString::createInstance(kSample);
        EXPECT_EQ(ours.transliterate(*string, start, limit), icus.transliterate(text, start, limit));
        EXPECT_EQ(string->toString(), Text(text));
    }
    ExpectSameTyping(ours, icus);
    icu::UnicodeString name;
    auto const french = ICULocale::createFromName("fr");
    EXPECT_EQ(ours.getID(), Text(icus.getID()));
    EXPECT_EQ(ours.getDisplayName(), Text(Icus::getDisplayName(icus.getID(), name)));
    EXPECT_EQ(ours.getDisplayName(*french), Text(Icus::getDisplayName(icus.getID(), icu::Locale("fr"), name)));
    EXPECT_EQ(Ours::getDisplayName(ours.getID(), *french), Text(name));
    EXPECT_EQ(ours.getMaximumContextLength(), icus.getMaximumContextLength());
    EXPECT_EQ(ours.getFilter().isEmpty(), icus.getFilter() == nullptr);
}

TEST(Transliterator, EveryIdAsInIcu)
{
    ICUErrorCode status{};
    std::vector<TStringCore> ids = Ours::getAvailableIDs(status);
    UErrorCode code = U_ZERO_ERROR;
    std::unique_ptr<icu::StringEnumeration> const all(Icus::getAvailableIDs(code));
    EXPECT_EQ(static_cast<int>(ids.size()), all->count(code));
    ASSERT_GT(ids.size(), 100U);
    for (char16_t const* const id :
         {u"NFD; [:Mn:] Remove; NFC", u"[aeiou] Upper", u"Any-No", u"", u";;", u"[", u"\xD800-Latin"}) {
        ids.emplace_back(id);
    }
    for (std::size_t i = 0; i < ids.size(); ++i) {
        for (auto const direction : {UTRANS_FORWARD, UTRANS_REVERSE}) {
            SCOPED_TRACE(testing::Message() << ids[i] << " direction " << direction);
            code = U_ZERO_ERROR;
            status = ICUErrorCode::ZeroError;
            std::unique_ptr<Icus> const icus(Icus::createInstance(Unicode(ids[i]), direction, code));
            auto const ours = Ours::createInstance(ids[i], static_cast<ICUTransDirection>(direction), status);
            ASSERT_EQ(Number(status), code);
            EXPECT_EQ(ours->getCreationStatus(), status);
            if (U_FAILURE(code)) {
                EXPECT_EQ(ours->transliterate(kSample), kSample);
                continue;
            }
            ExpectSame(*ours->clone(), *icus);
            if (i % 20 == 0) { // sets and rules take long
                icu::UnicodeString text;
                icu::UnicodeSet set;
                EXPECT_EQ(ours->toRules(i % 40 == 0), Text(icus->toRules(text, i % 40 == 0)));
                EXPECT_EQ(ours->getSourceSet(), Text(icus->getSourceSet(set).toPattern(text)));
                EXPECT_EQ(ours->getTargetSet(), Text(icus->getTargetSet(set).toPattern(text)));
            }
            std::unique_ptr<Icus> const inverse(icus->createInverse(code));
            EXPECT_EQ(ours->createInverse(status)->getID(), inverse ? Text(inverse->getID()) : u"");
            EXPECT_EQ(Failure(status), Failure(code));
        }
    }
}

TEST(Transliterator, RulesGoodAndBad)
{
    for (char16_t const* const rules :
         {u"a > b; b > c;", u"'<<' > \u00AB; '>>' > \u00BB;", u"$v = [aeiou]; $v { n } $v > m;",
          u":: Greek-Latin; x <> y;", u"a >", u"$no > x;", u"[ > x;", u"(a) > $2;", u"'open > x;", u"", u"a > \\uZZZZ;",
          u"\xD800 > x;", u"a ? b;"}) {
        for (auto const direction : {UTRANS_FORWARD, UTRANS_REVERSE}) {
            SCOPED_TRACE(testing::Message() << TStringCore(rules) << " direction " << direction);
            UErrorCode code = U_ZERO_ERROR;
            ICUErrorCode status{};
            UParseError where{};
            ICUParseError error;
            std::unique_ptr<Icus> const icus(Icus::createFromRules(u"Own", rules, direction, where, code));
            auto const ours =
                Ours::createInstanceFromRules(L"Own", rules, static_cast<ICUTransDirection>(direction), error, status);
            EXPECT_EQ(Failure(status), Failure(code));
            EXPECT_EQ(error.offset, where.offset);
            EXPECT_EQ(TStringCore(error.preContext), TStringCore(where.preContext));
            if (U_SUCCESS(code)) {
                ExpectSame(*ours, *icus);
            }
        }
    }
}

TEST(Transliterator, FiltersAndFailures)
{
    ICUErrorCode status{};
    auto const upper = Ours::createInstance("Any-Upper", ICUTransDirection::Forward, status);
    upper->setFilter(u"[a-c]", status);
    EXPECT_EQ(upper->transliterate(L"abcdef") + upper->getFilter(), u"ABCdef[a-c]");
    upper->setFilter(u"[a-", status);
    EXPECT_TRUE(ICU_FAILURE(status));
    status = ICUErrorCode::ZeroError;
    EXPECT_EQ(upper->clone()->transliterate(u"abcdef"), u"ABCdef");
    upper->setFilter(u"", status);
    EXPECT_EQ(upper->transliterate(u"abcdef") + upper->getFilter(), u"ABCDEF");

    auto const failed = Ours::createInstance(u"Any-NoSuch", ICUTransDirection::Forward, status)->clone();
    EXPECT_EQ(status, ICUErrorCode::InvalidId);
    EXPECT_EQ(failed->getCreationStatus(), ICUErrorCode::InvalidId);
    auto const text = ICUString::createInstance(u"abc");
    ICUTransPosition position;
    failed->transliterate(*text);
    failed->finishTransliteration(*text, position);
    EXPECT_EQ(failed->transliterate(*text, 0, 1), -1);
    ExpectRefused(ICUErrorCode::InvalidId,
                  {[&](auto& s) { return failed->transliterate(*text, position, u"x", s), false; }});
    EXPECT_EQ(text->toString() + failed->getID() + failed->toRules(true) + failed->getSourceSet(), u"abc");
    EXPECT_EQ(failed->createInverse(status)->transliterate(u"abc"), u"abc");
    status = ICUErrorCode::ZeroError;
    auto const sideways = Ours::createInstance(u"Any-Upper", static_cast<ICUTransDirection>(2), status);
    EXPECT_EQ(status, ICUErrorCode::IllegalArgumentError);
    EXPECT_EQ(sideways->transliterate(u"abc"), u"abc");
    ICUParseError error;
    status = ICUErrorCode::ZeroError;
    auto const deep = Ours::createInstanceFromRules(u"Own", TStringCore(u"(").repeated(200'000),
                                                    ICUTransDirection::Forward, error, status);
    EXPECT_EQ(deep->getCreationStatus(), ICUErrorCode::MalformedRule); // and not the end of the stack
}

} // namespace
