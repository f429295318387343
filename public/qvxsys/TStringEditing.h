#pragma once
// The members of TStringCore that change text in place or make changed copies of it.
//
//     TStringCore text = u"one two";
//     text.insert(3, u',').prepend(L"\u00AB").append(u'\u00BB');             // each returns the string
//
// Arguments are those of TTextReading.h and may point into the string itself. Positions are code units and never throw;
// each member says what it makes of one outside the text. What changes nothing detaches nothing: the string goes on
// sharing its block. A call that fails ("Out of memory", "Allocation size less than zero; probable overflow") leaves
// text, length and sharing as they were.

#include <concepts>

#include <qvxsys/Platform.h>
#include <qvxsys/TStringStorage.h>
#include <qvxsys/TextArguments.h>

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

    template<qvxsys::detail::TextArgument A = TStringView>
    TStringCore& prepend(A const& text)
    {
        return insert(0, text);
    }
    TStringCore& prepend(char16_t const* s, int n) { return insert(0, s, n); }
    TStringCore& prepend(wchar_t const* s, int n) { return insert(0, s, n); }
    TStringCore& prepend(char const* utf8, int n) { return insert(0, utf8, n); }
    TStringCore& prepend32(char32_t c) { return insert(0, c); }
    template<qvxsys::detail::TextArgument A = TStringView>
    void push_front(A const& text)
    {
        insert(0, text);
    }
    void push_front32(char32_t c) { insert(0, c); }
    /// @}

protected:
    TStringEditing() noexcept = default;
    TStringEditing(TStringEditing const&) noexcept = default;
    TStringEditing(TStringEditing&&) noexcept = default;
    TStringEditing& operator=(TStringEditing const&) noexcept = default;
    TStringEditing& operator=(TStringEditing&&) noexcept = default;
    ~TStringEditing() = default;

    [[nodiscard]] TStringCore& Self() noexcept;

    TStringCore& InsertText(int pos, TStringView v);
    void ReplaceUnits(int pos, int count, char16_t const* units, int n);
};

#include <qvxsys/TStringCore.h>
