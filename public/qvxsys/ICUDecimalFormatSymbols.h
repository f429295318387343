#pragma once
// The symbols that a locale writes numbers with, for a number format of one's own or a changed one.
//
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     auto symbols = QvxICU::ICUDecimalFormatSymbols::createInstance(*locale, status);
//     symbols->setSymbol(QvxICU::ICUNumberFormatSymbol::GroupingSeparator, u"'");
//     format->setDecimalFormatSymbols(*symbols);

#include <memory>

#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>

namespace QvxICU {

/// What stands between a currency's sign and the number, for ICUDecimalFormatSymbols::getPatternForCurrencySpacing.
enum class ICUCurrencySpacing : int {
    CurrencyMatch = 0,    ///< the set that the sign's adjacent character must be in for a text to be inserted
    SurroundingMatch = 1, ///< the set that the number's adjacent character must be in
    Insert = 2,           ///< the text inserted when both are
};

/// May be read from several threads at once, and changed by one.
class QVXSYS_API ICUDecimalFormatSymbols
{
public:
    /// The symbols of the locale; UsingDefaultWarning where it is not known. When ICU reports a failure, they are ICU's
    /// last resort; a failed status is kept, and they are made all the same.
    [[nodiscard]] static std::unique_ptr<ICUDecimalFormatSymbols> createInstance(ICULocale const& locale,
                                                                                 ICUErrorCode& status);

    virtual ~ICUDecimalFormatSymbols();

    /// A copy of its own.
    [[nodiscard]] virtual std::unique_ptr<ICUDecimalFormatSymbols> clone() const = 0;
    /// Whether all symbols are the same, and the locales too.
    [[nodiscard]] virtual bool operator==(ICUDecimalFormatSymbols const& other) const = 0;

    /// DecimalSeparator (0) to OneDigit (18); any other throws QuorvexException "Unknown symbol id.", 0x576B2DAE. The
    /// digits from 2 on are read with getDigit.
    [[nodiscard]] virtual TStringCore getSymbol(ICUNumberFormatSymbol symbol) const = 0;
    /// Range and exception as for getSymbol. A ZeroDigit that is a decimal digit of Unicode's brings the other nine
    /// with it unless propagateDigits is false.
    virtual void setSymbol(ICUNumberFormatSymbol symbol, TStringCore const& value, bool propagateDigits = true) = 0;
    /// What a digit, 0 to 9, is written as; empty for any other number.
    [[nodiscard]] virtual TStringCore getDigit(int digit) const = 0;

    /// For a sign before the number or after it. IllegalArgumentError for a type that is none.
    [[nodiscard]] virtual TStringCore getPatternForCurrencySpacing(ICUCurrencySpacing type, bool beforeCurrency,
                                                                   ICUErrorCode& status) const = 0;
    /// Sets what getPatternForCurrencySpacing gives.
    virtual void setPatternForCurrencySpacing(ICUCurrencySpacing type, bool beforeCurrency, TStringCore const& pattern,
                                              ICUErrorCode& status) = 0;

    /// The locale that was asked for.
    [[nodiscard]] virtual std::unique_ptr<ICULocale> getLocale() const = 0;
    /// The locale that the data come from, or the most specific one that there are data for.
    [[nodiscard]] virtual std::unique_ptr<ICULocale> getLocale(ICULocDataLocaleType type,
                                                               ICUErrorCode& status) const = 0;

    /// For the library's own use: the icu::DecimalFormatSymbols behind the wrapper.
    [[nodiscard]] virtual void* Native() noexcept = 0;

protected:
    ICUDecimalFormatSymbols() = default;
    ICUDecimalFormatSymbols(ICUDecimalFormatSymbols const&) = default;
    ICUDecimalFormatSymbols& operator=(ICUDecimalFormatSymbols const&) = default;
};

} // namespace QvxICU
