#pragma once
// The ICU number formats and symbols behind the wrappers.

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <utility>

#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>
#include <unicode/numfmt.h>

#include <qvxsys/ICUDecimalFormat.h>
#include <qvxsys/ICUDecimalFormatSymbols.h>

#include "IcuObject.h"

namespace QvxICU44 {

[[nodiscard]] inline icu::DecimalFormatSymbols const& Icu(QvxICU::ICUDecimalFormatSymbols const& symbols) noexcept
{
    return *static_cast<icu::DecimalFormatSymbols*>(const_cast<QvxICU::ICUDecimalFormatSymbols&>(symbols).Native());
}

/// Null for a format that could not be made.
[[nodiscard]] inline icu::NumberFormat const* Icu(QvxICU::ICUDecimalFormat const& format) noexcept
{
    return static_cast<icu::NumberFormat*>(const_cast<QvxICU::ICUDecimalFormat&>(format).Native());
}

class ICUDecimalFormatSymbols44Impl final : public QvxICU::ICUDecimalFormatSymbols
{
public:
    explicit ICUDecimalFormatSymbols44Impl(icu::DecimalFormatSymbols const& symbols) : m_symbols(symbols) {}

    [[nodiscard]] std::unique_ptr<ICUDecimalFormatSymbols> clone() const override
    {
        return std::make_unique<ICUDecimalFormatSymbols44Impl>(m_symbols);
    }
    [[nodiscard]] bool operator==(ICUDecimalFormatSymbols const& other) const override
    {
        return m_symbols == Icu(other);
    }
    [[nodiscard]] TStringCore getSymbol(QvxICU::ICUNumberFormatSymbol symbol) const override;
    void setSymbol(QvxICU::ICUNumberFormatSymbol symbol, TStringCore const& value, bool propagateDigits) override;
    [[nodiscard]] TStringCore getDigit(int digit) const override;
    [[nodiscard]] TStringCore getPatternForCurrencySpacing(QvxICU::ICUCurrencySpacing type, bool beforeCurrency,
                                                           QvxICU::ICUErrorCode& status) const override;
    void setPatternForCurrencySpacing(QvxICU::ICUCurrencySpacing type, bool beforeCurrency, TStringCore const& pattern,
                                      QvxICU::ICUErrorCode& status) override;
    [[nodiscard]] std::unique_ptr<QvxICU::ICULocale> getLocale() const override;
    [[nodiscard]] std::unique_ptr<QvxICU::ICULocale> getLocale(QvxICU::ICULocDataLocaleType type,
                                                               QvxICU::ICUErrorCode& status) const override;
    [[nodiscard]] void* Native() noexcept override { return &m_symbols; }

private:
    icu::DecimalFormatSymbols m_symbols;
};

class ICUDecimalFormat44Impl final : public QvxICU::ICUDecimalFormat
{
public:
    using ErrorCode = QvxICU::ICUErrorCode;

    /// `created` becomes the failure to report where there is no format; without one it is InvalidStateError.
    ICUDecimalFormat44Impl(std::unique_ptr<icu::NumberFormat> format, ErrorCode created);

    [[nodiscard]] std::unique_ptr<ICUDecimalFormat> clone() const override;
    [[nodiscard]] ErrorCode getCreationStatus() const noexcept override { return m_created; }
    [[nodiscard]] bool operator==(ICUDecimalFormat const& other) const override;

    [[nodiscard]] TStringCore formatDecimal(TStringCore const& decimal, ErrorCode& status) const override;
    void formatDecimal(TStringCore const& decimal, QvxICU::ICUString& appendTo, QvxICU::ICUFieldPosition& position,
                       ErrorCode& status) const override;
    [[nodiscard]] TStringCore formatDouble(double number, ErrorCode& status) const override;
    void formatDouble(double number, QvxICU::ICUString& appendTo, QvxICU::ICUFieldPosition& position,
                      ErrorCode& status) const override;
    [[nodiscard]] TStringCore formatInt64(std::int64_t number, ErrorCode& status) const override;
    void formatInt64(std::int64_t number, QvxICU::ICUString& appendTo, QvxICU::ICUFieldPosition& position,
                     ErrorCode& status) const override;

    [[nodiscard]] double parse(TStringView text, ErrorCode& status) const override;
    [[nodiscard]] double parse(TStringView text, QvxICU::ICUParsePosition& position, ErrorCode& status) const override;
    [[nodiscard]] std::int64_t parseInt64(TStringView text, ErrorCode& status) const override;
    [[nodiscard]] std::int64_t parseInt64(TStringView text, QvxICU::ICUParsePosition& position,
                                          ErrorCode& status) const override;
    [[nodiscard]] TStringCore parseDecimal(TStringView text, ErrorCode& status) const override;
    [[nodiscard]] double parseCurrency(TStringView text, QvxICU::ICUParsePosition& position, TStringCore& currency,
                                       ErrorCode& status) const override;

    void applyPattern(TStringCore const& pattern, ErrorCode& status) override;
    void applyPattern(TStringCore const& pattern, QvxICU::ICUParseError& error, ErrorCode& status) override;
    void applyLocalizedPattern(TStringCore const& pattern, ErrorCode& status) override;
    void applyLocalizedPattern(TStringCore const& pattern, QvxICU::ICUParseError& error, ErrorCode& status) override;
    [[nodiscard]] TStringCore toPattern() const override { return Text(&icu::DecimalFormat::toPattern); }
    [[nodiscard]] TStringCore toLocalizedPattern() const override
    {
        return Text(&icu::DecimalFormat::toLocalizedPattern);
    }
    [[nodiscard]] std::unique_ptr<QvxICU::ICUDecimalFormatSymbols> getDecimalFormatSymbols() const override;
    void setDecimalFormatSymbols(QvxICU::ICUDecimalFormatSymbols const& symbols) override;
    void adoptDecimalFormatSymbols(std::unique_ptr<QvxICU::ICUDecimalFormatSymbols> symbols) override;
    [[nodiscard]] TStringCore getCurrency() const override;
    void setCurrency(TStringCore const& isoCode, ErrorCode& status) override;
    [[nodiscard]] QvxICU::ICURoundingMode getRoundingMode() const override;
    void setRoundingMode(QvxICU::ICURoundingMode mode, ErrorCode& status) override;
    [[nodiscard]] double getRoundingIncrement() const override;
    void setRoundingIncrement(double increment, ErrorCode& status) override;
    [[nodiscard]] TStringCore getPadCharacterString() const override;
    void setPadCharacter(TStringCore const& character) override;
    [[nodiscard]] PadPosition getPadPosition() const override;
    void setPadPosition(PadPosition position) override;

// What ICU's format has a getter and a setter of, that cannot fail.
#define QVX_AFFIX(name)                                                                                                \
    [[nodiscard]] TStringCore get##name() const override                                                               \
    {                                                                                                                  \
        return Text(&icu::DecimalFormat::get##name);                                                                   \
    }                                                                                                                  \
    void set##name(TStringCore const& text) override                                                                   \
    {                                                                                                                  \
        Forward(m_decimal, [&text](auto& format) { format.set##name(Alias(text)); });                                  \
    }
    QVX_AFFIX(PositivePrefix)
    QVX_AFFIX(NegativePrefix)
    QVX_AFFIX(PositiveSuffix)
    QVX_AFFIX(NegativeSuffix)
#undef QVX_AFFIX

#define QVX_SWITCH(getter, setter)                                                                                     \
    [[nodiscard]] bool getter() const override                                                                         \
    {                                                                                                                  \
        return Forward(m_decimal, [](auto& format) { return format.getter() != 0; });                                  \
    }                                                                                                                  \
    void setter(bool on) override                                                                                      \
    {                                                                                                                  \
        Forward(m_decimal, [on](auto& format) { format.setter(on); });                                                 \
    }
    QVX_SWITCH(isLenient, setLenient)
    QVX_SWITCH(isParseIntegerOnly, setParseIntegerOnly)
    QVX_SWITCH(isDecimalPatternMatchRequired, setDecimalPatternMatchRequired)
    QVX_SWITCH(isParseNoExponent, setParseNoExponent)
    QVX_SWITCH(isParseCaseSensitive, setParseCaseSensitive)
    QVX_SWITCH(isSignAlwaysShown, setSignAlwaysShown)
    QVX_SWITCH(areSignificantDigitsUsed, setSignificantDigitsUsed)
    QVX_SWITCH(isFormatFailIfMoreThanMaxDigits, setFormatFailIfMoreThanMaxDigits)
    QVX_SWITCH(isGroupingUsed, setGroupingUsed)
    QVX_SWITCH(isDecimalSeparatorAlwaysShown, setDecimalSeparatorAlwaysShown)
    QVX_SWITCH(isScientificNotation, setScientificNotation)
    QVX_SWITCH(isExponentSignAlwaysShown, setExponentSignAlwaysShown)
#undef QVX_SWITCH

// Numbers are cut to what ICU can make sense of: beyond that it takes them for something else, or for ever.
#define QVX_COUNT(name, least, most)                                                                                   \
    [[nodiscard]] int get##name() const override                                                                       \
    {                                                                                                                  \
        return Forward(m_decimal, [](auto& format) { return static_cast<int>(format.get##name()); });                  \
    }                                                                                                                  \
    void set##name(int number) override                                                                                \
    {                                                                                                                  \
        Forward(m_decimal, [number](auto& format) { format.set##name(std::clamp(number, least, most)); });             \
    }
    QVX_COUNT(MinimumIntegerDigits, 0, kMost)
    QVX_COUNT(MaximumIntegerDigits, 0, INT_MAX)
    QVX_COUNT(MinimumFractionDigits, 0, kMost)
    QVX_COUNT(MaximumFractionDigits, 0, kMost)
    QVX_COUNT(MinimumSignificantDigits, 0, kMost)
    QVX_COUNT(MaximumSignificantDigits, 0, kMost)
    QVX_COUNT(GroupingSize, 0, kMost)
    QVX_COUNT(SecondaryGroupingSize, 0, kMost)
    QVX_COUNT(MinimumGroupingDigits, 0, kMost)
    QVX_COUNT(Multiplier, INT_MIN, INT_MAX)
    QVX_COUNT(MultiplierScale, -kMost, kMost)
    QVX_COUNT(FormatWidth, 0, kMost)
#undef QVX_COUNT
    [[nodiscard]] int getMinimumExponentDigits() const override;
    void setMinimumExponentDigits(int digits) override;

    [[nodiscard]] void* Native() noexcept override
    {
        return m_format.get();
    }

private:
    static constexpr int kMost = 999;

    [[nodiscard]] int MostToParse() const noexcept
    {
        return m_decimal != nullptr ? kMaximumDecimalPlaces : 2'000;
    }

    /// call(format, code), see Forward; a missing format reports how its making went.
    template<class Call>
    auto With(ErrorCode& status, Call const& call) const
    {
        if (m_format == nullptr) {
            Fail(status, m_created);
        }
        return Forward(m_format.get(), status, call);
    }
    /// The same for what decimal formats only have.
    template<class Call>
    auto WithDecimal(ErrorCode& status, Call const& call) const
    {
        if (m_decimal == nullptr) {
            Fail(status, m_format == nullptr ? m_created : ErrorCode::UnsupportedError);
        }
        return Forward(m_decimal, status, call);
    }

    [[nodiscard]] TStringCore Text(icu::UnicodeString& (icu::DecimalFormat::*get)(icu::UnicodeString&) const) const;

    std::unique_ptr<icu::NumberFormat> m_format;
    icu::DecimalFormat* m_decimal; ///< the same, if it is one
    ErrorCode m_created;
};

} // namespace QvxICU44
