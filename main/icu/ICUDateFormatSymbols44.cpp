// Names of dates over ICU.

#include <qvxsys/ICUDateFormatSymbols.h>

#include <memory>
#include <vector>

#include "ICUDateFormatSymbols44Impl.h"

namespace QvxICU44 {

using Symbols = icu::DateFormatSymbols;

namespace {

/// ICU has no more than two contexts, although three are known to callers: for the third it leaves results unset.
[[nodiscard]] bool HasNames(Symbols::DtContextType context) noexcept
{
    return context == Symbols::FORMAT || context == Symbols::STANDALONE;
}

/// As ICU takes lists: one block that it copies.
[[nodiscard]] std::vector<icu::UnicodeString> Copies(std::vector<TStringCore> const& texts)
{
    std::vector<icu::UnicodeString> copies;
    copies.reserve(texts.size());
    for (TStringCore const& text : texts) {
        copies.emplace_back(text.constData(), text.length());
    }
    return copies;
}

/// One name of a locale's; empty if there is none of that index.
[[nodiscard]] TStringCore SymbolName(ICUDateFormatSymbols44Impl::Getter getter, int index, char const* locale,
                                     int context, int width)
{
    auto const dtContext = SymbolContext(context);
    auto const dtWidth = SymbolWidth(width);
    UErrorCode code = U_ZERO_ERROR;
    Symbols const symbols(Icu(*QvxICU::ICULocale::createFromName(locale)), code);
    int32_t count = 0;
    icu::UnicodeString const* const names =
        U_SUCCESS(code) && HasNames(dtContext) ? (symbols.*getter)(count, dtContext, dtWidth) : nullptr;
    return names != nullptr && index >= 0 && index < count ? Own(names[index]) : TStringCore();
}

} // namespace

std::unique_ptr<QvxICU::ICUDateFormatSymbols> ICUDateFormatSymbols44Impl::clone() const
{
    return std::make_unique<ICUDateFormatSymbols44Impl>(m_symbols ? std::make_unique<Symbols>(*m_symbols) : nullptr);
}

ICUDateFormatSymbols44Impl::Texts ICUDateFormatSymbols44Impl::Get(Getter getter, ICUEContext context,
                                                                  ICUEWidth width) const
{
    auto const dtContext = SymbolContext(context);
    auto const dtWidth = SymbolWidth(width);
    if (m_symbols == nullptr || !HasNames(dtContext)) {
        return {};
    }
    int32_t count = 0;
    auto const* const names = (*m_symbols.*getter)(count, dtContext, dtWidth);
    return Own(names, count);
}

void ICUDateFormatSymbols44Impl::Set(Setter setter, Texts const& texts, ICUEContext context, ICUEWidth width)
{
    auto const dtContext = SymbolContext(context);
    auto const dtWidth = SymbolWidth(width);
    if (m_symbols != nullptr && HasNames(dtContext)) {
        auto const copies = Copies(texts);
        (*m_symbols.*setter)(copies.data(), static_cast<int32_t>(copies.size()), dtContext, dtWidth);
    }
}

ICUDateFormatSymbols44Impl::Texts ICUDateFormatSymbols44Impl::getEras(ICUEWidth width) const
{
    auto const dtWidth = SymbolWidth(width);
    return Forward(m_symbols.get(), [dtWidth](Symbols const& symbols) {
        int32_t count = 0;
        auto const* const eras = dtWidth == Symbols::WIDE     ? symbols.getEraNames(count)
                                 : dtWidth == Symbols::NARROW ? symbols.getNarrowEras(count)
                                                              : symbols.getEras(count);
        return Own(eras, count);
    });
}

void ICUDateFormatSymbols44Impl::setEras(Texts const& eras, ICUEWidth width)
{
    auto const dtWidth = SymbolWidth(width);
    auto const setter = dtWidth == Symbols::WIDE          ? &Symbols::setEraNames
                        : dtWidth == Symbols::NARROW      ? &Symbols::setNarrowEras
                        : dtWidth == Symbols::ABBREVIATED ? &Symbols::setEras
                                                          : nullptr;
    if (m_symbols != nullptr && setter != nullptr) {
        auto const copies = Copies(eras);
        (*m_symbols.*setter)(copies.data(), static_cast<int32_t>(copies.size()));
    }
}

ICUDateFormatSymbols44Impl::Texts ICUDateFormatSymbols44Impl::getAmPmStrings() const
{
    return Forward(m_symbols.get(), [](Symbols const& symbols) {
        int32_t count = 0;
        auto const* const amPm = symbols.getAmPmStrings(count);
        return Own(amPm, count);
    });
}

void ICUDateFormatSymbols44Impl::setAmPmStrings(Texts const& amPm)
{
    if (m_symbols != nullptr) {
        auto const copies = Copies(amPm);
        m_symbols->setAmPmStrings(copies.data(), static_cast<int32_t>(copies.size()));
    }
}

TStringCore ICUDateFormatSymbols44Impl::getLocalPatternChars() const
{
    return Forward(m_symbols.get(), [](Symbols const& symbols) {
        icu::UnicodeString letters;
        return Own(symbols.getLocalPatternChars(letters));
    });
}

std::unique_ptr<QvxICU::ICULocale> ICUDateFormatSymbols44Impl::getLocale(QvxICU::ICULocDataLocaleType type,
                                                                         QvxICU::ICUErrorCode& status) const
{
    return Forward(m_symbols.get(), status, [type](Symbols const& symbols, UErrorCode& code) {
        return Own(symbols.getLocale(static_cast<ULocDataLocaleType>(type), code));
    });
}

bool ICUDateFormatSymbols44Impl::operator==(ICUDateFormatSymbols const& other) const
{
    auto const* const to = Icu(other);
    return Forward(m_symbols.get(), [to](Symbols const& symbols) { return to != nullptr && symbols == *to; });
}

} // namespace QvxICU44

namespace QvxICU {

using QvxICU44::ICUDateFormatSymbols44Impl;
using QvxICU44::Status;

ICUDateFormatSymbols::~ICUDateFormatSymbols() = default;

std::unique_ptr<ICUDateFormatSymbols> ICUDateFormatSymbols::createInstance(ICULocale const& locale,
                                                                           ICUErrorCode& status)
{
    return createInstance(locale, nullptr, status);
}

std::unique_ptr<ICUDateFormatSymbols>
ICUDateFormatSymbols::createInstance(ICULocale const& locale, char const* calendarType, ICUErrorCode& status)
{
    auto symbols = std::make_unique<ICUDateFormatSymbols44Impl>();
    if (ICU_SUCCESS(status)) {
        auto made = std::make_unique<icu::DateFormatSymbols>(QvxICU44::Icu(locale), calendarType, Status(status));
        symbols->Adopt(QvxICU44::Made(made.release(), status));
    }
    return symbols;
}

TStringCore ICUDateFormatSymbols::getMonth(int index, char const* locale, ICUEContext context, ICUEWidth width)
{
    return QvxICU44::SymbolName(&icu::DateFormatSymbols::getMonths, index, locale, context, width);
}

TStringCore ICUDateFormatSymbols::getQuarter(int index, char const* locale, ICUEContext context, ICUEWidth width)
{
    return QvxICU44::SymbolName(&icu::DateFormatSymbols::getQuarters, index, locale, context, width);
}

TStringCore ICUDateFormatSymbols::getWeekday(int index, char const* locale, ICUEContext context, ICUEWidth width)
{
    return QvxICU44::SymbolName(&icu::DateFormatSymbols::getWeekdays, QvxICU44::DayOfWeek(index), locale, context,
                                width);
}

} // namespace QvxICU
