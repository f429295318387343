// The flat layer: what its functions convert on their way to ICU and back. A function is a line of a table whose types
// and values the compiler has compared with ICU's, and check_forwarders.py knows that none is missing; so what is
// called here is each kind of argument and result, and each kind of handle, beside ICU's own function where that says
// more.

#include <algorithm>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>
#include <qvxsys/IcuHandles.h>
#include <qvxsys/TStringCore.h>
#include <unicode/uchar.h>
#include <unicode/uloc.h>
#include <unicode/uregex.h>

using namespace QvxICU;

namespace {

class Flat : public testing::Test
{
protected:
    /// For the next call, which is to leave it at `expected`.
    ICUErrorCode* Status(ICUErrorCode expected = ICUErrorCode::ZeroError)
    {
        Check();
        m_status = ICUErrorCode::ZeroError;
        m_expected = expected;
        return &m_status;
    }
    ~Flat() override { Check(); }

    char16_t units[64] = {};
    char bytes[64] = {};
    std::int32_t number = 0;

private:
    /// Warnings that are not expected may come from whatever ICU has in its caches.
    void Check() const
    {
        EXPECT_TRUE(m_status == m_expected || (m_expected == ICUErrorCode::ZeroError && ICU_SUCCESS(m_status)))
            << static_cast<int>(m_status) << " in place of " << static_cast<int>(m_expected);
    }

    ICUErrorCode m_status = ICUErrorCode::ZeroError;
    ICUErrorCode m_expected = ICUErrorCode::ZeroError;
};

TEST_F(Flat, CodePointsBooleansAndEnumerations)
{
    auto const same = [](auto own, auto theirs) {
        for (char32_t const c :
             {U'A', U'5', U'\u00DF', U'\u0665', U'(', U'\xD800', U'\U0001F600', char32_t{0x110000}}) {
            EXPECT_EQ(static_cast<double>(own(c)), static_cast<double>(theirs(static_cast<UChar32>(c))))
                << static_cast<std::uint32_t>(c);
        }
    };
    same(t_u_charType, u_charType); // a small integer of ICU's
    same(t_u_charDirection, u_charDirection);
    same(t_u_charMirror, u_charMirror);
    same(t_u_getNumericValue, u_getNumericValue);
    same(t_u_isIDStart, u_isIDStart);
    same(t_ublock_getCode, ublock_getCode);
    same([](char32_t c) { return t_u_hasBinaryProperty(c, ICUProperty::Dash); },
         [](UChar32 c) { return u_hasBinaryProperty(c, UCHAR_DASH); });
    EXPECT_EQ(t_ucpmap_get(t_u_getIntPropertyMap(ICUProperty::GeneralCategory, Status()), U'\u0665'),
              static_cast<unsigned>(U_DECIMAL_DIGIT_NUMBER));
    EXPECT_EQ(t_u_charFromName(ICUCharNameChoice::UnicodeCharName, "LATIN SMALL LETTER SHARP S", Status()), U'\u00DF');
    EXPECT_EQ(t_uloc_getCharacterOrientation("ar", Status()), ICULayoutType::Rtl);
    EXPECT_TRUE(t_uloc_isRightToLeft("ar") && !t_uloc_isRightToLeft("en"));
    for (bool const strict : {false, true}) {
        char theirs[64] = {};
        std::fill_n(bytes, 64, '\0');
        ICUErrorCode status{};
        UErrorCode code = U_ZERO_ERROR;
        EXPECT_EQ(t_uloc_toLanguageTag("de_a", bytes, 64, strict, &status),
                  uloc_toLanguageTag("de_a", theirs, 64, strict, &code));
        EXPECT_STREQ(bytes, theirs);
        EXPECT_TRUE(static_cast<int>(status) == code && ICU_FAILURE(status) == strict);
    }
    bool isChoice = true;
    EXPECT_EQ(TStringCore(t_ucurr_getName(u"EUR", "en", ICUCurrNameStyle::SymbolName, &isChoice, &number, Status())),
              u"\u20AC");
    EXPECT_TRUE(!isChoice && number == 1);
    char const* wanted[] = {"xx", "sv_FI"};
    auto accepted = ICUAcceptResult::Failed;
    ICULocalUEnumerationPointer const available(t_uloc_openAvailableByType(ICULocAvailableType::Default, Status()));
    EXPECT_EQ(t_uloc_acceptLanguage(bytes, 64, &accepted, wanted, 2, available.getAlias(), Status()), 5);
    EXPECT_EQ(accepted, ICUAcceptResult::Valid);
}

TEST_F(Flat, StatusesGoThereAndComeBack)
{
    EXPECT_EQ(t_uloc_getName("de_DE", bytes, 5, Status(ICUErrorCode::StringNotTerminatedWarning)), 5);
    EXPECT_EQ(t_uloc_getName("de_DE", bytes, 3, Status(ICUErrorCode::BufferOverflowError)), 5);
    auto failed = ICUErrorCode::MemoryAllocationError;
    EXPECT_EQ(t_uloc_getName("fr", bytes, 64, &failed), 0);
    EXPECT_EQ(failed, ICUErrorCode::MemoryAllocationError);
    EXPECT_EQ(std::string(bytes, 5), "de_DE") << "nothing is written after a failure";
}

TEST_F(Flat, Structures)
{
    ICUParseError error;
    UParseError theirs{};
    UErrorCode code = U_ZERO_ERROR;
    EXPECT_EQ(uregex_open(u"\nab[c", -1, 0, &theirs, &code), nullptr);
    EXPECT_EQ(t_uregex_open(u"\nab[c", -1, 0, &error, Status(static_cast<ICUErrorCode>(code))), nullptr);
    EXPECT_TRUE(error.line == theirs.line && error.line == 2 && error.offset == theirs.offset);
    EXPECT_EQ(TStringCore(error.preContext) + error.postContext, TStringCore(theirs.preContext) + theirs.postContext);
    ICUFieldSpan span{ICUFieldFraction};
    ICULocalUNumberFormatPointer const format(
        t_unum_open(ICUNumberFormatStyle::Decimal, nullptr, 0, "de", nullptr, Status()));
    EXPECT_EQ(t_unum_formatDouble(format.getAlias(), 12345.75, units, 64, &span, Status()), 9);
    EXPECT_TRUE(span.begin == 7 && span.end == 9 && TStringCore(units) == u"12.345,75");
    ICUCharacterIterator first;
    ICUCharacterIterator second;
    t_uiter_setString(&first, u"a\U0001F600", 3);
    t_uiter_setUTF8(&second, "a\xF0\x9F\x98\x81", -1);
    EXPECT_TRUE(t_uiter_next32(&second) == U'a' && t_uiter_next32(&second) == U'\U0001F601');
    // The functions in the structure are to be called, too.
    EXPECT_TRUE(first.next(&first) == U'a' && first.hasNext(&first) && !second.hasNext(&second));
    EXPECT_EQ(second.getIndex(&second, ICUIteratorOrigin::Limit), 3);
    EXPECT_LT(t_u_strCompareIter(&first, &second, true), 0);
}

TEST_F(Flat, Callbacks)
{
    // A search that would take for ever ends by its limit, and earlier by a callback.
    std::u16string const text(40, u'a');
    ICULocalURegularExpressionPointer const slow(t_uregex_openC("(a+)+b", 0, nullptr, Status()));
    t_uregex_setTimeLimit(slow.getAlias(), 50, Status());
    t_uregex_setText(slow.getAlias(), text.data(), 40, Status());
    EXPECT_FALSE(t_uregex_find(slow.getAlias(), 0, Status(ICUErrorCode::RegexTimeOut)));
    int calls = 0;
    t_uregex_setTimeLimit(slow.getAlias(), 0, Status());
    ICURegexMatchCallback* const stop = [](void const* context, std::int32_t) {
        return ++*static_cast<int*>(const_cast<void*>(context)) < 2;
    };
    t_uregex_setMatchCallback(slow.getAlias(), stop, &calls, Status());
    ICURegexMatchCallback* installed = nullptr;
    void const* context = nullptr;
    t_uregex_getMatchCallback(slow.getAlias(), &installed, &context, Status());
    EXPECT_TRUE(installed == stop && context == &calls);
    EXPECT_FALSE(t_uregex_matches(slow.getAlias(), 0, Status(ICUErrorCode::RegexStoppedByCaller)));
    EXPECT_EQ(calls, 2);
    // The digits of the first plane until told to stop.
    std::u32string digits;
    t_u_enumCharTypes(
        [](void const* to, char32_t start, char32_t, ICUCharCategory type) {
            auto& found = *static_cast<std::u32string*>(const_cast<void*>(to));
            if (type == ICUCharCategory::DecimalDigitNumber) {
                found += start;
            }
            return found.size() < 3;
        },
        &digits);
    EXPECT_EQ(digits, U"0\u0660\u06F0");
    // ICU's own, by the layer's name.
    ICULocalUConverterPointer const latin(t_ucnv_open("windows-1252", Status()));
    ICULocalUConverterPointer const clone(t_ucnv_clone(latin.getAlias(), Status()));
    ICUFromUnicodeCallback old = nullptr;
    context = this;
    t_ucnv_setFromUCallBack(clone.getAlias(), t_UCNV_FROM_U_CALLBACK_ESCAPE, "J", &old, &context, Status());
    EXPECT_TRUE(old != nullptr && context == nullptr);
    EXPECT_EQ(t_ucnv_fromUChars(clone.getAlias(), bytes, 64, u"\u03A3", 1, Status()), 6);
    EXPECT_STREQ(bytes, "\\u03A3");
    EXPECT_EQ(t_ucnv_fromUChars(latin.getAlias(), bytes, 64, u"\u03A3", 1, Status()), 1);
}

TEST_F(Flat, Handles)
{
    ICULocalUTextPointer const text(t_utext_openUTF8(nullptr, "Gr\xC3\xBC\xC3\x9F Gott", -1, Status()));
    ICULocalUTextPointer const copy(t_utext_clone(nullptr, text.getAlias(), true, false, Status()));
    EXPECT_TRUE(t_utext_nativeLength(copy.getAlias()) == 11 && !t_utext_equals(text.getAlias(), copy.getAlias()));
    ICULocalUBreakIteratorPointer const words(t_ubrk_open(ICUBreakIteratorType::Word, "de", nullptr, 0, Status()));
    t_ubrk_setUText(words.getAlias(), copy.getAlias(), Status());
    EXPECT_EQ(t_ubrk_next(words.getAlias()), 6);
    ICULocalUSetPointer const set(t_uset_openPattern(u"[b-d]", -1, Status()));
    char32_t first = 0;
    char32_t last = 0;
    EXPECT_EQ(t_uset_getItem(set.getAlias(), 0, &first, &last, units, 64, Status()), 0);
    EXPECT_TRUE(first == U'b' && last == U'd');
    ICULocalUNormalizer2Pointer const filtered(
        t_unorm2_openFiltered(t_unorm2_getNFKCInstance(Status()), set.getAlias(), Status()));
    EXPECT_EQ(t_unorm2_normalize(filtered.getAlias(), u"\uFB01", 1, units, 64, Status()), 1);
    ICULocalUCaseMapPointer const cases(t_ucasemap_open("tr", 0, Status()));
    EXPECT_EQ(t_ucasemap_utf8ToUpper(cases.getAlias(), bytes, 64, "i", 1, Status()), 2);
    ICULocalUCollatorPointer const german(t_ucol_open("de", Status()));
    ICULocalUCollatorPointer const collator(t_ucol_clone(german.getAlias(), Status()));
    EXPECT_EQ(t_ucol_strcoll(collator.getAlias(), u"a", -1, u"\u00E4", -1), ICUCollationResult::Less);
    ICULocalUCollationElementsPointer const elements(t_ucol_openElements(collator.getAlias(), u"ab", -1, Status()));
    EXPECT_TRUE(t_ucol_next(elements.getAlias(), Status()) > 0 && t_ucol_getOffset(elements.getAlias()) == 1);
    ICULocalUStringSearchPointer const search(
        t_usearch_openFromCollator(u"o", -1, u"Foo O", -1, collator.getAlias(), nullptr, Status()));
    EXPECT_EQ(t_usearch_last(search.getAlias(), Status()), 2);
    ICULocalUFormattablePointer const value(t_ufmt_open(Status()));
    ICULocalUNumberFormatPointer const format(
        t_unum_open(ICUNumberFormatStyle::Decimal, nullptr, 0, "de", nullptr, Status()));
    static_cast<void>(t_unum_parseToUFormattable(format.getAlias(), value.getAlias(), u"1.234", -1, nullptr, Status()));
    EXPECT_TRUE(t_ufmt_getType(value.getAlias(), Status()) == ICUFormattableType::Long);
    EXPECT_EQ(t_ufmt_getLong(value.getAlias(), Status()), 1234);
    ICULocalUFieldPositionIteratorPointer const fields(t_ufieldpositer_open(Status()));
    t_unum_formatDoubleForFields(format.getAlias(), 1234.5, units, 64, fields.getAlias(), Status());
    EXPECT_GE(t_ufieldpositer_next(fields.getAlias(), &number, nullptr), 0);
    char const* const charsets[] = {"windows-1252", "UTF-8"};
    ICULocalUConverterSelectorPointer const selector(
        t_ucnvsel_open(charsets, 2, nullptr, ICUConverterUnicodeSet::RoundtripSet, Status()));
    ICULocalUEnumerationPointer const fitting(t_ucnvsel_selectForString(selector.getAlias(), u"\u03A3", 1, Status()));
    EXPECT_STREQ(t_uenum_next(fitting.getAlias(), &number, Status()), "UTF-8");
    ICULocalUCharsetDetectorPointer const detector(t_ucsdet_open(Status()));
    t_ucsdet_setText(detector.getAlias(), "Gr\xC3\xBC\xC3\x9F Gott", 11, Status());
    ICUCharsetMatch const* const* const matches = t_ucsdet_detectAll(detector.getAlias(), &number, Status());
    EXPECT_TRUE(number > 1 && std::string(t_ucsdet_getName(matches[0], Status())) == "UTF-8");
}

} // namespace
