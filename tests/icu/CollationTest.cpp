// Digits that are equal, beside the same locale's collator; owners of handles.

#include <string>

#include <gtest/gtest.h>
#include <qvxsys/IcuHandles.h>
#include <qvxsys/TStringCore.h>

namespace {

using namespace QvxICU;

char16_t const* const kWords[] = {u"",       u"cote",   u"cot\u00E9",    u"c\u00F4te", u"\u00C4rger",
                                  u"Arger",  u"zebra",  u"\u00E5",       u"o\u0308l",  u"chata",
                                  u"\u0131", u"I",      u"a-b",          u"ab",        u"\u3042",
                                  u"\u30A2", u"\u4E2D", u"\u0E40\u0E01", u"\xD800",    u"\U0001F600"};

ICUCollationResult Order(ICULocalUCollatorPointer const& collator, std::u16string const& a, std::u16string const& b)
{
    return t_ucol_strcoll(collator.getAlias(), a.data(), -1, b.data(), -1);
}

// All decimal digits of the installed ICU are equal, whatever stands around them; texts without digits sort as before.
TEST(Collation, DigitsThatAreEqual)
{
    ICUErrorCode status{};
    ICULocalUCollatorPointer const refused(t_ucol_openRules(t_getIgnoreDigitsRule().view().data(), -1,
                                                            ICUColAttributeValue::Default,
                                                            ICUColAttributeValue::Default, nullptr, &status));
    EXPECT_TRUE(!refused && status == ICUErrorCode::InvalidFormatError);
    ICULocalUSetPointer const digits(t_uset_openPattern(u"[:Nd:]", -1, &(status = ICUErrorCode::ZeroError)));
    for (char const* const locale : {"", "en_US", "de@collation=phonebook", "sv", "tr", "ar_EG", "hi_IN", "th_TH_TH",
                                     "ja_JP@calendar=japanese", "zh_Hant_TW", "fr-CA-u-co-trad", "not a locale"}) {
        ICULocalUCollatorPointer const equal(t_openIgnoreDigitsCollator(locale, &(status = ICUErrorCode::ZeroError)));
        ICUErrorCode const opened = status;
        ICULocalUCollatorPointer const plain(t_ucol_open(locale, &(status = ICUErrorCode::ZeroError)));
        EXPECT_EQ(opened, status) << locale;
        ASSERT_EQ(equal.getAlias() != nullptr, plain.getAlias() != nullptr) << locale;
        if (!equal) {
            continue;
        }
        for (std::int32_t i = 0; i < t_uset_size(digits.getAlias()); ++i) {
            char32_t const digit = t_uset_charAt(digits.getAlias(), i);
            std::u16string const text = TStringCore(u"x").append32(digit).append(u"y").view().data();
            EXPECT_EQ(Order(equal, text, u"x0y"), ICUCollationResult::Equal)
                << locale << " U+" << std::hex << static_cast<unsigned>(digit);
        }
        for (std::u16string const a : kWords) {
            for (std::u16string const b : kWords) {
                EXPECT_EQ(Order(equal, a, b), Order(plain, a, b)) << locale;
                EXPECT_EQ(Order(equal, u"1" + a, u"9" + b), Order(plain, a, b)) << locale;
            }
        }
        // A digit is still a character, before letters.
        EXPECT_EQ(Order(equal, u"a", u"a7"), ICUCollationResult::Less);
        EXPECT_EQ(Order(equal, u"a9", u"ab"), ICUCollationResult::Less);
    }
    ICULocalUCollatorPointer const shifted(
        t_openIgnoreDigitsCollator("en-u-ka-shifted-kn-true", &(status = ICUErrorCode::ZeroError)));
    EXPECT_EQ(Order(shifted, u"a-1 23", u"a456"), ICUCollationResult::Equal); // as the locale's own, but for digits
    status = ICUErrorCode::ParseError;
    EXPECT_EQ(t_openIgnoreDigitsCollator("en", &status), nullptr);
}

TEST(Collation, OwnersCloseOnce)
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
