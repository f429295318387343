#pragma once
// TPathCore: the name of a file or folder by the rules of Windows, on every platform. It never looks at a disk.
//
//     TPathCore const file = u"C:\\docs\\notes.txt";
//     file.GenericString();                             // "C:/docs/notes.txt": how it is kept
//     file.NativeString();                              // "C:\docs\notes.txt"
//     file.Parent() / u"other" / u"list.csv";           // "C:/docs/other/list.csv"
//     TPathCore(file).ReplaceExtension(u"bak");         // "C:/docs/notes.bak"
//     for (TStringView const name : file.Elements()) { ... }       // "C:", "/", "docs", "notes.txt"
//
// A path is one text in generic form: '/' separates, and a back slash never remains. Making one replaces '\' and drops
// one '/' at the end unless the text is a root path: "dir/" is "dir", "C:/" stays, "a//" becomes "a/". What is cut from
// a path (root name, parent, ...) is taken as it stands and not treated so again. Nothing else is changed: neither "."
// and ".." nor doubled separators, until LexicallyNormal() is asked for.
//
//   root name   "C:" (any letter), "//server", "//?/C:", "//?/UNC/server"
//   root path   root name and the '/' behind it, either of which may be missing
//   absolute    with a root name and a '/' behind it; "/dir" is neither absolute nor relative
//   file name   what follows the last '/', or the first ':' when that comes later; none in roots and behind a last '/'
//   extension   what follows the last '.' of the file name, not at its beginning
//
// docs/paths.md has a table of what each operation makes of which path. Every text is a path, malformed UTF-16 too;
// only misuse of iterators throws (see iterator). Positions are code units: whatever separates is ASCII, and no unit of
// a pair is, so that cutting at separators never cuts a code point, and lengths in code points would cut no
// differently.
//
// Comparing folds case unit by unit (TStringCore::CaseInsensitive) and ends at an embedded 0 unit, as std::hash does;
// CompareExact and qvxsys::ExactPathLess, ExactPathEqual and ExactPathHash do neither. A path of up to 14 units needs
// no memory but its own; copies of longer ones share it. Text arguments are what TStringCore is made of. As thread-safe
// as a TStringCore. To and from the names of the file system: <qvxsys/FileSystemPath.h>.

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iosfwd>
#include <vector>

#include <qvxsys/PathText.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/std.h>

namespace qvxsys::detail {
struct PathAccess;
}

/// A path by the rules of Windows.
class QVXSYS_API TPathCore
{
public:
    class Exception;
    class iterator;
    class ElementRange;
    using const_iterator = iterator;
    using value_type = TStringCore;

    /// @name Making and assigning
    /// @{
    /// The empty path.
    TPathCore() noexcept = default;
    /// Shares the text's block when the text is in generic form.
    TPathCore(TStringCore const& text) : m_text(text) { Normalize(); }
    TPathCore(TStringCore&& text) : m_text(static_cast<TStringCore&&>(text)) { Normalize(); }
    /// UTF-16, wide text, UTF-8, views and the standard library's strings; a null pointer is the empty path.
    template<qvxsys::detail::TextOperand T>
    requires(!std::derived_from<T, TStringCore>) TPathCore(T const& text) : m_text(text) { Normalize(); }
    /// The same as the constructor.
    [[nodiscard]] static TPathCore fromWindows(TStringCore const& text) { return TPathCore(text); }
    /// Appends the elements one after the other (see Append()), each made a path first; what comes of it is treated as
    /// a constructor's text. Of toVector() it makes the path again, but for doubled separators behind the first name, a
    /// '/' at the end, and drives without one: "C:", "a" becomes "C:/a".
    [[nodiscard]] static TPathCore fromVector(std::vector<TStringCore> const& elements);
    TPathCore(TPathCore const&) noexcept = default;
    TPathCore(TPathCore&&) noexcept = default;
    TPathCore& operator=(TPathCore const&) noexcept = default;
    TPathCore& operator=(TPathCore&&) noexcept = default;
    ~TPathCore() = default;
    void Clear() noexcept { m_text.clear(); }
    void Swap(TPathCore& other) noexcept { m_text.swap(other.m_text); }
    friend void swap(TPathCore& a, TPathCore& b) noexcept { a.Swap(b); }
    /// @}

    /// @name Text
    /// @{
    [[nodiscard]] TStringCore const& GenericString() const& noexcept QVXSYS_LIFETIME_BOUND { return m_text; }
    [[nodiscard]] TStringCore GenericString() && noexcept { return static_cast<TStringCore&&>(m_text); }
    operator TStringCore() const noexcept { return m_text; }
    /// With '\' for '/'.
    [[nodiscard]] TStringCore NativeString() const;
    /// The native spelling with the extended-length prefix, by which Windows takes names of more than 259 units:
    /// "\\?\C:\dir", "\\?\UNC\server\share". Only absolute paths can have it: others, those that have it already and
    /// names of devices ("//./...") are spelled as NativeString() does.
    [[nodiscard]] TStringCore NativeLongPath() const;
    /// The native spelling without that prefix. It is dropped from absolute paths only, where NativeLongPath() puts
    /// it back, so "//?/C:" and "//?/Volume{...}/dir" keep it.
    [[nodiscard]] TStringCore NativeShortPath() const;
    [[nodiscard]] bool empty() const noexcept { return m_text.empty(); }
    /// @}

    /// @name Parts
    /// Empty where the path has no such part.
    /// @{
    [[nodiscard]] TPathCore RootName() const { return Piece(0, RootPart().name); }
    /// "/" or empty.
    [[nodiscard]] TPathCore RootDirectory() const { return Piece(RootPart().name, RootPart().Length()); }
    [[nodiscard]] TPathCore RootPath() const { return Piece(0, RootPart().Length()); }
    [[nodiscard]] TPathCore Filename() const
    {
        int const start = qvxsys::detail::path::FilenameStart(m_text);
        return start < 0 ? TPathCore() : Piece(start, m_text.length());
    }
    /// The file name as a path of its own after RemoveExtension().
    [[nodiscard]] TPathCore Stem() const
    {
        using namespace qvxsys::detail::path;
        int start;
        if (!FindPlainFilename(m_text, start)) [[unlikely]] {
            return Filename().RemoveExtension();
        }
        int const extension = ExtensionStart(m_text, start);
        return start < 0 ? TPathCore() : Piece(start, extension < 0 ? m_text.length() : extension - 1);
    }
    /// Without its dot; ".profile", "." and ".." have none, "name." has an empty one.
    [[nodiscard]] TStringCore Extension() const
    {
        int const start = qvxsys::detail::path::ExtensionStart(m_text);
        return start < 0 ? TStringCore() : TStringCore(m_text.constData() + start, m_text.length() - start);
    }
    /// The path after RemoveFilename(): roots and others without a file name are their own parents.
    [[nodiscard]] TPathCore Parent() const { return Piece(0, qvxsys::detail::path::ParentLength(m_text)); }
    /// In "//server/share/dir/name" (also "//?/UNC/server/share/...") "share" and "dir/name"; empty for other paths.
    [[nodiscard]] TStringCore UNCShareName() const;
    [[nodiscard]] TStringCore UNCObjectName() const;
    /// The share name's first unit, whatever the share; 0 without one. See IsAdminShare().
    [[nodiscard]] char16_t AdminShareDriveLetter() const noexcept;
    /// @}

    /// @name Questions
    /// @{
    [[nodiscard]] bool HasRootName() const noexcept { return RootPart().name > 0; }
    [[nodiscard]] bool HasRootDirectory() const noexcept { return RootPart().directory; }
    /// Either of the two.
    [[nodiscard]] bool HasRootPath() const noexcept { return RootPart().Length() > 0; }
    [[nodiscard]] bool HasFilename() const noexcept { return qvxsys::detail::path::FilenameStart(m_text) >= 0; }
    /// The same as HasFilename().
    [[nodiscard]] bool HasStem() const noexcept { return HasFilename(); }
    /// Also when it is empty: "name."
    [[nodiscard]] bool HasExtension() const noexcept { return qvxsys::detail::path::ExtensionStart(m_text) >= 0; }
    /// Whether Parent() is not empty and another path.
    [[nodiscard]] bool HasParentPath() const noexcept
    {
        int const length = qvxsys::detail::path::ParentLength(m_text);
        return length > 0 && length < m_text.length();
    }
    [[nodiscard]] bool HasUNCObjectName() const noexcept;
    /// With a root name and a '/' behind it. "/dir" is neither absolute nor relative: it depends on the current drive.
    [[nodiscard]] bool IsAbsolute() const noexcept { return HasRootName() && HasRootDirectory(); }
    /// Without a root directory; "C:name" and "//server" are.
    [[nodiscard]] bool IsRelative() const noexcept { return !HasRootDirectory(); }
    /// Begins with "//" and something, but for "//?" unless "/UNC/" (in any case) follows.
    [[nodiscard]] bool IsUNC() const noexcept { return qvxsys::detail::path::IsUnc(m_text); }
    /// The share is a drive's: two units, the second '$' ("//server/c$").
    [[nodiscard]] bool IsAdminShare() const noexcept;
    /// Begins with "//?/".
    [[nodiscard]] bool IsExtendedLength() const noexcept { return qvxsys::detail::path::IsExtended(m_text); }
    /// The file name is "." or "..".
    [[nodiscard]] bool IsDots() const noexcept;
    /// @}

    /// @name Changing
    /// @{
    /// Puts a '/' between the two texts when neither is empty, this one does not end with one and the other does not
    /// begin with one. An absolute path is appended like any other: "a" and "C:/b" make "a/C:/b".
    TPathCore& Append(TPathCore const& other);
    TPathCore& operator/=(TPathCore const& other) { return Append(other); }
    [[nodiscard]] friend TPathCore operator/(TPathCore const& a, TPathCore const& b) { return Joined(a, b); }
    [[nodiscard]] friend TPathCore operator/(TPathCore&& a, TPathCore const& b)
    {
        a.Append(b);
        return static_cast<TPathCore&&>(a);
    }
    /// The texts one behind the other. A text or character is made a path first, so of `+= u"b/"` the '/' is dropped.
    TPathCore& operator+=(TPathCore const& other);
    template<TCType::Character C>
    TPathCore& operator+=(C c)
    {
        return *this += TPathCore(TStringCore(c));
    }
    /// The same as +=, but for two paths: there the whole is treated as a constructor's text. (A TStringCore and a path
    /// make a TStringCore.)
    template<std::same_as<TPathCore> P>
    [[nodiscard]] friend TPathCore operator+(P const& a, P const& b)
    {
        return TPathCore(a.m_text + b.m_text);
    }
    template<qvxsys::detail::TextArgument A>
    [[nodiscard]] friend TPathCore operator+(TPathCore a, A const& b)
    {
        a += b;
        return a;
    }
    /// Drops the file name and the separator or ':' before it, but no root directory: "a/b" becomes "a", "/a" "/",
    /// "C:/a" "C:/", "b" "", and "C:b" "C". A path without a file name stays.
    TPathCore& RemoveFilename();
    /// With its dot.
    TPathCore& RemoveExtension();
    /// Removes the extension and, unless the new one is empty, appends '.' and it (one with a dot gets a second one).
    TPathCore& ReplaceExtension(TStringCore const& extension);
    template<qvxsys::detail::TextOperand T>
    requires(!std::derived_from<T, TStringCore>) TPathCore& ReplaceExtension(T const& extension)
    {
        return ReplaceExtension(TStringCore(extension));
    }
    /// @}

    /// @name Comparing
    /// @{
    [[nodiscard]] static constexpr TStringCore::CaseSensitivity caseSensitivity() noexcept
    {
        return static_cast<TStringCore::CaseSensitivity>(0);
    }
    /// '\'.
    [[nodiscard]] static constexpr char16_t nativeSeparatorDEPRECATED() noexcept { return u'\\'; }
    /// -1, 0 or 1: the generic texts by folded unit.
    [[nodiscard]] int Compare(TPathCore const& other) const noexcept
    {
        return m_text.compare(other.m_text, caseSensitivity());
    }
    /// -1, 0 or 1: the generic texts by unit, all of them. Says 0 of paths spelled the same only.
    [[nodiscard]] int CompareExact(TPathCore const& other) const noexcept
    {
        return qvxsys::detail::Order(m_text, other.m_text);
    }
    [[nodiscard]] friend bool operator==(TPathCore const& a, TPathCore const& b) noexcept
    {
        return a.IsSpelledLike(b) || a.Compare(b) == 0;
    }
    [[nodiscard]] friend bool operator<(TPathCore const& a, TPathCore const& b) noexcept { return a.Compare(b) < 0; }
    [[nodiscard]] friend std::weak_ordering operator<=>(TPathCore const& a, TPathCore const& b) noexcept
    {
        return a.Compare(b) <=> 0;
    }
    /// A text is made a path first: TPathCore(u"a/b") == u"A\\B\\".
    template<qvxsys::detail::TextOperand T>
    [[nodiscard]] friend bool operator==(TPathCore const& a, T const& b)
    {
        return a == TPathCore(b);
    }
    template<qvxsys::detail::TextOperand T>
    [[nodiscard]] friend std::weak_ordering operator<=>(TPathCore const& a, T const& b)
    {
        return a <=> TPathCore(b);
    }
    /// @}

    /// @name Elements
    /// By iterator: the root name, the root directory ("/"), and the texts between separators. Runs of separators
    /// count as one, except that without a root directory an empty element follows the first one behind the root name
    /// ("a/b" is "a", "", "b"), and that the first one behind a root directory is empty when that is doubled.
    /// @{
    [[nodiscard]] iterator begin() const noexcept QVXSYS_LIFETIME_BOUND;
    [[nodiscard]] iterator end() const noexcept QVXSYS_LIFETIME_BOUND;
    /// The number of elements; linear.
    [[nodiscard]] std::size_t size() const noexcept;
    /// The first and the last element; empty text for the empty path.
    [[nodiscard]] TStringCore front() const;
    [[nodiscard]] TStringCore back() const;
    [[nodiscard]] std::vector<TStringCore> toVector() const;
    /// The elements that are not empty, as views of this path's text: it must live and stay as it is meanwhile.
    [[nodiscard]] ElementRange Elements() const& noexcept QVXSYS_LIFETIME_BOUND;
    ElementRange Elements() const&& = delete;
    /// @}

    /// @name Lexical paths
    /// By the text alone: a link in the file system may lead elsewhere. Names compare folded.
    /// @{
    /// Without ".", doubled separators and names that ".." takes back. ".." does not climb above a root directory, nor
    /// above the share of a UNC path, as on Windows. Where nothing is left but was something, "."; a "." stays in front
    /// of a name that would be taken for a drive ("./C:"). Extended-length paths that are neither a drive's nor UNC
    /// ("//?/Volume{...}/dir") are left alone. LexicallyNormal() of the result is the result.
    [[nodiscard]] TPathCore LexicallyNormal() const;
    /// What leads from `base` to this path, so that (base / result).LexicallyNormal() == LexicallyNormal(); "." for the
    /// same path. Empty when nothing does: other root paths or shares, or more ".." in `base` than can be undone.
    /// (Where `base` is a root name alone, / would give it a root directory: behind "C:" use +. Paths that have no
    /// normal form are relative to themselves only, by ".".)
    [[nodiscard]] TPathCore LexicallyRelative(TPathCore const& base) const;
    /// Whether the normal form of this path is that of `folder` or lies below it. The empty path counts as ".".
    [[nodiscard]] bool IsWithin(TPathCore const& folder) const;
    /// @}

    /// @name Names that Windows accepts
    /// @{
    /// What Windows has against a name, by its documented rules ("Naming Files, Paths, and Namespaces").
    enum class NameFault : int {
        None = 0,
        Empty,              ///< no name at all
        Character,          ///< a control character (below U+0020) or one of < > : " / \ | ? *
        TrailingDotOrSpace, ///< '.' or ' ' at the end, which Windows drops; "." and ".." too
        Device,             ///< CON, PRN, AUX, NUL, CONIN$, CONOUT$, COM or LPT and a digit 1-9, U+00B9, U+00B2 or
                            ///< U+00B3, in any case, also with an extension and blanks before it: "nul .tar.gz"
        TooLong,            ///< more than 255 units
    };
    /// Of one element; the first fault in the order of the enumeration.
    [[nodiscard]] static NameFault CheckName(TStringView name) noexcept;
    /// The first fault of the elements behind the root path, where "." and ".." are none. No statement about the root.
    [[nodiscard]] NameFault CheckNames() const noexcept;
    /// @}

private:
    friend struct qvxsys::detail::PathAccess;

    // The text as it is.
    struct AsIs
    {};
    TPathCore(AsIs, TStringCore&& text) noexcept : m_text(static_cast<TStringCore&&>(text)) {}
    // Not through a string that is moved: the move would wait for its units to reach the cache.
    TPathCore(AsIs, char16_t const* units, int length) : m_text(units, length) {}
    [[nodiscard]] TPathCore Piece(int start, int end) const
    {
        int const length = end - start;
        if (length > TStringCore::kInlineLength && length == m_text.length()) {
            return *this;
        }
        return TPathCore(AsIs(), m_text.constData() + start, length);
    }
    [[nodiscard]] qvxsys::detail::path::Root RootPart() const noexcept { return qvxsys::detail::path::RootOf(m_text); }
    void Normalize()
    {
        int const length = m_text.length();
        if (length > TStringCore::kInlineLength || IsToBeNormalized(m_text.constData(), length)) {
            NormalizeText();
        }
    }
    /// Of at most 14 units, with room for 16: whether one is '\\' or the last one '/'.
    static bool IsToBeNormalized(char16_t const* s, int length) noexcept
    {
        using qvxsys::detail::path::EqualInEight;
        unsigned const backSlashes = EqualInEight(s, u'\\') | EqualInEight(s + 8, u'\\') << 16;
        return length > 0 && ((backSlashes & ((1u << (2 * length)) - 1)) != 0 || s[length - 1] == u'/');
    }
    void NormalizeText();
    [[nodiscard]] static TPathCore Joined(TPathCore const& a, TPathCore const& b);
    /// True for some that are; not for all when there is an embedded 0.
    [[nodiscard]] bool IsSpelledLike(TPathCore const& other) const noexcept
    {
        char16_t const* const a = m_text.constData();
        char16_t const* const b = other.m_text.constData();
        if (m_text.length() > TStringCore::kInlineLength) {
            return m_text.length() == other.m_text.length() && std::memcmp(a, b, m_text.lengthInBytes()) == 0;
        }
        unsigned const stop = qvxsys::detail::FirstStop(a, b);
        return stop < qvxsys::detail::kFirstUnits && a[stop] == b[stop];
    }

    TStringCore m_text;
};
static_assert(sizeof(TPathCore) == sizeof(TStringCore));

/// In generic form, as UTF-8.
inline std::ostream& operator<<(std::ostream& out, TPathCore const& path)
{
    return out << path.GenericString();
}
/// What GoogleTest shows of a path.
inline void PrintTo(TPathCore const& path, std::ostream* out)
{
    PrintTo(path.GenericString(), out);
}

/// Equal for equal paths, so whatever their case.
template<>
struct std::hash<TPathCore>
{
    [[nodiscard]] std::size_t operator()(TPathCore const& path) const noexcept
    {
        // As a terminated text: up to the first 0 unit.
        return qvxsys::detail::HashFolded(TStringView(path.GenericString().constData()));
    }
};

namespace qvxsys {

/// For containers that tell "A" from "a".
struct ExactPathLess
{
    [[nodiscard]] bool operator()(TPathCore const& a, TPathCore const& b) const noexcept
    {
        return a.CompareExact(b) < 0;
    }
};
/// Equality that tells case apart.
struct ExactPathEqual
{
    [[nodiscard]] bool operator()(TPathCore const& a, TPathCore const& b) const noexcept
    {
        return a.CompareExact(b) == 0;
    }
};
/// A hash that tells case apart.
struct ExactPathHash
{
    [[nodiscard]] std::size_t operator()(TPathCore const& path) const noexcept
    {
        return detail::Hash(path.GenericString());
    }
};

} // namespace qvxsys

// The nested classes, which need the class complete.
#include <qvxsys/PathIterator.h>
