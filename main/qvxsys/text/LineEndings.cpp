#include <qvxsys/StringUtils.h>
#include <qvxsys/TStringCore.h>

#include <algorithm>
#include <limits>
#include <string>

#include "TextErrors.h"

namespace StringUtils {
namespace {

constexpr char kCr = '\r';
constexpr char kLf = '\n';

// In two passes. The first turns lone CRs into LFs in place and ends at the first CR that belongs to a longer line end;
// texts without one are then done, without a unit moved. The second compacts from there: of a run of CRs one LF is
// left, a LF behind a CR goes, and so does a CR behind a LF.
template<class Unit>
int Normalize(Unit* s, int length) noexcept
{
    if (s == nullptr) {
        return 0;
    }
    Unit* const end = s + (length < 0 ? std::char_traits<Unit>::length(s) : static_cast<std::size_t>(length));
    Unit* in = s;
    for (; (in = std::find(in, end, Unit{kCr})) != end; ++in) {
        if (in + 1 != end && (in[1] == Unit{kLf} || in[1] == Unit{kCr})) {
            break;
        }
        *in = Unit{kLf};
    }
    enum { Plain, AfterLf, AfterCr } state = Plain;
    Unit* out = in;
    for (; in != end; ++in) {
        if (*in == Unit{kCr}) {
            if (state == Plain) {
                *out++ = Unit{kLf};
                state = AfterCr;
            }
        } else if (*in == Unit{kLf}) {
            if (state != AfterCr) {
                *out++ = Unit{kLf};
            }
            state = state == AfterCr ? Plain : AfterLf;
        } else {
            *out++ = *in;
            state = Plain;
        }
    }
    if (out != end) {
        *out = Unit{};
    }
    return static_cast<int>(out - s);
}

} // namespace

int normalizeLineEndings(char* s) noexcept
{
    return Normalize(s, -1);
}

int normalizeLineEndings(char* s, int length) noexcept
{
    return Normalize(s, length);
}

int normalizeLineEndings(char16_t* s) noexcept
{
    return Normalize(s, -1);
}

int normalizeLineEndings(char16_t* s, int length) noexcept
{
    return Normalize(s, length);
}

int normalizeLineEndings(wchar_t* s) noexcept
{
    return Normalize(s, -1);
}

int normalizeLineEndings(wchar_t* s, int length) noexcept
{
    return Normalize(s, length);
}

TStringCore unixToDos(char16_t const* s, std::size_t length)
{
    TStringCore result;
    if (s == nullptr) {
        return result;
    }
    auto const needsCr = [s](std::size_t i) { return s[i] == u'\n' && (i == 0 || s[i - 1] != u'\r'); };
    std::size_t total = length;
    for (std::size_t i = 0; i < length; ++i) {
        total += needsCr(i) ? 1u : 0u;
    }
    if (total > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        qvxsys::text::ThrowOverflow();
    }
    result.resize(static_cast<int>(total));
    char16_t* out = result.data();
    for (std::size_t i = 0; i < length; ++i) {
        if (needsCr(i)) {
            *out++ = u'\r';
        }
        *out++ = s[i];
    }
    return result;
}

TStringCore unixToDos(wchar_t const* s, std::size_t length)
{
    if (length > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        qvxsys::text::ThrowOverflow();
    }
    TStringCore const units(s, static_cast<int>(length));
    return unixToDos(units.data(), units.size());
}

} // namespace StringUtils
