#pragma once
// The ICU names of dates behind the wrapper.

#include <memory>
#include <utility>
#include <vector>

#include <unicode/dtfmtsym.h>

#include <qvxsys/ICUDateFormatSymbols.h>

#include "IcuMappings.h"
#include "IcuObject.h"

namespace QvxICU44 {

[[nodiscard]] inline icu::DateFormatSymbols const* Icu(QvxICU::ICUDateFormatSymbols const& symbols) noexcept
{
    return static_cast<icu::DateFormatSymbols const*>(symbols.Native());
}

class ICUDateFormatSymbols44Impl final : public QvxICU::ICUDateFormatSymbols
{
public:
    using Texts = std::vector<TStringCore>;
    /// ICU's lists by context and width.
    using Getter = icu::UnicodeString const* (icu::DateFormatSymbols::*)(int32_t&,
                                                                         icu::DateFormatSymbols::DtContextType,
                                                                         icu::DateFormatSymbols::DtWidthType) const;
    using Setter = void (icu::DateFormatSymbols::*)(icu::UnicodeString const*, int32_t,
                                                    icu::DateFormatSymbols::DtContextType,
                                                    icu::DateFormatSymbols::DtWidthType);

    ICUDateFormatSymbols44Impl() = default;
    explicit ICUDateFormatSymbols44Impl(std::unique_ptr<icu::DateFormatSymbols> symbols) noexcept
        : m_symbols(std::move(symbols))
    {}

    void Adopt(std::unique_ptr<icu::DateFormatSymbols> symbols) noexcept { m_symbols = std::move(symbols); }

    [[nodiscard]] std::unique_ptr<ICUDateFormatSymbols> clone() const override;
    [[nodiscard]] Texts getMonths(ICUEContext context, ICUEWidth width) const override
    {
        return Get(&icu::DateFormatSymbols::getMonths, context, width);
    }
    void setMonths(Texts const& months, ICUEContext context, ICUEWidth width) override
    {
        Set(&icu::DateFormatSymbols::setMonths, months, context, width);
    }
    [[nodiscard]] Texts getWeekdays(ICUEContext context, ICUEWidth width) const override
    {
        return Get(&icu::DateFormatSymbols::getWeekdays, context, width);
    }
    void setWeekdays(Texts const& weekdays, ICUEContext context, ICUEWidth width) override
    {
        Set(&icu::DateFormatSymbols::setWeekdays, weekdays, context, width);
    }
    [[nodiscard]] Texts getQuarters(ICUEContext context, ICUEWidth width) const override
    {
        return Get(&icu::DateFormatSymbols::getQuarters, context, width);
    }
    void setQuarters(Texts const& quarters, ICUEContext context, ICUEWidth width) override
    {
        Set(&icu::DateFormatSymbols::setQuarters, quarters, context, width);
    }
    [[nodiscard]] Texts getEras(ICUEWidth width) const override;
    void setEras(Texts const& eras, ICUEWidth width) override;
    [[nodiscard]] Texts getAmPmStrings() const override;
    void setAmPmStrings(Texts const& amPm) override;
    [[nodiscard]] Texts getYearNames(ICUEContext context, ICUEWidth width) const override
    {
        return Get(&icu::DateFormatSymbols::getYearNames, context, width);
    }
    [[nodiscard]] Texts getZodiacNames(ICUEContext context, ICUEWidth width) const override
    {
        return Get(&icu::DateFormatSymbols::getZodiacNames, context, width);
    }
    [[nodiscard]] TStringCore getLocalPatternChars() const override;
    [[nodiscard]] std::unique_ptr<QvxICU::ICULocale> getLocale(QvxICU::ICULocDataLocaleType type,
                                                               QvxICU::ICUErrorCode& status) const override;
    [[nodiscard]] bool operator==(ICUDateFormatSymbols const& other) const override;
    [[nodiscard]] void const* Native() const noexcept override { return m_symbols.get(); }

private:
    [[nodiscard]] Texts Get(Getter getter, ICUEContext context, ICUEWidth width) const;
    void Set(Setter setter, Texts const& texts, ICUEContext context, ICUEWidth width);

    std::unique_ptr<icu::DateFormatSymbols> m_symbols;
};

} // namespace QvxICU44
