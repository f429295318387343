// Break iterators, texts, character iterators, regular expressions, normalisation, strings, properties, sets,
// converters.

#include <unicode/ubrk.h>
#include <unicode/ucasemap.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucnvsel.h>
#include <unicode/ucpmap.h>
#include <unicode/ucsdet.h>
#include <unicode/uiter.h>
#include <unicode/unorm2.h>
#include <unicode/uregex.h>
#include <unicode/uset.h>
#include <unicode/ustring.h>
#include <unicode/utext.h>
#include <unicode/uversion.h>

#include "Oracle.h"

namespace {

using FlatText = IcuOracle;

// Words, numbers, a line's end, a sentence's, a lone surrogate, signs beyond the first plane, Thai, Turkish and final
// sigma.
constexpr char16_t kText[] =
    u"Stra\u00DFe 12,5 I\u0307 \u00C5A\u030A.\r\nO\u03A3 \u0130i\u0131 \xD83D x \U0001F600\U0001F1E9\U0001F1EA "
    u"\u0E2A\u0E27\u0E31\u0E2A\u0E14\u0E35 \uFB01\u01C6!";
constexpr std::int32_t kLength = static_cast<std::int32_t>(std::size(kText)) - 1;
constexpr char kUtf8[] = "Stra\xC3\x9F"
                         "e I\xCC\x87 O\xCE\xA3 \xC4\xB0 \xFF\xC3 \xF0\x9F\x98\x80 ok";

TEST_F(FlatText, BreakIterators)
{
    for (char const* const locale : kLocales) {
        for (int type = 0; type <= UBRK_TITLE; ++type) {
            TWIN(breaks, BreakIterator, ubrk_close, ubrk_open, As{type}, locale, kText, kLength, status);
            if (!breaks) {
                continue;
            }
            SAME(ubrk_first, breaks);
            for (int i = 0; i < 12; ++i) {
                SAME(ubrk_next, breaks);
                SAME(ubrk_getRuleStatus, breaks);
            }
            SAME(ubrk_getRuleStatusVec, breaks, &one, capacity.value > 1 ? 1 : 0, status);
            SAME(ubrk_isBoundary, breaks, 7);
            SAME(ubrk_preceding, breaks, 9);
            SAME(ubrk_following, breaks, 30);
            SAME(ubrk_getLocaleByType, breaks, As{0}, status);
            SAME(ubrk_next, breaks);
        }
    }
    SAME(ubrk_countAvailable);
    SAME(ubrk_getAvailable, 3);
    for (char16_t const* const rules : {u".+;", u"$x = [a-c]; $x+ {100};", u"[unclosed", u"$undefined;", u""}) {
        TWIN(ruled, BreakIterator, ubrk_close, ubrk_openRules, rules, -1, kText, kLength, parsed, status);
        if (ruled) {
            SAME(ubrk_next, ruled);
            SAME(ubrk_getBinaryRules, ruled, nullptr, 0, status);
        }
    }
}

TEST_F(FlatText, TextsOfAnyStorage)
{
    TWIN(wide, Text, utext_close, utext_openUChars, nullptr, kText, kLength, status);
    TWIN(narrow, Text, utext_close, utext_openUTF8, nullptr, kUtf8, -1, status);
    TWIN(copy, Text, utext_close, utext_clone, nullptr, narrow, true, false, status);
    auto const read = [&](auto const& text) {
        SAME(utext_nativeLength, text);
        for (int i = 0; i < 9; ++i) {
            SAME(utext_next32, text);
            SAME(utext_getNativeIndex, text);
        }
        SAME(utext_char32At, text, 5);
        SAME(utext_previous32, text);
        SAME(utext_setNativeIndex, text, 6);
        SAME(utext_extract, text, 1, 12, units, capacity, status);
        SAME(utext_replace, text, 0, 1, u"x", 1, status); // read only
    };
    read(wide);
    read(narrow);
    read(copy);
    SAME(utext_equals, wide, narrow);
    SAME(utext_equals, narrow, copy);
    TWIN(breaks, BreakIterator, ubrk_close, ubrk_open, As{UBRK_WORD}, "en", nullptr, 0, status);
    SAME(ubrk_setUText, breaks, narrow, status);
    for (int i = 0; i < 6; ++i) {
        SAME(ubrk_next, breaks);
    }
}

TEST_F(FlatText, CharacterIterators)
{
    Out<QvxICU::ICUCharacterIterator, UCharIterator> first;
    Out<QvxICU::ICUCharacterIterator, UCharIterator> second;
    SAME(uiter_setString, first, kText, kLength);
    SAME(uiter_setUTF8, second, kUtf8, -1);
    for (auto* const each : {&first, &second}) {
        auto& iterator = *each;
        for (int i = 0; i < 14; ++i) {
            SAME(uiter_next32, iterator);
        }
        SAME(uiter_previous32, iterator);
        SAME(uiter_current32, iterator);
        SAME(uiter_getState, iterator);
    }
    // The functions in the structure are to be called, too.
    EXPECT_EQ(second.own.getIndex(second, QvxICU::ICUIteratorOrigin::Current),
              second.theirs.getIndex(second, UITER_CURRENT));
    EXPECT_EQ(second.own.hasNext(second), second.theirs.hasNext(second) == 1);
    EXPECT_EQ(first.own.next(first), static_cast<char32_t>(first.theirs.next(first)));
    SAME(u_strCompareIter, first, second, true);
}

TEST_F(FlatText, RegularExpressions)
{
    struct
    {
        char const* pattern;
        std::uint32_t flags;
    } const rows[] = {{"\\b(\\p{L})(\\p{L}*)(?<number>\\d+)?", 0},
                      {"(?i)STRASSE|stra.e", 2},
                      {"(x)|(?=O)", 0},
                      {"^.*$", 8},
                      {"[a", 0},
                      {"(", 0},
                      {"\\N{nothing}", 0},
                      {"a{9999999999}", 0},
                      {"\\", 512},
                      {"*", 16},
                      {"x", 0x8000},
                      {"x", 128}};
    for (auto const& row : rows) {
        TWIN(regex, RegularExpression, uregex_close, uregex_openC, row.pattern, row.flags, parsed, status);
        if (!regex) {
            continue;
        }
        SAME(uregex_findNext, regex, status); // no text yet
        SAME(uregex_setText, regex, kText, kLength, status);
        SAME(uregex_pattern, regex, &one, status);
        SAME(uregex_matches, regex, 0, status);
        SAME(uregex_find, regex, 2, status);
        for (int i = 0; i < 3; ++i) {
            SAME(uregex_start64, regex, 0, status);
            SAME(uregex_end, regex, 1, status);
            SAME(uregex_group, regex, 1, units, capacity, status);
            SAME(uregex_findNext, regex, status);
        }
        SAME(uregex_replaceAll, regex, u"<$1>", -1, units, capacity, status);
        SAME(uregex_reset, regex, 0, status);
        SAME(uregex_replaceFirst, regex, u"$9", -1, units, capacity, status);
    }
}

TEST_F(FlatText, Normalization)
{
    TWIN(filter, Set, uset_close, uset_openPattern, u"[[:L:][:M:]]", -1, status);
    for (char const* const name : {"nfc", "nfkc", "nfkc_cf", "no such form"}) {
        for (int mode = 0; mode < 4; ++mode) {
            SAME(unorm2_getInstance, nullptr, name, As{mode}, status);
            Prepare(true, 0, 0);
            Both<QvxICU::ICUNormalizer2 const*, UNormalizer2 const*> const form{
                QvxICU::t_unorm2_getInstance(nullptr, name, As{mode}, status),
                unorm2_getInstance(nullptr, name, As{mode}, status)};
            if (form.own == nullptr) {
                continue;
            }
            SAME(unorm2_normalize, form, kText, kLength, units, capacity, status);
            SAME(unorm2_quickCheck, form, kText, 3, status);
            SAME(unorm2_getDecomposition, form, U'\u00C5', units, capacity, status);
            SAME(unorm2_composePair, form, U'A', U'\u030A');
            SAME(unorm2_composePair, form, U'A', U'B');
            TWIN(filtered, Normalizer2, unorm2_close, unorm2_openFiltered, form, filter, status);
            SAME(unorm2_normalize, filtered, kText, kLength, units, capacity, status);
        }
    }
}

TEST_F(FlatText, StringsAndCaseMaps)
{
    for (char const* const locale : kLocales) {
        SAME(u_strToUpper, units, capacity, kText, kLength, locale, status);
        SAME(u_strToLower, units, capacity, kText, kLength, locale, status);
        SAME(u_strToTitle, units, capacity, kText, kLength, nullptr, locale, status);
        TWIN(map, CaseMap, ucasemap_close, ucasemap_open, locale, 0u, status);
        if (!map) {
            continue;
        }
        SAME(ucasemap_utf8ToUpper, map, bytes, capacity, kUtf8, -1, status);
        SAME(ucasemap_utf8FoldCase, map, bytes, capacity, kUtf8, -1, status);
        SAME(ucasemap_setOptions, map, U_TITLECASE_NO_LOWERCASE, status);
        SAME(ucasemap_toTitle, map, units, capacity, kText, kLength, status);
        SAME(ucasemap_utf8ToTitle, map, bytes, capacity, kUtf8, -1, status);
    }
    for (std::uint32_t const options : {0u, 1u}) {
        SAME(u_strFoldCase, units, capacity, kText, kLength, options, status);
        SAME(u_strCaseCompare, kText, kLength, u"STRASSE", 7, options, status);
    }
    SAME(u_countChar32, kText, kLength);
    SAME(u_strFindLast, kText, kLength, u"i", 1);
    SAME(u_unescape, "\\u00e4\\x{1F600}\\n", units, 16);
    SAME(u_strToUTF8, bytes, capacity, &one, kText, kLength, status);
    SAME(u_strToUTF8WithSub, bytes, capacity, &one, kText, kLength, 0xFFFD, &two, status);
    SAME(u_strFromUTF8, units, capacity, &one, kUtf8, -1, status);
    SAME(u_strFromUTF8WithSub, units, capacity, &one, kUtf8, -1, 0xFFFD, &two, status);
    SAME(u_strToJavaModifiedUTF8, bytes, capacity, &one, kText, kLength, status);
    SAME(u_strFromWCS, units, capacity, &one, L"wide \u00E9", -1, status);
    SAME(u_getVersion, octets);
    SAME(u_errorName, As{U_REGEX_TIME_OUT});
}

TEST_F(FlatText, PropertiesAndSets)
{
    for (char32_t const c :
         {U'A', U'5', U'\u00DF', U'\u0665', U'\u2028', U'(', U'\xD800', U'\U0001F600', U'\uFFFF', char32_t{0x110000}}) {
        Both<char32_t, UChar32> const character{c, static_cast<UChar32>(c)};
        for (int property = 0; property < UCHAR_INT_LIMIT; property += property == 71 ? 0x1000 - 71 : 1) {
            SAME(u_hasBinaryProperty, character, As{property});
            SAME(u_getIntPropertyValue, character, As{property});
        }
        SAME(u_charType, character);
        SAME(u_charDirection, character);
        SAME(u_charMirror, character);
        SAME(u_getNumericValue, character);
        SAME(u_isIDStart, character);
        SAME(ublock_getCode, character);
        SAME(u_charName, character, As{0}, bytes, capacity, status);
        SAME(u_charAge, character, octets);
    }
    SAME(u_charFromName, As{U_UNICODE_CHAR_NAME}, "LATIN SMALL LETTER SHARP S", status);
    SAME(u_charFromName, As{U_UNICODE_CHAR_NAME}, "NO SUCH NAME", status);
    SAME(u_getPropertyName, As{UCHAR_BLOCK}, As{U_LONG_PROPERTY_NAME});
    SAME(u_getPropertyValueEnum, As{UCHAR_GENERAL_CATEGORY}, "Nd");
    for (char16_t const* const pattern : {u"[[:Greek:]&[:L:]]", u"[a-z{ch}]", u"[", u"[:no:]", u"[^\\u0000-\\uFFFF]"}) {
        TWIN(set, Set, uset_close, uset_openPatternOptions, pattern, -1, USET_CASE_INSENSITIVE, status);
        if (!set) {
            continue;
        }
        SAME(uset_contains, set, U'\u03B1');
        SAME(uset_span, set, kText, kLength, As{USET_SPAN_NOT_CONTAINED});
        SAME(uset_spanBackUTF8, set, kUtf8, 9, As{USET_SPAN_SIMPLE});
        SAME(uset_toPattern, set, units, capacity, true, status);
        SAME(uset_getItem, set, 0, point, last, units, capacity, status);
        SAME(uset_getRangeCount, set);
    }
    Prepare(true, 0, 0);
    auto const* const own = QvxICU::t_u_getIntPropertyMap(QvxICU::ICUProperty::GeneralCategory, status);
    auto const* const theirs = u_getIntPropertyMap(UCHAR_GENERAL_CATEGORY, status);
    EXPECT_EQ(QvxICU::t_ucpmap_get(own, U'\u0665'), ucpmap_get(theirs, 0x665));
    // Callbacks: the digits of the first plane until told to stop.
    std::u32string digits;
    QvxICU::t_u_enumCharTypes(
        [](void const* context, char32_t start, char32_t, QvxICU::ICUCharCategory type) {
            auto& found = *static_cast<std::u32string*>(const_cast<void*>(context));
            if (type == QvxICU::ICUCharCategory::DecimalDigitNumber) {
                found += start;
            }
            return found.size() < 3;
        },
        &digits);
    EXPECT_EQ(digits, U"0\u0660\u06F0");
}

TEST_F(FlatText, ConvertersAndDetection)
{
    for (char const* const name :
         {"UTF-8", "windows-1252", "Shift_JIS", "ISO-2022-JP", "UTF-16", "ibm-037", "gb18030", "no such", ""}) {
        TWIN(converter, Converter, ucnv_close, ucnv_open, name, status);
        SAME(ucnv_getStandardName, name, "MIME", status);
        if (!converter) {
            continue;
        }
        TWIN(clone, Converter, ucnv_close, ucnv_clone, converter, status);
        SAME(ucnv_getName, clone, status);
        SAME(ucnv_getType, converter);
        SAME(ucnv_getStarters, converter, reinterpret_cast<std::int8_t*>(octets), status);
        SAME(ucnv_getDisplayName, converter, "de", units, capacity, status);
        SAME(ucnv_fromUChars, converter, bytes, capacity, kText, kLength, status);
        SAME(ucnv_toUChars, converter, units, capacity, kUtf8, -1, status);
        SAME(ucnv_setSubstString, converter, u"?", 1, status);
        SAME(ucnv_fromUChars, converter, bytes, capacity, kText, kLength, status);
        Prepare(true, 0, 0);
        QvxICU::ICUFromUnicodeCallback old = nullptr;
        void const* context = this;
        QvxICU::t_ucnv_setFromUCallBack(converter, QvxICU::t_UCNV_FROM_U_CALLBACK_ESCAPE, "J", &old, &context, status);
        EXPECT_NE(old, nullptr); // on Windows the program and the library have an ICU each
        EXPECT_EQ(context, nullptr);
        ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_ESCAPE, "J", nullptr, nullptr, status);
        SAME(ucnv_fromUChars, converter, bytes, capacity, kText, kLength, status);
        SAME(ucnv_convert, name, "UTF-8", bytes, capacity, kUtf8, -1, status);
    }
    SAME(ucnv_detectUnicodeSignature, "\xEF\xBB\xBFx", 4, &one, status);
    SAME(ucnv_compareNames, "UTF-8", "utf8");
    char const* const charsets[] = {"windows-1252", "UTF-8"};
    TWIN(selector, ConverterSelector, ucnvsel_close, ucnvsel_open, charsets, 2, nullptr, As{0}, status);
    TWIN(fitting, Enumeration, uenum_close, ucnvsel_selectForString, selector, kText, 6, status);
    SAME(uenum_count, fitting, status);
    SAME(uenum_next, fitting, &one, status);

    TWIN(detector, CharsetDetector, ucsdet_close, ucsdet_open, status);
    for (std::string const& text :
         {std::string(kUtf8), std::string("\x82\xB1\x82\xF1\x82\xC9\x82\xBF\x82\xCD"), std::string()}) {
        SAME(ucsdet_setText, detector, text.data(), static_cast<std::int32_t>(text.size()), status);
        SAME(ucsdet_detect, detector, status);
        Prepare(true, 0, 0);
        auto const* const own = QvxICU::t_ucsdet_detectAll(detector, &one, status);
        auto const* const theirs = ucsdet_detectAll(detector, &two, status);
        ASSERT_EQ(one, two);
        if (one > 0) {
            Both<QvxICU::ICUCharsetMatch const*, UCharsetMatch const*> const best{own[0], theirs[0]};
            SAME(ucsdet_getName, best, status);
            SAME(ucsdet_getConfidence, best, status);
            SAME(ucsdet_getUChars, best, units, capacity, status);
        }
    }
}

} // namespace
