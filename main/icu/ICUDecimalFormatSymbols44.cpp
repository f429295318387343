// Symbols of numbers over ICU.

#include <qvxsys/ICUDecimalFormatSymbols.h>

#include <memory>
#include <utility>

#include "ICUDecimalFormat44Impl.h"
#include "IcuMappings.h"
#include "IcuObject.h"

namespace QvxICU44 {

using QvxICU::ICUErrorCode;

TStringCore ICUDecimalFormatSymbols44Impl::getSymbol(QvxICU::ICUNumberFormatSymbol symbol) const
{
    return Own(m_symbols.getConstSymbol(NumberSymbol(static_cast<int>(symbol))));
}

void ICUDecimalFormatSymbols44Impl::setSymbol(QvxICU::ICUNumberFormatSymbol symbol, TStringCore const& value,
                                              bool propagateDigits)
{
    m_symbols.setSymbol(NumberSymbol(static_cast<int>(symbol)), Alias(value), propagateDigits);
}

TStringCore ICUDecimalFormatSymbols44Impl::getDigit(int digit) const
{
    if (digit < 0 || digit > 9) {
        return {};
    }
    int const symbol = digit == 0 ? static_cast<int>(icu::DecimalFormatSymbols::kZeroDigitSymbol)
                                  : icu::DecimalFormatSymbols::kOneDigitSymbol + digit - 1;
    return Own(m_symbols.getConstSymbol(static_cast<icu::DecimalFormatSymbols::ENumberFormatSymbol>(symbol)));
}

namespace {

/// ICU looks into its table without asking.
[[nodiscard]] bool IsSpacing(QvxICU::ICUCurrencySpacing type, ICUErrorCode& status) noexcept
{
    int const value = static_cast<int>(type);
    if (value < 0 || value >= UNUM_CURRENCY_SPACING_COUNT) {
        Fail(status, ICUErrorCode::IllegalArgumentError);
    }
    return QvxICU::ICU_SUCCESS(status);
}

} // namespace

TStringCore ICUDecimalFormatSymbols44Impl::getPatternForCurrencySpacing(QvxICU::ICUCurrencySpacing type,
                                                                        bool beforeCurrency, ICUErrorCode& status) const
{
    if (!IsSpacing(type, status)) {
        return {};
    }
    Status code(status);
    return Own(m_symbols.getPatternForCurrencySpacing(static_cast<UCurrencySpacing>(type), beforeCurrency, code));
}

void ICUDecimalFormatSymbols44Impl::setPatternForCurrencySpacing(QvxICU::ICUCurrencySpacing type, bool beforeCurrency,
                                                                 TStringCore const& pattern, ICUErrorCode& status)
{
    if (IsSpacing(type, status)) {
        m_symbols.setPatternForCurrencySpacing(static_cast<UCurrencySpacing>(type), beforeCurrency, Alias(pattern));
    }
}

std::unique_ptr<QvxICU::ICULocale> ICUDecimalFormatSymbols44Impl::getLocale() const
{
    return Own(m_symbols.getLocale());
}

std::unique_ptr<QvxICU::ICULocale> ICUDecimalFormatSymbols44Impl::getLocale(QvxICU::ICULocDataLocaleType type,
                                                                            ICUErrorCode& status) const
{
    Status code(status);
    return Own(m_symbols.getLocale(static_cast<ULocDataLocaleType>(type), code));
}

} // namespace QvxICU44

namespace QvxICU {

ICUDecimalFormatSymbols::~ICUDecimalFormatSymbols() = default;

std::unique_ptr<ICUDecimalFormatSymbols> ICUDecimalFormatSymbols::createInstance(ICULocale const& locale,
                                                                                 ICUErrorCode& status)
{
    // With a failed status ICU leaves members unset that it reads later.
    UErrorCode code = ICU_FAILURE(status) ? U_ZERO_ERROR : static_cast<UErrorCode>(status);
    auto symbols = std::make_unique<QvxICU44::ICUDecimalFormatSymbols44Impl>(
        icu::DecimalFormatSymbols(QvxICU44::Icu(locale), code));
    if (ICU_SUCCESS(status)) {
        status = static_cast<ICUErrorCode>(code);
    }
    return symbols;
}

} // namespace QvxICU
