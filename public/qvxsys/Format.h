#pragma once
// qvxsys::Format: a message from a format literal, checked when it is compiled.
//
//     TStringCore const text = qvxsys::Format(u"%1 of %2: %3", 3, 10, name);
//
// A malformed literal, or a marker without an argument, does not compile; the function that the compiler names in its
// message says why (FormatStringEndsWithAnIncompleteMarker, InsufficientParametersToFormatString, ...). A literal has
// up to 32 markers, escapes included. With one exception: in a UTF-8 literal only ASCII digits are known as such when
// it is compiled; a digit of another script behind a % or a marker is found when the message is made, which throws what
// TFormatStringCore throws.
//
// The markers are found at compile time, so this is also the fastest way to a message. Formats, markers and arguments
// are those of TFormatStringCore, which is the one for formats that are not literals and for padding and precision. As
// there, arguments that no marker asks for are ignored.

#include <array>
#include <concepts>
#include <cstddef>
#include <type_traits>

#include <qvxsys/FormatScan.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TFormatStringCore.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace qvxsys {
namespace detail {

// Never defined: a call to one of them ends the compilation.
void InvalidNumberlessMarkerInFormatString();
void LeadingZeroInMarkerNumberInFormatString();
void InvalidMarkerNumberAbove99InFormatString();
void FormatStringEndsWithAnIncompleteMarker();
void InsufficientParametersToFormatString();
void MoreThan32MarkersInFormatLiteral();

[[nodiscard]] QVXSYS_API TStringCore FillIn(TStringView format, FormatMarker const* markers, std::size_t count,
                                            TStringView const* arguments);

/// An argument as the view or the string that stands for it.
template<class A>
decltype(auto) FormatPiece(A const& a)
{
    if constexpr (TCType::Character<A>) {
        return UnitsOf(a);
    } else if constexpr (WholeNumber<A>) {
        return TStringCore::number(a, 10, 0, u' ');
    } else if constexpr (std::floating_point<A>) {
        return TStringCore::number(static_cast<double>(a), 'g', 6, false);
    } else if constexpr (std::convertible_to<A const&, TStringView>) {
        return TStringView(a);
    } else {
        return TStringCore(a);
    }
}

} // namespace detail

/// A format literal for `Count` arguments. Not to be named by users: Format takes the literal.
template<std::size_t Count>
class FormatLiteral
{
public:
    /// Takes a literal whose markers the compiler checks.
    template<std::size_t N>
    consteval FormatLiteral(char16_t const (&text)[N]) : m_units(text)
    {
        Scan(text, N);
    }
    /// The same of a wide literal.
    template<std::size_t N>
    consteval FormatLiteral(wchar_t const (&text)[N]) : m_wide(text)
    {
        Scan(text, N);
    }
    /// UTF-8.
    template<std::size_t N>
    consteval FormatLiteral(char const (&text)[N]) : m_utf8(text)
    {
        Scan(text, N);
    }
    template<std::size_t N>
    consteval FormatLiteral(char8_t const (&text)[N]) : m_utf8Units(text)
    {
        Scan(text, N);
    }

    /// The text with its markers replaced.
    [[nodiscard]] TStringCore Result(std::array<TStringView, Count> const& arguments) const
    {
        if (m_units != nullptr) {
            return detail::FillIn(TStringView(m_units, m_length), m_markers, m_count, arguments.data());
        }
        // Positions may differ in UTF-16: read it anew.
        TFormatStringCore format(m_wide != nullptr   ? TStringCore(m_wide)
                                 : m_utf8 != nullptr ? TStringCore(m_utf8)
                                                     : TStringCore(m_utf8Units));
        for (TStringView const argument : arguments) {
            format.arg(argument);
        }
        return format.result();
    }

private:
    static constexpr std::size_t kMost = 32;

    template<class Unit>
    consteval void Scan(Unit const* text, std::size_t size)
    {
        m_length = 0;
        while (m_length + 1 < size && text[m_length] != 0) {
            ++m_length;
        }
        auto const n = static_cast<std::int32_t>(m_length);
        auto const isDigit = [](std::uint32_t c) {
            return sizeof(Unit) == 1 ? c >= '0' && c <= '9' : c <= 0xFFFF && detail::IsDigitUnit(c);
        };
        std::int32_t most = 0;
        for (std::int32_t i = 0; i < n; ++i) {
            if (text[i] != '%') {
                continue;
            }
            detail::FormatMarker marker{i, 0, 0};
            Report(detail::ReadMarker(text, n, marker, isDigit));
            if (m_count == kMost) {
                detail::MoreThan32MarkersInFormatLiteral();
            }
            m_markers[m_count++] = marker;
            most = marker.number > most ? marker.number : most;
            i += marker.length - 1;
        }
        if (static_cast<std::size_t>(most) > Count) {
            detail::InsufficientParametersToFormatString();
        }
    }

    static consteval void Report(detail::FormatFault fault)
    {
        switch (fault) {
        case detail::FormatFault::None:
            break;
        case detail::FormatFault::LeadingZero:
            detail::LeadingZeroInMarkerNumberInFormatString();
            break;
        case detail::FormatFault::Above99:
            detail::InvalidMarkerNumberAbove99InFormatString();
            break;
        case detail::FormatFault::IncompleteEnd:
            detail::FormatStringEndsWithAnIncompleteMarker();
            break;
        default:
            detail::InvalidNumberlessMarkerInFormatString();
        }
    }

    char16_t const* m_units = nullptr;
    wchar_t const* m_wide = nullptr;
    char const* m_utf8 = nullptr;
    char8_t const* m_utf8Units = nullptr;
    std::size_t m_length = 0;
    std::size_t m_count = 0;
    detail::FormatMarker m_markers[kMost] = {};
};

/// The message; see the top of this file. Arguments: text of any kind, characters, whole and floating-point numbers, as
/// TFormatStringCore::arg writes them.
template<class... A>
[[nodiscard]] TStringCore Format(std::type_identity_t<FormatLiteral<sizeof...(A)>> const& format, A const&... arguments)
{
    return [&format](auto const&... pieces) {
        return format.Result(std::array<TStringView, sizeof...(A)>{TStringView(pieces)...});
    }(detail::FormatPiece(arguments)...);
}

} // namespace qvxsys
