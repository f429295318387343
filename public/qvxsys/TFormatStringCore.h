#pragma once
// TFormatStringCore: messages from a format with numbered markers and a list of arguments.
//
//     TStringCore const text =
//         TFormatStringCore(u"%1 of %2 files copied (%3 %%)").arg(7).arg(20).arg(35.0, 0, 'f', 1);
//     // "7 of 20 files copied (35.0 %)"
//
//     throw QuorvexException(TFormatStringCore(u"Cannot open \"%1\".").arg(name), info);
//
// %1 to %99 stand for the arguments in the order in which they were given, so a translated format may use them in any
// order, several times, or not at all; %% stands for %. Arguments are copied as they are: a % in one means nothing.
// For formats that are literals, qvxsys::Format (Format.h) finds mistakes at compile time and is faster.
//
// A value; as thread-safe as the strings in it. Room for 8 markers and 4 arguments is in the object.

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

#include <qvxsys/FormatScan.h>
#include <qvxsys/InlineVector.h>
#include <qvxsys/Platform.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/TStringCore.h>

namespace qvxsys::detail {

/// What becomes a string without being asked to.
template<class T>
concept StringArgument = std::convertible_to<T const&, TStringCore>;

} // namespace qvxsys::detail

/// A text with markers, and the values for them.
class QVXSYS_API TFormatStringCore
{
public:
    class Exception;
    /// What pads a value.
    using Fill = TStringCore::Fill;

    /// @name The format
    /// A malformed one throws TFormatStringCore::Exception, source 4:
    ///   0xF7AF5E37 "Invalid numberless marker in format string."                a % before neither a digit nor a %
    ///   0xB3668D59 "Leading zero in marker number in format string."
    ///   0xCA249FEE "Invalid marker number > 99 in format string."
    ///   0x274BF5E7 "Invalid marker number <= 0 in format string."
    ///   0xA33EDF83 "Format string ends with an incomplete marker."
    ///   0xA4DB9BBE "Format string ends with an invalid marker number <= 0."
    /// A digit is what TCType::isDigit says, but its value is the unit minus 0x30: digits other than ASCII make numbers
    /// that no arguments reach.
    /// @{
    TFormatStringCore(TStringCore const& format) : TFormatStringCore(TStringCore(format)) {}
    TFormatStringCore(TStringCore&& format);
    TFormatStringCore(char16_t const* format) : TFormatStringCore(TStringCore(format)) {}
    TFormatStringCore(wchar_t const* format) : TFormatStringCore(TStringCore(format)) {}
    /// UTF-8.
    TFormatStringCore(char const* format) : TFormatStringCore(TStringCore(format)) {}
    /// Empty, as null text of any kind is.
    TFormatStringCore(std::nullptr_t) {}
    TFormatStringCore(TFormatStringCore const&) = default;
    /// Leaves an empty format without arguments.
    TFormatStringCore(TFormatStringCore&& other) noexcept;
    /// All or nothing, when memory runs out.
    TFormatStringCore& operator=(TFormatStringCore const& other)
    {
        if (this != &other) {
            *this = TFormatStringCore(other);
        }
        return *this;
    }
    TFormatStringCore& operator=(TFormatStringCore&& other) noexcept;
    /// A new format, the same arguments. When it throws, the format is the new one with some of its markers: assign
    /// another before using it.
    TFormatStringCore& operator=(TStringCore format);
    TFormatStringCore& operator=(char16_t const* format) { return *this = TStringCore(format); }
    TFormatStringCore& operator=(wchar_t const* format) { return *this = TStringCore(format); }
    TFormatStringCore& operator=(char const* format) { return *this = TStringCore(format); }
    TFormatStringCore& operator=(std::nullptr_t) { return *this = TStringCore(); }
    ~TFormatStringCore();

    [[nodiscard]] TStringCore formatString() const { return m_format; }
    /// @}

    /// @name Arguments
    /// Each appends and returns this object. A positive fieldWidth pads on the left, a negative one on the right, up to
    /// that many units; longer text is never cut.
    /// @{
    TFormatStringCore& arg(TStringCore const& a, int fieldWidth = 0, Fill fill = u' ')
    {
        return fieldWidth == 0 ? Add(a) : AddJustified(a, fieldWidth, fill);
    }
    /// Two to ten texts.
    template<qvxsys::detail::StringArgument A, qvxsys::detail::StringArgument... More>
    requires(sizeof...(More) >= 1 && sizeof...(More) <= 9) TFormatStringCore& arg(A const& a, More const&... more)
    {
        Add(a);
        (Add(more), ...);
        return *this;
    }
    TFormatStringCore& arg(std::vector<TStringCore> const& all);
    TFormatStringCore& arg(std::initializer_list<TStringCore> all)
    {
        for (TStringCore const& a : all) {
            Add(a);
        }
        return *this;
    }
    /// A whole number in base 2 to 36 or 64, without sign for bases other than 10; throws what TStringCore::number
    /// throws.
    template<qvxsys::detail::WholeNumber I>
    requires(!TCType::Character<I>) TFormatStringCore& arg(I value, int fieldWidth = 0, int base = 10, Fill fill = u' ')
    {
        return AddMade([=] { return TStringCore::number(value, base, 0, u' '); }, fieldWidth, fill);
    }
    /// As TStringCore::number writes it; a negative precision means 6.
    template<std::floating_point F>
    TFormatStringCore& arg(F value, int fieldWidth = 0, char format = 'g', int precision = -1, Fill fill = u' ',
                           bool flag = false)
    {
        int const digits = precision < 0 ? 6 : precision;
        return AddMade([=] { return TStringCore::number(value, format, digits, flag); }, fieldWidth, fill);
    }
    /// One character; a char is Latin-1.
    template<TCType::Character C>
    TFormatStringCore& arg(C c, int fieldWidth = 0, Fill fill = u' ')
    {
        return AddMade([=] { return TStringCore(c, 1); }, fieldWidth, fill);
    }
    /// A character in second place would be taken for a field width: use args().
    template<class A, TCType::Character C, class... More>
    TFormatStringCore& arg(A const&, C, More const&...) = delete;
    /// arg() of each, of any kind.
    template<class... A>
    TFormatStringCore& args(A const&... all)
    {
        (static_cast<void>(arg(all)), ...);
        return *this;
    }
    /// Removes all arguments; the format stays.
    void clearParms() noexcept { m_parms.clear(); }
    /// @}

    /// The formatted text. One allocation at most.
    /// Throws TFormatStringCore::Exception, code 0x0E2B86FB, "Insufficient parameters to format string (have N, need M:
    /// format string = "...")" when a marker's number is above that of the arguments. Arguments that no marker asks for
    /// are ignored.
    [[nodiscard]] TStringCore result() const;
    /// As result(), which it calls.
    operator TStringCore() const { return result(); }

private:
    template<class A>
    TFormatStringCore& Add(A&& a)
    {
        m_parms.push_back(std::forward<A>(a));
        return *this;
    }
    template<class Make>
    TFormatStringCore& AddMade(Make make, int fieldWidth, Fill fill)
    {
        if (fieldWidth != 0) {
            return AddJustified(make(), fieldWidth, fill);
        }
        m_parms.PushMade(make);
        return *this;
    }
    TFormatStringCore& AddJustified(TStringCore const& a, int fieldWidth, Fill fill);
    void scanForMarkers();
    [[noreturn]] void ThrowInsufficient() const;

    std::int32_t m_maxMarker = 0; // the highest number of a marker
    qvxsys::detail::InlineVector<qvxsys::detail::FormatMarker, 8> m_markers;
    qvxsys::detail::InlineVector<TStringCore, 4> m_parms;
    TStringCore m_format;
};

/// A malformed format, or too few arguments. Clones and rethrown copies are plain QuorvexExceptions.
class QVXSYS_API TFormatStringCore::Exception : public QuorvexException
{
public:
    /// With a message.
    Exception(TStringCore const& message, TError::ErrorInfo const& info);
    Exception(Exception const&) = default;
    Exception& operator=(Exception const&) = default;
    ~Exception() override;
};
