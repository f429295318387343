// Collators, their elements, text search; digits that are equal; the limits of regular expressions.

#include <string>
#include <vector>

#include <unicode/ucol.h>
#include <unicode/ucoleitr.h>
#include <unicode/uregex.h>
#include <unicode/usearch.h>

#include <qvxsys/IcuHandles.h>
#include <qvxsys/TStringCore.h>

#include "Oracle.h"

namespace {

using FlatCollation = IcuOracle;
using namespace QvxICU;

char16_t const* const kWords[] = {u"",       u"cote",   u"cot\u00E9",    u"c\u00F4te", u"\u00C4rger",
                                  u"Arger",  u"zebra",  u"\u00E5",       u"o\u0308l",  u"chata",
                                  u"\u0131", u"I",      u"a-b",          u"ab",        u"\u3042",
                                  u"\u30A2", u"\u4E2D", u"\u0E40\u0E01", u"\xD800",    u"\U0001F600"};

TEST_F(FlatCollation, CollatorsElementsAndSearch)
{
    for (char const* const locale : kLocales) {
        TWIN(collator, Collator, ucol_close, ucol_open, locale, status);
        if (!collator) {
            continue;
        }
        TWIN(clone, Collator, ucol_close, ucol_clone, collator, status);
        SAME(ucol_getLocaleByType, collator, As{ULOC_VALID_LOCALE}, status);
        SAME(ucol_getDisplayName, locale, "de", units, capacity, status);
        SAME(ucol_setAttribute, clone, As{UCOL_HIRAGANA_QUATERNARY_MODE}, As{UCOL_ON}, status);
        SAME(ucol_getAttribute, clone, As{UCOL_HIRAGANA_QUATERNARY_MODE}, status);
        SAME(ucol_setStrength, clone, As{UCOL_PRIMARY});
        for (char16_t const* const a : kWords) {
            for (char16_t const* const b : kWords) {
                SAME(ucol_strcoll, collator, a, -1, b, -1);
            }
            SAME(ucol_greaterOrEqual, clone, a, -1, u"Cote", -1);
            SAME(ucol_equal, clone, a, -1, u"arger", 5);
            SAME(ucol_getSortKey, collator, a, -1, octets, 12);
        }
        SAME(ucol_strcollUTF8, collator, "\xC3\xA5", -1, "z\xFF", -1, status);
        TWIN(elements, CollationElements, ucol_closeElements, ucol_openElements, collator, u"cho\u0308", -1, status);
        for (int i = 0; i < 5; ++i) {
            SAME(ucol_next, elements, status);
            SAME(ucol_getOffset, elements);
        }
        TWIN(search, StringSearch, usearch_close, usearch_open, u"o", -1, u"Foo O\u0308 fo\u0301", -1, locale, nullptr,
             status);
        SAME(usearch_setAttribute, search, As{USEARCH_ELEMENT_COMPARISON}, As{USEARCH_PATTERN_BASE_WEIGHT_IS_WILDCARD},
             status);
        SAME(usearch_first, search, status);
        SAME(usearch_getMatchedText, search, units, capacity, status);
        SAME(usearch_last, search, status);
    }
    for (char16_t const* const rules : {u"&a < b <<< B", u"&", u"& a << [", u"&[no such reset]<x", u"[import xx]"}) {
        TWIN(ruled, Collator, ucol_close, ucol_openRules, rules, -1, As{UCOL_DEFAULT}, As{UCOL_DEFAULT}, parsed,
             status);
        EXPECT_EQ(parsed.own.offset, parsed.theirs.offset);
        EXPECT_EQ(std::u16string(parsed.own.preContext), std::u16string(parsed.theirs.preContext));
    }
}

// All decimal digits of the installed ICU are equal, whatever stands around them; texts without digits sort as before.
TEST_F(FlatCollation, DigitsThatAreEqual)
{
    Prepare(true, 0, 0);
    EXPECT_EQ(ICULocalUCollatorPointer(t_ucol_openRules(t_getIgnoreDigitsRule().view().data(), -1,
                                                        ICUColAttributeValue::Default, ICUColAttributeValue::Default,
                                                        nullptr, status))
                  .getAlias(),
              nullptr);
    EXPECT_EQ(status.own, ICUErrorCode::InvalidFormatError);
    for (char const* const locale : kLocales) {
        status.own = ICUErrorCode::ZeroError;
        ICULocalUCollatorPointer const equal(t_openIgnoreDigitsCollator(locale, status));
        ICUErrorCode const opened = status.own;
        status.own = ICUErrorCode::ZeroError;
        ICULocalUCollatorPointer const plain(t_ucol_open(locale, status));
        EXPECT_EQ(opened, status.own) << locale;
        ASSERT_EQ(equal.getAlias() != nullptr, plain.getAlias() != nullptr) << locale;
        if (!equal) {
            continue;
        }
        ICULocalUSetPointer const digits(t_uset_openPattern(u"[:Nd:]", -1, status));
        for (std::int32_t i = 0; i < t_uset_size(digits.getAlias()); ++i) {
            char32_t const digit = t_uset_charAt(digits.getAlias(), i);
            std::u16string text = u"x";
            text += TStringCore().append32(digit).view().data();
            EXPECT_EQ(t_ucol_strcoll(equal.getAlias(), (text + u"y").data(), -1, u"x0y", -1), ICUCollationResult::Equal)
                << locale << " U+" << std::hex << static_cast<unsigned>(digit);
        }
        for (char16_t const* const a : kWords) {
            for (char16_t const* const b : kWords) {
                ICUCollationResult const expected = t_ucol_strcoll(plain.getAlias(), a, -1, b, -1);
                EXPECT_EQ(t_ucol_strcoll(equal.getAlias(), a, -1, b, -1), expected) << locale;
                std::u16string const left = u"1" + std::u16string(a);
                std::u16string const right = u"9" + std::u16string(b);
                EXPECT_EQ(t_ucol_strcoll(equal.getAlias(), left.data(), -1, right.data(), -1), expected) << locale;
            }
        }
        // A digit is still a character, before letters.
        EXPECT_EQ(t_ucol_strcoll(equal.getAlias(), u"a", -1, u"a7", -1), ICUCollationResult::Less);
        EXPECT_EQ(t_ucol_strcoll(equal.getAlias(), u"a9", -1, u"ab", -1), ICUCollationResult::Less);
    }
    status.own = ICUErrorCode::ZeroError;
    ICULocalUCollatorPointer const shifted(t_openIgnoreDigitsCollator("en-u-ka-shifted-kn-true", status));
    EXPECT_TRUE(t_ucol_equal(shifted.getAlias(), u"a-1 23", -1, u"a456", -1)); // as the locale's own, but for digits
    status.own = ICUErrorCode::ParseError;
    EXPECT_EQ(t_openIgnoreDigitsCollator("en", status), nullptr);
}

// A search that would take for ever ends by its limit, and earlier by a callback.
TEST_F(FlatCollation, RegularExpressionsWithLimits)
{
    std::u16string const text(40, u'a');
    Prepare(true, 0, 0);
    ICULocalURegularExpressionPointer const slow(t_uregex_openC("(a+)+b", 0, nullptr, status));
    t_uregex_setTimeLimit(slow.getAlias(), 50, status);
    t_uregex_setText(slow.getAlias(), text.data(), 40, status);
    EXPECT_FALSE(t_uregex_find(slow.getAlias(), 0, status));
    EXPECT_EQ(status.own, ICUErrorCode::RegexTimeOut);

    status.own = ICUErrorCode::ZeroError;
    int calls = 0;
    t_uregex_setTimeLimit(slow.getAlias(), 0, status);
    ICURegexMatchCallback* const stop = [](void const* context, std::int32_t) {
        return ++*static_cast<int*>(const_cast<void*>(context)) < 2;
    };
    t_uregex_setMatchCallback(slow.getAlias(), stop, &calls, status);
    ICURegexMatchCallback* installed = nullptr;
    void const* context = nullptr;
    t_uregex_getMatchCallback(slow.getAlias(), &installed, &context, status);
    EXPECT_TRUE(installed == stop && context == &calls);
    EXPECT_FALSE(t_uregex_matches(slow.getAlias(), 0, status));
    EXPECT_EQ(status.own, ICUErrorCode::RegexStoppedByCaller);
    EXPECT_EQ(calls, 2);
}

TEST_F(FlatCollation, OwnersCloseOnce)
{
    static int closed = 0;
    struct Thing
    {};
    using Owner = ICULocalPointer<Thing, [](Thing*) { ++closed; }>;
    static_assert(!std::is_copy_constructible_v<Owner> && std::is_nothrow_move_assignable_v<Owner>);
    static_assert(sizeof(Owner) == sizeof(void*));
    Thing a;
    Thing b;
    {
        Owner first(&a);
        Owner second(std::move(first));
        first.adoptInstead(&b);
        second = std::move(first); // closes a
        second.adoptInstead(&b);
        EXPECT_TRUE(!first && closed == 1 && second.orphan() == &b);
    }
    EXPECT_EQ(closed, 1);
}

} // namespace
