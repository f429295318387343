#pragma once
// What TStringCore and TStringView have in common: searching, prefixes, counting, splitting, sections.
//
//     TStringView const line = u"key = \u20AC12; note";
//     int const at = line.indexOf(u'=');                                       // 4
//     bool const euro = line.contains(L"\u20AC") && line.startsWith("key");    // any kind of text
//     for (TStringView const part : line.split(u';')) { ... }
//
// Arguments. A text or a set of units comes as a string, a view, UTF-16 (`char16_t const*`, std::u16string), wide text
// (`wchar_t const*`, std::wstring), UTF-8 (`char const*`, std::string, their char8_t kin) or as one character: char
// (Latin-1), char16_t, wchar_t or char32_t. A pointer's text ends at its first 0 unit, and null is empty text.
//
// Positions are code units. A negative start counts from the end; a start outside the text finds nothing; nothing here
// throws for a position. An empty text is found at the start position, but nothing is ever found in an empty text.
//
// Case. Strings take TStringCore::CaseSensitivity, views CaseCompare; the default compares units exactly, the other
// value folds them unit by unit (TCType::FoldCase), which never changes a length: "STRASSE" is not found in
// "stra\u00DFe".
//
// The parts of a string are views of it: they are valid until the string is changed, and a temporary string cannot be
// split into views; use splitCopy.

#include <concepts>
#include <cstddef>
#include <vector>

#include <qvxsys/Platform.h>
#include <qvxsys/TextArguments.h>

template<class Container>
class TConstCodePointIterator;

namespace qvxsys::detail {

template<class Container>
struct ContainerName;

// The searches themselves; positions and starts as above.
[[nodiscard]] QVXSYS_API bool HasPrefix(TStringView text, TStringView prefix, bool folded) noexcept;
[[nodiscard]] QVXSYS_API bool HasSuffix(TStringView text, TStringView suffix, bool folded) noexcept;
[[nodiscard]] QVXSYS_API int FindText(TStringView text, TStringView needle, int from, bool folded);
[[nodiscard]] QVXSYS_API int FindTextLast(TStringView text, TStringView needle, int from, bool folded);
[[nodiscard]] QVXSYS_API int CountText(TStringView text, TStringView needle, bool folded);
[[nodiscard]] QVXSYS_API int FindMember(TStringView text, TStringView set, int from, bool wanted) noexcept;
/// The code-unit index of an iterator over `text` (the length for the end); throws when it walks another text, naming
/// the class `of`.
[[nodiscard]] QVXSYS_API int PositionOf(TStringView text, char16_t const* walked, int index, char const* of);
[[nodiscard]] QVXSYS_API int RunOf(TStringView text, TStringView set, bool members) noexcept;
// The parts, appended.
QVXSYS_API void Split(TStringView text, TStringView separator, bool skipEmpty, bool folded,
                      std::vector<TStringView>& parts);
QVXSYS_API void Split(TStringView text, TStringView separator, bool skipEmpty, bool folded,
                      std::vector<TStringCore>& parts);
QVXSYS_API void SplitOnAny(TStringView text, TStringView set, bool skipEmpty, std::vector<TStringView>& parts);
QVXSYS_API void SplitOnAny(TStringView text, TStringView set, bool skipEmpty, std::vector<TStringCore>& parts);
/// Flags are those of TStringCore::SectionFlags.
[[nodiscard]] QVXSYS_API TStringView Section(TStringView text, TStringView separator, int first, int last, int flags);
/// The units of the first (last) n code points, as many as there are.
[[nodiscard]] QVXSYS_API int UnitsOfFirst(TStringView text, int codePoints) noexcept;
[[nodiscard]] QVXSYS_API int UnitsOfLast(TStringView text, int codePoints) noexcept;
/// Without white space, or code points of a set, at the ends named.
[[nodiscard]] QVXSYS_API TStringView Trimmed(TStringView text, bool left, bool right) noexcept;
[[nodiscard]] QVXSYS_API TStringView Trimmed(TStringView text, TStringView set, bool left, bool right) noexcept;
// Changed copies.
[[nodiscard]] QVXSYS_API TStringCore Padded(TStringView text, int copies, UnitsOf fill, bool inFront);
[[nodiscard]] QVXSYS_API TStringCore Repeated(TStringView text, int n);
[[nodiscard]] QVXSYS_API TStringCore Reversed(TStringView text);
/// By the rules of a locale: "" is the root locale, null ICU's default one.
[[nodiscard]] QVXSYS_API TStringCore ToLower(TStringView text, char const* locale = nullptr);
[[nodiscard]] QVXSYS_API TStringCore ToUpper(TStringView text, char const* locale = nullptr);

} // namespace qvxsys::detail

/// The reading members of a text class. Self is the class, Owner is TStringCore, View is TStringView, Case and Empty
/// are the class's enumerations for case and for empty parts. A base without data.
template<class Self, class Owner, class View, class Case, class Empty>
class TTextReading
{
    using Iterator = TConstCodePointIterator<Self>;
    static constexpr bool kIsView = std::same_as<Self, View>;
    static constexpr Case kExact = static_cast<Case>(1);
    static constexpr Empty kKeep = static_cast<Empty>(0);
    static constexpr Empty kSkip = static_cast<Empty>(1);

public:
    /// @name Prefixes and suffixes
    /// True when the text begins (ends) with another. Units behind a common 0 unit do not count. Of an empty text: a
    /// string starts with it, a view does not, and neither ends with it.
    /// @{
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] bool startsWith(A const& text, Case cs = kExact) const
    {
        auto const& other = qvxsys::detail::ToView(text);
        View const prefix = other;
        return (!kIsView && prefix.empty()) || qvxsys::detail::HasPrefix(Text(), prefix, IsFolded(cs));
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] bool endsWith(A const& text, Case cs = kExact) const
    {
        return qvxsys::detail::HasSuffix(Text(), qvxsys::detail::ToView(text), IsFolded(cs));
    }
    [[nodiscard]] bool startsWith32(char32_t c, Case cs = kExact) const { return startsWith(c, cs); }
    [[nodiscard]] bool endsWith32(char32_t c, Case cs = kExact) const { return endsWith(c, cs); }
    /// @}

    /// @name Searching
    /// @{
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] bool contains(A const& text, Case cs = kExact) const
    {
        return indexOf(text, 0, cs) >= 0;
    }
    [[nodiscard]] bool contains32(char32_t c, Case cs = kExact) const { return contains(c, cs); }

    /// The positions at which a text or character is found, overlapping ones included.
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] int count(A const& text, Case cs = kExact) const
    {
        auto const& other = qvxsys::detail::ToView(text);
        View const needle = other;
        return qvxsys::detail::CountText(Text(), needle, IsFolded(cs));
    }
    [[nodiscard]] int count32(char32_t c, Case cs = kExact) const { return count(c, cs); }

    /// The position of the first match at or after `from`, or -1.
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] int indexOf(A const& text, int from = 0, Case cs = kExact) const
    {
        return qvxsys::detail::FindText(Text(), qvxsys::detail::ToView(text), from, IsFolded(cs));
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] int indexOf(A const& text, Case cs) const
    {
        return indexOf(text, 0, cs);
    }
    [[nodiscard]] int indexOf32(char32_t c, int from = 0, Case cs = kExact) const { return indexOf(c, from, cs); }
    [[nodiscard]] int indexOf32(char32_t c, Case cs) const { return indexOf(c, 0, cs); }

    /// The position of the last match that begins at or before `from`, or -1.
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] int lastIndexOf(A const& text, int from = -1, Case cs = kExact) const
    {
        return qvxsys::detail::FindTextLast(Text(), qvxsys::detail::ToView(text), from, IsFolded(cs));
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] int lastIndexOf(A const& text, Case cs) const
    {
        return lastIndexOf(text, -1, cs);
    }

    /// The same as indexOf, for one character.
    template<TCType::Character C>
    [[nodiscard]] int findChar(C c, int from = 0, Case cs = kExact) const
    {
        return indexOf(c, from, cs);
    }
    template<TCType::Character C>
    [[nodiscard]] int findChar(C c, Case cs) const
    {
        return indexOf(c, 0, cs);
    }

    /// The first and the last match as an iterator, codepoint_cend() when there is none. With an iterator: at or after
    /// it, and beginning at or before it. Throws std::runtime_error when the iterator walks another text
    /// (CodePointIterator.h).
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] Iterator find(A const& text, Case cs = kExact) const QVXSYS_LIFETIME_BOUND
    {
        return At(indexOf(text, 0, cs));
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] Iterator find(A const& text, Iterator const& from, Case cs = kExact) const QVXSYS_LIFETIME_BOUND
    {
        return At(indexOf(text, Position(from), cs));
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] Iterator findLast(A const& text, Case cs = kExact) const QVXSYS_LIFETIME_BOUND
    {
        return At(lastIndexOf(text, -1, cs));
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] Iterator findLast(A const& text, Iterator const& from, Case cs = kExact) const QVXSYS_LIFETIME_BOUND
    {
        int const position = Position(from);
        return At(lastIndexOf(text, position < Text().length() ? position : -1, cs));
    }
    /// @}

    /// @name Searching for units of a set
    /// A set is a text, each unit of which is a member, so a supplementary character in it stands for its two units,
    /// each by itself. (The sets of trimming, removeAnyOf and replaceAnyOf are sets of code points.)
    /// @{
    /// The position of the first unit, at or after `from`, that is (is not) in the set; -1 when there is none.
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] int findOneOf(A const& set, int from = 0) const
    {
        return qvxsys::detail::FindMember(Text(), qvxsys::detail::ToView(set), from, true);
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] int findOneNotOf(A const& set, int from = 0) const
    {
        return qvxsys::detail::FindMember(Text(), qvxsys::detail::ToView(set), from, false);
    }
    /// The length of the run of units at the front that are (are not) in the set.
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] int spanIncluding(A const& set) const
    {
        return qvxsys::detail::RunOf(Text(), qvxsys::detail::ToView(set), true);
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] int spanExcluding(A const& set) const
    {
        return qvxsys::detail::RunOf(Text(), qvxsys::detail::ToView(set), false);
    }
    /// The same from an iterator on, as an iterator; codepoint_cend() when there is none.
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] Iterator findOneOf(A const& set, Iterator const& from) const QVXSYS_LIFETIME_BOUND
    {
        return At(findOneOf(set, Position(from)));
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] Iterator findOneNotOf(A const& set, Iterator const& from) const QVXSYS_LIFETIME_BOUND
    {
        return At(findOneNotOf(set, Position(from)));
    }
    // Sets are looked at exactly; a string's CaseSensitivity would pass for a start.
    template<qvxsys::detail::TextArgument A>
    int findOneOf(A const& set, Case cs) const = delete;
    template<qvxsys::detail::TextArgument A>
    int findOneNotOf(A const& set, Case cs) const = delete;
    /// @}

    /// @name Splitting
    /// split, splitOnAny and tokenize give views of this text, the ...Copy... forms strings.
    /// @{
    /// The parts between occurrences of a separator. An empty separator gives no parts; an empty text gives one empty
    /// part when empty parts are kept.
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] std::vector<View> split(A const& separator, Empty empty = kKeep,
                                          Case cs = kExact) const& QVXSYS_LIFETIME_BOUND
    {
        return Parts<View>(separator, empty, cs);
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] std::vector<Owner> splitCopy(A const& separator, Empty empty = kKeep, Case cs = kExact) const
    {
        return Parts<Owner>(separator, empty, cs);
    }
    /// The parts between units of a set; a supplementary character in it stands for its two units, each by itself. An
    /// empty set gives no parts.
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] std::vector<View> splitOnAny(A const& set, Empty empty = kKeep) const& QVXSYS_LIFETIME_BOUND
    {
        return PartsOnAny<View>(set, empty);
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] std::vector<Owner> splitCopyOnAny(A const& set, Empty empty = kKeep) const
    {
        return PartsOnAny<Owner>(set, empty);
    }
    /// The runs of units outside a set of delimiters (units, as for splitOnAny), the empty ones left out unless they
    /// are asked for. With an empty set the whole text is one run.
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] std::vector<View> tokenize(A const& delimiters, Empty empty = kSkip) const& QVXSYS_LIFETIME_BOUND
    {
        std::vector<View> parts;
        qvxsys::detail::SplitOnAny(Text(), qvxsys::detail::ToView(delimiters), empty != kKeep, parts);
        return parts;
    }
    // Views of a temporary string would outlive it: take the ...Copy... forms, or keep the string.
    template<class A, class... Rest>
    requires(!kIsView) std::vector<View> split(A const&, Rest const&...)
    const&& = delete;
    template<class A, class... Rest>
    requires(!kIsView) std::vector<View> splitOnAny(A const&, Rest const&...)
    const&& = delete;
    template<class A, class... Rest>
    requires(!kIsView) std::vector<View> tokenize(A const&, Rest const&...)
    const&& = delete;

    /// Sections number `first` to `last` with the separators between them, the parts of split being numbered from 0,
    /// and backwards from -1, the last part. A `last` past the end means the end; nothing in the range gives empty
    /// text. Flags are values of TStringCore::SectionFlags: SectionSkipEmpty does not number empty parts,
    /// SectionIncludeLeadingSep and SectionIncludeTrailingSep add the separator before and behind, where there is one,
    /// SectionCaseInsensitiveSeps folds.
    ///
    ///     TStringCore(u"/usr/local/bin").section(u'/', 2, 3)      "local/bin"
    ///     TStringCore(u"/usr/local/bin").section(u'/', -1)        "bin"
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] Self section(A const& separator, int first, int last = -1, int flags = 0) const
    {
        return Self(qvxsys::detail::Section(Text(), qvxsys::detail::ToView(separator), first, last, flags));
    }
    /// @}

    /// @name Slices by code point
    /// The first and the last n code points, all there are for a larger n, none for n below 1. A lone surrogate counts
    /// as one.
    /// @{
    [[nodiscard]] Self leftCodePoints(int n) const { return This().left(qvxsys::detail::UnitsOfFirst(Text(), n)); }
    [[nodiscard]] Self rightCodePoints(int n) const { return This().right(qvxsys::detail::UnitsOfLast(Text(), n)); }
    /// @}

    /// @name Trimmed copies
    /// Without white space (TCType::isSpace32), or code points of a set (a text or a character), at both ends. Of a
    /// view a view, of a string a string, which shares the block when nothing is dropped.
    /// @{
    [[nodiscard]] Self trimmed() const
    {
        View const text = Text();
        bool const asItIs = !text.empty() && IsGraphic(text.data()[0]) && IsGraphic(text.data()[text.size() - 1]);
        return asItIs ? This() : WithEnds(qvxsys::detail::Trimmed(text, true, true));
    }
    template<qvxsys::detail::TextArgument A = View>
    [[nodiscard]] Self trimmed(A const& set) const
    {
        return WithEnds(qvxsys::detail::Trimmed(Text(), qvxsys::detail::ToView(set), true, true));
    }
    /// @}

    /// @name Changed copies
    /// New strings. Justifying a string that needs no change, and repeated(1), give a copy that shares its block.
    /// @{
    /// With copies of `fill` added behind (leftJustified) or in front (rightJustified), as many as `width` has more
    /// units than the text. A longer text keeps its first `width` units when `truncate` is set, else all. A width below
    /// 0 counts as 0.
    template<TCType::Character C = char16_t>
    [[nodiscard]] Owner leftJustified(int width, C fill = C{' '}, bool truncate = false) const
    {
        return Justified(width, fill, truncate, false, false);
    }
    template<TCType::Character C = char16_t>
    [[nodiscard]] Owner rightJustified(int width, C fill = C{' '}, bool truncate = false) const
    {
        return Justified(width, fill, truncate, true, false);
    }
    /// The same with everything counted in code points.
    [[nodiscard]] Owner leftJustified32(int width, char32_t fill = U' ', bool truncate = false) const
    {
        return Justified(width, fill, truncate, false, true);
    }
    [[nodiscard]] Owner rightJustified32(int width, char32_t fill = U' ', bool truncate = false) const
    {
        return Justified(width, fill, truncate, true, true);
    }
    /// n copies, one behind the other; none for n below 1. Throws "Allocation size less than zero; probable overflow"
    /// when an int cannot hold the length.
    [[nodiscard]] Owner repeated(int n) const { return n == 1 ? Owner(This()) : qvxsys::detail::Repeated(Text(), n); }
    /// The code points in reverse order: pairs stay whole.
    [[nodiscard]] Owner reversed() const { return qvxsys::detail::Reversed(Text()); }
    /// ICU's full case mapping for its default locale, so the length may change: "stra\u00DFe" becomes "STRASSE". Where
    /// the result must be the same on every machine (keys, protocols), use QvxICU::toLowerRoot and toUpperRoot: with
    /// Turkish as the default locale "I" becomes U+0131 here.
    [[nodiscard]] Owner toLower() const { return qvxsys::detail::ToLower(Text()); }
    [[nodiscard]] Owner toUpper() const { return qvxsys::detail::ToUpper(Text()); }
    /// @}

    /// Whether the text begins with the byte-order mark U+FEFF.
    [[nodiscard]] bool hasBOM() const noexcept
    {
        View const text = Text();
        return !text.empty() && text[0] == 0xFEFF;
    }

protected:
    ~TTextReading() = default;

private:
    [[nodiscard]] Self const& This() const noexcept { return static_cast<Self const&>(*this); }
    [[nodiscard]] View Text() const noexcept { return View(This()); }
    [[nodiscard]] static constexpr bool IsFolded(Case cs) noexcept { return cs != kExact; }
    [[nodiscard]] int Position(Iterator const& it) const
    {
        return qvxsys::detail::PositionOf(Text(), it.text(), it.codeUnitIndex(),
                                          qvxsys::detail::ContainerName<Self>::value);
    }
    template<class Part, class A>
    [[nodiscard]] std::vector<Part> Parts(A const& separator, Empty empty, Case cs) const
    {
        std::vector<Part> parts;
        qvxsys::detail::Split(Text(), qvxsys::detail::ToView(separator), empty != kKeep, IsFolded(cs), parts);
        return parts;
    }
    template<class Part, class A>
    [[nodiscard]] std::vector<Part> PartsOnAny(A const& set, Empty empty) const
    {
        std::vector<Part> parts;
        auto const& members = qvxsys::detail::ToView(set);
        if (!View(members).empty()) {
            qvxsys::detail::SplitOnAny(Text(), members, empty != kKeep, parts);
        }
        return parts;
    }
    /// Of ASCII.
    static constexpr bool IsGraphic(char16_t c) noexcept { return c - 0x21u < 0x5E; }
    [[nodiscard]] Self WithEnds(View part) const { return part.size() == Text().size() ? This() : Self(part); }
    template<class C>
    [[nodiscard]] Owner Justified(int width, C fill, bool truncate, bool inFront, bool codePoints) const
    {
        View const text = Text();
        int const wanted = width < 0 ? 0 : width;
        int const missing = wanted - (codePoints ? text.lengthInCodePoints() : text.length());
        if (missing > 0) {
            return qvxsys::detail::Padded(text, missing, qvxsys::detail::UnitsOf(fill), inFront);
        }
        if (missing < 0 && truncate) {
            return Owner(codePoints ? leftCodePoints(wanted) : This().left(wanted));
        }
        return Owner(This());
    }
    [[nodiscard]] Iterator At(int position) const
    {
        return {position == 0 ? 0 : -1, position < Text().length() ? position : -1, This()};
    }
};

// The classes, one of which the template needs.
#include <qvxsys/TStringView.h>
