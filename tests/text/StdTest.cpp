// Strings and views with the standard library's containers, streams, ranges and formatting.

#include <algorithm>
#include <concepts>
#include <functional>
#include <iomanip>
#include <iterator>
#include <map>
#include <random>
#include <ranges>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#if __has_include(<fmt/format.h>)
#define FMT_HEADER_ONLY
#include <fmt/format.h>
#include <fmt/xchar.h>
#endif

#include "support/TextPrinters.h"

using namespace qvxsys::literals;

namespace {

// ---- concepts

static_assert(std::regular<TStringCore> && std::regular<TStringView> && std::totally_ordered<TStringCore>);
static_assert(std::ranges::contiguous_range<TStringCore> && std::ranges::contiguous_range<TStringCore const>);
static_assert(std::ranges::sized_range<TStringCore> && std::ranges::common_range<TStringCore>);
static_assert(std::ranges::output_range<TStringCore&, char16_t> && !std::ranges::borrowed_range<TStringCore>);
static_assert(std::ranges::contiguous_range<TStringView> && std::ranges::view<TStringView> &&
              std::ranges::borrowed_range<TStringView> && std::ranges::sized_range<TStringView>);
static_assert(std::same_as<std::ranges::range_reference_t<TStringView>, char16_t const&>);
template<class Range>
constexpr bool kCodePoints =
    std::ranges::bidirectional_range<Range>&& std::ranges::view<Range>&& std::ranges::common_range<Range>&&
        std::ranges::borrowed_range<Range>&& std::same_as<std::ranges::range_value_t<Range>, char32_t>;
static_assert(kCodePoints<TCodePointRange<TStringCore>>);
// Over a view it holds the view itself, which its iterators point to.
static_assert(std::ranges::bidirectional_range<TCodePointRange<TStringView>> &&
              std::ranges::view<TCodePointRange<TStringView>> &&
              !std::ranges::borrowed_range<TCodePointRange<TStringView>>);
static_assert(std::input_iterator<TCodePointIterator<TStringCore>> && std::ranges::view<TCodePointView>);
template<class Less>
constexpr bool kOrdersMixed = std::strict_weak_order<Less, TStringCore, TStringView>&& std::strict_weak_order<
    Less, TStringView, char16_t const*>&& std::strict_weak_order<Less, wchar_t const*, std::u16string>&&
    std::strict_weak_order<Less, char const*, std::wstring>&&
        std::strict_weak_order<Less, std::string_view, std::u8string>;
static_assert(kOrdersMixed<qvxsys::OrdinalLess> && kOrdersMixed<qvxsys::FoldedLess>);
static_assert(std::equivalence_relation<qvxsys::FoldedEqual, TStringCore, wchar_t const*>);
static_assert(!std::invocable<std::hash<TStringCore>, char> && !std::invocable<qvxsys::OrdinalLess, TStringView, char>);
static_assert(u"a\0b"_qv.size() == 3);

// ---- hashing and ordering

// Texts over few letters, so that equal prefixes, embedded 0 units and both cases are common.
std::vector<TStringCore> SmallTexts()
{
    std::mt19937 engine(5);
    std::vector<TStringCore> texts;
    for (int i = 0; i < 400; ++i) {
        TStringCore text(u'x', static_cast<int>(engine() % 3) * 9);
        for (auto n = engine() % 4; n > 0; --n) {
            text.append(u"aAb\0\u0444\u0424\xD83D"[engine() % 7]);
        }
        texts.push_back(text);
    }
    return texts;
}

TEST(Std, OrdersAgreeWithUnitsAndWhatIsEqualHasOneHash)
{
    auto const texts = SmallTexts();
    std::hash<TStringCore> const hash;
    qvxsys::FoldedHash const foldedHash;
    auto const folded = [](TStringCore const& text) {
        std::u16string units(text.view());
        std::ranges::transform(units, units.begin(), [](char16_t c) { return TCType::FoldCase(c); });
        return units;
    };
    for (TStringCore const& a : texts) {
        std::u16string const units(a.view());
        std::u16string const foldedUnits = folded(a);
        for (TStringCore const& b : texts) {
            bool const same = hash(a) == hash(b);
            ASSERT_TRUE(same || (a != b && a.view() != b.view()));
            ASSERT_TRUE(hash(a) == std::hash<TStringView>()(b.view()) || a != b.view());
            // Against terminated text, equality ends at the first 0.
            ASSERT_TRUE(hash(a) == hash(b.constData()) || a != b.constData());
            ASSERT_TRUE(foldedHash(a) == foldedHash(b.view()) || !qvxsys::FoldedEqual()(a, b));
            ASSERT_EQ(qvxsys::OrdinalLess()(a, b.view()), units < std::u16string(b.view()));
            ASSERT_EQ(qvxsys::FoldedLess()(a.view(), b), foldedUnits < folded(b));
            ASSERT_EQ(qvxsys::FoldedEqual()(a, b), foldedUnits == folded(b));
        }
        ASSERT_EQ(hash(a), hash(units));
    }
    EXPECT_EQ(hash(u"\U0001F600"_qs), hash(L"\U0001F600"));
    EXPECT_NE(hash(u"a"), hash(u"b"));
    EXPECT_NE(foldedHash(TStringCore(u'a', 100)), foldedHash(TStringCore(u'a', 101)));
}

TEST(Std, ContainersAnswerWithoutAString)
{
    std::unordered_map<TStringCore, int, std::hash<TStringCore>, std::equal_to<>> const hashed{{u"one"_qs, 1},
                                                                                               {"z\u00E9ro"_qs, 0}};
    EXPECT_TRUE(hashed.contains(u"one") && hashed.contains(L"z\u00E9ro") && hashed.contains(u"one"_qv));
    EXPECT_TRUE(hashed.contains(std::u16string(u"one")) && !hashed.contains(u"ONE"));
    EXPECT_TRUE(hashed.contains(std::wstring(L"z\u00E9ro")) && hashed.contains(std::wstring_view(L"one")));
    EXPECT_TRUE(hashed.contains("z\xC3\xA9ro") && hashed.contains(std::string("one")) && hashed.contains(u8"one"));
    std::unordered_set<TStringCore, qvxsys::FoldedHash, qvxsys::FoldedEqual> const loose{u"Stra\u00DFe"_qs,
                                                                                         u"\u0416"_qs};
    EXPECT_TRUE(loose.contains(std::string_view("sTRA\xC3\x9F"
                                                "e")) &&
                loose.contains(std::wstring(L"\u0416")));
    EXPECT_TRUE(loose.contains(L"STRA\u00DFE") && loose.contains(u"\u0436"_qv) && !loose.contains(u"strasse"));
    std::set<TStringCore, qvxsys::FoldedLess> const names{"ada"_qs, "ADA"_qs, "Bob"_qs};
    EXPECT_EQ(names.size(), 2u);
    EXPECT_TRUE(names.contains("BOB") && names.contains(u8"bob") && names.contains(std::wstring(L"Ada")));
    EXPECT_TRUE(names.contains(L"BOB") && names.lower_bound(u"B"_qv) == std::next(names.begin()));
    std::map<TStringView, int, qvxsys::OrdinalLess> const ordered{
        {u"b"_qv, 1}, {u"aa"_qv, 2}, {u"b\0c"_qv, 3}, {u"b\0d"_qv, 4}};
    EXPECT_EQ(ordered.begin()->first, u"aa");
    EXPECT_EQ(ordered.size(), 4u);
}

// ---- streams, literals, printers

TEST(Std, StreamsPadByCodePoints)
{
    auto const shown = [](auto const& text, auto... manipulators) {
        std::ostringstream out;
        ((out << manipulators), ...);
        out << text << '|' << out.width();
        return out.str();
    };
    EXPECT_EQ(shown(u"\u00E9\U0001F600"_qs, std::setw(4)), "  \xC3\xA9\xF0\x9F\x98\x80|0");
    EXPECT_EQ(shown(u"\u00E9"_qv, std::setw(3), std::setfill('.'), std::left), "\xC3\xA9..|0");
    EXPECT_EQ(shown(u"ab"_qs, std::setw(4), std::internal), "  ab|0");
    EXPECT_EQ(shown(u"abc"_qs, std::setw(2)), "abc|0");
    EXPECT_EQ(shown(u"\xD800"_qv), "\xEF\xBF\xBD|0");
    EXPECT_EQ(shown(TStringView(), std::setw(2)), "  |0");
    EXPECT_EQ(shown(TStringCore::Exception(u"message")), "message|0");
    std::ostringstream broken;
    broken.setstate(std::ios_base::badbit);
    broken << u"x"_qs;
    EXPECT_TRUE(broken.bad() && broken.str().empty());
}

TEST(Std, LiteralsKeepEmbeddedZeros)
{
    EXPECT_EQ(u"a\0b"_qs.length(), 3);
    EXPECT_EQ("a\0\xC3\xA9"_qs.view(), u"a\0\u00E9"_qv);
    EXPECT_EQ(L"a\0\U0001F600"_qs.view(), u"a\0\U0001F600"_qv);
    EXPECT_EQ(u8"\u00E9"_qs, u"\u00E9");
    EXPECT_TRUE(u""_qs.empty() && ""_qs.empty() && u""_qv.empty());
}

TEST(Std, PrintedInTests)
{
    EXPECT_EQ(testing::PrintToString(u"a\u00E9"_qs), "\"a\xC3\xA9\" (2 units)");
    EXPECT_EQ(testing::PrintToString(u"\n\0\xD83D"_qv), "\"\\u{000a}\\u{0000}\\u{d83d}\" (3 units)");
    EXPECT_EQ(testing::PrintToString(u"\xDE00\U0001F600\U0003FFFE"_qv),
              "\"\\u{de00}\xF0\x9F\x98\x80\\u{3fffe}\" (5 units)");
    EXPECT_EQ(testing::PrintToString(std::vector{u"x"_qs}), "{ \"x\" (1 units) }");
}

#if defined(FMT_VERSION)
namespace formatting = fmt;
#elif defined(__cpp_lib_format)
namespace formatting = std;
#endif
#if defined(FMT_VERSION) || defined(__cpp_lib_format)
TEST(Std, Formatted)
{
    EXPECT_EQ(formatting::format("{:>4}|{:<3}|{:.1}", u"\u00E9"_qs, u"ab"_qv, u"xyz"_qs), "   \xC3\xA9|ab |x");
    EXPECT_EQ(formatting::format(L"{}|{:>3}", u"\u00E9"_qs, u"a"_qv), L"\u00E9|  a");
}
#endif

} // namespace
