#pragma once
// Which pattern a locale uses for the fields that one wants to show. The fields are given as a skeleton, the letters of
// a pattern without order and punctuation; the pattern goes to ICUSimpleDateFormat.
//
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     auto const german = QvxICU::ICUDateTimePatternGenerator::createInstance("de", status);
//     TStringCore const pattern = german->getBestPattern(u"yMMMMd", status);     // u"d. MMMM y"
//
// A call with a failed status does nothing and returns an empty text. What the factory returns is never null; if ICU
// made no generator, calls report InvalidStateError, or do nothing and return nothing where they take no status.

#include <memory>
#include <vector>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace QvxICU {

/// The search for a pattern uses the generator's own memory: a generator is used by one thread at a time. Making one
/// costs far more than asking it, cloning one is cheap beside it.
class QVXSYS_API ICUDateTimePatternGenerator
{
public:
    /// Setters do nothing and getters return an empty text for other values.
    enum ICUEField : int {
        EraField = 0,
        YearField = 1,
        QuarterField = 2,
        MonthField = 3,
        WeekOfYearField = 4,
        WeekOfMonthField = 5,
        WeekdayField = 6,
        DayOfYearField = 7,
        DayOfWeekInMonthField = 8,
        DayField = 9,
        DayPeriodField = 10,
        HourField = 11,
        MinuteField = 12,
        SecondField = 13,
        FractionalSecondField = 14,
        ZoneField = 15,
    };

    /// How long a field's name is.
    enum ICUEDisplayWidth : int { Wide = 0, Abbreviated = 1, Narrow = 2 };

    /// Which lengths of the skeleton's fields are kept although the locale's pattern has others; combined with |.
    enum ICUEMatchOptions : int {
        MatchNoOptions = 0,
        MatchHourFieldLength = 1 << HourField,
        MatchMinuteFieldLength = 1 << MinuteField,
        MatchSecondFieldLength = 1 << SecondField,
        MatchAllFieldsLength = (1 << 16) - 1,
    };

    /// What addPattern found.
    enum ICUEConflict : int {
        NoConflict = 0,   ///< added
        BaseConflict = 1, ///< there is one of the same base skeleton
        Conflict = 2,     ///< there is one of the same skeleton
    };

    /// How hours are counted.
    enum ICUEHourCycle : int {
        HourCycle11 = 0, ///< K: 0..11
        HourCycle12 = 1, ///< h: 1..12
        HourCycle23 = 2, ///< H: 0..23
        HourCycle24 = 3, ///< k: 1..24
    };

    /// A null locale is the default one. ICU makes no generators any more when there was one before t_u_cleanup(): that
    /// gives InvalidStateError.
    [[nodiscard]] static std::unique_ptr<ICUDateTimePatternGenerator> createInstance(char const* locale,
                                                                                     ICUErrorCode& status);

    virtual ~ICUDateTimePatternGenerator();

    /// A generator of its own. Never null. (ICU 72 forgets the hours that the region prefers: 'C' in a clone's
    /// skeletons gives any of the hour's letters.)
    [[nodiscard]] virtual std::unique_ptr<ICUDateTimePatternGenerator> clone() const = 0;

    /// The pattern that the locale uses for exactly these fields, or the best that can be put together. 'j' stands for
    /// the hour as the locale counts it.
    [[nodiscard]] virtual TStringCore getBestPattern(TStringView skeleton, ICUErrorCode& status) = 0;
    [[nodiscard]] virtual TStringCore getBestPattern(TStringView skeleton, ICUEMatchOptions options,
                                                     ICUErrorCode& status) = 0;
    /// The pattern with the lengths of its fields as in the skeleton: u"d-M H:m" with u"MMMMddHHmm" gives u"dd-MMMM
    /// HH:mm".
    [[nodiscard]] virtual TStringCore replaceFieldTypes(TStringView pattern, TStringView skeleton,
                                                        ICUErrorCode& status) = 0;
    /// The pattern's fields in one order: u"MMMdd" of u"dd/MMM".
    [[nodiscard]] virtual TStringCore getSkeleton(TStringView pattern, ICUErrorCode& status) const = 0;
    /// Moreover with lengths that mean the same made one: u"MMMd".
    [[nodiscard]] virtual TStringCore getBaseSkeleton(TStringView pattern, ICUErrorCode& status) const = 0;

    /// All skeletons that the generator has patterns for.
    [[nodiscard]] virtual std::vector<TStringCore> getSkeletons(ICUErrorCode& status) const = 0;
    /// All base skeletons.
    [[nodiscard]] virtual std::vector<TStringCore> getBaseSkeletons(ICUErrorCode& status) const = 0;
    /// Exactly that skeleton's; empty if there is none.
    [[nodiscard]] virtual TStringCore getPatternForSkeleton(TStringView skeleton) const = 0;
    /// Adds a pattern under its skeleton. If there is one already, `conflicting` is that one, and it is replaced only
    /// if `replace` is true (a pattern of the same base skeleton but another length is kept beside).
    virtual ICUEConflict addPattern(TStringView pattern, bool replace, TStringCore& conflicting,
                                    ICUErrorCode& status) = 0;

    /// How a field is added that no pattern has: {0} the pattern so far, {1} the field, {2} the field's name.
    [[nodiscard]] virtual TStringCore getAppendItemFormat(ICUEField field) const = 0;
    /// Sets what getAppendItemFormat gives.
    virtual void setAppendItemFormat(ICUEField field, TStringView format) = 0;
    /// The field's name for that; setting one sets its wide display name.
    [[nodiscard]] virtual TStringCore getAppendItemName(ICUEField field) const = 0;
    /// Sets what getAppendItemName gives.
    virtual void setAppendItemName(ICUEField field, TStringView name) = 0;
    /// "year", "yr." ...
    [[nodiscard]] virtual TStringCore getFieldDisplayName(ICUEField field, ICUEDisplayWidth width) const = 0;

    /// How date and time are joined: {1} the date, {0} the time. Of the medium style.
    [[nodiscard]] virtual TStringCore getDateTimeFormat() const = 0;
    /// For all styles.
    virtual void setDateTimeFormat(TStringView format) = 0;
    /// What stands between seconds and their fraction.
    [[nodiscard]] virtual TStringCore getDecimal() const = 0;
    /// Sets what getDecimal gives.
    virtual void setDecimal(TStringView decimal) = 0;
    /// How hours are counted in the locale.
    [[nodiscard]] virtual ICUEHourCycle getDefaultHourCycle(ICUErrorCode& status) const = 0;
    [[nodiscard]] virtual bool operator==(ICUDateTimePatternGenerator const& other) const = 0;

    /// For the library's own use: the icu::DateTimePatternGenerator behind the wrapper, or null.
    [[nodiscard]] virtual void const* Native() const noexcept = 0;

protected:
    ICUDateTimePatternGenerator() = default;
    ICUDateTimePatternGenerator(ICUDateTimePatternGenerator const&) = default;
    ICUDateTimePatternGenerator& operator=(ICUDateTimePatternGenerator const&) = default;
};

} // namespace QvxICU
