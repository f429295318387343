#pragma once
// TPathCore: the name of a file or folder by the rules of Windows, on every platform. It never looks at a disk.
//
//     TPathCore const file = u"C:\\work\\notes.txt";
//     file.GenericString();                             // "C:/work/notes.txt": how it is kept
//     file.NativeString();                              // "C:\work\notes.txt"
//     file.Parent() / u"other" / u"list.csv";           // "C:/work/other/list.csv"
//     TPathCore(file).ReplaceExtension(u"bak");         // "C:/work/notes.bak"
//     for (TStringView const name : file.Elements()) { ... }       // "C:", "/", "work", "notes.txt"
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
#include <functional>
#include <iosfwd>
#include <iterator>
#include <memory>
#include <ranges>
#include <vector>

#include <qvxsys/Platform.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/std.h>

namespace qvxsys::detail {
struct PathAccess;
}

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
    /// The elements one after the other, with a '/' between two that neither ends nor begins with one (so none behind a
    /// root name that "/" follows), treated as a constructor's text. Of toVector() it makes the path again, but for
    /// doubled separators behind the first name, a '/' at the end, and drives without one: "C:", "a" becomes "C:/a".
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
    [[nodiscard]] TPathCore RootName() const;
    /// "/" or empty.
    [[nodiscard]] TPathCore RootDirectory() const;
    [[nodiscard]] TPathCore RootPath() const;
    [[nodiscard]] TPathCore Filename() const;
    /// The file name as a path of its own after RemoveExtension().
    [[nodiscard]] TPathCore Stem() const;
    /// Without its dot; ".profile", "." and ".." have none, "name." has an empty one.
    [[nodiscard]] TStringCore Extension() const;
    /// The path after RemoveFilename(): roots and others without a file name are their own parents.
    [[nodiscard]] TPathCore Parent() const;
    /// In "//server/share/dir/name" (also "//?/UNC/server/share/...") "share" and "dir/name"; empty for other paths.
    [[nodiscard]] TStringCore UNCShareName() const;
    [[nodiscard]] TStringCore UNCObjectName() const;
    /// The share name's first unit, whatever the share; 0 without one. See IsAdminShare().
    [[nodiscard]] char16_t AdminShareDriveLetter() const noexcept;
    /// @}

    /// @name Questions
    /// @{
    [[nodiscard]] bool HasRootName() const noexcept;
    [[nodiscard]] bool HasRootDirectory() const noexcept;
    /// Either of the two.
    [[nodiscard]] bool HasRootPath() const noexcept;
    [[nodiscard]] bool HasFilename() const noexcept;
    /// The same as HasFilename().
    [[nodiscard]] bool HasStem() const noexcept;
    /// Also when it is empty: "name."
    [[nodiscard]] bool HasExtension() const noexcept;
    /// Whether Parent() is not empty and another path.
    [[nodiscard]] bool HasParentPath() const noexcept;
    [[nodiscard]] bool HasUNCObjectName() const noexcept;
    /// With a root name and a '/' behind it. "/dir" is neither absolute nor relative: it depends on the current drive.
    [[nodiscard]] bool IsAbsolute() const noexcept;
    /// Without a root directory; "C:name" and "//server" are.
    [[nodiscard]] bool IsRelative() const noexcept;
    /// Begins with "//" and something, but for "//?" unless "/UNC/" (in any case) follows.
    [[nodiscard]] bool IsUNC() const noexcept;
    /// The share is a drive's: two units, the second '$' ("//server/c$").
    [[nodiscard]] bool IsAdminShare() const noexcept;
    /// Begins with "//?/".
    [[nodiscard]] bool IsExtendedLength() const noexcept;
    /// The file name is "." or "..".
    [[nodiscard]] bool IsDots() const noexcept;
    /// @}

    /// @name Changing
    /// @{
    /// Puts a '/' between the two texts when neither is empty, this one does not end with one and the other does not
    /// begin with one. An absolute path is appended like any other: "a" and "C:/b" make "a/C:/b".
    TPathCore& Append(TPathCore const& other);
    TPathCore& operator/=(TPathCore const& other) { return Append(other); }
    [[nodiscard]] friend TPathCore operator/(TPathCore a, TPathCore const& b)
    {
        a.Append(b);
        return a;
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
    [[nodiscard]] friend bool operator==(TPathCore const& a, TPathCore const& b) noexcept { return a.Compare(b) == 0; }
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
    [[nodiscard]] iterator begin() const QVXSYS_LIFETIME_BOUND;
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
    /// same path. Empty when nothing does: other root paths or shares, or more ".." in `base` than can be undone. (For
    /// a `base` that is a drive without a root directory, "C:", use + instead of /.)
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
    [[nodiscard]] TPathCore Piece(int start, int end) const;
    void Normalize();

    TStringCore m_text;
};
static_assert(sizeof(TPathCore) == sizeof(TStringCore));

/// Misuse of an iterator, source 2.
class QVXSYS_API TPathCore::Exception : public QuorvexException
{
public:
    /// With the lines of the current call stack as further messages, when asked for and walking is switched on.
    Exception(TStringCore const& message, TError::ErrorInfo const& info, bool withCallStack);
    Exception(Exception const&) = default;
    Exception& operator=(Exception const&) = default;
    ~Exception() override;
    [[nodiscard]] QuorvexException* Clone() const override;
    [[noreturn]] void Throw() const override;
};

/// Walks the elements of one path, which it refers to and must not outlive; see Elements() for the usual way.
///
/// It remembers positions, not text: an element is cut from the path when it is asked for. After a change of the path,
/// stepping and reading throw unless the positions fit the new text. Two iterators are equal when their paths compare
/// equal and they stand at the same position. Errors are TPathCore::Exception with these codes:
///   0x4E3E0D3F "Invalid TPathCore::iterator asignment of from one TPathCore to different TPathCore."
///              assigning when both walk a path and not the same object
///   0xA22179A7 "Invalid position in TPathCore::iterator::nextElement."
///              ++ of an iterator whose element begins outside the text, or that walks no path
///   0x9E82DC54 "TPathCore::iterator::locateElementEnd element starting position is out of range, or not valid for
///              current path." reading an element that begins outside the text, the end's too, or amid a code point
///   0x38CA4808 "TPathCore::iterator::locateNextElement element end position is out of range, or not valid for this
///              path." ++ where the element no longer ends where it did
///   0x24209A38 "TPathCore::iterator trying to increment beyond end."
///   0x6C884971 "TPathCore::iterator trying to decrement beyond beginning."
///   0x2BC6B9CE "TPathCore::iterator out of sync in prev."
///              -- where no element begins, since ++ from the element before would not lead there
class QVXSYS_API TPathCore::iterator
{
public:
    using iterator_concept = std::bidirectional_iterator_tag;
    using iterator_category = std::input_iterator_tag; // its elements are values
    using value_type = TStringCore;
    using difference_type = std::ptrdiff_t;
    using reference = TStringCore;

    /// An element for the length of an expression.
    class pointer
    {
    public:
        [[nodiscard]] TStringCore const* operator->() const noexcept { return &m_text; }

    private:
        friend class iterator;
        explicit pointer(TStringCore&& text) noexcept : m_text(static_cast<TStringCore&&>(text)) {}
        TStringCore m_text;
    };

    /// Walks no path, and may be assigned to.
    iterator() noexcept = default;
    iterator(iterator const&) noexcept = default;
    iterator& operator=(iterator const& other);
    ~iterator() = default;

    [[nodiscard]] TStringCore operator*() const;
    [[nodiscard]] pointer operator->() const { return pointer(**this); }
    iterator& operator++();
    iterator operator++(int)
    {
        iterator const before(*this);
        ++*this;
        return before;
    }
    /// The exact way back; constant time but for the element itself.
    iterator& operator--();
    iterator operator--(int)
    {
        iterator const before(*this);
        --*this;
        return before;
    }
    /// Compares both paths' texts when they are not one object.
    [[nodiscard]] bool operator==(iterator const& other) const noexcept;

private:
    friend class TPathCore;
    iterator(TPathCore const& path, int start, int end) noexcept : m_path(&path), m_start(start), m_end(end) {}

    TPathCore const* m_path = nullptr;
    int m_start = kEnd;
    int m_end = kEnd;

    static constexpr int kEnd = -1;
};

namespace qvxsys::detail {

/// The units [start, end) of a path's text; [length, length) is the end.
struct PathElement
{
    int start;
    int end;
};
/// The first element that is not empty at or behind an element's end, and the last one before a position.
[[nodiscard]] QVXSYS_API PathElement PathElementFrom(TStringView text, int start) noexcept;
[[nodiscard]] QVXSYS_API PathElement PathElementBefore(TStringView text, int start) noexcept;

} // namespace qvxsys::detail

/// What TPathCore::Elements() returns: a bidirectional range of TStringView. A view in the standard's sense.
class TPathCore::ElementRange : public std::ranges::view_base
{
public:
    class iterator
    {
    public:
        using iterator_concept = std::bidirectional_iterator_tag;
        using iterator_category = std::input_iterator_tag;
        using value_type = TStringView;
        using difference_type = std::ptrdiff_t;
        using reference = TStringView;
        using pointer = void;

        iterator() noexcept = default;
        [[nodiscard]] TStringView operator*() const noexcept
        {
            return {m_text.data() + m_at.start, static_cast<std::size_t>(m_at.end - m_at.start)};
        }
        iterator& operator++() noexcept
        {
            m_at = qvxsys::detail::PathElementFrom(m_text, m_at.end);
            return *this;
        }
        iterator operator++(int) noexcept
        {
            iterator const before(*this);
            ++*this;
            return before;
        }
        iterator& operator--() noexcept
        {
            m_at = qvxsys::detail::PathElementBefore(m_text, m_at.start);
            return *this;
        }
        iterator operator--(int) noexcept
        {
            iterator const before(*this);
            --*this;
            return before;
        }
        [[nodiscard]] bool operator==(iterator const& other) const noexcept { return m_at.start == other.m_at.start; }

    private:
        friend class ElementRange;
        iterator(TStringView text, qvxsys::detail::PathElement at) noexcept : m_text(text), m_at(at) {}

        TStringView m_text;
        qvxsys::detail::PathElement m_at{};
    };
    using const_iterator = iterator;

    [[nodiscard]] iterator begin() const noexcept { return {m_text, qvxsys::detail::PathElementFrom(m_text, 0)}; }
    [[nodiscard]] iterator end() const noexcept { return {m_text, {m_text.length(), m_text.length()}}; }
    [[nodiscard]] bool empty() const noexcept { return m_text.empty(); }

private:
    friend class TPathCore;
    explicit ElementRange(TStringView text) noexcept : m_text(text) {}

    TStringView m_text;
};
// The iterators view the path's text, not the range.
template<>
inline constexpr bool std::ranges::enable_borrowed_range<TPathCore::ElementRange> = true;

inline TPathCore::ElementRange TPathCore::Elements() const& noexcept
{
    return ElementRange(m_text);
}

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
struct ExactPathEqual
{
    [[nodiscard]] bool operator()(TPathCore const& a, TPathCore const& b) const noexcept
    {
        return a.CompareExact(b) == 0;
    }
};
struct ExactPathHash
{
    [[nodiscard]] std::size_t operator()(TPathCore const& path) const noexcept
    {
        return detail::Hash(path.GenericString());
    }
};

} // namespace qvxsys
