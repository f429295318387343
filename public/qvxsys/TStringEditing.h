#pragma once
// The members of TStringCore that change text in place or make changed copies of it.
//
//     TStringCore text = u"one two";
//     text.insert(3, u',').prepend(L"\u00AB").append(u'\u00BB');             // each returns the string
//     text.replace(u"two", "three").removeAnyOf(u",;");
//     TStringCore const name = text.mid(1, 3).toUpper();                     // the rest gives a new string
//
// Arguments are those of TTextReading.h and may point into the string itself. Positions are code units and never throw;
// each member says what it makes of one outside the text. An edit that finds nothing to do detaches nothing: the string
// goes on sharing its block. A call that fails ("Out of memory", "Allocation size less than zero; probable overflow")
// leaves text, length and sharing as they were.

#include <initializer_list>
#include <vector>

#include <qvxsys/Platform.h>
#include <qvxsys/TStringStorage.h>
#include <qvxsys/TextArguments.h>

template<class Container>
class TConstCodePointIterator;

/// The editing members of TStringCore. Not to be used by itself.
class QVXSYS_API TStringEditing : public TStringStorage
{
public:
    /// CaseSensitive compares units exactly; any other value folds each unit first (TCType::FoldCase).
    enum CaseSensitivity : int { CaseInsensitive = 0, CaseSensitive = 1 };

    /// What splitting does with empty parts.
    enum SplitBehavior : int { KeepEmptyParts = 0, SkipEmptyParts = 1 };

    /// How a text is cut into sections; can be combined.
    enum SectionFlags : int {
        SectionDefault = 0,
        SectionSkipEmpty = 1,
        SectionIncludeLeadingSep = 2,
        SectionIncludeTrailingSep = 4,
        SectionCaseInsensitiveSeps = 8,
    };

    /// @name Inserting
    /// Before the unit at `pos`; a position below 0 means 0, one past the end means the end.
    /// @{
    template<qvxsys::detail::TextArgument A = TStringView>
    TStringCore& insert(int pos, A const& text)
    {
        return InsertText(pos, qvxsys::detail::ToView(text));
    }
    /// n units (bytes of UTF-8); a negative n means up to the 0 unit. From inside the string's own text: cut to it.
    TStringCore& insert(int pos, char16_t const* s, int n);
    TStringCore& insert(int pos, wchar_t const* s, int n);
    TStringCore& insert(int pos, char const* utf8, int n);
    TStringCore& insert(int pos, char8_t const* utf8, int n)
    {
        return insert(pos, reinterpret_cast<char const*>(utf8), n);
    }

    template<qvxsys::detail::TextArgument A = TStringView>
    TStringCore& prepend(A const& text)
    {
        return insert(0, text);
    }
    TStringCore& prepend(char16_t const* s, int n) { return insert(0, s, n); }
    TStringCore& prepend(wchar_t const* s, int n) { return insert(0, s, n); }
    TStringCore& prepend(char const* utf8, int n) { return insert(0, utf8, n); }
    TStringCore& prepend(char8_t const* utf8, int n) { return insert(0, utf8, n); }
    TStringCore& prepend32(char32_t c) { return insert(0, c); }
    template<qvxsys::detail::TextArgument A = TStringView>
    void push_front(A const& text)
    {
        insert(0, text);
    }
    void push_front32(char32_t c) { insert(0, c); }
    /// @}

    /// @name Removing
    /// @{
    /// n units from `pos` on, as many as there are; nothing for a position outside the text or n below 1.
    TStringCore& removeAt(int pos, int n = 1);
    /// Every occurrence of a text or character, from the front, not overlapping; nothing for an empty text.
    template<qvxsys::detail::TextArgument A = TStringView>
    TStringCore& removeAll(A const& text, CaseSensitivity cs = CaseSensitive)
    {
        return RemoveText(qvxsys::detail::ToView(text), cs);
    }
    TStringCore& removeAll32(char32_t c, CaseSensitivity cs = CaseSensitive) { return removeAll(c, cs); }
    /// Every code point that is in a set.
    template<qvxsys::detail::TextArgument A = TStringView>
    TStringCore& removeAnyOf(A const& set)
    {
        return RemoveMembers(qvxsys::detail::ToView(set));
    }
    /// The last n units; nothing for n below 1.
    TStringCore& chop(int n);
    /// Keeps the first n units; none for n below 1. The block stays.
    TStringCore& truncate(int n);
    /// Keeps what stands before the first 0 unit.
    TStringCore& truncateAtFirstNull();
    /// @}

    /// @name Trimming
    /// Drops white space (TCType::isSpace32), or code points of a set (a text or a character), from the ends.
    /// @{
    TStringCore& trim();
    TStringCore& trimLeft();
    TStringCore& trimRight();
    template<qvxsys::detail::TextArgument A = TStringView>
    TStringCore& trim(A const& set)
    {
        return Trim(qvxsys::detail::ToView(set), true, true);
    }
    template<qvxsys::detail::TextArgument A = TStringView>
    TStringCore& trimLeft(A const& set)
    {
        return Trim(qvxsys::detail::ToView(set), true, false);
    }
    template<qvxsys::detail::TextArgument A = TStringView>
    TStringCore& trimRight(A const& set)
    {
        return Trim(qvxsys::detail::ToView(set), false, true);
    }
    TStringCore& trim32(char32_t c) { return trim(c); }
    TStringCore& trimLeft32(char32_t c) { return trimLeft(c); }
    TStringCore& trimRight32(char32_t c) { return trimRight(c); }
    /// @}

    /// @name Replacing
    /// @{
    /// n units at `pos`, as many as there are (none for n below 0), by a text; nothing for a position outside
    /// [0, length].
    template<qvxsys::detail::TextArgument A = TStringView>
    TStringCore& replace(int pos, int n, A const& text)
    {
        return ReplaceRange(pos, n, qvxsys::detail::ToView(text));
    }
    /// Every occurrence of `before`, a text or a character, from the front, not overlapping; nothing for an empty one.
    template<qvxsys::detail::TextArgument B = TStringView, qvxsys::detail::TextArgument A = TStringView>
    TStringCore& replace(B const& before, A const& after, CaseSensitivity cs = CaseSensitive)
    {
        return ReplaceEach(qvxsys::detail::ToView(before), qvxsys::detail::ToView(after), cs);
    }
    TStringCore& replace32(char32_t before, char32_t after, CaseSensitivity cs = CaseSensitive)
    {
        return replace(before, after, cs);
    }
    /// The same; returns how many occurrences were replaced.
    template<qvxsys::detail::TextArgument B = TStringView, qvxsys::detail::TextArgument A = TStringView>
    int replaceCount(B const& before, A const& after, CaseSensitivity cs = CaseSensitive)
    {
        return ReplaceText(qvxsys::detail::ToView(before), qvxsys::detail::ToView(after), cs);
    }
    /// Every code point that is in a set, by a text or character.
    template<qvxsys::detail::TextArgument S = TStringView, qvxsys::detail::TextArgument A = TStringView>
    TStringCore& replaceAnyOf(S const& set, A const& after)
    {
        return ReplaceMembers(qvxsys::detail::ToView(set), qvxsys::detail::ToView(after));
    }
    template<qvxsys::detail::TextArgument S = TStringView>
    TStringCore& replaceAnyOf32(S const& set, char32_t after)
    {
        return replaceAnyOf(set, after);
    }
    /// Becomes n copies of a character; for a negative n as many as it has units (code points, for a character of two
    /// units).
    template<TCType::Character C>
    TStringCore& fill(C c, int n = -1)
    {
        return Fill(qvxsys::detail::UnitsOf(c), n);
    }
    /// The code points in reverse order: pairs stay whole.
    TStringCore& reverse();
    /// @}

    /// @name Byte-order mark and line endings
    /// @{
    /// Puts U+FEFF in front unless it is there already.
    TStringCore& prependBOM();
    /// Removes one U+FEFF from the front.
    TStringCore& removeBOM();
    /// CR LF, CR CR LF and a lone CR become LF (StringUtils::normalizeLineEndings).
    TStringCore& dosToUnix();
    /// A LF that follows no CR becomes CR LF.
    TStringCore& unixToDos();
    /// The platform's form: unixToDos on Windows, dosToUnix elsewhere.
    TStringCore& toNativeLineEndings();
    /// @}

    /// @name Slices
    /// New strings; the whole text shares its block.
    /// @{
    /// The first and the last n units, all there are for a larger n, none for n below 1.
    [[nodiscard]] TStringCore left(int n) const;
    [[nodiscard]] TStringCore right(int n) const;
    /// n units from `pos` on, as many as there are; a negative n means up to the first 0 unit at or after `pos`, and
    /// mid(0, -1) is the whole string. Empty for a position outside [0, length].
    [[nodiscard]] TStringCore mid(int pos, int n = -1) const;
    /// From first up to last; empty when last stands before first. Throws std::runtime_error when an iterator walks
    /// another text (CodePointIterator.h).
    [[nodiscard]] TStringCore mid(TConstCodePointIterator<TStringCore> const& first,
                                  TConstCodePointIterator<TStringCore> const& last) const;
    /// n code points from first, as many as there are; a negative n means up to the first 0 unit, and from the first
    /// code point the whole string.
    [[nodiscard]] TStringCore mid(TConstCodePointIterator<TStringCore> const& first, int n) const;
    /// @}

    /// @name Joining
    /// The elements with the separator, a text or a character, between them. Sized once.
    /// @{
    template<qvxsys::detail::TextArgument A = TStringView>
    [[nodiscard]] static TStringCore join(std::vector<TStringCore> const& parts, A const& separator);
    template<qvxsys::detail::TextArgument A = TStringView>
    [[nodiscard]] static TStringCore join(std::vector<TStringView> const& parts, A const& separator);
    /// Of texts in braces: join({u"a", name, view}, u", ").
    template<qvxsys::detail::TextArgument A = TStringView>
    [[nodiscard]] static TStringCore join(std::initializer_list<TStringView> parts, A const& separator);
    [[nodiscard]] static TStringCore join32(std::vector<TStringCore> const& parts, char32_t separator);
    [[nodiscard]] static TStringCore join32(std::vector<TStringView> const& parts, char32_t separator);
    /// @}

protected:
    TStringEditing() noexcept = default;
    TStringEditing(TStringEditing const&) noexcept = default;
    TStringEditing(TStringEditing&&) noexcept = default;
    TStringEditing& operator=(TStringEditing const&) noexcept = default;
    TStringEditing& operator=(TStringEditing&&) noexcept = default;
    ~TStringEditing() = default;

    [[nodiscard]] inline TStringCore& Self() noexcept;
    [[nodiscard]] inline TStringCore const& Self() const noexcept;

    TStringCore& InsertText(int pos, TStringView v);
    TStringCore& ReplaceRange(int pos, int n, TStringView v);
    int ReplaceText(TStringView before, TStringView after, CaseSensitivity cs);
    template<class Places>
    int ReplacePlaces(Places places, TStringView after, bool streaming);
    int ReplaceUnit(char16_t before, char16_t after, bool folded);
    TStringCore& ReplaceEach(TStringView before, TStringView after, CaseSensitivity cs);
    TStringCore& RemoveText(TStringView v, CaseSensitivity cs);
    TStringCore& RemoveMembers(TStringView set);
    TStringCore& ReplaceMembers(TStringView set, TStringView after);
    TStringCore& Trim(TStringView set, bool left, bool right);
    TStringCore& AssignCopies(qvxsys::detail::UnitsOf units, int n);
    TStringCore& Fill(qvxsys::detail::UnitsOf units, int n);
    /// Becomes the part `kept` of its own text.
    TStringCore& Keep(TStringView kept);
    /// An empty string with the room that this one would have after detaching for n units.
    [[nodiscard]] TStringCore Fresh(int n) const;
    static TStringCore Join(std::vector<TStringCore> const& parts, TStringView separator);
    static TStringCore Join(std::vector<TStringView> const& parts, TStringView separator);

    void ReplaceUnits(int pos, int count, char16_t const* units, int n);
};

#include <qvxsys/TStringCore.h>
