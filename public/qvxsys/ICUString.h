#pragma once
// A string of ICU's own, for operations that hand over or take back text many times without copying it. Wherever a text
// is only passed, TStringCore and TStringView do.
//
//     auto text = QvxICU::ICUString::createInstance(u"Stra\u00DFe");
//     text->toUpper().append(L" 7");                // by the rules of the default locale
//     TStringCore const own = text->toString();     // u"STRASSE 7"
//
//     auto const alias = QvxICU::ICUString::createAlias(own);                 // reads `own` in place
//     int const at = alias->indexOf(u'7');
//     bool const same = alias->caseCompare(L"stra\u00DFe 7") == 0;            // folded, U+00DF is "ss"
//
// Indexes and lengths are in units. As in ICU they are pinned to the text: what lies before the start is the start,
// what lies behind the end is the end; only the functions that look up one place in it say what they do elsewhere. A
// text argument is UTF-16, wide or UTF-8, a string, a view or a character (a char is Latin-1, a char32_t or a 32-bit
// wchar_t a code point); it may be part of the string itself. Text that is not well-formed is kept as it is: a
// surrogate without its partner counts as a code point.
//
// Ownership: createInstance() and clone() hand over a string of its own. Copies share their units until one is changed.
// A string for which there is no memory becomes bogus, which is empty, equals only bogus strings, and ignores changes
// other than setTo() and remove().

#include <climits>
#include <concepts>
#include <memory>
#include <string>

#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/IcuConstants.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>
#include <qvxsys/TextArguments.h>
#include <qvxsys/WideText.h>

namespace QvxICU {

namespace detail {

/// A text argument that is not taken as a view already.
template<class T>
concept OtherText = qvxsys::detail::TextArgument<T> && !std::convertible_to<T const&, TStringView>;

} // namespace detail

/// A string may be read from several threads at once, and written to from one.
class QVXSYS_API ICUString
{
public:
    /// @name Creation
    /// @{
    [[nodiscard]] static std::unique_ptr<ICUString> createInstance();
    /// From UTF-8; malformed bytes become U+FFFD. Null is the empty text.
    [[nodiscard]] static std::unique_ptr<ICUString> createInstance(char const* utf8);
    [[nodiscard]] static std::unique_ptr<ICUString> createInstance(wchar_t const* text);
    [[nodiscard]] static std::unique_ptr<ICUString> createInstance(TStringView text);
    /// A string could be taken for either of the two on Windows.
    template<std::derived_from<TStringCore> S>
    [[nodiscard]] static std::unique_ptr<ICUString> createInstance(S const& text)
    {
        return createInstance(text.view());
    }
    /// Reads the text in place, which must outlive the string and must not change; the first change to the string makes
    /// a copy, and so does clone(). The cheap way to hand a text to ICU.
    [[nodiscard]] static std::unique_ptr<ICUString> createAlias(TStringView text QVXSYS_LIFETIME_BOUND);
    /// From the bytes of a code page, by the name of its converter ("windows-1252", any spelling that ICU knows); null
    /// is the default one. What cannot be decoded becomes U+FFFD. A name that is not known gives FileAccessError, and a
    /// bogus string. `length` of -1 means terminated bytes.
    [[nodiscard]] static std::unique_ptr<ICUString> createFromCodepage(char const* bytes, int length,
                                                                       char const* codepage, ICUErrorCode& status);
    /// @}

    virtual ~ICUString();

    [[nodiscard]] virtual std::unique_ptr<ICUString> clone() const = 0;
    /// In units.
    [[nodiscard]] virtual int length() const noexcept = 0;
    /// The text in place, not terminated; valid until the string is changed or ends.
    [[nodiscard]] virtual TStringView view() const noexcept QVXSYS_LIFETIME_BOUND = 0;
    /// A copy of the text.
    [[nodiscard]] virtual TStringCore toString() const = 0;

    /// For the library's own use: the ICU string behind the wrapper.
    [[nodiscard]] virtual void* Native() noexcept = 0;

    /// @name Comparing
    /// The sign of a result tells the order: below 0, the string is less.
    /// @{
    [[nodiscard]] virtual bool operator==(ICUString const& other) const noexcept = 0;
    [[nodiscard]] virtual bool equals(TStringView text) const noexcept = 0;
    /// By units.
    [[nodiscard]] virtual int compare(TStringView text) const noexcept = 0;
    /// By code points: U+FFFF is less than U+10000.
    [[nodiscard]] virtual int compareCodePointOrder(TStringView text) const noexcept = 0;
    /// Folded, with options of ICUCaseOption.
    [[nodiscard]] virtual int caseCompare(TStringView text, unsigned options = ICUFoldCaseDefault) const noexcept = 0;
    [[nodiscard]] virtual bool startsWith(TStringView text) const noexcept = 0;
    [[nodiscard]] virtual bool endsWith(TStringView text) const noexcept = 0;
    /// Equal for equal strings; not the same in every version of ICU.
    [[nodiscard]] virtual int hashCode() const noexcept = 0;
    /// @}

    /// @name Searching
    /// In the `length` units from `start`; -1 where there is none, and for an empty text. Half of a surrogate pair is
    /// never found.
    /// @{
    [[nodiscard]] virtual int indexOf(TStringView text, int start = 0, int length = INT_MAX) const noexcept = 0;
    [[nodiscard]] virtual int lastIndexOf(TStringView text, int start = 0, int length = INT_MAX) const noexcept = 0;
    /// @}

    /// @name Access
    /// @{
    /// U+FFFF outside the text.
    [[nodiscard]] virtual char16_t charAt(int offset) const noexcept = 0;
    /// The code point that the unit is part of; U+FFFF outside the text.
    [[nodiscard]] virtual char32_t char32At(int offset) const noexcept = 0;
    /// The first unit of the code point that the unit is part of; 0 outside the text.
    [[nodiscard]] virtual int getChar32Start(int offset) const noexcept = 0;
    /// The unit behind the code point that the unit before the offset is part of; the length outside the text.
    [[nodiscard]] virtual int getChar32Limit(int offset) const noexcept = 0;
    /// The index so many code points further on, or back.
    [[nodiscard]] virtual int moveIndex32(int index, int delta) const noexcept = 0;
    [[nodiscard]] virtual int countChar32(int start = 0, int length = INT_MAX) const noexcept = 0;
    /// Whether there are more than so many code points; does not count them all.
    [[nodiscard]] virtual bool hasMoreChar32Than(int start, int length, int number) const noexcept = 0;
    [[nodiscard]] virtual bool isEmpty() const noexcept = 0;
    [[nodiscard]] virtual bool isBogus() const noexcept = 0;
    /// A string of its own.
    [[nodiscard]] virtual std::unique_ptr<ICUString> substring(int start, int length = INT_MAX) const = 0;
    /// A surrogate without its partner becomes U+FFFD.
    [[nodiscard]] virtual std::string toUtf8() const = 0;
    /// The bytes in a code page, by the name of its converter; null is the default one. What it lacks becomes its
    /// substitute ('?' or 0x1A in most). A name that is not known gives FileAccessError.
    [[nodiscard]] virtual std::string toCodepage(char const* codepage, ICUErrorCode& status) const = 0;
    /// @}

    /// @name Changing
    /// @{
    /// The copy shares the units with the other string until one of them is changed.
    virtual ICUString& setTo(ICUString const& other) = 0;
    virtual ICUString& setTo(TStringView text) = 0;
    virtual void setToBogus() noexcept = 0;
    /// Replaces one unit, the last one for an offset behind it.
    virtual ICUString& setCharAt(int offset, char16_t unit) = 0;
    virtual ICUString& append(TStringView text) = 0;
    virtual ICUString& insert(int start, TStringView text) = 0;
    virtual ICUString& replace(int start, int length, TStringView text) = 0;
    virtual ICUString& replaceBetween(int start, int limit, TStringView text) = 0;
    /// Every occurrence, from the left.
    virtual ICUString& findAndReplace(TStringView oldText, TStringView newText) = 0;
    /// All of it.
    virtual ICUString& remove() = 0;
    virtual ICUString& remove(int start, int length = INT_MAX) = 0;
    virtual ICUString& removeBetween(int start, int limit = INT_MAX) = 0;
    /// Removes what is not between the two.
    virtual ICUString& retainBetween(int start, int limit = INT_MAX) = 0;
    /// To so many units; true if the string was shorter, which padding makes longer, or longer, which truncation makes
    /// shorter.
    virtual bool padLeading(int targetLength, char16_t unit = u' ') = 0;
    virtual bool padTrailing(int targetLength, char16_t unit = u' ') = 0;
    virtual bool truncate(int targetLength) = 0;
    /// Without white space (u_isWhitespace) at both ends.
    virtual ICUString& trim() = 0;
    /// By code points: surrogate pairs stay as they are.
    virtual ICUString& reverse() = 0;
    virtual ICUString& reverse(int start, int length) = 0;
    /// @}

    /// @name Case, by the whole text: lengths change
    /// Without a locale by the default one, so that results depend on the user ("TITLE" is "t\u0131tle" for Turks);
    /// the locale that ICULocale::getRoot gives stands for the rules that hold for no language in particular.
    /// @{
    virtual ICUString& toUpper() = 0;
    virtual ICUString& toUpper(ICULocale const& locale) = 0;
    virtual ICUString& toLower() = 0;
    virtual ICUString& toLower(ICULocale const& locale) = 0;
    /// Words by ICU's rules of the locale, with options of ICUCaseOption.
    virtual ICUString& toTitle() = 0;
    virtual ICUString& toTitle(ICULocale const& locale, unsigned options = 0) = 0;
    /// For comparing without case; the same for all languages, but for ICUFoldCaseExcludeSpecialI.
    virtual ICUString& foldCase(unsigned options = ICUFoldCaseDefault) = 0;
    /// @}

    /// The text with escape sequences resolved: \uhhhh, \Uhhhhhhhh, \xhh, \x{h...}, \ooo, \cX, \a, \b, \e, \f, \n, \r,
    /// \t, \v; any other character stands for itself. Empty if a sequence is malformed.
    [[nodiscard]] virtual std::unique_ptr<ICUString> unescape() const = 0;
    /// The code point of one sequence; `offset` is behind the backslash, and then behind the sequence. ICUNoCodePoint,
    /// and the offset as it was, if it is malformed.
    [[nodiscard]] virtual char32_t unescapeAt(int& offset) const noexcept = 0;

    /// @name The same with text of another kind, and with characters
    /// @{
    template<detail::OtherText T>
    [[nodiscard]] bool equals(T const& text) const
    {
        return equals(TStringView(qvxsys::detail::ToView(text)));
    }
    template<class T>
    requires qvxsys::detail::TextArgument<T>
    [[nodiscard]] bool operator==(T const& text) const { return equals(text); }
    template<detail::OtherText T>
    [[nodiscard]] int compare(T const& text) const
    {
        return compare(TStringView(qvxsys::detail::ToView(text)));
    }
    template<detail::OtherText T>
    [[nodiscard]] int compareCodePointOrder(T const& text) const
    {
        return compareCodePointOrder(TStringView(qvxsys::detail::ToView(text)));
    }
    template<detail::OtherText T>
    [[nodiscard]] int caseCompare(T const& text, unsigned options = ICUFoldCaseDefault) const
    {
        return caseCompare(TStringView(qvxsys::detail::ToView(text)), options);
    }
    template<detail::OtherText T>
    [[nodiscard]] bool startsWith(T const& text) const
    {
        return startsWith(TStringView(qvxsys::detail::ToView(text)));
    }
    template<detail::OtherText T>
    [[nodiscard]] bool endsWith(T const& text) const
    {
        return endsWith(TStringView(qvxsys::detail::ToView(text)));
    }
    template<detail::OtherText T>
    [[nodiscard]] int indexOf(T const& text, int start = 0, int length = INT_MAX) const
    {
        return indexOf(TStringView(qvxsys::detail::ToView(text)), start, length);
    }
    template<detail::OtherText T>
    [[nodiscard]] int lastIndexOf(T const& text, int start = 0, int length = INT_MAX) const
    {
        return lastIndexOf(TStringView(qvxsys::detail::ToView(text)), start, length);
    }
    template<detail::OtherText T>
    ICUString& setTo(T const& text)
    {
        return setTo(TStringView(qvxsys::detail::ToView(text)));
    }
    template<detail::OtherText T>
    ICUString& append(T const& text)
    {
        return append(TStringView(qvxsys::detail::ToView(text)));
    }
    template<detail::OtherText T>
    ICUString& insert(int start, T const& text)
    {
        return insert(start, TStringView(qvxsys::detail::ToView(text)));
    }
    template<detail::OtherText T>
    ICUString& replace(int start, int length, T const& text)
    {
        return replace(start, length, TStringView(qvxsys::detail::ToView(text)));
    }
    template<detail::OtherText T>
    ICUString& replaceBetween(int start, int limit, T const& text)
    {
        return replaceBetween(start, limit, TStringView(qvxsys::detail::ToView(text)));
    }
    template<class T, class U>
    requires detail::OtherText<T> || detail::OtherText<U> ICUString& findAndReplace(T const& oldText, U const& newText)
    {
        return findAndReplace(TStringView(qvxsys::detail::ToView(oldText)),
                              TStringView(qvxsys::detail::ToView(newText)));
    }
    /// @}

protected:
    ICUString() = default;
    ICUString(ICUString const&) = default;
    ICUString& operator=(ICUString const&) = default;
};

} // namespace QvxICU
