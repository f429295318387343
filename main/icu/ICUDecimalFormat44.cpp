// Number formats over ICU.

#include <qvxsys/ICUDecimalFormat.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include <unicode/compactdecimalformat.h>
#include <unicode/curramt.h>
#include <unicode/fmtable.h>
#include <unicode/rbnf.h>

#include "ICUDecimalFormat44Impl.h"

namespace QvxICU44 {

using QvxICU::ICUErrorCode;

namespace {

/// Whether the text's length and its exponent are such that ICU may be asked to write all places out. What is no number
/// is left to ICU to refuse.
[[nodiscard]] bool HasPlacesInBounds(std::string const& decimal) noexcept
{
    constexpr long kMost = QvxICU::ICUDecimalFormat::kMaximumDecimalPlaces;
    std::size_t const exponent = decimal.find_first_of("eE");
    // strtol stops at what is no digit and saturates; the sign and the digits of an exponent are the same in all
    // locales.
    long const places = exponent == std::string::npos ? 0 : std::strtol(decimal.c_str() + exponent + 1, nullptr, 10);
    return decimal.size() <= static_cast<std::size_t>(kMost) && places <= kMost - static_cast<long>(decimal.size()) &&
           places >= static_cast<long>(decimal.size()) - kMost;
}

[[nodiscard]] bool IsDecimal(std::string const& decimal, ICUErrorCode& status) noexcept
{
    if (!HasPlacesInBounds(decimal)) {
        Fail(status, ICUErrorCode::NumberArgOutOfBounds);
    }
    return QvxICU::ICU_SUCCESS(status);
}

template<class Number>
[[nodiscard]] icu::Formattable Boxed(Number number, UErrorCode&)
{
    return icu::Formattable(number);
}
[[nodiscard]] icu::Formattable Boxed(icu::StringPiece decimal, UErrorCode& code)
{
    return icu::Formattable(decimal, code);
}

/// Writes a number by rules. ICU chooses the rule for a double beyond 2^54 as if it were 2^54, so large integers go as
/// such. What is beyond 64 bits, and the least integer, ICU hands to the locale's format, which with numbering systems
/// like the Roman one are rules again, and so on until the stack is used up: it is written in digits here.
void WriteByRules(icu::NumberFormat const& rules, icu::Formattable const& number, icu::UnicodeString& to,
                  icu::FieldPosition& position, UErrorCode& code)
{
    double const value = number.getDouble(code);
    if (U_FAILURE(code)) {
        return;
    }
    bool const isInteger = number.getType() != icu::Formattable::kDouble;
    if (!isInteger && !(std::isfinite(value) && std::abs(value) >= 0x1p53)) {
        rules.format(icu::Formattable(value), to, position, code);
    } else if (isInteger ? number.getInt64(code) != INT64_MIN : std::abs(value) < 0x1p63) {
        auto const integer = isInteger ? number.getInt64(code) : static_cast<std::int64_t>(value);
        rules.format(icu::Formattable(integer), to, position, code);
    } else {
        icu::Locale locale = rules.getLocale(ULOC_VALID_LOCALE, code);
        locale.setKeywordValue("numbers", "latn", code);
        std::unique_ptr<icu::NumberFormat> const digits(icu::NumberFormat::createInstance(locale, code));
        if (U_SUCCESS(code)) {
            digits->format(number, to, position, code);
        }
    }
}

/// The number as text. Formats that spell out do not know ICU's shorter way, which takes no Formattable.
template<class Number>
TStringCore Written(icu::NumberFormat& format, icu::DecimalFormat* decimal, Number number, UErrorCode& code)
{
    icu::UnicodeString text;
    if (decimal != nullptr) {
        decimal->format(number, text, nullptr, code);
    } else {
        icu::FieldPosition none(icu::FieldPosition::DONT_CARE);
        WriteByRules(format, Boxed(number, code), text, none, code);
    }
    return Own(text);
}

/// With a field position ICU has no status to report by in its public interface, except through a Formattable.
template<class Number>
void WriteField(icu::NumberFormat& format, icu::DecimalFormat* decimal, Number number, QvxICU::ICUString& appendTo,
                QvxICU::ICUFieldPosition& position, UErrorCode& code)
{
    icu::Formattable const boxed = Boxed(number, code);
    if (decimal != nullptr) {
        format.format(boxed, Icu(appendTo), Icu(position), code);
    } else {
        WriteByRules(format, boxed, Icu(appendTo), Icu(position), code);
    }
}

/// parse(text, position) of as much of a text as ICU reads in reasonable time, `most` units. A number that does not end
/// there is out of bounds.
template<class Parse>
auto ParsedFrom(TStringView text, int most, icu::ParsePosition& position, UErrorCode& code, Parse const& parse)
{
    int const index = position.getIndex();
    int const start = std::clamp(index, 0, text.length());
    TStringView const read = text.left(start + std::min(most, text.length() - start));
    auto parsed = parse(Alias(read), position);
    if (read.length() < text.length() && position.getIndex() == read.length()) {
        code = U_NUMBER_ARG_OUTOFBOUNDS_ERROR;
        position.setIndex(index);
        position.setErrorIndex(read.length());
    }
    return parsed;
}

[[nodiscard]] icu::Formattable ParsedFrom(icu::NumberFormat const& format, TStringView text, int most,
                                          icu::ParsePosition& position, UErrorCode& code)
{
    return ParsedFrom(text, most, position, code, [&format](auto const& units, auto& at) {
        icu::Formattable number;
        format.parse(units, number, at);
        return number;
    });
}

/// The number that a text begins with.
[[nodiscard]] icu::Formattable Parsed(icu::NumberFormat const& format, TStringView text, int most, UErrorCode& code)
{
    icu::Formattable number;
    if (text.length() <= most) {
        format.parse(Alias(text), number, code);
        return number;
    }
    icu::ParsePosition position(0);
    number = ParsedFrom(format, text, most, position, code);
    if (U_SUCCESS(code) && position.getIndex() == 0) {
        code = U_INVALID_FORMAT_ERROR;
    }
    return number;
}

/// ICU counts the digits of a pattern in 16 bits.
void CheckPattern(TStringView pattern, ICUErrorCode& status) noexcept
{
    constexpr int kMost = 10'000;
    if (pattern.length() > kMost) {
        Fail(status, ICUErrorCode::IllegalArgumentError);
    }
}

} // namespace

ICUDecimalFormat44Impl::ICUDecimalFormat44Impl(std::unique_ptr<icu::NumberFormat> format, ErrorCode created)
    : m_format(std::move(format)), m_decimal(dynamic_cast<icu::DecimalFormat*>(m_format.get())), m_created(created)
{
    if (m_format == nullptr) {
        Fail(m_created, ErrorCode::InvalidStateError);
    }
}

std::unique_ptr<QvxICU::ICUDecimalFormat> ICUDecimalFormat44Impl::clone() const
{
    return std::make_unique<ICUDecimalFormat44Impl>(
        std::unique_ptr<icu::NumberFormat>(m_format == nullptr ? nullptr : m_format->clone()), m_created);
}

bool ICUDecimalFormat44Impl::operator==(ICUDecimalFormat const& other) const
{
    icu::NumberFormat const* const native = Icu(other);
    return m_format == nullptr || native == nullptr ? m_format.get() == native : m_format->operator==(*native);
}

TStringCore ICUDecimalFormat44Impl::formatDouble(double number, ErrorCode& status) const
{
    return With(status, [&](auto& format, auto& code) { return Written(format, m_decimal, number, code); });
}

TStringCore ICUDecimalFormat44Impl::formatInt64(std::int64_t number, ErrorCode& status) const
{
    return With(status, [&](auto& format, auto& code) { return Written(format, m_decimal, number, code); });
}

TStringCore ICUDecimalFormat44Impl::formatDecimal(TStringCore const& decimal, ErrorCode& status) const
{
    std::string const ascii = decimal.toStdString();
    if (!IsDecimal(ascii, status)) {
        return {};
    }
    return With(status, [&](auto& format, auto& code) {
        return Written(format, m_decimal, icu::StringPiece(ascii.data(), static_cast<int>(ascii.size())), code);
    });
}

void ICUDecimalFormat44Impl::formatDouble(double number, QvxICU::ICUString& appendTo,
                                          QvxICU::ICUFieldPosition& position, ErrorCode& status) const
{
    With(status, [&](auto& format, auto& code) { WriteField(format, m_decimal, number, appendTo, position, code); });
}

void ICUDecimalFormat44Impl::formatInt64(std::int64_t number, QvxICU::ICUString& appendTo,
                                         QvxICU::ICUFieldPosition& position, ErrorCode& status) const
{
    With(status, [&](auto& format, auto& code) { WriteField(format, m_decimal, number, appendTo, position, code); });
}

void ICUDecimalFormat44Impl::formatDecimal(TStringCore const& decimal, QvxICU::ICUString& appendTo,
                                           QvxICU::ICUFieldPosition& position, ErrorCode& status) const
{
    std::string const ascii = decimal.toStdString();
    if (!IsDecimal(ascii, status)) {
        return;
    }
    With(status, [&](auto& format, auto& code) {
        WriteField(format, m_decimal, icu::StringPiece(ascii.data(), static_cast<int>(ascii.size())), appendTo,
                   position, code);
    });
}

double ICUDecimalFormat44Impl::parse(TStringView text, ErrorCode& status) const
{
    return With(status,
                [&](auto& format, auto& code) { return Parsed(format, text, MostToParse(), code).getDouble(code); });
}

double ICUDecimalFormat44Impl::parse(TStringView text, QvxICU::ICUParsePosition& position, ErrorCode& status) const
{
    return With(status, [&](auto& format, auto& code) {
        return ParsedFrom(format, text, MostToParse(), Icu(position), code).getDouble(code);
    });
}

std::int64_t ICUDecimalFormat44Impl::parseInt64(TStringView text, ErrorCode& status) const
{
    return With(status,
                [&](auto& format, auto& code) { return Parsed(format, text, MostToParse(), code).getInt64(code); });
}

std::int64_t ICUDecimalFormat44Impl::parseInt64(TStringView text, QvxICU::ICUParsePosition& position,
                                                ErrorCode& status) const
{
    return With(status, [&](auto& format, auto& code) {
        return ParsedFrom(format, text, MostToParse(), Icu(position), code).getInt64(code);
    });
}

TStringCore ICUDecimalFormat44Impl::parseDecimal(TStringView text, ErrorCode& status) const
{
    return With(status, [&](auto& format, auto& code) {
        icu::Formattable number = Parsed(format, text, MostToParse(), code);
        if (U_FAILURE(code)) {
            return TStringCore();
        }
        icu::StringPiece const digits = number.getDecimalNumber(code);
        return TStringCore(digits.data(), digits.size());
    });
}

double ICUDecimalFormat44Impl::parseCurrency(TStringView text, QvxICU::ICUParsePosition& position,
                                             TStringCore& currency, ErrorCode& status) const
{
    currency.clear();
    return With(status, [&](auto& format, auto& code) {
        auto const amount =
            ParsedFrom(text, MostToParse(), Icu(position), code, [&format](auto const& units, auto& at) {
                return std::unique_ptr<icu::CurrencyAmount>(format.parseCurrency(units, at));
            });
        if (amount == nullptr || U_FAILURE(code)) {
            return 0.0;
        }
        currency = amount->getISOCurrency();
        return amount->getNumber().getDouble(code);
    });
}

void ICUDecimalFormat44Impl::applyPattern(TStringCore const& pattern, ErrorCode& status)
{
    CheckPattern(pattern, status);
    WithDecimal(status, [&](auto& format, auto& code) { format.applyPattern(Alias(pattern), code); });
}

void ICUDecimalFormat44Impl::applyPattern(TStringCore const& pattern, QvxICU::ICUParseError& error, ErrorCode& status)
{
    CheckPattern(pattern, status);
    WithDecimal(status, [&](auto& format, auto& code) {
        UParseError where{};
        format.applyPattern(Alias(pattern), where, code);
        Own(where, error);
    });
}

void ICUDecimalFormat44Impl::applyLocalizedPattern(TStringCore const& pattern, ErrorCode& status)
{
    CheckPattern(pattern, status);
    WithDecimal(status, [&](auto& format, auto& code) { format.applyLocalizedPattern(Alias(pattern), code); });
}

void ICUDecimalFormat44Impl::applyLocalizedPattern(TStringCore const& pattern, QvxICU::ICUParseError& error,
                                                   ErrorCode& status)
{
    CheckPattern(pattern, status);
    WithDecimal(status, [&](auto& format, auto& code) {
        UParseError where{};
        format.applyLocalizedPattern(Alias(pattern), where, code);
        Own(where, error);
    });
}

TStringCore ICUDecimalFormat44Impl::Text(icu::UnicodeString& (icu::DecimalFormat::*get)(icu::UnicodeString&)
                                             const) const
{
    return Forward(m_decimal, [get](auto& format) {
        icu::UnicodeString text;
        return Own((format.*get)(text));
    });
}

std::unique_ptr<QvxICU::ICUDecimalFormatSymbols> ICUDecimalFormat44Impl::getDecimalFormatSymbols() const
{
    auto const* const symbols = Forward(m_decimal, [](auto& format) { return format.getDecimalFormatSymbols(); });
    return symbols == nullptr ? nullptr : std::make_unique<ICUDecimalFormatSymbols44Impl>(*symbols);
}

void ICUDecimalFormat44Impl::setDecimalFormatSymbols(QvxICU::ICUDecimalFormatSymbols const& symbols)
{
    Forward(m_decimal, [&symbols](auto& format) { format.setDecimalFormatSymbols(Icu(symbols)); });
}

void ICUDecimalFormat44Impl::adoptDecimalFormatSymbols(std::unique_ptr<QvxICU::ICUDecimalFormatSymbols> symbols)
{
    if (symbols != nullptr) {
        setDecimalFormatSymbols(*symbols);
    }
}

TStringCore ICUDecimalFormat44Impl::getCurrency() const
{
    return Forward(m_format.get(), [](auto& format) { return TStringCore(format.getCurrency()); });
}

void ICUDecimalFormat44Impl::setCurrency(TStringCore const& isoCode, ErrorCode& status)
{
    if (isoCode.length() > 3) { // ICU takes the first three
        Fail(status, ErrorCode::IllegalArgumentError);
    }
    WithDecimal(status, [&](auto& format, auto& code) { format.setCurrency(isoCode.constData(), code); });
}

// ICU's enumeration for C++ lacks the last three modes, and has no room for them: they go through its attributes.
QvxICU::ICURoundingMode ICUDecimalFormat44Impl::getRoundingMode() const
{
    return Forward(m_decimal, [](auto& format) {
        UErrorCode code = U_ZERO_ERROR;
        return static_cast<QvxICU::ICURoundingMode>(format.getAttribute(UNUM_ROUNDING_MODE, code));
    });
}

void ICUDecimalFormat44Impl::setRoundingMode(QvxICU::ICURoundingMode mode, ErrorCode& status)
{
    if (mode < QvxICU::ICURoundingMode::Ceiling || mode > QvxICU::ICURoundingMode::HalfFloor) {
        Fail(status, ErrorCode::IllegalArgumentError);
    }
    WithDecimal(status, [mode](auto& format, auto& code) {
        format.setAttribute(UNUM_ROUNDING_MODE, static_cast<int>(mode), code);
    });
}

double ICUDecimalFormat44Impl::getRoundingIncrement() const
{
    return Forward(m_decimal, [](auto& format) { return format.getRoundingIncrement(); });
}

void ICUDecimalFormat44Impl::setRoundingIncrement(double increment, ErrorCode& status)
{
    if (!(increment >= 0) || std::isinf(increment)) {
        Fail(status, ErrorCode::IllegalArgumentError);
    }
    WithDecimal(status, [increment](auto& format, auto&) { format.setRoundingIncrement(increment); });
}

TStringCore ICUDecimalFormat44Impl::getPadCharacterString() const
{
    return Forward(m_decimal, [](auto& format) { return Own(format.getPadCharacterString()); });
}

void ICUDecimalFormat44Impl::setPadCharacter(TStringCore const& character)
{
    Forward(m_decimal, [&character](auto& format) { format.setPadCharacter(Alias(character)); });
}

QvxICU::ICUDecimalFormat::PadPosition ICUDecimalFormat44Impl::getPadPosition() const
{
    return Forward(m_decimal, [](auto& format) { return static_cast<PadPosition>(format.getPadPosition()); });
}

void ICUDecimalFormat44Impl::setPadPosition(PadPosition position)
{
    if (position >= PadPosition::BeforePrefix && position <= PadPosition::AfterSuffix) {
        Forward(m_decimal, [position](auto& format) {
            format.setPadPosition(static_cast<icu::DecimalFormat::EPadPosition>(position));
        });
    }
}

int ICUDecimalFormat44Impl::getMinimumExponentDigits() const
{
    return Forward(m_decimal, [](auto& format) { return static_cast<int>(format.getMinimumExponentDigits()); });
}

void ICUDecimalFormat44Impl::setMinimumExponentDigits(int digits)
{
    Forward(m_decimal, [digits](auto& format) {
        format.setMinimumExponentDigits(static_cast<int8_t>(std::clamp(digits, 1, SCHAR_MAX)));
    });
}

namespace {

/// ICU's own factory leaves the styles that other classes serve to its C interface.
[[nodiscard]] icu::NumberFormat* MakeFormat(icu::Locale const& locale, QvxICU::ICUNumberFormatStyle style,
                                            UErrorCode& code)
{
    switch (style) {
    case QvxICU::ICUNumberFormatStyle::SpellOut:
        return new icu::RuleBasedNumberFormat(icu::URBNF_SPELLOUT, locale, code);
    case QvxICU::ICUNumberFormatStyle::Ordinal:
        return new icu::RuleBasedNumberFormat(icu::URBNF_ORDINAL, locale, code);
    case QvxICU::ICUNumberFormatStyle::Duration:
        return new icu::RuleBasedNumberFormat(icu::URBNF_DURATION, locale, code);
    case QvxICU::ICUNumberFormatStyle::DecimalCompactShort:
        return icu::CompactDecimalFormat::createInstance(locale, UNUM_SHORT, code);
    case QvxICU::ICUNumberFormatStyle::DecimalCompactLong:
        return icu::CompactDecimalFormat::createInstance(locale, UNUM_LONG, code);
    default:
        if (style < QvxICU::ICUNumberFormatStyle::PatternDecimal ||
            style > QvxICU::ICUNumberFormatStyle::CurrencyStandard) {
            code = U_ILLEGAL_ARGUMENT_ERROR;
        }
        return U_FAILURE(code)
                   ? nullptr
                   : icu::NumberFormat::createInstance(locale, static_cast<UNumberFormatStyle>(style), code);
    }
}

} // namespace
} // namespace QvxICU44

namespace QvxICU {

using QvxICU44::ICUDecimalFormat44Impl;

ICUDecimalFormat::~ICUDecimalFormat() = default;

std::unique_ptr<ICUDecimalFormat> ICUDecimalFormat::createInstance(ICULocale const& locale)
{
    return createInstance(locale, ICUNumberFormatStyle::Decimal);
}

std::unique_ptr<ICUDecimalFormat> ICUDecimalFormat::createCurrencyInstance(ICULocale const& locale)
{
    return createInstance(locale, ICUNumberFormatStyle::Currency);
}

std::unique_ptr<ICUDecimalFormat> ICUDecimalFormat::createInstance(ICULocale const& locale, ICUNumberFormatStyle style)
{
    UErrorCode code = U_ZERO_ERROR;
    std::unique_ptr<icu::NumberFormat> format(QvxICU44::MakeFormat(QvxICU44::Icu(locale), style, code));
    auto const status = static_cast<ICUErrorCode>(code);
    return std::make_unique<ICUDecimalFormat44Impl>(QvxICU44::Made(format.release(), status), status);
}

std::unique_ptr<ICUDecimalFormat> ICUDecimalFormat::createInstance(TStringCore const& pattern,
                                                                   ICUDecimalFormatSymbols const& symbols,
                                                                   ICUErrorCode& status)
{
    std::unique_ptr<icu::NumberFormat> format;
    QvxICU44::CheckPattern(pattern, status);
    if (ICU_SUCCESS(status)) {
        QvxICU44::Status code(status);
        format = std::make_unique<icu::DecimalFormat>(QvxICU44::Alias(pattern), QvxICU44::Icu(symbols), code);
    }
    return std::make_unique<ICUDecimalFormat44Impl>(QvxICU44::Made(format.release(), status), status);
}

} // namespace QvxICU
