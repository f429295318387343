#pragma once
// The ICU date formats behind the wrappers.
//
// Clones share one ICU format, which nobody changes as long as it may be shared. Each wrapper has a mark for that, set
// in both when one is cloned from the other and never taken back by others; a wrapper with the mark makes a copy before
// it changes anything. How many still share is not asked: a count that says "one" would have to be read in order with
// the last reads of a wrapper that ended in another thread. The price is one copy that may not have been needed.

#include <atomic>
#include <memory>
#include <utility>

#include <unicode/datefmt.h>

#include <qvxsys/ICUDateFormat.h>

#include "ICUCalendar44Impl.h"
#include "ICUDecimalFormat44Impl.h"
#include "IcuMappings.h"
#include "IcuObject.h"

namespace QvxICU44 {

[[nodiscard]] inline icu::DateFormat const* Icu(QvxICU::ICUDateFormat const& format) noexcept
{
    return static_cast<icu::DateFormat const*>(format.Native());
}

/// All operations of ICUDateFormat, for the interface that Impl implements and the ICU class that it shares.
template<class Impl, class Interface, class IcuType>
class DateFormatBase : public Interface
{
public:
    using ErrorCode = QvxICU::ICUErrorCode;
    using Attribute = QvxICU::ICUDateFormat::ICUEBooleanAttribute;
    using Capitalization = QvxICU::ICUDateFormat::ICUECapitalization;
    static_assert(static_cast<int>(Interface::CapitalizationNone) == UDISPCTX_CAPITALIZATION_NONE);
    static_assert(static_cast<int>(Interface::FlexibleDayPeriodField) == UDAT_FLEXIBLE_DAY_PERIOD_FIELD);

    DateFormatBase() = default;
    DateFormatBase(DateFormatBase const& other) : Interface(other), m_format(other.m_format), m_mayBeShared(true)
    {
        other.m_mayBeShared.store(true, std::memory_order_relaxed);
    }
    DateFormatBase& operator=(DateFormatBase const&) = delete;
    ~DateFormatBase() override = default;

    void Adopt(std::unique_ptr<IcuType> format) { m_format = std::move(format); }

    [[nodiscard]] std::unique_ptr<QvxICU::ICUDateFormat> clone() const override
    {
        return std::make_unique<Impl>(static_cast<Impl const&>(*this));
    }

    [[nodiscard]] TStringCore format(double millis, ErrorCode& status) const override
    {
        return !IsMoment(millis, status) ? TStringCore() : Text(status, [=](auto& f, auto& text, UErrorCode& code) {
            f.format(millis, text, static_cast<icu::FieldPositionIterator*>(nullptr), code);
        });
    }
    void format(double millis, QvxICU::ICUString& appendTo, ErrorCode& status) const override
    {
        if (IsMoment(millis, status)) {
            With(status, [&](IcuType const& f, UErrorCode& code) {
                f.format(millis, Icu(appendTo), static_cast<icu::FieldPositionIterator*>(nullptr), code);
            });
        }
    }
    [[nodiscard]] TStringCore format(double millis, QvxICU::ICUFieldPosition& position,
                                     ErrorCode& status) const override
    {
        return !IsMoment(millis, status) ? TStringCore() : Text(status, [&](auto& f, auto& text, UErrorCode& code) {
            position.setBeginIndex(0); // ICU writes only what it finds
            position.setEndIndex(0);
            // ICU's function for moments does the same, without a status.
            std::unique_ptr<icu::Calendar> const at(f.getCalendar()->clone());
            at->setTime(millis, code);
            if (U_SUCCESS(code)) {
                f.format(*at, text, Icu(position));
            }
        });
    }
    [[nodiscard]] TStringCore format(QvxICU::ICUCalendar const& calendar, ErrorCode& status) const override
    {
        icu::Calendar* const of = Argument(calendar, status);
        return Text(status, [of](auto& f, auto& text, UErrorCode& code) {
            f.format(*of, text, static_cast<icu::FieldPositionIterator*>(nullptr), code);
        });
    }

    [[nodiscard]] double parse(TStringView text, ErrorCode& status) const override
    {
        return With(status, [&](IcuType const& f, UErrorCode& code) { return f.parse(Alias(text), code); });
    }
    [[nodiscard]] double parse(TStringView text, QvxICU::ICUParsePosition& position) const override
    {
        if (m_format == nullptr) {
            position.setErrorIndex(position.getIndex());
            return 0;
        }
        return std::as_const(*m_format).parse(Alias(text), Icu(position));
    }
    void parse(TStringView text, QvxICU::ICUCalendar& calendar, QvxICU::ICUParsePosition& position) const override
    {
        icu::Calendar* const to = Icu(calendar);
        if (m_format == nullptr || to == nullptr) {
            position.setErrorIndex(position.getIndex());
        } else {
            std::as_const(*m_format).parse(Alias(text), *to, Icu(position));
        }
    }
    [[nodiscard]] bool isLenient() const override
    {
        return With([](IcuType const& f) { return f.isLenient(); });
    }
    void setLenient(bool lenient) override
    {
        Change([lenient](IcuType& f) { f.setLenient(lenient); });
    }
    [[nodiscard]] bool isCalendarLenient() const override
    {
        return With([](IcuType const& f) { return f.isCalendarLenient(); });
    }
    void setCalendarLenient(bool lenient) override
    {
        Change([lenient](IcuType& f) { f.setCalendarLenient(lenient); });
    }
    [[nodiscard]] bool getBooleanAttribute(Attribute attribute, ErrorCode& status) const override
    {
        auto const a = Known(attribute, status);
        return With(status, [a](IcuType const& f, UErrorCode& code) { return f.getBooleanAttribute(a, code); });
    }
    void setBooleanAttribute(Attribute attribute, bool value, ErrorCode& status) override
    {
        auto const a = Known(attribute, status);
        Change(status, [=](IcuType& f, UErrorCode& code) { f.setBooleanAttribute(a, value, code); });
    }

    [[nodiscard]] std::unique_ptr<QvxICU::ICUCalendar> getCalendar(ErrorCode& status) const override
    {
        auto* const calendar = With(status, [](IcuType const& f, UErrorCode&) { return f.getCalendar()->clone(); });
        return std::make_unique<ICUCalendar44Impl>(std::unique_ptr<icu::Calendar>(calendar));
    }
    void setCalendar(QvxICU::ICUCalendar const& calendar, ErrorCode& status) override
    {
        icu::Calendar const* const to = Argument(calendar, status);
        Change(status, [to](IcuType& f, UErrorCode&) { f.setCalendar(*to); });
    }
    [[nodiscard]] std::unique_ptr<QvxICU::ICUDecimalFormat> getNumberFormat(ErrorCode& status) const override
    {
        auto* const numbers = With(status, [](IcuType const& f, UErrorCode&) { return f.getNumberFormat()->clone(); });
        return std::make_unique<ICUDecimalFormat44Impl>(std::unique_ptr<icu::NumberFormat>(numbers), status);
    }
    void setNumberFormat(QvxICU::ICUDecimalFormat const& format, ErrorCode& status) override
    {
        icu::NumberFormat const* const numbers = Icu(format);
        if (numbers == nullptr) {
            Fail(status, ErrorCode::IllegalArgumentError);
        }
        Change(status, [numbers](IcuType& f, UErrorCode&) { f.setNumberFormat(*numbers); });
    }
    [[nodiscard]] TStringCore getTimeZone() const override
    {
        return With([](IcuType const& f) { return NameOf(f.getTimeZone()); });
    }
    void setTimeZone(TStringView name, ErrorCode& status) override
    {
        if (auto zone = MakeTimeZone(name, status)) {
            Change(status, [&](IcuType& f, UErrorCode&) { f.adoptTimeZone(zone.release()); });
        }
    }
    [[nodiscard]] Capitalization getContext(ErrorCode& status) const override
    {
        return static_cast<Capitalization>(With(status, [](IcuType const& f, UErrorCode& code) {
            return f.getContext(UDISPCTX_TYPE_CAPITALIZATION, code);
        }));
    }
    void setContext(Capitalization context, ErrorCode& status) override
    {
        if (context < Interface::CapitalizationNone || context > Interface::CapitalizationForStandalone) {
            Fail(status, ErrorCode::IllegalArgumentError);
        }
        auto const c = static_cast<UDisplayContext>(context);
        Change(status, [c](IcuType& f, UErrorCode& code) { f.setContext(c, code); });
    }
    [[nodiscard]] bool operator==(QvxICU::ICUDateFormat const& other) const override
    {
        icu::DateFormat const* const to = Icu(other);
        return With([to](IcuType const& f) { return to != nullptr && f.operator==(*to); });
    }
    [[nodiscard]] void const* Native() const noexcept override
    {
        return static_cast<icu::DateFormat const*>(m_format.get());
    }

protected:
    template<class Call>
    auto With(ErrorCode& status, Call const& call) const
    {
        return Forward(std::as_const(m_format).get(), status, call);
    }
    template<class Call>
    auto With(Call const& call) const
    {
        return Forward(std::as_const(m_format).get(), call);
    }
    /// A call that writes a text; the text is copied once.
    template<class Call>
    TStringCore Text(ErrorCode& status, Call const& call) const
    {
        icu::UnicodeString text;
        With(status, [&](IcuType const& f, UErrorCode& code) { call(f, text, code); });
        return QvxICU::ICU_SUCCESS(status) ? Own(text) : TStringCore();
    }
    template<class Call>
    void Change(ErrorCode& status, Call const& call)
    {
        if (QvxICU::ICU_SUCCESS(status)) {
            Forward(Unshared(), status, call);
        }
    }
    template<class Call>
    void Change(Call const& call)
    {
        Forward(Unshared(), call);
    }

private:
    [[nodiscard]] IcuType* Unshared()
    {
        if (m_format != nullptr && m_mayBeShared.load(std::memory_order_relaxed)) {
            m_format.reset(m_format->clone());
            m_mayBeShared.store(false, std::memory_order_relaxed);
        }
        return m_format.get();
    }
    [[nodiscard]] static icu::Calendar* Argument(QvxICU::ICUCalendar const& calendar, ErrorCode& status) noexcept
    {
        icu::Calendar* const native = Icu(calendar);
        if (native == nullptr) {
            Fail(status, ErrorCode::IllegalArgumentError);
        }
        return native;
    }
    /// ICU takes attributes as bits to shift by unseen. One that is none fails the status; any will do then.
    [[nodiscard]] static UDateFormatBooleanAttribute Known(Attribute attribute, ErrorCode& status) noexcept
    {
        if (attribute < Interface::ParseAllowWhitespace || attribute > Interface::ParseMultiplePatternsForMatch) {
            Fail(status, ErrorCode::IllegalArgumentError);
            return UDAT_PARSE_ALLOW_WHITESPACE;
        }
        return static_cast<UDateFormatBooleanAttribute>(attribute);
    }

    std::shared_ptr<IcuType> m_format;
    mutable std::atomic<bool> m_mayBeShared = false;
};

class ICUDateFormat44Impl final : public DateFormatBase<ICUDateFormat44Impl, QvxICU::ICUDateFormat, icu::DateFormat>
{};

} // namespace QvxICU44
