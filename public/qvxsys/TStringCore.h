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
// The class is made of parts with headers of their own: size, capacity and units (TStringStorage.h), searching and
// splitting, which it shares with TStringView (TTextReading.h), editing (TStringEditing.h), comparison and
// concatenation (TStringOperators.h). Here are making, assigning, appending and conversion.
//
// Arguments. Text comes as TStringCore, TStringView, UTF-16 (`char16_t const*`), wide text (`wchar_t const*`), UTF-8
// (`char const*`, `char8_t const*`) or as the standard library's string or view of any of these; a count of -1 (any
// negative one) means up to the first 0 unit, and a null pointer is empty text. A wchar_t is a UTF-16 unit where it has
// 16 bits; elsewhere it is a code point and wide text is converted as UTF-32 (surrogate values kept, values above
// U+10FFFF become U+FFFD). A single `char` is Latin-1. A character is any of char, char16_t, wchar_t and char32_t.
// Arguments may point into the string itself.
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

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include <qvxsys/CodePointIterator.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringEditing.h>
#include <qvxsys/TStringOperators.h>
#include <qvxsys/TStringView.h>
#include <qvxsys/TTextReading.h>
#include <qvxsys/TextArguments.h>
#include <qvxsys/TextComparison.h>

template<class Container>
class TCodePointIterator;
class TCodePointView;

/// An owning UTF-16 string; see the top of the file.
class QVXSYS_API TStringCore : public TStringEditing,
                               public TTextReading<TStringCore, TStringCore, TStringView,
                                                   TStringEditing::CaseSensitivity, TStringEditing::SplitBehavior>,
                               public qvxsys::detail::StringOperators<TStringCore, TStringView>
{
public:
    /// Walks over code points.
    using code_point_iterator = TConstCodePointIterator<TStringCore>;

    class Exception;

    /// @name Construction
    /// @{
    TStringCore() noexcept = default;
    TStringCore(TStringCore const& other) noexcept = default;
    TStringCore(TStringCore&& other) noexcept = default;
    /// n copies of a character, a char meaning the unit of its byte value; none for a negative n.
    template<TCType::Character C>
    explicit TStringCore(C c, int n = 1)
    {
        assign(c, n);
    }
    /// UTF-8, n bytes, malformed input substituted (see append).
    TStringCore(char const* utf8, int n = -1)
    {
        if (utf8 != nullptr && n != 0) {
            ConvertUtf8(0, utf8, n);
        }
    }
    TStringCore(char8_t const* utf8, int n = -1) : TStringCore(reinterpret_cast<char const*>(utf8), n) {}
    /// The standard library's strings and views: UTF-8, UTF-16 or wide text, all of it.
    template<qvxsys::detail::StandardString T>
    TStringCore(T const& text)
    {
        append(text);
    }
    /// UTF-16, n units.
    TStringCore(char16_t const* s, int n = -1)
    {
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
    TStringCore(std::nullptr_t) noexcept {}
    /// The view's units. A length above int is cut to it, and where that makes it negative, it means up to the first 0.
    TStringCore(TStringView v) : TStringCore(v.data(), v.length()) {}
    ~TStringCore() = default;
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
    TStringCore& operator=(TStringCore const& other) noexcept = default;
    TStringCore& operator=(TStringCore&& other) noexcept = default;
    /// From a view, text of any kind, or a character.
    template<qvxsys::detail::TextArgument T>
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
    TStringCore& assign(char8_t const* utf8, int n = -1) { return assign(reinterpret_cast<char const*>(utf8), n); }
    template<qvxsys::detail::StandardString T>
    TStringCore& assign(T const& text)
    {
        auto const units = qvxsys::detail::UnitsOfStandard(text);
        return assign(units.data(), qvxsys::detail::CheckedLength(units.size()));
    }
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
    TStringCore& append(char8_t const* utf8, int n = -1) { return append(reinterpret_cast<char const*>(utf8), n); }
    /// The standard library's strings and views; throws "Appended string is too long" above 0x7FFFFFFF units.
    template<qvxsys::detail::StandardString T>
    TStringCore& append(T const& text)
    {
        auto const units = qvxsys::detail::UnitsOfStandard(text);
        return append(units.data(), qvxsys::detail::CheckedLength(units.size()));
    }
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

    template<qvxsys::detail::TextArgument T>
    void push_back(T const& t)
    {
        append(t);
    }
    void push_back32(char32_t c) { append(c); }

    TStringCore& operator+=(TStringCore const& s) { return append(s); }
    template<qvxsys::detail::TextArgument A = TStringView>
    TStringCore& operator+=(A const& text)
    {
        return append(text);
    }
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
        char16_t const* const a = constData();
        char16_t const* const b = other.constData();
        if (cs != CaseSensitive) {
            return qvxsys::detail::CompareStringsFolded(a, size(), b, other.size());
        }
        unsigned const stop = qvxsys::detail::FirstStop(a, b);
        if (stop < qvxsys::detail::kFirstUnits) {
            return a[stop] < b[stop] ? -1 : a[stop] > b[stop] ? 1 : 0;
        }
        return qvxsys::detail::CompareStrings(a, size(), b, other.size());
    }
    [[nodiscard]] int compare(char16_t const* other, CaseSensitivity cs = CaseSensitive) const noexcept
    {
        return compare(constData(), other, cs);
    }
    [[nodiscard]] int compare(wchar_t const* other, CaseSensitivity cs = CaseSensitive) const;
    [[nodiscard]] int compare(std::nullptr_t, CaseSensitivity cs = CaseSensitive) const noexcept
    {
        return compare(constData(), nullptr, cs);
    }
    /// At most n units, ending at a common 0 unit; a negative n means the longer of the two terminated lengths.
    [[nodiscard]] static int compareN(char16_t const* a, char16_t const* b, int n,
                                      CaseSensitivity cs = CaseSensitive) noexcept;
    /// Wide texts, or one and a UTF-16 text; n counts the UTF-16 units they stand for.
    template<class A, class B>
    requires qvxsys::detail::WideRawPair<A, B>
    [[nodiscard]] static int compare(A const& a, B const& b, CaseSensitivity cs = CaseSensitive)
    {
        auto const& left = qvxsys::detail::ToRaw(a);
        auto const& right = qvxsys::detail::ToRaw(b);
        return compare(left.Units(), right.Units(), cs);
    }
    template<class A, class B>
    requires qvxsys::detail::WideRawPair<A, B>
    [[nodiscard]] static int compareN(A const& a, B const& b, int n, CaseSensitivity cs = CaseSensitive)
    {
        auto const& left = qvxsys::detail::ToRawStart(a, n);
        auto const& right = qvxsys::detail::ToRawStart(b, n);
        return compareN(left.Units(), right.Units(), n, cs);
    }
    /// @}

    /// @name Searching in raw text
    /// The position of the first match at or after `from`, or -1. A negative `from` counts from the end, and a start
    /// outside [0, length) finds nothing. A needle that is null, of length 0 or begins with a 0 unit is empty and found
    /// at the start; a negative needle length means up to its 0 unit. Wide text counts as the UTF-16 it stands for.
    /// @{
    [[nodiscard]] static int findStr(char16_t const* haystack, int haystackLength, char16_t const* needle,
                                     int needleLength, int from, CaseSensitivity cs = CaseSensitive);
    [[nodiscard]] static int findStr(char16_t const* haystack, int haystackLength, char16_t const* needle,
                                     int needleLength, CaseSensitivity cs = CaseSensitive)
    {
        return findStr(haystack, haystackLength, needle, needleLength, 0, cs);
    }
    /// Terminated texts.
    [[nodiscard]] static int findStr(char16_t const* haystack, char16_t const* needle, int from = 0,
                                     CaseSensitivity cs = CaseSensitive)
    {
        return findStr(haystack, length(haystack), needle, -1, from, cs);
    }
    [[nodiscard]] static int findStr(char16_t const* haystack, char16_t const* needle, CaseSensitivity cs)
    {
        return findStr(haystack, needle, 0, cs);
    }
    template<class A, class B, class... Rest>
    requires qvxsys::detail::WideRawPair<A, B>
    [[nodiscard]] static int findStr(A const& haystack, int haystackLength, B const& needle, int needleLength,
                                     Rest... rest)
    {
        auto const& text = qvxsys::detail::ToRaw(haystack, haystackLength < 0 ? 0 : haystackLength);
        auto const& wanted = qvxsys::detail::ToRaw(needle, needleLength);
        return findStr(text.Units(), text.Length(), wanted.Units(), wanted.Length(), rest...);
    }
    template<class A, class B, class... Rest>
    requires qvxsys::detail::WideRawPair<A, B>
    [[nodiscard]] static int findStr(A const& haystack, B const& needle, Rest... rest)
    {
        auto const& text = qvxsys::detail::ToRaw(haystack);
        auto const& wanted = qvxsys::detail::ToRaw(needle);
        return findStr(text.Units(), wanted.Units(), rest...);
    }
    /// @}

    friend void swap(TStringCore& a, TStringCore& b) noexcept { a.swap(b); }

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
    template<qvxsys::detail::WholeNumber I, TCType::Character C>
    [[nodiscard]] static TStringCore number32(I value, int base, int width, C fill)
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
    /// Other number types, as double.
    template<class N>
    requires(std::same_as<N, long double> || (qvxsys::detail::WholeNumber<N> && !TCType::Character<N>))
        [[nodiscard]] static TStringCore numberShortest(N value)
    {
        return numberShortest(static_cast<double>(value));
    }
    /// Becomes what number makes of the same arguments.
    template<class V, class... How>
    requires requires(V v, How... how) { number(v, how...); }
    TStringCore& setNum(V value, How... how) { return *this = number(value, how...); }
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
        return TStringView::leftIntegerLength(s, n, base);
    }
    template<qvxsys::detail::StringPointer P>
    [[nodiscard]] static int leftDoubleLength(P s, int n = -1)
    {
        return TStringView::leftDoubleLength(s, n);
    }
    /// @}

private:
    static TStringCore SignedText(long long v, int base, int width, Fill fill);
    static TStringCore UnsignedText(unsigned long long v, int base, int width, Fill fill);
    static TStringCore DoubleText(double v, char format, int precision, bool withPoint);
    static TStringCore PrintedText(double v, char format, int precision, bool withPoint);
    static TStringCore FixedText(std::uint64_t digits, int precision, bool negative);
    static TStringCore DecimalText(std::uint64_t v, bool negative);
    static TStringCore ShortDecimalText(std::uint64_t v, bool negative);
    static TStringCore LongDecimalText(std::uint64_t v, bool negative);
    static TStringCore HexText(std::uint64_t v);
    static TStringCore PaddedText(std::uint64_t v, bool negative, int base, int width, Fill fill);
    char16_t* NewText(int n);

private:
    friend class TCodePointReference;
    friend class qvxsys::detail::StringOperators<TStringCore, TStringView>;

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

    void AppendUnitSlow(char16_t c);
    void AppendForeign(char16_t const* s, int n);
    TStringCore& AppendUnits(char16_t const* s, int n);
    void ConvertUtf8(int at, char const* s, int n);
    template<class CodePoint>
    void ConvertUtf32(int at, CodePoint const* s, int n, bool measured);

    void appendFromSelf(char16_t const* s, int n);
    bool appendHandleSelf(char16_t const* s, int n);
    /// Appends a unit unless it is 0.
    void appendHandleSingleCodeUnit(char16_t c);
    bool _assignHandleSelf(char16_t const* s, int n);
};
static_assert(sizeof(TStringCore) == 32 && alignof(TStringCore) == 8);

inline TStringCore& TStringEditing::Self() noexcept
{
    return static_cast<TStringCore&>(*this);
}

inline TStringCore const& TStringEditing::Self() const noexcept
{
    return static_cast<TStringCore const&>(*this);
}

template<qvxsys::detail::TextArgument A>
TStringCore TStringEditing::join(std::vector<TStringCore> const& parts, A const& separator)
{
    return Join(parts, qvxsys::detail::ToView(separator));
}

template<qvxsys::detail::TextArgument A>
TStringCore TStringEditing::join(std::vector<TStringView> const& parts, A const& separator)
{
    return Join(parts, qvxsys::detail::ToView(separator));
}

template<qvxsys::detail::TextArgument A>
TStringCore TStringEditing::join(std::initializer_list<TStringView> parts, A const& separator)
{
    return Join(std::vector<TStringView>(parts), qvxsys::detail::ToView(separator));
}

/// Flags can be combined.
constexpr TStringCore::SectionFlags operator|(TStringCore::SectionFlags a, TStringCore::SectionFlags b) noexcept
{
    return static_cast<TStringCore::SectionFlags>(static_cast<int>(a) | static_cast<int>(b));
}

// What needs the class complete.
#include <qvxsys/CodePointView.h>
#include <qvxsys/TStringException.h>
#include <qvxsys/WideText.h>
