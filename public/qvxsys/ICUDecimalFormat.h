#pragma once
// Numbers, percentages and amounts of money as a locale writes them, both ways.
//
//     auto const german = QvxICU::ICULocale::createFromName("de_DE");
//     auto const format = QvxICU::ICUDecimalFormat::createInstance(*german);
//     format->setMaximumFractionDigits(2);
//     TStringCore const text = format->format(1234567.891);          // "1.234.567,89"
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     double const number = format->parse(u"1.234,5", status);       // 1234.5
//
//     auto const money = QvxICU::ICUDecimalFormat::createCurrencyInstance(*german);
//     money->setCurrency(u"JPY", status);
//     TStringCore const price = money->format(1500);                 // "1.500 ¥", the space being U+00A0
//
// Rounding is half to even unless set otherwise, to three fraction digits in most locales' plain numbers: formatting is
// for people, TStringCore::number for machines. Doubles are rounded by their shortest decimal digits: 0.125 to two
// digits is 0.12, and 1.005 counts as 1.005, though the double lies below it.
//
// A format that could not be made (getCreationStatus) is an object all the same. Its operations with a status report
// that status, those without do nothing and give empty texts, zero and false. A format that spells numbers out
// (SpellOut, Ordinal, Duration, or a locale whose digits are no decimal ones: "en@numbers=roman") formats and parses,
// but has nothing to set: there the operations on patterns, symbols and digits report UnsupportedError or do nothing.
// Numbers beyond 64 bits it writes in digits.

#include <concepts>
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>

#include <qvxsys/ICUDecimalFormatSymbols.h>
#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUString.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>
#include <qvxsys/TextArguments.h>
#include <qvxsys/WideText.h>

namespace QvxICU {

class ICUFieldPosition;
class ICUParsePosition;

/// What ICUDecimalFormat::format takes: integers of up to 64 bits, float and double; no characters, no bool.
template<class N>
concept ICUNumber = (std::integral<N> && sizeof(N) <= 8 && !std::same_as<N, bool> && !TCType::Character<N>) ||
                    std::same_as<N, float> || std::same_as<N, double>;

/// May be used from several threads at once as long as none of them changes it. Formatting a number costs about 0.1 to
/// 1 microsecond, making a format about a hundred times that: keep it.
class QVXSYS_API ICUDecimalFormat
{
public:
    /// Where a number shorter than the format's width is padded.
    enum class PadPosition : int { BeforePrefix = 0, AfterPrefix = 1, BeforeSuffix = 2, AfterSuffix = 3 };

    /// @name Making
    /// @{
    /// Plain numbers of the locale.
    [[nodiscard]] static std::unique_ptr<ICUDecimalFormat> createInstance(ICULocale const& locale);
    /// Amounts of money: in the currency of the locale's country until setCurrency.
    [[nodiscard]] static std::unique_ptr<ICUDecimalFormat> createCurrencyInstance(ICULocale const& locale);
    /// Percent, Scientific, SpellOut, CurrencyAccounting, DecimalCompactShort... The styles that want a pattern or
    /// rules fail with UnsupportedError, values beyond the enumeration with IllegalArgumentError.
    [[nodiscard]] static std::unique_ptr<ICUDecimalFormat> createInstance(ICULocale const& locale,
                                                                          ICUNumberFormatStyle style);
    /// From a pattern ("#,##0.00;(#)") and symbols. A bad pattern leaves ICU's status.
    [[nodiscard]] static std::unique_ptr<ICUDecimalFormat>
    createInstance(TStringCore const& pattern, ICUDecimalFormatSymbols const& symbols, ICUErrorCode& status);

    virtual ~ICUDecimalFormat();

    /// A failed format's clone is failed, too.
    [[nodiscard]] virtual std::unique_ptr<ICUDecimalFormat> clone() const = 0;
    /// How the making went: a warning (UsingDefaultWarning for an unknown locale) or a failure. Stays as it is.
    [[nodiscard]] virtual ICUErrorCode getCreationStatus() const noexcept = 0;
    /// Whether both formats write and read everything alike.
    [[nodiscard]] virtual bool operator==(ICUDecimalFormat const& other) const = 0;
    /// @}

    /// @name Formatting
    /// @{
    /// Any integer, exactly, or a double. Empty text on failure: FormatInexactError (rounding mode Unnecessary),
    /// IllegalArgumentError (setFormatFailIfMoreThanMaxDigits) or the creation status.
    template<ICUNumber N>
    [[nodiscard]] TStringCore format(N number, ICUErrorCode& status) const
    {
        if constexpr (std::is_floating_point_v<N>) {
            return formatDouble(number, status);
        } else if (FitsInt64(number)) {
            return formatInt64(static_cast<std::int64_t>(number), status);
        } else {
            return formatDecimal(TStringCore::number(static_cast<unsigned long long>(number)), status);
        }
    }
    template<ICUNumber N>
    [[nodiscard]] TStringCore format(N number) const
    {
        ICUErrorCode status = ICUErrorCode::ZeroError;
        return format(number, status);
    }
    /// Appends the text, and tells where in the whole string the field that `position` asks for has come to lie.
    template<ICUNumber N>
    void format(N number, ICUString& appendTo, ICUFieldPosition& position, ICUErrorCode& status) const
    {
        if constexpr (std::is_floating_point_v<N>) {
            formatDouble(number, appendTo, position, status);
        } else if (FitsInt64(number)) {
            formatInt64(static_cast<std::int64_t>(number), appendTo, position, status);
        } else {
            formatDecimal(TStringCore::number(static_cast<unsigned long long>(number)), appendTo, position, status);
        }
    }
    /// A decimal number as text ("-12345678901234567890.125", "1e400"), with all its digits. DecimalNumberSyntaxError
    /// for a text that is none, NumberArgOutOfBounds for one that needs more than kMaximumDecimalPlaces before or
    /// behind its point.
    [[nodiscard]] virtual TStringCore formatDecimal(TStringCore const& decimal, ICUErrorCode& status) const = 0;
    virtual void formatDecimal(TStringCore const& decimal, ICUString& appendTo, ICUFieldPosition& position,
                               ICUErrorCode& status) const = 0;
    /// The most places on either side of the point that formatDecimal writes: more would only be a way to use up
    /// memory.
    QVXSYS_API_CONSTANT static constexpr int kMaximumDecimalPlaces = 100'000;

    /// What format does with each kind of number.
    [[nodiscard]] virtual TStringCore formatDouble(double number, ICUErrorCode& status) const = 0;
    virtual void formatDouble(double number, ICUString& appendTo, ICUFieldPosition& position,
                              ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual TStringCore formatInt64(std::int64_t number, ICUErrorCode& status) const = 0;
    virtual void formatInt64(std::int64_t number, ICUString& appendTo, ICUFieldPosition& position,
                             ICUErrorCode& status) const = 0;
    /// @}

    /// @name Parsing
    /// The text is read in place. Without a position it is read from its start, and what follows the number is ignored;
    /// InvalidFormatError where it begins with none, and 0 then. With a position it is read from there, and the
    /// position moves behind the number; where there is none, it stays, its error index says where, and the status is
    /// not touched. Wide text is taken, too. NumberArgOutOfBounds, 0 and the position as it was for a number of more
    /// than kMaximumDecimalPlaces units, or more than two thousand spelled out: ICU's time grows with their square.
    /// @{
    [[nodiscard]] virtual double parse(TStringView text, ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual double parse(TStringView text, ICUParsePosition& position, ICUErrorCode& status) const = 0;
    /// The fraction is cut off. A number that does not fit gives the nearest that does, with InvalidFormatError.
    [[nodiscard]] virtual std::int64_t parseInt64(TStringView text, ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual std::int64_t parseInt64(TStringView text, ICUParsePosition& position,
                                                  ICUErrorCode& status) const = 0;
    /// All digits of the number as ASCII ("12345678901234567890.125", "1.2E+30", "Infinity", "NaN").
    [[nodiscard]] virtual TStringCore parseDecimal(TStringView text, ICUErrorCode& status) const = 0;
    /// An amount with a currency's sign, name or code anywhere the locale allows; its ISO code goes to `currency`,
    /// which is emptied when there is no amount.
    [[nodiscard]] virtual double parseCurrency(TStringView text, ICUParsePosition& position, TStringCore& currency,
                                               ICUErrorCode& status) const = 0;
    template<qvxsys::detail::WideTextLike W>
    [[nodiscard]] double parse(W const& text, ICUErrorCode& status) const
    {
        return parse(TStringCore(text).view(), status);
    }
    template<qvxsys::detail::WideTextLike W>
    [[nodiscard]] std::int64_t parseInt64(W const& text, ICUErrorCode& status) const
    {
        return parseInt64(TStringCore(text).view(), status);
    }

    /// Lenient parsing takes groups of any size and spaces before the number; off at first.
    [[nodiscard]] virtual bool isLenient() const = 0;
    virtual void setLenient(bool lenient) = 0;
    /// Stops at the decimal separator.
    [[nodiscard]] virtual bool isParseIntegerOnly() const = 0;
    virtual void setParseIntegerOnly(bool integerOnly) = 0;
    /// Takes a decimal separator only when the pattern has one, and wants it then.
    [[nodiscard]] virtual bool isDecimalPatternMatchRequired() const = 0;
    virtual void setDecimalPatternMatchRequired(bool required) = 0;
    [[nodiscard]] virtual bool isParseNoExponent() const = 0;
    virtual void setParseNoExponent(bool noExponent) = 0;
    [[nodiscard]] virtual bool isParseCaseSensitive() const = 0;
    virtual void setParseCaseSensitive(bool sensitive) = 0;
    /// @}

    /// @name Patterns and symbols
    /// @{
    /// A bad pattern leaves the format as it was, with ICU's status (UnquotedSpecial, PatternSyntaxError,
    /// MalformedExponentialPattern...); IllegalArgumentError for one of more than 10,000 units.
    virtual void applyPattern(TStringCore const& pattern, ICUErrorCode& status) = 0;
    /// Also tells where in the pattern the error is.
    virtual void applyPattern(TStringCore const& pattern, ICUParseError& error, ICUErrorCode& status) = 0;
    /// With the locale's own symbols in the pattern ("#.##0,00").
    virtual void applyLocalizedPattern(TStringCore const& pattern, ICUErrorCode& status) = 0;
    virtual void applyLocalizedPattern(TStringCore const& pattern, ICUParseError& error, ICUErrorCode& status) = 0;
    [[nodiscard]] virtual TStringCore toPattern() const = 0;
    [[nodiscard]] virtual TStringCore toLocalizedPattern() const = 0;

    /// A copy of the symbols; null where there are none.
    [[nodiscard]] virtual std::unique_ptr<ICUDecimalFormatSymbols> getDecimalFormatSymbols() const = 0;
    virtual void setDecimalFormatSymbols(ICUDecimalFormatSymbols const& symbols) = 0;
    /// As set, and the wrapper ends; null changes nothing.
    virtual void adoptDecimalFormatSymbols(std::unique_ptr<ICUDecimalFormatSymbols> symbols) = 0;

    /// What stands before and behind numbers, as they are written ("-", "%").
    [[nodiscard]] virtual TStringCore getPositivePrefix() const = 0;
    virtual void setPositivePrefix(TStringCore const& text) = 0;
    [[nodiscard]] virtual TStringCore getNegativePrefix() const = 0;
    virtual void setNegativePrefix(TStringCore const& text) = 0;
    [[nodiscard]] virtual TStringCore getPositiveSuffix() const = 0;
    virtual void setPositiveSuffix(TStringCore const& text) = 0;
    [[nodiscard]] virtual TStringCore getNegativeSuffix() const = 0;
    virtual void setNegativeSuffix(TStringCore const& text) = 0;
    [[nodiscard]] virtual bool isSignAlwaysShown() const = 0;
    virtual void setSignAlwaysShown(bool shown) = 0;

    /// The ISO 4217 code of three letters; empty where the format has none.
    [[nodiscard]] virtual TStringCore getCurrency() const = 0;
    /// Also sets that currency's digits and rounding. IllegalArgumentError for a text that is not three letters long,
    /// InvariantConversionError for letters other than ASCII's. Empty text is no currency: "XXX".
    virtual void setCurrency(TStringCore const& isoCode, ICUErrorCode& status) = 0;
    /// @}

    /// @name Digits
    /// A minimum above the maximum moves the maximum, and the other way round. What exceeds 999 counts as 999, a
    /// negative number as not set.
    /// @{
    [[nodiscard]] virtual int getMinimumIntegerDigits() const = 0;
    virtual void setMinimumIntegerDigits(int digits) = 0;
    /// Digits in front of the last `digits` are left out: 1999 with two is "99".
    [[nodiscard]] virtual int getMaximumIntegerDigits() const = 0;
    virtual void setMaximumIntegerDigits(int digits) = 0;
    [[nodiscard]] virtual int getMinimumFractionDigits() const = 0;
    virtual void setMinimumFractionDigits(int digits) = 0;
    [[nodiscard]] virtual int getMaximumFractionDigits() const = 0;
    virtual void setMaximumFractionDigits(int digits) = 0;
    /// Significant digits, where used, take the place of integer and fraction digits.
    [[nodiscard]] virtual bool areSignificantDigitsUsed() const = 0;
    virtual void setSignificantDigitsUsed(bool used) = 0;
    [[nodiscard]] virtual int getMinimumSignificantDigits() const = 0;
    virtual void setMinimumSignificantDigits(int digits) = 0;
    [[nodiscard]] virtual int getMaximumSignificantDigits() const = 0;
    virtual void setMaximumSignificantDigits(int digits) = 0;
    /// Fails rather than leave out digits in front.
    [[nodiscard]] virtual bool isFormatFailIfMoreThanMaxDigits() const = 0;
    virtual void setFormatFailIfMoreThanMaxDigits(bool fail) = 0;

    [[nodiscard]] virtual bool isGroupingUsed() const = 0;
    virtual void setGroupingUsed(bool used) = 0;
    [[nodiscard]] virtual int getGroupingSize() const = 0;
    virtual void setGroupingSize(int digits) = 0;
    /// The size of the groups before the last one (2 in India); 0 for as the last one.
    [[nodiscard]] virtual int getSecondaryGroupingSize() const = 0;
    virtual void setSecondaryGroupingSize(int digits) = 0;
    /// The digits that must stand before the first separator: with 2, "1234" but "12,345".
    [[nodiscard]] virtual int getMinimumGroupingDigits() const = 0;
    virtual void setMinimumGroupingDigits(int digits) = 0;

    [[nodiscard]] virtual bool isDecimalSeparatorAlwaysShown() const = 0;
    virtual void setDecimalSeparatorAlwaysShown(bool shown) = 0;
    [[nodiscard]] virtual bool isScientificNotation() const = 0;
    virtual void setScientificNotation(bool scientific) = 0;
    /// Cut to 1 to 127.
    [[nodiscard]] virtual int getMinimumExponentDigits() const = 0;
    virtual void setMinimumExponentDigits(int digits) = 0;
    [[nodiscard]] virtual bool isExponentSignAlwaysShown() const = 0;
    virtual void setExponentSignAlwaysShown(bool shown) = 0;
    /// @}

    /// @name Scaling, rounding, padding
    /// @{
    /// Numbers are multiplied on the way out and divided on the way in: 100 for percentages. 0 counts as 1.
    [[nodiscard]] virtual int getMultiplier() const = 0;
    virtual void setMultiplier(int multiplier) = 0;
    /// The same as a power of ten, cut to -999 to 999.
    [[nodiscard]] virtual int getMultiplierScale() const = 0;
    virtual void setMultiplierScale(int scale) = 0;
    [[nodiscard]] virtual ICURoundingMode getRoundingMode() const = 0;
    /// IllegalArgumentError for a value beyond the enumeration.
    virtual void setRoundingMode(ICURoundingMode mode, ICUErrorCode& status) = 0;
    /// What numbers are rounded to a multiple of; 0 for the digits shown only.
    [[nodiscard]] virtual double getRoundingIncrement() const = 0;
    /// IllegalArgumentError for a negative increment, infinity and NaN.
    virtual void setRoundingIncrement(double increment, ICUErrorCode& status) = 0;
    /// In code points; 0 for no padding. Cut to 0 to 999.
    [[nodiscard]] virtual int getFormatWidth() const = 0;
    virtual void setFormatWidth(int width) = 0;
    [[nodiscard]] virtual TStringCore getPadCharacterString() const = 0;
    /// The first code point is taken; empty text sets a space.
    virtual void setPadCharacter(TStringCore const& character) = 0;
    [[nodiscard]] virtual PadPosition getPadPosition() const = 0;
    virtual void setPadPosition(PadPosition position) = 0;
    /// @}

    /// For the library's own use: the icu::NumberFormat behind the wrapper, or null.
    [[nodiscard]] virtual void* Native() noexcept = 0;

protected:
    ICUDecimalFormat() = default;
    ICUDecimalFormat(ICUDecimalFormat const&) = default;
    ICUDecimalFormat& operator=(ICUDecimalFormat const&) = default;

private:
    template<class N>
    static constexpr bool FitsInt64(N number) noexcept
    {
        return std::is_signed_v<N> || static_cast<std::uint64_t>(number) <= std::numeric_limits<std::int64_t>::max();
    }
};

} // namespace QvxICU
