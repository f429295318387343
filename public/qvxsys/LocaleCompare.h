#pragma once
// Order as a language has it (Unicode Collation Algorithm, UTS #10, with CLDR's tailorings): for lists that people
// read.
//
//     std::vector<TStringCore> names = ...;
//     QvxICU::sortByLocale(names, *QvxICU::ICULocale::createFromName("sv"));
//
//     QvxICU::LocaleComparator const natural(QvxICU::ICULocale(), {.numeric = true});
//     std::set<TStringCore, QvxICU::LocaleComparator> files(natural);        // "file9" before "file10"
//
// Equal to a comparator are texts that its strength does not tell apart; the default strength tells all but
// ignorable characters. For keys and anything that must not depend on data that change, compare by units.

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <ranges>
#include <string>

#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace QvxICU44 {
class LocaleComparator44Impl;
}

namespace QvxICU {

/// What a comparator looks at. Default leaves a matter to the locale.
struct CompareOptions
{
    /// Primary: base letters; Secondary: accents too; Tertiary (what locales have): case too; Quaternary; Identical.
    ICUColAttributeValue strength = ICUColAttributeValue::Default;
    /// LowerFirst or UpperFirst.
    ICUColAttributeValue caseFirst = ICUColAttributeValue::Default;
    /// Numbers in the text by their value.
    bool numeric = false;
    /// Spaces and punctuation do not count (below the strength Quaternary).
    bool ignorePunctuation = false;
};

/// A strict weak order on texts, for the algorithms and containers of the standard library. Copies share what they
/// stand on and cost an atomic count; algorithms that copy their comparator again and again are best given std::cref.
/// Making one takes some microseconds once ICU knows the locale. May be used from several threads at once.
class QVXSYS_API LocaleComparator
{
public:
    /// The order of a locale. One that is not known has that of its nearest known parent, see status().
    explicit LocaleComparator(ICULocale const& locale = ICULocale(), CompareOptions const& options = {});
    /// The order of the root locale changed by rules (UTS #35, part 5, "&a < b"). When they cannot be parsed, status()
    /// says so and the order is the root locale's.
    static LocaleComparator fromRules(TStringView rules, CompareOptions const& options = {});

    LocaleComparator(LocaleComparator const& other) noexcept;
    LocaleComparator& operator=(LocaleComparator const& other) noexcept;
    ~LocaleComparator();

    /// How making it went: UsingFallbackWarning and UsingDefaultWarning when a parent of the locale was taken, an error
    /// of a malformed locale (the order is the root locale's then), of the rules or of options that do not hold.
    [[nodiscard]] ICUErrorCode status() const noexcept;

    /// Below 0, 0 or above 0. Lone surrogates sort as unassigned code points.
    [[nodiscard]] int compare(TStringView a, TStringView b) const noexcept;
    /// Whether `a` sorts before `b`.
    [[nodiscard]] bool operator()(TStringView a, TStringView b) const noexcept { return compare(a, b) < 0; }
    /// Whether the comparator does not tell them apart.
    [[nodiscard]] bool areEqual(TStringView a, TStringView b) const noexcept { return compare(a, b) == 0; }

    /// Bytes that compare (as unsigned, std::memcmp) as the texts do: to be kept in an index. Making one takes some
    /// twenty comparisons of short texts, so sorting a list once is faster without. They depend on ICU's version.
    [[nodiscard]] std::string sortKey(TStringView text) const;

    /// Containers look up views without making strings.
    using is_transparent = void;

private:
    explicit LocaleComparator(std::shared_ptr<QvxICU44::LocaleComparator44Impl const> implementation) noexcept;

    std::shared_ptr<QvxICU44::LocaleComparator44Impl const> m_implementation;
};

/// Sorts by a comparator, those that it holds for equal in their former order. `projection` makes the text of an
/// element.
template<std::ranges::random_access_range Range, class Projection = std::identity>
void sortByLocale(Range&& range, LocaleComparator const& comparator, Projection projection = {})
{
    std::ranges::stable_sort(
        range, [&comparator](TStringView a, TStringView b) { return comparator(a, b); }, projection);
}
/// Sorts by the order of a locale.
template<std::ranges::random_access_range Range, class Projection = std::identity>
void sortByLocale(Range&& range, ICULocale const& locale = ICULocale(), Projection projection = {})
{
    sortByLocale(range, LocaleComparator(locale), projection);
}

} // namespace QvxICU
