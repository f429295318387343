#pragma once
// TStringCore: the library's owning UTF-16 string. Copy-on-write, up to 14 units inside the object.
//
//     TStringCore greeting = u"Gr\u00FC\u00DFe";
//     greeting.append(", ").append(L"Jos\u00E9").append32(0x1F600);
//     TStringCore const copy = greeting;                   // shares the block: O(1)
//     std::string const utf8 = greeting.toStdString();
//     if (copy == greeting && copy.lengthInCodePoints() < copy.length()) { ... }
//
// Lengths and indexes are `int` code units unless a name says code points or bytes. The text is always followed by a 0
// unit, so data() can be handed to functions that want terminated text. Embedded 0 units are text, except that the
// comparison operators stop at the first one (see there).
//
// Arguments. Text comes as TStringCore, TStringView, UTF-16 (`char16_t const*`), wide text (`wchar_t const*`) or UTF-8
// (`char const*`); a count of -1 (any negative one) means up to the first 0 unit, and a null pointer is empty text. A
// wchar_t is a UTF-16 unit where it has 16 bits; elsewhere it is a code point and wide text is converted as UTF-32
// (surrogate values kept, values above U+10FFFF become U+FFFD). A single `char` is Latin-1. A character is any of char,
// char16_t, wchar_t and char32_t. Arguments may point into the string itself.
//
// Copying. Copies of more than 14 units share a block until one of them is written to. Every non-const member that
// hands out or changes units detaches first, that is copies a shared block: use cbegin(), constData() or a const
// reference to read without that. Pointers, references, iterators and views are valid until the string is next changed.
//
// Ordered containers: strings order by unit, views by length first. std::less<> compares a string with a string by unit
// and with a view as views; do not look up views in a set of strings. A std::u16string_view made of a string goes
// through the pointer and ends at an embedded 0; view() does not.
//
// Errors are TStringCore::Exception; a failed call leaves the string as it was. Besides the texts given at members:
//   "Allocation size less than zero; probable overflow"  a length that an int cannot hold
//   "Out of memory"                                       TRealloc returned null
// Threads: one object must not be used from two threads when either writes; objects that share a block may.

#include <atomic>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <type_traits>
#include <vector>

#include <qvxsys/CodePointIterator.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringView.h>
#include <qvxsys/TextArguments.h>

/// The heap block of a long string. Allocated as one piece with TRealloc, freed with TFree.
struct TStringBlock
{
    std::int32_t references; ///< the strings that share the block; changed atomically only
    std::int32_t capacity;   ///< units in the text area, the terminator's included
    std::int32_t length;     ///< units of text

    /// The text area: `capacity` units right behind the header.
    [[nodiscard]] char16_t* Text() noexcept { return reinterpret_cast<char16_t*>(this + 1); }
};
static_assert(offsetof(TStringBlock, references) == 0 && offsetof(TStringBlock, capacity) == 4 &&
              offsetof(TStringBlock, length) == 8 && sizeof(TStringBlock) == 12);

template<class Container>
class TCodePointIterator;
class TCodePointView;

class QVXSYS_API TStringCore
{
public:
    using value_type = char16_t;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = char16_t&;
    using const_reference = char16_t const&;
    using iterator = char16_t*;
    using const_iterator = char16_t const*;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;
    using code_point_iterator = TConstCodePointIterator<TStringCore>;

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

    class Exception;

    /// The most units the object itself holds, and the capacity that goes with it.
    static constexpr int kInlineLength = 14;
    static constexpr int kInlineCapacity = 15;

    /// @name Construction
    /// @{
    TStringCore() noexcept { BecomeEmpty(); }
    TStringCore(TStringCore const& other) noexcept
    {
        if (other.IsBlock()) {
            References(other.Block()).fetch_add(1, std::memory_order_relaxed);
        }
        std::memcpy(m_units, other.m_units, sizeof m_units);
    }
    TStringCore(TStringCore&& other) noexcept
    {
        std::memcpy(m_units, other.m_units, sizeof m_units);
        other.BecomeEmpty();
    }
    /// n copies of a character, a char meaning the unit of its byte value; none for a negative n.
    template<TCType::Character C>
    explicit TStringCore(C c, int n = 1)
    {
        BecomeEmpty();
        assign(c, n);
    }
    /// UTF-8, n bytes, malformed input substituted (see append).
    TStringCore(char const* utf8, int n = -1)
    {
        BecomeEmpty();
        if (utf8 != nullptr && n != 0) {
            ConvertUtf8(0, utf8, n);
        }
    }
    /// UTF-16, n units.
    TStringCore(char16_t const* s, int n = -1)
    {
        BecomeEmpty();
        if (static_cast<unsigned>(n) <= kInlineLength && s != nullptr) {
            CopyShort(m_units, s, static_cast<unsigned>(n));
            m_units[kFormSlot] = static_cast<char16_t>(n);
        } else {
            AppendForeign(s, n);
        }
    }
    /// Wide text, n wchar_t units.
    TStringCore(wchar_t const* s, int n = -1);
    /// Null is empty text.
    TStringCore(std::nullptr_t) noexcept { BecomeEmpty(); }
    /// The view's units. A length above int is cut to it, and where that makes it negative, it means up to the first 0.
    TStringCore(TStringView v) : TStringCore(v.data(), v.length()) {}
    ~TStringCore()
    {
        if (IsBlock()) {
            Release(Block());
        }
    }
    /// @}

    /// @name Factories
    /// As the constructors and append: n units of the source, negative for up to its 0; null gives the empty string.
    /// @{
    [[nodiscard]] static TStringCore fromUtf8(char const* s, int n = -1) { return TStringCore(s, n); }
    [[nodiscard]] static TStringCore fromUtf16(char16_t const* s, int n = -1) { return TStringCore(s, n); }
    [[nodiscard]] static TStringCore fromWChar(wchar_t const* s, int n = -1) { return TStringCore(s, n); }
    /// Each code point by CharacterUtils::Utf32ToUtf16: surrogate values kept, values above U+10FFFF become U+FFFD.
    [[nodiscard]] static TStringCore fromUtf32(char32_t const* s, int n = -1);
    /// UTF-8. Throws "Appended string is too long" above 0x7FFFFFFF bytes; so do all that take a std::string.
    [[nodiscard]] static TStringCore fromStdString(std::string const& s);
    [[nodiscard]] static TStringCore fromStdWString(std::wstring const& s);
    [[nodiscard]] static TStringCore fromStdUString(std::u16string const& s);
    /// ISO 8859-1: each byte is the unit of that value.
    [[nodiscard]] static TStringCore fromLatin1(char const* s, int n = -1);
    /// ISO 8859-15: Latin-1 but for eight bytes (0xA4 is U+20AC, ...).
    [[nodiscard]] static TStringCore fromLatin9(char const* s, int n = -1);
    /// The system's narrow encoding, by ICU's default converter (UTF-8 on Linux): up to the first error ICU reports.
    /// A U+001A from the very last byte is dropped.
    [[nodiscard]] static TStringCore fromLocal8Bit(char const* s, int n = -1);
    /// @}

    /// @name Conversion to other encodings
    /// @{
    /// UTF-8, lone surrogates as EF BF BD.
    [[nodiscard]] std::string toStdString() const;
    /// The units as they are, or, where wchar_t has 32 bits, the code points (a lone surrogate as its value).
    [[nodiscard]] std::wstring toStdWString() const;
    [[nodiscard]] std::u16string toStdUString() const;
    /// Units up to 0xFF as bytes, larger ones as "?". *lossy (when given) tells whether there was such a one.
    [[nodiscard]] std::string toLatin1(bool* lossy = nullptr) const;
    [[nodiscard]] std::string toLatin9(bool* lossy = nullptr) const;
    /// The system's narrow encoding. *lossy (when given): whether a character could not be represented; it is then
    /// replaced as ICU's converter does. Empty when ICU has no default converter.
    [[nodiscard]] std::string toLocal8Bit(bool* lossy = nullptr) const;
    /// Writes what toStdWString returns and a terminator to dst and returns the number of wchar_t written before the
    /// terminator. Throws "Error insufficient destinationCapacity (N) was passed into TStringCore::toWCharArray."
    /// unless all of it fits into `capacity`; dst is then unchanged. A null dst gets nothing: returns the number
    /// needed.
    int toWCharArray(wchar_t* dst, int capacity) const;
    /// The same with its terminator, as a buffer that can be written to.
    [[nodiscard]] std::vector<wchar_t> toWCharVector() const;
    /// Owning copies of views.
    [[nodiscard]] static std::vector<TStringCore> viewsToStrings(std::vector<TStringView> const& views);

    [[nodiscard]] TStringView view() const noexcept QVXSYS_LIFETIME_BOUND
    {
        return {constData(), static_cast<std::size_t>(length())};
    }
    operator TStringView() const noexcept QVXSYS_LIFETIME_BOUND { return view(); }
    operator char16_t const*() const noexcept QVXSYS_LIFETIME_BOUND { return constData(); }
    /// The same units as wide text, where wchar_t is a UTF-16 unit.
    template<std::same_as<wchar_t> W>
    requires qvxsys::kWideIsUtf16 operator W const*() const noexcept QVXSYS_LIFETIME_BOUND
    {
        return reinterpret_cast<W const*>(constData());
    }
    /// A string is no truth value: say empty(). (`if (s)` does not compile; `bool b = s;` does, by way of the pointer.)
    explicit operator bool() const = delete;
    /// @}

    /// @name Assignment
    /// @{
    TStringCore& operator=(TStringCore const& other)
    {
        if (!IsBlock() && !other.IsBlock()) {
            std::memmove(m_units, other.m_units, sizeof m_units);
        } else {
            AssignShared(other);
        }
        return *this;
    }
    TStringCore& operator=(TStringCore&& other) noexcept
    {
        if (this != &other) {
            AssignMoved(other);
        }
        return *this;
    }
    /// From a view, text of any kind, or a character.
    template<qvxsys::detail::TextOrCharacter T>
    requires(!std::derived_from<T, TStringCore> && !std::same_as<T, std::nullptr_t>) TStringCore& operator=(T const& t)
    {
        if constexpr (TCType::Character<T>) {
            return assign(t, 1);
        } else {
            return assign(t);
        }
    }

    /// Shares the other string's block, or copies its inline text.
    TStringCore& assign(TStringCore const& other) { return *this = other; }
    TStringCore& assign(TStringView v) { return assign(v.data(), v.length()); }
    TStringCore& assign(char const* utf8, int n = -1);
    /// A source at the string's own start truncates to 0 <= n < length and otherwise changes nothing; one inside the
    /// text keeps those n units (up to the end for a larger n, up to a 0 unit for a negative one).
    TStringCore& assign(char16_t const* s, int n = -1);
    TStringCore& assign(wchar_t const* s, int n = -1);
    /// n copies of a character; none for a negative n.
    template<TCType::Character C>
    TStringCore& assign(C c, int n)
    {
        return AssignCopies(qvxsys::detail::UnitsOf(c), n);
    }
    /// n copies of a code point of one or two units; a value above U+10FFFF becomes U+FFFD.
    TStringCore& assign32(char32_t c, int n = 1) { return assign(c, n); }
    /// The same as assign.
    TStringCore& set(char16_t const* s, int n = -1) { return assign(s, n); }
    TStringCore& set(wchar_t const* s, int n = -1) { return assign(s, n); }
    /// @}

    /// @name Appending
    /// Appending nothing detaches nothing. Amortised O(1) a unit.
    /// @{
    TStringCore& append(TStringCore const& other);
    TStringCore& append(TStringView v) { return v.empty() ? *this : append(v.data(), v.length()); }
    /// UTF-8, n bytes: malformed parts become U+FFFD, one for each maximal subpart. Throws "Appended string is too
    /// long" for a terminated text above 0x7FFFFFFF bytes. The room of n units is reserved.
    TStringCore& append(char const* utf8, int n = -1);
    /// n units. From inside the string's own text: up to its end for a negative n or one past the end.
    TStringCore& append(char16_t const* s, int n = -1)
    {
        if (static_cast<unsigned>(n) <= kInlineLength && s != nullptr && AppendShort(s, static_cast<unsigned>(n))) {
            return *this;
        }
        return AppendUnits(s, n);
    }
    TStringCore& append(wchar_t const* s, int n = -1);
    /// One character, a 0 unit too.
    template<TCType::Character C>
    TStringCore& append(C c)
    {
        qvxsys::detail::UnitsOf const units(c);
        if (units.count == 1) [[likely]] {
            AppendUnit(units.units[0]);
        } else {
            AppendForeign(units.units, units.count);
        }
        return *this;
    }
    /// One code point; a value above U+10FFFF becomes U+FFFD.
    TStringCore& append32(char32_t c) { return append(c); }

    template<qvxsys::detail::TextOrCharacter T>
    void push_back(T const& t)
    {
        append(t);
    }
    void push_back32(char32_t c) { append(c); }

    TStringCore& operator+=(TStringCore const& s) { return append(s); }
    TStringCore& operator+=(TStringView v) { return append(v); }
    TStringCore& operator+=(char const* utf8) { return append(utf8); }
    TStringCore& operator+=(char16_t const* s) { return append(s); }
    TStringCore& operator+=(wchar_t const* s) { return append(s); }
    template<TCType::Character C>
    TStringCore& operator+=(C c)
    {
        return append(c);
    }
    /// @}

    /// @name Inserting
    /// Before the unit at `pos`; a position below 0 means 0, one past the end means the end.
    /// @{
    TStringCore& insert(int pos, TStringView v);
    template<qvxsys::detail::TextPointer P>
    TStringCore& insert(int pos, P s, int n = -1)
    {
        if constexpr (std::convertible_to<P, char16_t const*>) {
            return InsertUnits(pos, s, n);
        } else {
            return insert(pos, TStringCore(s, n).view());
        }
    }
    template<TCType::Character C>
    TStringCore& insert(int pos, C c)
    {
        qvxsys::detail::UnitsOf const units(c);
        return insert(pos, units.View());
    }

    TStringCore& prepend(TStringView v) { return insert(0, v); }
    template<qvxsys::detail::TextPointer P>
    TStringCore& prepend(P s, int n = -1)
    {
        return insert(0, s, n);
    }
    template<TCType::Character C>
    TStringCore& prepend(C c)
    {
        return insert(0, c);
    }
    TStringCore& prepend32(char32_t c) { return insert(0, c); }
    template<qvxsys::detail::TextOrCharacter T>
    void push_front(T const& t)
    {
        prepend(t);
    }
    void push_front32(char32_t c) { insert(0, c); }
    /// @}

    /// @name Size and storage
    /// @{
    [[nodiscard]] int length() const noexcept { return IsBlock() ? Block()->length : m_units[kFormSlot]; }
    [[nodiscard]] std::size_t size() const noexcept { return static_cast<std::size_t>(length()); }
    /// 2 x length.
    [[nodiscard]] std::size_t lengthInBytes() const noexcept { return size() * sizeof(char16_t); }
    /// A pair counts once, a lone surrogate once. Linear.
    [[nodiscard]] int lengthInCodePoints() const noexcept { return view().lengthInCodePoints(); }
    [[nodiscard]] bool empty() const noexcept { return length() == 0; }
    [[nodiscard]] bool isEmpty() const noexcept { return length() == 0; }

    /// Of a terminated text; 0 for null. Wide text counts as the UTF-16 it stands for.
    [[nodiscard]] static int length(char16_t const* s) noexcept;
    template<qvxsys::detail::WidePointer W>
    [[nodiscard]] static int length(W const& s) noexcept
    {
        return WideLength(s);
    }
    [[nodiscard]] static std::size_t lengthInBytes(char16_t const* s) noexcept;
    template<qvxsys::detail::WidePointer W>
    [[nodiscard]] static std::size_t lengthInBytes(W const& s) noexcept
    {
        return static_cast<std::size_t>(WideLength(s)) * sizeof(char16_t);
    }
    [[nodiscard]] static int lengthInCodePoints(char16_t const* s) noexcept;
    template<qvxsys::detail::WidePointer W>
    [[nodiscard]] static int lengthInCodePoints(W const& s)
    {
        return TStringCore(s).lengthInCodePoints();
    }

    /// The units that fit without a new allocation, the terminator's included: 15 in the object, else the block's.
    [[nodiscard]] int capacity() const noexcept { return IsBlock() ? Block()->capacity : kInlineCapacity; }
    /// Room for n units; never shrinks. A shared block is detached. Throws "Negative allocation size; probable
    /// overflow" for a negative n.
    void reserve(int n);
    /// Sets the length; units behind the old length are left as they are in memory: write them. A negative n counts as
    /// 0.
    void resize(int n) { SetLength(n); }
    /// Gives back unused room. Up to 14 units return into the object unless the block is shared; a shared block is
    /// detached at the size needed.
    void squeeze();
    /// The empty string, without a block.
    void clear() noexcept
    {
        if (IsBlock()) {
            Release(Block());
        }
        BecomeEmpty();
    }
    void swap(TStringCore& other) noexcept
    {
        char16_t units[kSlots];
        std::memcpy(units, m_units, sizeof units);
        std::memcpy(m_units, other.m_units, sizeof units);
        std::memcpy(other.m_units, units, sizeof units);
    }
    friend void swap(TStringCore& a, TStringCore& b) noexcept { a.swap(b); }
    /// @}

    /// @name Element access
    /// An index i with 0 <= i <= length is valid; at the length stands the terminating 0. Members on a non-const string
    /// detach.
    /// @{
    /// Throws "TStringCore::at(int): argument out of range."
    [[nodiscard]] char16_t at(int i) const
    {
        if (static_cast<unsigned>(i) > static_cast<unsigned>(length())) {
            ThrowOutOfRange("TStringCore::at(int): argument out of range.");
        }
        return constData()[i];
    }
    /// Throws "TStringCore::operator[int] argument out of range."
    [[nodiscard]] char16_t& operator[](int i)
    {
        if (static_cast<unsigned>(i) > static_cast<unsigned>(length())) {
            ThrowOutOfRange("TStringCore::operator[int] argument out of range.");
        }
        return data()[i];
    }
    /// Throws "TStringCore::operator[int] const argument out of range."
    [[nodiscard]] char16_t operator[](int i) const
    {
        if (static_cast<unsigned>(i) > static_cast<unsigned>(length())) {
            ThrowOutOfRange("TStringCore::operator[int] const argument out of range.");
        }
        return constData()[i];
    }
    /// Throws "TStringCore::operator[size_type] argument out of range."
    [[nodiscard]] char16_t& operator[](std::size_t i)
    {
        if (i > size()) {
            ThrowOutOfRange("TStringCore::operator[size_type] argument out of range.");
        }
        return data()[i];
    }
    /// Throws "TStringCore::operator[size_type] const argument out of range."
    [[nodiscard]] char16_t operator[](std::size_t i) const
    {
        if (i > size()) {
            ThrowOutOfRange("TStringCore::operator[size_type] const argument out of range.");
        }
        return constData()[i];
    }
    /// Other integer types work as size_t does, and a negative value is out of range.
    template<qvxsys::detail::OtherIndex I>
    [[nodiscard]] char16_t& operator[](I i)
    {
        return (*this)[IndexOf(i)];
    }
    template<qvxsys::detail::OtherIndex I>
    [[nodiscard]] char16_t operator[](I i) const
    {
        return (*this)[IndexOf(i)];
    }

    /// The first and the last unit; of an empty string the terminator.
    [[nodiscard]] char16_t front() const noexcept { return constData()[0]; }
    [[nodiscard]] char16_t& front() { return data()[0]; }
    [[nodiscard]] char16_t back() const noexcept { return constData()[LastIndex()]; }
    [[nodiscard]] char16_t& back() { return data()[LastIndex()]; }

    [[nodiscard]] char16_t const* data() const noexcept QVXSYS_LIFETIME_BOUND { return constData(); }
    [[nodiscard]] char16_t const* constData() const noexcept QVXSYS_LIFETIME_BOUND
    {
        return IsBlock() ? Block()->Text() : m_units;
    }
    /// Detaches. The terminator may be read, not changed.
    [[nodiscard]] char16_t* data() QVXSYS_LIFETIME_BOUND
    {
        if (!IsBlock()) {
            return m_units;
        }
        if (IsShared(Block())) {
            Detach(Block()->capacity);
        }
        return Block()->Text();
    }

    [[nodiscard]] iterator begin() QVXSYS_LIFETIME_BOUND { return data(); }
    [[nodiscard]] iterator end() QVXSYS_LIFETIME_BOUND { return data() + length(); }
    [[nodiscard]] const_iterator begin() const noexcept QVXSYS_LIFETIME_BOUND { return constData(); }
    [[nodiscard]] const_iterator end() const noexcept QVXSYS_LIFETIME_BOUND { return constData() + length(); }
    [[nodiscard]] const_iterator cbegin() const noexcept QVXSYS_LIFETIME_BOUND { return begin(); }
    [[nodiscard]] const_iterator cend() const noexcept QVXSYS_LIFETIME_BOUND { return end(); }
    [[nodiscard]] reverse_iterator rbegin() { return reverse_iterator(end()); }
    [[nodiscard]] reverse_iterator rend() { return reverse_iterator(begin()); }
    [[nodiscard]] const_reverse_iterator rbegin() const noexcept { return const_reverse_iterator(end()); }
    [[nodiscard]] const_reverse_iterator rend() const noexcept { return const_reverse_iterator(begin()); }
    [[nodiscard]] const_reverse_iterator crbegin() const noexcept { return rbegin(); }
    [[nodiscard]] const_reverse_iterator crend() const noexcept { return rend(); }
    /// @}

    /// @name Code points
    /// @{
    /// The code points as a range of references that can be assigned to; detaches only when one is.
    [[nodiscard]] TCodePointView codePointView() noexcept QVXSYS_LIFETIME_BOUND;
    [[nodiscard]] TCodePointRange<TStringCore> constCodePointView() const noexcept QVXSYS_LIFETIME_BOUND;
    [[nodiscard]] code_point_iterator codepoint_cbegin() const QVXSYS_LIFETIME_BOUND;
    [[nodiscard]] code_point_iterator codepoint_cend() const noexcept QVXSYS_LIFETIME_BOUND;
    /// The iterator at a code-unit index, see TConstCodePointIterator::createFromIndex.
    [[nodiscard]] code_point_iterator iteratorFrom(int codeUnitIndex) const QVXSYS_LIFETIME_BOUND;
    /// The same position on this object; throws std::runtime_error when `other` walks another text.
    [[nodiscard]] code_point_iterator iteratorFrom(code_point_iterator const& other) const QVXSYS_LIFETIME_BOUND;
    /// The code-unit index at which an insertion before `position` takes place: the length for the end. Throws as
    /// iteratorFrom does.
    [[nodiscard]] int getInsertCodeUnitIndex(code_point_iterator const& position) const;
    /// The units spanned by n code points from `start` on, as far as the text goes; a negative n means up to the first
    /// 0 unit. 0 for a start outside the text.
    [[nodiscard]] int subStringSizeInCodeUnits(int start, int n) const noexcept;
    /// @}

    /// @name Comparing
    /// Results are -1, 0 or 1: by code unit, not by code point and not by locale. Null counts as empty text.
    /// @{
    /// Up to the first difference or the common terminator.
    [[nodiscard]] static int compare(char16_t const* a, char16_t const* b, CaseSensitivity cs = CaseSensitive) noexcept;
    [[nodiscard]] int compare(TStringCore const& other, CaseSensitivity cs = CaseSensitive) const noexcept
    {
        return compare(constData(), other.constData(), cs);
    }
    [[nodiscard]] int compare(char16_t const* other, CaseSensitivity cs = CaseSensitive) const noexcept
    {
        return compare(constData(), other, cs);
    }
    [[nodiscard]] int compare(wchar_t const* other, CaseSensitivity cs = CaseSensitive) const;
    /// At most n units, ending at a common 0 unit; a negative n means the longer of the two terminated lengths.
    [[nodiscard]] static int compareN(char16_t const* a, char16_t const* b, int n,
                                      CaseSensitivity cs = CaseSensitive) noexcept;
    /// @}

    /// Equal lengths and equal units up to the first 0 unit, so strings of one length that agree up to an embedded 0
    /// are equal.
    friend bool operator==(TStringCore const& a, TStringCore const& b) noexcept
    {
        int const length = a.length();
        if (length != b.length()) {
            return false;
        }
        char16_t const* const left = a.constData();
        char16_t const* const right = b.constData();
        return left == right || std::memcmp(left, right, static_cast<std::size_t>(length) * sizeof(char16_t)) == 0 ||
               AgreeUpToZero(left, right);
    }
    /// Against a terminated text: units up to the first difference or the common terminator; null is empty text.
    template<qvxsys::detail::StringPointer P>
    friend bool operator==(TStringCore const& a, P b)
    {
        return a.compare(b) == 0;
    }
    template<qvxsys::detail::StringPointer P>
    friend bool operator==(P a, TStringCore const& b)
    {
        return b.compare(a) == 0;
    }
    friend bool operator==(TStringCore const& a, std::nullptr_t) noexcept { return a.constData()[0] == 0; }
    /// Exactly the character's one or two units.
    template<TCType::Character C>
    friend bool operator==(TStringCore const& a, C c) noexcept
    {
        return qvxsys::detail::UnitsOf(c).Is(a.constData(), a.size());
    }
    /// By code unit up to the first difference or the common terminator, so what follows an embedded 0 does not count.
    friend std::weak_ordering operator<=>(TStringCore const& a, TStringCore const& b) noexcept
    {
        return a.compare(b) <=> 0;
    }
    // Spelled out beside <=>: a string converts to a pointer, and std::less<> and its kin compare such types as
    // pointers unless they find the operator by its name.
    friend bool operator<(TStringCore const& a, TStringCore const& b) noexcept { return a.compare(b) < 0; }
    friend bool operator<=(TStringCore const& a, TStringCore const& b) noexcept { return a.compare(b) <= 0; }
    friend bool operator>(TStringCore const& a, TStringCore const& b) noexcept { return a.compare(b) > 0; }
    friend bool operator>=(TStringCore const& a, TStringCore const& b) noexcept { return a.compare(b) >= 0; }
    template<qvxsys::detail::StringPointer P>
    friend std::weak_ordering operator<=>(TStringCore const& a, P b)
    {
        return a.compare(b) <=> 0;
    }
    /// By the first unit only (by two for a character of two units), the empty string first; a longer string that
    /// begins with the character is greater.
    template<TCType::Character C>
    friend std::weak_ordering operator<=>(TStringCore const& a, C c) noexcept
    {
        if (a == c) {
            return std::weak_ordering::equivalent;
        }
        bool const less = qvxsys::detail::UnitsOf(c).CompareStart(a.constData(), a.size()) < 0;
        return less ? std::weak_ordering::less : std::weak_ordering::greater;
    }

    /// @name Concatenation
    /// A copy of the left operand with the right one appended. A left operand that is a temporary is appended to in
    /// place.
    /// @{
    friend TStringCore operator+(TStringCore const& a, TStringCore const& b) { return Concatenated(a, b.view()); }
    friend TStringCore operator+(TStringCore const& a, TStringView b) { return Concatenated(a, b); }
    friend TStringCore operator+(TStringView a, TStringCore const& b) { return Concatenated(TStringCore(a), b.view()); }
    friend TStringCore operator+(TStringCore const& a, char16_t const* b) { return Concatenated(a, TStringView(b)); }
    friend TStringCore operator+(char16_t const* a, TStringCore const& b)
    {
        return Concatenated(TStringCore(a), b.view());
    }
    friend TStringCore operator+(TStringCore const& a, wchar_t const* b) { return TStringCore(a).append(b); }
    friend TStringCore operator+(wchar_t const* a, TStringCore const& b) { return TStringCore(a).append(b); }
    friend TStringCore operator+(TStringCore const& a, char const* utf8) { return TStringCore(a).append(utf8); }
    friend TStringCore operator+(char const* utf8, TStringCore const& b) { return TStringCore(utf8).append(b); }
    template<TCType::Character C>
    friend TStringCore operator+(TStringCore const& a, C c)
    {
        qvxsys::detail::UnitsOf const units(c);
        return Concatenated(a, units.View());
    }
    template<TCType::Character C>
    friend TStringCore operator+(C c, TStringCore const& b)
    {
        return TStringCore(c, 1).append(b);
    }
    template<std::same_as<TStringCore> S, class T>
    requires qvxsys::detail::Appendable<S, T>
    friend TStringCore operator+(S&& a, T const& b)
    {
        a.append(b);
        return static_cast<TStringCore&&>(a);
    }
    // As a string converts to a pointer, these would step along the text.
    template<std::integral I>
    requires(!TCType::Character<I>) friend TStringCore operator+(TStringCore const& a, I n) = delete;
    template<std::integral I>
    requires(!TCType::Character<I>) friend TStringCore operator+(I n, TStringCore const& a) = delete;
    template<class T>
    friend void operator-(TStringCore const& a, T const& b) = delete;
    /// @}

    /// @name Numbers
    /// ASCII digits, whatever the locale.
    /// @{
    /// What number pads with: any character, a code point above U+FFFF too. A char is Latin-1.
    struct Fill : qvxsys::detail::UnitsOf
    {
        template<TCType::Character C>
        constexpr Fill(C c) noexcept : UnitsOf(c)
        {}
    };

    /// A whole number in base 2..36 (digits 0-9, a-z) or 64, padded on the left to `width` characters. In base 64 the
    /// groups of six bits are written from the most significant on with A-Z, a-z, 0-9, + and /. Only base 10 knows a
    /// sign: with fill '0' it stands before the padding (-0042), with any other directly before the digits ("  -42");
    /// other bases write the two's complement of 64 bits (-1 is "ffffffffffffffff").
    /// Throws "TStringCore::number: base out of range."
    template<qvxsys::detail::WholeNumber I>
    [[nodiscard]] static TStringCore number(I value, int base = 10, int width = 0, Fill fill = u' ')
    {
        auto const promoted = +value;
        if constexpr (std::is_signed_v<decltype(promoted)>) {
            return SignedText(promoted, base, width, fill);
        } else {
            return UnsignedText(promoted, base, width, fill);
        }
    }
    /// The same; the width counts code points.
    template<qvxsys::detail::WholeNumber I>
    [[nodiscard]] static TStringCore number32(I value, int base = 10, int width = 0, char32_t fill = U' ')
    {
        return number(value, base, width, fill);
    }
    /// A floating-point number as printf writes it with the conversion `format` (e, E, f, F, g or G; any other counts
    /// as f) and a precision, of which a negative one means 6. `withPoint` puts ".0" behind the digits of a text
    /// without a point ("1.0", "1.0e+20"). Infinities and NaN are "inf", "-inf" and "nan". What would be longer than
    /// 1,023 characters (never so with a precision up to 700) comes out empty, not cut.
    template<std::floating_point F>
    [[nodiscard]] static TStringCore number(F value, char format = 'g', int precision = 6, bool withPoint = false)
    {
        return DoubleText(static_cast<double>(value), format, precision, withPoint);
    }
    /// The shortest text that toDouble (toFloat) reads back as the same value, in the shorter of the notations of f
    /// and e.
    [[nodiscard]] static TStringCore numberShortest(double value);
    [[nodiscard]] static TStringCore numberShortest(float value);
    /// Becomes what number makes of the same arguments.
    template<class V, class... How>
    TStringCore& setNum(V value, How... how)
    {
        return *this = number(value, how...);
    }
    /// An address in hexadecimal; `pad` to 16 digits with zeros, `prefix` with "0x".
    [[nodiscard]] static TStringCore pointer(void const* p, bool prefix = true, bool pad = true);

    /// The whole number that the text is, in base 2..36; 0 takes it from the number's beginning: 16 for "0x", 8 for
    /// "0", else 10. White space (TCType::isSpace) may stand around the number, a sign and, in base 16, "0x" before its
    /// digits; "0".."9" count in every base. *ok (when given) tells whether that is all there is. When more follows,
    /// the number before it is returned; what is no number is 0, and so is one that does not fit the type. Numbers that
    /// do not fit 64 bits with a sign, those of toULongLong too, are found by a new digit making the value step back
    /// modulo 2^64: far outside, a number may pass as its remainder.
    /// Throws "TStringCore::parseInteger: base out of range."
    short toShort(bool* ok = nullptr, int base = 10) const { return view().toShort(ok, base); }
    unsigned short toUShort(bool* ok = nullptr, int base = 10) const { return view().toUShort(ok, base); }
    int toInt(bool* ok = nullptr, int base = 10) const { return view().toInt(ok, base); }
    unsigned int toUInt(bool* ok = nullptr, int base = 10) const { return view().toUInt(ok, base); }
    long toLong(bool* ok = nullptr, int base = 10) const { return view().toLong(ok, base); }
    unsigned long toULong(bool* ok = nullptr, int base = 10) const { return view().toULong(ok, base); }
    long long toLongLong(bool* ok = nullptr, int base = 10) const { return view().toLongLong(ok, base); }
    unsigned long long toULongLong(bool* ok = nullptr, int base = 10) const { return view().toULongLong(ok, base); }
    /// The number that the text is, rounded to nearest: [+-] and digits with a point among, before or behind them and
    /// an exponent (e[+-]digits), or "inf", "infinity" or "nan", in any case. White space and *ok are as for integers.
    /// A number past the type's limits gives infinity and one too small for it 0, both with *ok false.
    double toDouble(bool* ok = nullptr) const { return view().toDouble(ok); }
    float toFloat(bool* ok = nullptr) const { return view().toFloat(ok); }
    /// The units of the longest start of the text that is a whole number in the base, or a floating-point number,
    /// whether it fits a type or not: no white space. 0 when there is none.
    [[nodiscard]] int leftIntegerLength(int base = 10) const { return view().leftIntegerLength(base); }
    [[nodiscard]] int leftDoubleLength() const noexcept { return view().leftDoubleLength(); }
    /// Of n units, or up to the 0 unit; null is empty text.
    template<qvxsys::detail::StringPointer P>
    [[nodiscard]] static int leftIntegerLength(P s, int n = -1, int base = 10)
    {
        if constexpr (std::convertible_to<P, char16_t const*>) {
            return TStringView::leftIntegerLength(s, n, base);
        } else {
            return TStringCore(s, n).leftIntegerLength(base);
        }
    }
    template<qvxsys::detail::StringPointer P>
    [[nodiscard]] static int leftDoubleLength(P s, int n = -1)
    {
        if constexpr (std::convertible_to<P, char16_t const*>) {
            return TStringView::leftDoubleLength(s, n);
        } else {
            return TStringCore(s, n).leftDoubleLength();
        }
    }
    /// @}

private:
    static TStringCore SignedText(long long v, int base, int width, Fill fill);
    static TStringCore UnsignedText(unsigned long long v, int base, int width, Fill fill);
    static TStringCore DoubleText(double v, char format, int precision, bool withPoint);
    static TStringCore DecimalText(std::uint64_t v, bool negative);
    static TStringCore ShortDecimalText(std::uint64_t v, bool negative);
    static TStringCore LongDecimalText(std::uint64_t v, bool negative);
    static TStringCore HexText(std::uint64_t v);
    static TStringCore PaddedText(std::uint64_t v, bool negative, int base, int width, Fill fill);
    char16_t* NewText(int n);

private:
    friend class TCodePointReference;

    static constexpr int kSlots = 16;
    static constexpr int kFormSlot = 15;

    // The form: slot 15 is the inline length, or negative (as a signed 16-bit value) when the first slots hold a block.
    [[nodiscard]] bool IsBlock() const noexcept { return static_cast<std::int16_t>(m_units[kFormSlot]) < 0; }
    [[nodiscard]] TStringBlock* Block() const noexcept
    {
        TStringBlock* block;
        std::memcpy(&block, m_units, sizeof block);
        return block;
    }
    void SetBlock(TStringBlock* block) noexcept
    {
        std::memcpy(m_units, &block, sizeof block);
        m_units[kFormSlot] = static_cast<char16_t>(-1);
    }
    void BecomeEmpty() noexcept { std::memset(m_units, 0, sizeof m_units); }
    void SetInlineLength(int n) noexcept
    {
        m_units[kFormSlot] = static_cast<char16_t>(n);
        m_units[n] = 0;
    }

    static std::atomic_ref<std::int32_t> References(TStringBlock* block) noexcept
    {
        return std::atomic_ref<std::int32_t>(block->references);
    }
    /// Acquire: what other owners read before they let go happens before we write.
    [[nodiscard]] static bool IsShared(TStringBlock* block) noexcept
    {
        return References(block).load(std::memory_order_acquire) > 1;
    }
    static void Release(TStringBlock* block) noexcept
    {
        // A sole owner needs no decrement: nobody else can be taking a reference.
        if (!IsShared(block) || References(block).fetch_sub(1, std::memory_order_acq_rel) == 1) {
            FreeBlock(block);
        }
    }

    /// n <= 14 units by at most two possibly overlapping moves.
    static void CopyShort(char16_t* to, char16_t const* from, unsigned n) noexcept
    {
        // Where the source is an array the compiler knows but the length is not, it would warn of the branches for
        // lengths the array does not have: keep it from looking.
        if (!__builtin_constant_p(n)) {
            __asm__("" : "+r"(from));
        }
        if (n >= 8) {
            CopyEnds<16>(to, from, n);
        } else if (n >= 4) {
            CopyEnds<8>(to, from, n);
        } else if (n >= 2) {
            CopyEnds<4>(to, from, n);
        } else if (n == 1) {
            *to = *from;
        }
    }
    template<std::size_t Bytes>
    static void CopyEnds(char16_t* to, char16_t const* from, unsigned n) noexcept
    {
        struct Chunk
        {
            unsigned char bytes[Bytes];
        } first, last;
        std::size_t const offset = n - Bytes / sizeof(char16_t);
        std::memcpy(&first, from, Bytes);
        std::memcpy(&last, from + offset, Bytes);
        std::memcpy(to, &first, Bytes);
        std::memcpy(to + offset, &last, Bytes);
    }

    /// Appends n <= 14 units where a block has room for them; false where something else has to be done.
    bool AppendShort(char16_t const* s, unsigned n)
    {
        if (!IsBlock()) {
            return false;
        }
        TStringBlock* const block = Block();
        int const old = block->length;
        char16_t* const end = block->Text() + old;
        // A source that begins in the text or at its terminator is cut to what is there.
        bool const own = reinterpret_cast<std::uintptr_t>(end) - reinterpret_cast<std::uintptr_t>(s) <=
                         static_cast<std::uintptr_t>(old) * sizeof(char16_t);
        if (own || static_cast<int>(n) >= block->capacity - old || n == 0 || IsShared(block)) {
            return false;
        }
        CopyShort(end, s, n);
        end[n] = 0;
        block->length = old + static_cast<int>(n);
        return true;
    }

    void AppendUnit(char16_t c)
    {
        if (!IsBlock()) {
            int const n = m_units[kFormSlot];
            if (n < kInlineLength) [[likely]] {
                m_units[n] = c;
                SetInlineLength(n + 1);
                return;
            }
        } else {
            TStringBlock* const block = Block();
            int const n = block->length;
            if (n + 1 < block->capacity && !IsShared(block)) [[likely]] {
                block->length = n + 1;
                block->Text()[n] = c;
                block->Text()[n + 1] = 0;
                return;
            }
        }
        AppendUnitSlow(c);
    }

    template<class I>
    static std::size_t IndexOf(I i) noexcept
    {
        // A negative index becomes one that no string reaches.
        return static_cast<std::size_t>(i);
    }
    [[nodiscard]] int LastIndex() const noexcept { return length() > 0 ? length() - 1 : 0; }

    static void FreeBlock(TStringBlock* block) noexcept;
    [[noreturn]] static void ThrowOutOfRange(char const* message);
    static int WideLength(wchar_t const* s) noexcept;
    static bool AgreeUpToZero(char16_t const* a, char16_t const* b) noexcept;
    static TStringCore Concatenated(TStringCore const& a, TStringView b)
    {
        // Cut to int first: a view's length beyond it is treated as append does.
        int const right = b.length();
        bool const fits = !a.IsBlock() && right >= 0 && right <= kInlineLength - a.m_units[kFormSlot];
        return fits ? ConcatenatedInline(a, b.data(), right) : ConcatenatedInBlock(a, b);
    }
    // A function of its own with one result, which the compiler then builds where the caller wants it.
    static TStringCore ConcatenatedInline(TStringCore const& a, char16_t const* s, int n) noexcept
    {
        TStringCore result(a);
        int const left = a.m_units[kFormSlot];
        CopyShort(result.m_units + left, s, static_cast<unsigned>(n));
        result.SetInlineLength(left + n);
        return result;
    }
    static TStringCore ConcatenatedInBlock(TStringCore const& a, TStringView b);

    static int GrownCapacity(int n) noexcept;
    static int AddLengths(int a, int b);
    static TStringBlock* Reallocate(TStringBlock* block, int capacity);
    void Detach(int capacity);
    void MoveToBlock(int capacity);
    void SetCapacity(int target);
    char16_t* SetLength(int n);
    void StoreLength(int n) noexcept;
    char16_t* Grow(int by);

    void AssignShared(TStringCore const& other) noexcept;
    void AssignMoved(TStringCore& other) noexcept;
    TStringCore& AssignCopies(qvxsys::detail::UnitsOf units, int n);
    void AppendUnitSlow(char16_t c);
    void AppendForeign(char16_t const* s, int n);
    TStringCore& AppendUnits(char16_t const* s, int n);
    void ConvertUtf8(int at, char const* s, int n);
    template<class CodePoint>
    void ConvertUtf32(int at, CodePoint const* s, int n, bool measured);
    TStringCore& InsertUnits(int pos, char16_t const* s, int n);
    void ReplaceUnits(int pos, int count, char16_t const* units, int n);

    /// True when p points into the text or at its terminator.
    [[nodiscard]] bool inSelf(char16_t const* p) const noexcept;
    void appendFromSelf(char16_t const* s, int n);
    bool appendHandleSelf(char16_t const* s, int n);
    /// Appends a unit unless it is 0.
    void appendHandleSingleCodeUnit(char16_t c);
    bool _assignHandleSelf(char16_t const* s, int n);

    alignas(8) char16_t m_units[kSlots];
};
static_assert(sizeof(TStringCore) == 32 && alignof(TStringCore) == 8);

// What needs the class complete.
#include <qvxsys/CodePointView.h>
#include <qvxsys/TStringException.h>
#include <qvxsys/WideText.h>
