// Generators of date patterns over ICU.

#include <qvxsys/ICUDateTimePatternGenerator.h>

#include <atomic>
#include <memory>
#include <utility>

#include <unicode/dtptngen.h>

#include "IcuCleanup.h"
#include "IcuObject.h"

namespace QvxICU44 {

using QvxICU::ICUErrorCode;

class ICUDateTimePatternGenerator44Impl final : public QvxICU::ICUDateTimePatternGenerator
{
public:
    using Generator = icu::DateTimePatternGenerator;
    static_assert(static_cast<int>(ZoneField) == UDATPG_ZONE_FIELD && UDATPG_FIELD_COUNT == 16);
    static_assert(static_cast<int>(Narrow) == UDATPG_NARROW && static_cast<int>(Conflict) == UDATPG_CONFLICT);
    static_assert(static_cast<int>(HourCycle24) == UDAT_HOUR_CYCLE_24);

    ICUDateTimePatternGenerator44Impl() = default;
    explicit ICUDateTimePatternGenerator44Impl(std::unique_ptr<Generator> generator) noexcept
        : m_generator(std::move(generator))
    {}

    void Adopt(std::unique_ptr<Generator> generator) noexcept { m_generator = std::move(generator); }

    [[nodiscard]] std::unique_ptr<ICUDateTimePatternGenerator> clone() const override
    {
        return std::make_unique<ICUDateTimePatternGenerator44Impl>(
            std::unique_ptr<Generator>(m_generator ? m_generator->clone() : nullptr));
    }
    [[nodiscard]] TStringCore getBestPattern(TStringView skeleton, ICUErrorCode& status) override
    {
        return getBestPattern(skeleton, MatchNoOptions, status);
    }
    [[nodiscard]] TStringCore getBestPattern(TStringView skeleton, ICUEMatchOptions options,
                                             ICUErrorCode& status) override
    {
        return With(status, [&](Generator& generator, UErrorCode& code) {
            return generator.getBestPattern(Alias(skeleton), static_cast<UDateTimePatternMatchOptions>(options), code);
        });
    }
    [[nodiscard]] TStringCore replaceFieldTypes(TStringView pattern, TStringView skeleton,
                                                ICUErrorCode& status) override
    {
        return With(status, [&](Generator& generator, UErrorCode& code) {
            return generator.replaceFieldTypes(Alias(pattern), Alias(skeleton), code);
        });
    }
    [[nodiscard]] TStringCore getSkeleton(TStringView pattern, ICUErrorCode& status) const override
    {
        return With(status,
                    [&](Generator&, UErrorCode& code) { return Generator::staticGetSkeleton(Alias(pattern), code); });
    }
    [[nodiscard]] TStringCore getBaseSkeleton(TStringView pattern, ICUErrorCode& status) const override
    {
        return With(status, [&](Generator&, UErrorCode& code) {
            return Generator::staticGetBaseSkeleton(Alias(pattern), code);
        });
    }
    [[nodiscard]] std::vector<TStringCore> getSkeletons(ICUErrorCode& status) const override
    {
        return Forward(m_generator.get(), status, [](Generator const& generator, UErrorCode& code) {
            return Own(std::unique_ptr<icu::StringEnumeration>(generator.getSkeletons(code)), code);
        });
    }
    [[nodiscard]] std::vector<TStringCore> getBaseSkeletons(ICUErrorCode& status) const override
    {
        return Forward(m_generator.get(), status, [](Generator const& generator, UErrorCode& code) {
            return Own(std::unique_ptr<icu::StringEnumeration>(generator.getBaseSkeletons(code)), code);
        });
    }
    [[nodiscard]] TStringCore getPatternForSkeleton(TStringView skeleton) const override
    {
        return Forward(m_generator.get(), [&](Generator const& generator) {
            return Own(generator.getPatternForSkeleton(Alias(skeleton)));
        });
    }
    ICUEConflict addPattern(TStringView pattern, bool replace, TStringCore& conflicting, ICUErrorCode& status) override
    {
        return Forward(m_generator.get(), status, [&](Generator& generator, UErrorCode& code) {
            icu::UnicodeString other;
            auto const conflict = generator.addPattern(Alias(pattern), replace, other, code);
            conflicting = Own(other);
            return static_cast<ICUEConflict>(conflict);
        });
    }
    [[nodiscard]] TStringCore getAppendItemFormat(ICUEField field) const override
    {
        return Forward(Known(field), [&](Generator const& generator) {
            return Own(generator.getAppendItemFormat(static_cast<UDateTimePatternField>(field)));
        });
    }
    void setAppendItemFormat(ICUEField field, TStringView format) override
    {
        Forward(Known(field), [&](Generator& generator) {
            generator.setAppendItemFormat(static_cast<UDateTimePatternField>(field), Alias(format));
        });
    }
    [[nodiscard]] TStringCore getAppendItemName(ICUEField field) const override
    {
        return Forward(Known(field), [&](Generator const& generator) {
            return Own(generator.getAppendItemName(static_cast<UDateTimePatternField>(field)));
        });
    }
    void setAppendItemName(ICUEField field, TStringView name) override
    {
        Forward(Known(field), [&](Generator& generator) {
            generator.setAppendItemName(static_cast<UDateTimePatternField>(field), Alias(name));
        });
    }
    [[nodiscard]] TStringCore getFieldDisplayName(ICUEField field, ICUEDisplayWidth width) const override
    {
        return width < Wide || width > Narrow ? TStringCore() : Forward(Known(field), [&](Generator const& generator) {
            return Own(generator.getFieldDisplayName(static_cast<UDateTimePatternField>(field),
                                                     static_cast<UDateTimePGDisplayWidth>(width)));
        });
    }
    [[nodiscard]] TStringCore getDateTimeFormat() const override
    {
        return Forward(m_generator.get(),
                       [](Generator const& generator) { return Own(generator.getDateTimeFormat()); });
    }
    void setDateTimeFormat(TStringView format) override
    {
        Forward(m_generator.get(), [&](Generator& generator) { generator.setDateTimeFormat(Alias(format)); });
    }
    [[nodiscard]] TStringCore getDecimal() const override
    {
        return Forward(m_generator.get(), [](Generator const& generator) { return Own(generator.getDecimal()); });
    }
    void setDecimal(TStringView decimal) override
    {
        Forward(m_generator.get(), [&](Generator& generator) { generator.setDecimal(Alias(decimal)); });
    }
    [[nodiscard]] ICUEHourCycle getDefaultHourCycle(ICUErrorCode& status) const override
    {
        return Forward(m_generator.get(), status, [](Generator const& generator, UErrorCode& code) {
            return static_cast<ICUEHourCycle>(generator.getDefaultHourCycle(code));
        });
    }
    [[nodiscard]] bool operator==(ICUDateTimePatternGenerator const& other) const override
    {
        auto const* const to = static_cast<Generator const*>(other.Native());
        return Forward(m_generator.get(),
                       [to](Generator const& generator) { return to != nullptr && generator == *to; });
    }
    [[nodiscard]] void const* Native() const noexcept override { return m_generator.get(); }

private:
    template<class Call>
    TStringCore With(ICUErrorCode& status, Call const& call) const
    {
        return Forward(m_generator.get(), status,
                       [&](Generator& generator, UErrorCode& code) { return Own(call(generator, code)); });
    }

    /// The generator, unless the field is none: ICU takes it as an index unseen.
    [[nodiscard]] Generator* Known(ICUEField field) const noexcept
    {
        return field >= EraField && field <= ZoneField ? m_generator.get() : nullptr;
    }

    std::unique_ptr<Generator> m_generator;
};

namespace {

/// Whether ICU can make generators. They share a table that ICU frees when it is cleaned up and never makes again, but
/// goes on to read.
[[nodiscard]] bool CanMakeGenerators() noexcept
{
    static std::atomic<bool> hasTable = true;
    static bool const registered = (QvxICU::BeforeCleanup([] { hasTable = false; }), true);
    return registered && hasTable;
}

} // namespace
} // namespace QvxICU44

namespace QvxICU {

ICUDateTimePatternGenerator::~ICUDateTimePatternGenerator() = default;

std::unique_ptr<ICUDateTimePatternGenerator> ICUDateTimePatternGenerator::createInstance(char const* locale,
                                                                                         ICUErrorCode& status)
{
    auto generator = std::make_unique<QvxICU44::ICUDateTimePatternGenerator44Impl>();
    if (!QvxICU44::CanMakeGenerators()) {
        QvxICU44::Fail(status, ICUErrorCode::InvalidStateError);
    }
    auto* const made = icu::DateTimePatternGenerator::createInstance(QvxICU44::Icu(*ICULocale::createFromName(locale)),
                                                                     QvxICU44::Status(status));
    generator->Adopt(QvxICU44::Made(made, status));
    return generator;
}

} // namespace QvxICU
