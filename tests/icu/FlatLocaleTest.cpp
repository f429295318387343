// Locales, currencies, enumerations, number formats.

#include <limits>

#include <unicode/ucurr.h>
#include <unicode/uenum.h>
#include <unicode/uformattable.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include "Oracle.h"

namespace {

using FlatLocale = IcuOracle;

TEST_F(FlatLocale, PartsAndNames)
{
    for (char const* const locale : kLocales) {
        SAME(uloc_getLanguage, locale, bytes, capacity, status);
        SAME(uloc_getScript, locale, bytes, capacity, status);
        SAME(uloc_getCountry, locale, bytes, capacity, status);
        SAME(uloc_getVariant, locale, bytes, capacity, status);
        SAME(uloc_getName, locale, bytes, capacity, status);
        SAME(uloc_getBaseName, locale, bytes, capacity, status);
        SAME(uloc_canonicalize, locale, bytes, capacity, status);
        SAME(uloc_getParent, locale, bytes, capacity, status);
        SAME(uloc_getISO3Language, locale);
        SAME(uloc_getLCID, locale);
        SAME(uloc_getKeywordValue, locale, "collation", bytes, capacity, status);
        SAME(uloc_addLikelySubtags, locale, bytes, capacity, status);
        SAME(uloc_minimizeSubtags, locale, bytes, capacity, status);
        SAME(uloc_toLanguageTag, locale, bytes, capacity, true, status);
        SAME(uloc_forLanguageTag, locale, bytes, capacity, &one, status);
        SAME(uloc_isRightToLeft, locale);
        SAME(uloc_getCharacterOrientation, locale, status);
        SAME(uloc_getDisplayLanguage, locale, "fr", units, capacity, status);
        SAME(uloc_getDisplayName, locale, locale, units, capacity, status);
        SAME(ucurr_forLocale, locale, units, capacity, status);
        for (char16_t const* const currency : {u"EUR", u"JPY", u"XXQ"}) {
            SAME(ucurr_getName, currency, locale, As{UCURR_LONG_NAME}, flag, &one, status);
            SAME(ucurr_getPluralName, currency, locale, flag, "one", &one, status);
            SAME(ucurr_getDefaultFractionDigits, currency, status);
            SAME(ucurr_getNumericCode, currency);
            SAME(ucurr_getRoundingIncrementForUsage, currency, As{UCURR_USAGE_CASH}, status);
        }
        TWIN(keywords, ICUEnumeration, UEnumeration, uenum_close, uloc_openKeywords, locale, status);
        if (keywords) {
            SAME(uenum_count, keywords, status);
            SAME(uenum_next, keywords, &one, status);
            SAME(uenum_unext, keywords, &one, status);
            SAME(uenum_reset, keywords, status);
        }
    }
    SAME(ucurr_countCurrencies, "de_DE", 1.0e12, status);
    SAME(uloc_countAvailable);
    SAME(uloc_getAvailable, 5);
    TWIN(available, ICUEnumeration, UEnumeration, uenum_close, uloc_openAvailableByType, As{2}, status);
    SAME(uenum_count, available, status);
    char const* wanted[] = {"xx", "sv_FI"};
    SAME(uloc_acceptLanguage, bytes, capacity, nullptr, wanted, 2, available, status);
    auto result = QvxICU::ICUAcceptResult::Failed;
    Prepare(true, 0, 0);
    QvxICU::t_uenum_reset(available, status);
    EXPECT_EQ(QvxICU::t_uloc_acceptLanguage(bytes, 64, &result, wanted, 2, available, status), 5);
    EXPECT_EQ(result, QvxICU::ICUAcceptResult::Valid);
}

TEST_F(FlatLocale, NumberFormats)
{
    double const numbers[] = {0,
                              -1234567.891,
                              0.005,
                              1e21,
                              std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN()};
    for (char const* const locale : kLocales) {
        for (UNumberFormatStyle const style :
             {UNUM_DECIMAL, UNUM_CURRENCY, UNUM_PERCENT, UNUM_SCIENTIFIC, UNUM_SPELLOUT, UNUM_ORDINAL,
              UNUM_CURRENCY_ACCOUNTING, UNUM_DECIMAL_COMPACT_LONG}) {
            TWIN(format, ICUNumberFormat, UNumberFormat, unum_close, unum_open, As{style}, nullptr, 0, locale, parsed,
                 status);
            if (!format) {
                continue;
            }
            for (double const number : numbers) {
                SAME(unum_formatDouble, format, number, units, capacity, nullptr, status);
            }
            SAME(unum_formatInt64, format, std::numeric_limits<std::int64_t>::min(), units, capacity, nullptr, status);
            SAME(unum_formatDecimal, format, "123456789012345678901.5", -1, units, capacity, nullptr, status);
            SAME(unum_formatDoubleCurrency, format, 9.99, const_cast<char16_t*>(u"CHF"), units, capacity, nullptr,
                 status);
            SAME(unum_parseDouble, format, u"1.234,5 x", -1, &one, status);
            SAME(unum_parseDecimal, format, u"12", -1, nullptr, bytes, capacity, status);
            SAME(unum_getLocaleByType, format, As{0}, status);
            if (style == UNUM_SPELLOUT || style == UNUM_ORDINAL) {
                continue; // they have rules in place of the attributes
            }
            SAME(unum_setAttribute, format, As{UNUM_MIN_FRACTION_DIGITS}, 3);
            SAME(unum_getAttribute, format, As{UNUM_MAX_FRACTION_DIGITS});
            SAME(unum_setDoubleAttribute, format, As{UNUM_ROUNDING_INCREMENT}, 0.25);
            SAME(unum_formatDouble, format, 2.6, units, capacity, nullptr, status);
            SAME(unum_getTextAttribute, format, As{UNUM_NEGATIVE_PREFIX}, units, capacity, status);
            SAME(unum_setSymbol, format, As{UNUM_MINUS_SIGN_SYMBOL}, u"minus", -1, status);
            SAME(unum_getSymbol, format, As{UNUM_DECIMAL_SEPARATOR_SYMBOL}, units, capacity, status);
            SAME(unum_toPattern, format, false, units, capacity, status);
            SAME(unum_applyPattern, format, false, u"#,##0.0#;(#)", -1, parsed, status);
            SAME(unum_format, format, -5, units, capacity, nullptr, status);
        }
    }
    for (char16_t const* const pattern : {u"0.00", u"0.0.0", u"##0,E0"}) {
        TWIN(format, ICUNumberFormat, UNumberFormat, unum_close, unum_open, As{0}, pattern, -1, "en", parsed, status);
    }
}

TEST_F(FlatLocale, FieldsAndValues)
{
    auto own = QvxICU::ICUFieldSpan{QvxICU::ICUFieldFraction};
    UFieldPosition theirs{UNUM_FRACTION_FIELD, 0, 0};
    TWIN(format, ICUNumberFormat, UNumberFormat, unum_close, unum_open, As{UNUM_DECIMAL}, nullptr, 0, "de", nullptr,
         status);
    Prepare(true, 0, 0);
    QvxICU::t_unum_formatDouble(format, 12345.75, units, 64, &own, status);
    unum_formatDouble(format, 12345.75, units, 64, &theirs, status);
    EXPECT_EQ(std::pair(own.begin, own.end), std::pair(theirs.beginIndex, theirs.endIndex));
    EXPECT_EQ(own.end - own.begin, 2);

    TWIN(fields, ICUFieldPositionIterator, UFieldPositionIterator, ufieldpositer_close, ufieldpositer_open, status);
    SAME(unum_formatDoubleForFields, format, 12345.75, units, capacity, fields, status);
    for (int i = 0; i < 5; ++i) {
        SAME(ufieldpositer_next, fields, &one, &two);
    }
    TWIN(value, ICUFormattable, UFormattable, ufmt_close, ufmt_open, status);
    Prepare(true, 0, 0);
    QvxICU::t_unum_parseToUFormattable(format, value, u"1.234,5", -1, nullptr, status);
    unum_parseToUFormattable(format, value, u"1.234,5", -1, nullptr, status);
    SAME(ufmt_getType, value, status);
    SAME(ufmt_getDouble, value, status);
    SAME(ufmt_getLong, value, status);
    SAME(ufmt_isNumeric, value);
}

} // namespace
