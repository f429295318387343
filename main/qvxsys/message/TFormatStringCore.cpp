#include <qvxsys/TFormatStringCore.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <utility>

#include <emmintrin.h>

#include <qvxsys/Format.h>
#include <qvxsys/TCType.h>

#include "TextErrors.h"
#include "ThrowSite.h"

using qvxsys::detail::FormatFault;
using qvxsys::detail::FormatMarker;
using qvxsys::error::ThrowSite;

namespace {

bool IsDigit(std::uint32_t c) noexcept
{
    return c < 0x80 ? c - '0' < 10 : TCType::isDigit(static_cast<char16_t>(c));
}

/// One bit for each '%' among eight units.
unsigned Percents(char16_t const* units) noexcept
{
    __m128i eight;
    std::memcpy(&eight, units, sizeof eight);
    __m128i const equal = _mm_cmpeq_epi16(eight, _mm_set1_epi16('%'));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(equal, _mm_setzero_si128())));
}

/// One bit for each '%' among the first sixteen units, or n if these are fewer, from `start` on; `start` is a multiple
/// of sixteen.
unsigned PercentsFrom(char16_t const* text, std::int32_t start, std::int32_t length) noexcept
{
    char16_t const* const units = text + start;
    std::int32_t const n = length - start;
    if (n >= 16) {
        return Percents(units) | Percents(units + 8) << 8;
    }
    if (n >= 8) {
        return Percents(units) | Percents(units + n - 8) << (n - 8);
    }
    if (start != 0) {
        return Percents(units + n - 8) >> (8 - n);
    }
    unsigned found = 0;
    for (std::int32_t i = 0; i < n; ++i) {
        found |= (units[i] == u'%' ? 1u : 0u) << i;
    }
    return found;
}

/// ReadMarker for what nearly all markers are: one digit before an ASCII unit that is none, such as the terminator of
/// the format. False for anything else.
bool ReadDigit(char16_t const* format, std::int32_t n, FormatMarker& marker) noexcept
{
    std::int32_t const i = marker.position;
    if (n - i < 2) {
        return false;
    }
    unsigned const digit = format[i + 1] - u'0';
    unsigned const next = format[i + 2];
    marker.length = 2;
    marker.number = static_cast<std::int32_t>(digit);
    return digit - 1 < 9 && next < 0x80 && next - u'0' > 9;
}

template<std::size_t Units>
void CopyEnds(char16_t* to, char16_t const* from, std::size_t n) noexcept
{
    struct Chunk
    {
        char16_t units[Units];
    } first, last;
    std::memcpy(&first, from, sizeof first);
    std::memcpy(&last, from + n - Units, sizeof last);
    std::memcpy(to, &first, sizeof first);
    std::memcpy(to + n - Units, &last, sizeof last);
}

/// Most pieces of messages are too short to be worth a call: two overlapping moves do.
[[gnu::always_inline]] inline char16_t* Copy(char16_t* to, char16_t const* from, std::size_t n) noexcept
{
    if (n > 16) {
        std::memcpy(to, from, n * sizeof(char16_t));
    } else if (n >= 8) {
        CopyEnds<8>(to, from, n);
    } else if (n >= 4) {
        CopyEnds<4>(to, from, n);
    } else if (n >= 2) {
        CopyEnds<2>(to, from, n);
    } else if (n == 1) {
        *to = *from;
    }
    return to + n;
}

/// The format with argument(number - 1), a view, in the place of each marker.
template<class Argument>
TStringCore FillInWith(TStringView format, FormatMarker const* markers, std::size_t count, Argument argument)
{
    auto length = static_cast<std::int64_t>(format.size());
    for (std::size_t i = 0; i < count; ++i) {
        int const number = markers[i].number;
        length -= markers[i].length;
        length += number == 0 ? 1 : static_cast<std::int64_t>(argument(number - 1).size());
    }
    if (length > INT_MAX) {
        qvxsys::text::ThrowOverflow();
    }
    TStringCore result;
    result.resize(static_cast<int>(length));
    char16_t* to = result.data();
    char16_t const* from = format.data();
    for (std::size_t i = 0; i < count; ++i) {
        FormatMarker const& marker = markers[i];
        char16_t const* const at = format.data() + marker.position;
        to = Copy(to, from, static_cast<std::size_t>(at - from));
        if (marker.number == 0) {
            *to++ = u'%';
        } else {
            TStringView const text = argument(marker.number - 1);
            to = Copy(to, text.data(), text.size());
        }
        from = at + marker.length;
    }
    Copy(to, from, static_cast<std::size_t>(format.end() - from));
    return result;
}

[[noreturn]] void ThrowFault(FormatFault fault)
{
    using E = TFormatStringCore::Exception;
    switch (fault) {
    case FormatFault::None:
        break;
    case FormatFault::Numberless:
        throw E(u"Invalid numberless marker in format string.", ThrowSite(0xF7AF5E37));
    case FormatFault::LeadingZero:
        throw E(u"Leading zero in marker number in format string.", ThrowSite(0xB3668D59));
    case FormatFault::Above99:
        throw E(u"Invalid marker number > 99 in format string.", ThrowSite(0xCA249FEE));
    case FormatFault::NotPositive:
        throw E(u"Invalid marker number <= 0 in format string.", ThrowSite(0x274BF5E7));
    case FormatFault::IncompleteEnd:
        throw E(u"Format string ends with an incomplete marker.", ThrowSite(0xA33EDF83));
    case FormatFault::NotPositiveEnd:
        break;
    }
    throw E(u"Format string ends with an invalid marker number <= 0.", ThrowSite(0xA4DB9BBE));
}

} // namespace

namespace qvxsys::detail {

TStringCore FillIn(TStringView format, FormatMarker const* markers, std::size_t count, TStringView const* arguments)
{
    return FillInWith(format, markers, count, [arguments](int i) { return arguments[i]; });
}

} // namespace qvxsys::detail

TFormatStringCore::TFormatStringCore(TStringCore&& format) : m_format(std::move(format))
{
    scanForMarkers();
}

TFormatStringCore::TFormatStringCore(TFormatStringCore&& other) noexcept
    : m_maxMarker(std::exchange(other.m_maxMarker, 0)), m_markers(std::move(other.m_markers)),
      m_parms(std::move(other.m_parms)), m_format(std::move(other.m_format))
{}

TFormatStringCore& TFormatStringCore::operator=(TFormatStringCore&& other) noexcept
{
    if (this != &other) {
        m_maxMarker = std::exchange(other.m_maxMarker, 0);
        m_markers = std::move(other.m_markers);
        m_parms = std::move(other.m_parms);
        m_format = std::move(other.m_format);
    }
    return *this;
}

TFormatStringCore& TFormatStringCore::operator=(TStringCore format)
{
    m_format = std::move(format);
    scanForMarkers();
    return *this;
}

TFormatStringCore::~TFormatStringCore() = default;

void TFormatStringCore::scanForMarkers()
{
    m_maxMarker = 0;
    m_markers.clear();
    char16_t const* const format = m_format.constData();
    int const n = m_format.length();
    int end = 0; // of the last marker
    for (int start = 0; start < n; start += 16) {
        for (unsigned found = PercentsFrom(format, start, n); found != 0; found &= found - 1) {
            FormatMarker marker{start + std::countr_zero(found), 0, 0};
            if (marker.position < end) {
                continue; // the second of an escape
            }
            if (!ReadDigit(format, n, marker)) [[unlikely]] {
                FormatFault const fault = qvxsys::detail::ReadMarker(format, n, marker, IsDigit);
                if (fault != FormatFault::None) [[unlikely]] {
                    ThrowFault(fault);
                }
            }
            end = marker.position + marker.length;
            m_maxMarker = std::max(m_maxMarker, marker.number);
            m_markers.push_back(marker);
        }
    }
}

TFormatStringCore& TFormatStringCore::arg(std::vector<TStringCore> const& all)
{
    for (TStringCore const& a : all) {
        m_parms.push_back(a);
    }
    return *this;
}

TFormatStringCore& TFormatStringCore::AddJustified(TStringCore const& a, int fieldWidth, Fill fill)
{
    // The most negative width has no positive counterpart; no string is as long as either.
    int const width = fieldWidth >= 0 ? fieldWidth : fieldWidth == INT_MIN ? INT_MAX : -fieldWidth;
    char32_t const c = fill.count == 1 ? fill.units[0] : TStringView(fill).front();
    return Add(fieldWidth > 0 ? a.rightJustified(width, c, false) : a.leftJustified(width, c, false));
}

TStringCore TFormatStringCore::result() const
{
    if (m_parms.size() < static_cast<std::size_t>(m_maxMarker)) [[unlikely]] {
        ThrowInsufficient();
    }
    return FillInWith(m_format.view(), m_markers.begin(), m_markers.size(),
                      [this](int i) { return m_parms[static_cast<std::size_t>(i)].view(); });
}

void TFormatStringCore::ThrowInsufficient() const
{
    TFormatStringCore message(u"Insufficient parameters to format string (have %1, need %2: format string = \"%3\")");
    message.arg(m_parms.size()).arg(m_maxMarker).arg(m_format);
    throw Exception(message.result(), ThrowSite(0x0E2B86FB));
}

TFormatStringCore::Exception::Exception(TStringCore const& message, TError::ErrorInfo const& info)
    : QuorvexException(message, info)
{}

TFormatStringCore::Exception::~Exception() = default;
