#include <qvxsys/StringUtils.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include <qvxsys/QvxICU.h>
#include <qvxsys/TStringCore.h>

#include "Stretch.h"
#include "TextErrors.h"
#include "WideConversion.h"
#include "kernels/Kernels.h"

namespace StringUtils {
namespace {

namespace text = qvxsys::text;
using QvxICU::ICUErrorCode;

// The names as they stand in messages.
constexpr char const* kUtf8ToUtf16 = "StringUtils::Utf8ToUtf16";
constexpr char const* kUtf8ToUtf32 = "StringUtils::Utf8ToUtf32";
constexpr char const* kUtf16ToUtf8 = "StringUtils::Utf16ToUtf8";
constexpr char const* kUtf16ToUtf32 = "StringUtils::Utf16ToUtf32";
constexpr char const* kUtf32ToUtf8 = "StringUtils::Utf32ToUtf8";
constexpr char const* kUtf32ToUtf16 = "StringUtils::Utf32ToUtf16";

constexpr int kMaxLength = std::numeric_limits<int>::max();

void CheckLength(int n, char const* routine)
{
    if (n < 0) {
        text::ThrowNonsenseLength(n, routine);
    }
}

void CheckSource(void const* src, int n, char const* routine, char const* icuFunction)
{
    if (src == nullptr && n > 0) {
        text::ThrowIcuError(static_cast<int>(ICUErrorCode::IllegalArgumentError), routine, icuFunction);
    }
}

template<class Unit>
int TerminatedLength(Unit const* s, char const* routine)
{
    std::size_t const length = s != nullptr ? std::char_traits<Unit>::length(s) : 0;
    if (length > static_cast<std::size_t>(kMaxLength)) {
        text::ThrowNonsenseLength(static_cast<std::int64_t>(length), routine);
    }
    return static_cast<int>(length);
}

// One conversion: its names, and the kernels that do it. `worst` is the most units a source unit becomes.
template<class From, class To>
struct Conversion
{
    char const* routine;
    char const* icuFunction;
    std::size_t worst;
    std::size_t (*convert)(From const*, std::size_t, To*);
    std::size_t (*measure)(From const*, std::size_t);

    [[noreturn]] void Fail(ICUErrorCode status) const
    {
        text::ThrowIcuError(static_cast<int>(status), routine, icuFunction);
    }

    [[nodiscard]] int Run(From const* src, int n, To* dst, int capacity) const
    {
        CheckLength(n, routine);
        CheckSource(src, n, routine, icuFunction);
        if (dst != nullptr && capacity < 0) {
            Fail(ICUErrorCode::IllegalArgumentError);
        }
        auto const count = static_cast<std::size_t>(n);
        if (dst == nullptr) {
            std::size_t const length = measure(src, count);
            if (length == 0) {
                Fail(ICUErrorCode::StringNotTerminatedWarning);
            }
            return Checked(length);
        }
        // The kernels want room for the worst case; where the destination has less, measuring tells whether it
        // suffices.
        auto const room = static_cast<std::size_t>(capacity);
        std::size_t length = 0;
        if (count * worst <= room) {
            length = convert(src, count, dst);
        } else {
            length = measure(src, count);
            if (length <= room) {
                text::ConvertTight(src, count, dst, length, worst, convert);
            }
        }
        if (length >= room) {
            Fail(length == room ? ICUErrorCode::StringNotTerminatedWarning : ICUErrorCode::BufferOverflowError);
        }
        dst[length] = 0;
        return static_cast<int>(length);
    }

    [[nodiscard]] int Measure(From const* src, int n, char const* measuringRoutine) const
    {
        if (n == 0) {
            return 0;
        }
        CheckLength(n, measuringRoutine);
        return Run(src, n, nullptr, 0);
    }

private:
    [[nodiscard]] int Checked(std::size_t length) const
    {
        if (length > static_cast<std::size_t>(kMaxLength)) {
            Fail(ICUErrorCode::IndexOutOfBoundsError);
        }
        return static_cast<int>(length);
    }
};

constexpr Conversion<char, char16_t> k8To16 = {
    kUtf8ToUtf16, "t_u_strFromUTF8WithSub", 1,
    [](char const* src, std::size_t n, char16_t* dst) {
        std::size_t substitutions = 0;
        return text::kernels().utf8ToUtf16(src, n, dst, substitutions);
    },
    [](char const* src, std::size_t n) { return text::kernels().utf16LengthOfUtf8(src, n); }};

constexpr Conversion<char16_t, char> k16To8 = {
    kUtf16ToUtf8, "t_u_strToUTF8WithSub", 3,
    [](char16_t const* src, std::size_t n, char* dst) {
        std::size_t substitutions = 0;
        return text::kernels().utf16ToUtf8(src, n, dst, substitutions);
    },
    [](char16_t const* src, std::size_t n) { return text::kernels().utf8LengthOfUtf16(src, n); }};

constexpr Conversion<char16_t, char32_t> k16To32 = {
    kUtf16ToUtf32, "t_u_strToUTF32WithSub", 1,
    [](char16_t const* src, std::size_t n, char32_t* dst) {
        std::size_t substitutions = 0;
        return text::kernels().utf16ToUtf32(src, n, dst, substitutions);
    },
    [](char16_t const* src, std::size_t n) { return text::kernels().countCodePoints(src, n); }};

constexpr Conversion<char32_t, char16_t> k32To16 = {
    kUtf32ToUtf16, "u_strFromUTF32WithSub", 2,
    [](char32_t const* src, std::size_t n, char16_t* dst) {
        std::size_t substitutions = 0;
        return text::kernels().utf32ToUtf16(src, n, dst, substitutions);
    },
    [](char32_t const* src, std::size_t n) {
        auto const pair = [](char32_t c) { return c - 0x10000u < 0x100000u; };
        return n + static_cast<std::size_t>(std::count_if(src, src + n, pair));
    }};

// What UTF-32 becomes in UTF-8 by way of UTF-16, where what cannot be encoded is U+FFFD: 3 bytes.
std::size_t Utf8LengthOfUtf32(char32_t const* src, std::size_t n) noexcept
{
    std::size_t length = 0;
    for (std::size_t i = 0; i < n; ++i) {
        char32_t const c = src[i];
        length += 1u + (c >= 0x80) + (c >= 0x800) + (c - 0x10000u < 0x100000u);
    }
    return length;
}

// The code points of UTF-8 after ICU's substitution: decoded stretch by stretch, as whole code points at a time.
std::size_t Utf32LengthOfUtf8(char const* src, std::size_t n) noexcept
{
    constexpr std::size_t kStretch = 4096;
    char16_t buffer[kStretch];
    std::size_t length = 0;
    while (n != 0) {
        std::size_t const stretch = n <= kStretch ? n : text::WholeCodePoints(src, kStretch);
        std::size_t substitutions = 0;
        std::size_t const units = text::kernels().utf8ToUtf16(src, stretch, buffer, substitutions);
        length += text::kernels().countCodePoints(buffer, units);
        src += stretch;
        n -= stretch;
    }
    return length;
}

int CheckedMeasure(std::size_t length, char const* routine, char const* icuFunction)
{
    if (length == 0) {
        text::ThrowIcuError(static_cast<int>(ICUErrorCode::StringNotTerminatedWarning), routine, icuFunction);
    }
    if (length > static_cast<std::size_t>(kMaxLength)) {
        text::ThrowIcuError(static_cast<int>(ICUErrorCode::IndexOutOfBoundsError), routine, icuFunction);
    }
    return static_cast<int>(length);
}

// The units of s from start up to end, or up to the first 0 unit for a negative end.
std::size_t RangeLength(char16_t const* s, int start, int end) noexcept
{
    if (s == nullptr || start < 0 || end == 0) {
        return 0;
    }
    if (end < 0) {
        return qvxsys::detail::TerminatedLength(s + start);
    }
    return end > start ? static_cast<std::size_t>(end - start) : 0;
}

} // namespace

int Utf8ToUtf16(char const* src, int n, char16_t* dst, int capacity)
{
    return k8To16.Run(src, n, dst, capacity);
}

int Utf8ToUtf16(char const* src, char16_t* dst, int capacity)
{
    return k8To16.Run(src, TerminatedLength(src, kUtf8ToUtf16), dst, capacity);
}

int Utf16ToUtf8(char16_t const* src, int n, char* dst, int capacity)
{
    return k16To8.Run(src, n, dst, capacity);
}

int Utf16ToUtf8(char16_t const* src, char* dst, int capacity)
{
    return k16To8.Run(src, TerminatedLength(src, kUtf16ToUtf8), dst, capacity);
}

int Utf16ToUtf32(char16_t const* src, int n, char32_t* dst, int capacity)
{
    return k16To32.Run(src, n, dst, capacity);
}

int Utf16ToUtf32(char16_t const* src, char32_t* dst, int capacity)
{
    return k16To32.Run(src, TerminatedLength(src, kUtf16ToUtf32), dst, capacity);
}

int Utf32ToUtf16(char32_t const* src, int n, char16_t* dst, int capacity)
{
    return k32To16.Run(src, n, dst, capacity);
}

int Utf32ToUtf16(char32_t const* src, char16_t* dst, int capacity)
{
    return k32To16.Run(src, TerminatedLength(src, kUtf32ToUtf16), dst, capacity);
}

int Utf32ToUtf8(char32_t const* src, int n, char* dst, int capacity)
{
    CheckLength(n, kUtf32ToUtf8);
    CheckSource(src, n, kUtf32ToUtf8, "t_u_strToUTF8WithSub");
    auto const count = static_cast<std::size_t>(n);
    if (dst == nullptr) {
        return CheckedMeasure(Utf8LengthOfUtf32(src, count), kUtf32ToUtf8, "t_u_strToUTF8WithSub");
    }
    auto const room = static_cast<std::size_t>(std::max(capacity, 0));
    std::size_t length = 0;
    if (count * 4 < room) {
        length = text::kernels().utf32ToUtf8Raw(src, count, dst);
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            char bytes[4];
            auto const encoded = text::kernels().utf32ToUtf8Raw(src + i, 1, bytes);
            if (length + encoded >= room) {
                text::ThrowInsufficientCapacity(capacity, kUtf32ToUtf8);
            }
            std::memcpy(dst + length, bytes, encoded);
            length += encoded;
        }
        if (length >= room) {
            text::ThrowInsufficientCapacity(capacity, kUtf32ToUtf8);
        }
    }
    dst[length] = 0;
    return static_cast<int>(length);
}

int Utf32ToUtf8(char32_t const* src, char* dst, int capacity)
{
    return Utf32ToUtf8(src, TerminatedLength(src, kUtf32ToUtf8), dst, capacity);
}

int Utf8ToUtf32(char const* src, int n, char32_t* dst, int capacity)
{
    CheckLength(n, kUtf8ToUtf32);
    CheckSource(src, n, kUtf8ToUtf32, "t_u_strToUTF32WithSub");
    auto const count = static_cast<std::size_t>(n);
    if (dst == nullptr) {
        return CheckedMeasure(Utf32LengthOfUtf8(src, count), kUtf8ToUtf32, "t_u_strToUTF32WithSub");
    }
    auto const room = static_cast<std::size_t>(std::max(capacity, 0));
    std::size_t read = 0;
    std::size_t written = 0;
    while (read < count) {
        // The kernel takes what is well-formed; what stops it is decoded by the rule for single code points.
        std::size_t consumed = 0;
        std::size_t const stretch = std::min(count - read, room - written);
        written += text::kernels().utf8PrefixToUtf32(src + read, stretch, dst + written, consumed);
        read += consumed;
        if (read == count) {
            break;
        }
        if (written == room) {
            text::Throw("Error unable to process the entire source string in function StringUtils::Utf8ToUtf32");
        }
        if (src[read] == 0) {
            text::Throw("Error in function StringUtils::Utf8ToUtf32 converting non-ASCII characters to UTF-32; no code "
                        "units were processed by function CharacterUtils::Utf8ToUtf32");
        }
        read += static_cast<std::size_t>(
            CharacterUtils::DecodeUtf8(src + read, static_cast<int>(count - read), dst[written++]));
    }
    return static_cast<int>(written);
}

int Utf8ToUtf32(char const* src, char32_t* dst, int capacity)
{
    return Utf8ToUtf32(src, TerminatedLength(src, kUtf8ToUtf32), dst, capacity);
}

int MeasureUtf8ToUtf16(char const* src)
{
    return MeasureUtf8ToUtf16(src, TerminatedLength(src, "StringUtils::MeasureUtf8ToUtf16"));
}

int MeasureUtf8ToUtf16(char const* src, int n)
{
    return k8To16.Measure(src, n, "StringUtils::MeasureUtf8ToUtf16");
}

int MeasureUtf8ToUtf32(char const* src)
{
    return MeasureUtf8ToUtf32(src, TerminatedLength(src, "StringUtils::MeasureUtf8ToUtf32"));
}

int MeasureUtf8ToUtf32(char const* src, int n)
{
    CheckLength(n, "StringUtils::MeasureUtf8ToUtf32");
    return n == 0 ? 0 : Utf8ToUtf32(src, n, nullptr, 0);
}

int MeasureUtf16ToUtf8(char16_t const* src)
{
    return MeasureUtf16ToUtf8(src, TerminatedLength(src, "StringUtils::MeasureUtf16ToUtf8"));
}

int MeasureUtf16ToUtf8(char16_t const* src, int n)
{
    return k16To8.Measure(src, n, "StringUtils::MeasureUtf16ToUtf8");
}

int MeasureUtf16ToUtf32(char16_t const* src)
{
    return MeasureUtf16ToUtf32(src, TerminatedLength(src, "StringUtils::MeasureUtf16ToUtf32"));
}

int MeasureUtf16ToUtf32(char16_t const* src, int n)
{
    return k16To32.Measure(src, n, "StringUtils::MeasureUtf16ToUtf32");
}

int MeasureUtf32ToUtf8(char32_t const* src)
{
    return MeasureUtf32ToUtf8(src, TerminatedLength(src, "StringUtils::MeasureUtf32ToUtf8"));
}

int MeasureUtf32ToUtf8(char32_t const* src, int n)
{
    CheckLength(n, "StringUtils::MeasureUtf32ToUtf8");
    return n == 0 ? 0 : Utf32ToUtf8(src, n, nullptr, 0);
}

int MeasureUtf32ToUtf16(char32_t const* src)
{
    return MeasureUtf32ToUtf16(src, TerminatedLength(src, "StringUtils::MeasureUtf32ToUtf16"));
}

int MeasureUtf32ToUtf16(char32_t const* src, int n)
{
    return k32To16.Measure(src, n, "StringUtils::MeasureUtf32ToUtf16");
}

int StringValidateCopy(char16_t const* src, int n, char16_t* dst, int capacity)
{
    CheckLength(n, "StringUtils::StringValidateCopy");
    auto const count = static_cast<std::size_t>(n);
    bool const copyable = n == 0 || (src != nullptr && dst != nullptr && n <= capacity &&
                                     text::kernels().countUnit(src, count, 0) == 0);
    if (!copyable) {
        text::Throw("Error encountered while StringUtils::StringValidateCopy was trying to use "
                    "CharacterUtils::CopyTCharacter");
    }
    std::size_t substitutions = 0;
    text::kernels().copyWellFormed(src, count, dst, substitutions);
    return n;
}

int LengthInCodePoints(char16_t const* s, int start, int end) noexcept
{
    std::size_t const length = RangeLength(s, start, end);
    return length == 0 ? 0 : static_cast<int>(text::kernels().countCodePoints(s + start, length));
}

int CountValidatedCodeUnits(char16_t const* s, int start, int end) noexcept
{
    return static_cast<int>(RangeLength(s, start, end));
}

int SubStringSizeInCodeUnits(char16_t const* s, int length, int start, int count) noexcept
{
    if (s == nullptr || start < 0 || start >= length) {
        return 0;
    }
    if (count < 0) {
        return static_cast<int>(qvxsys::detail::TerminatedLength(s + start));
    }
    int at = start;
    for (; count > 0 && at < length && s[at] != 0; --count) {
        bool const pair =
            CharacterUtils::IsHighSurrogate(s[at]) && at + 1 < length && CharacterUtils::IsLowSurrogate(s[at + 1]);
        at += pair ? 2 : 1;
    }
    return at - start;
}

// ---- containers

std::string toStdString(TStringView view)
{
    constexpr std::size_t kSmall = 128;
    std::size_t const n = view.size();
    if (n <= kSmall) {
        char buffer[3 * kSmall];
        return std::string(buffer, k16To8.convert(view.data(), n, buffer));
    }
    // Stretch by stretch through a buffer that stays in the first-level cache: cheaper than having the string zeroed.
    // What begins with ASCII is taken to be ASCII and not measured until it proves to be something else.
    std::string result;
    bool measured = false;
    constexpr std::size_t kStretch = 4096;
    char buffer[3 * kStretch];
    char16_t const* const end = view.end();
    for (char16_t const* at = view.data(); at != end;) {
        auto const rest = static_cast<std::size_t>(end - at);
        std::size_t const stretch = rest <= kStretch ? rest : text::WholeCodePoints(at, kStretch);
        std::size_t const bytes = k16To8.convert(at, stretch, buffer);
        at += stretch;
        if (!measured && bytes != stretch) {
            result.reserve(result.size() + bytes + k16To8.measure(at, static_cast<std::size_t>(end - at)));
            measured = true;
        } else if (result.empty()) {
            result.reserve(n);
        }
        result.append(buffer, bytes);
    }
    return result;
}

std::vector<char> toUtf8Buffer(TStringView view)
{
    std::size_t const length = k16To8.measure(view.data(), view.size());
    std::vector<char> result(length + 1);
    text::ConvertTight(view.data(), view.size(), result.data(), length, k16To8.worst, k16To8.convert);
    return result;
}

std::u16string toStdU16String(TStringView view)
{
    return std::u16string(std::u16string_view(view));
}

std::wstring toStdWString(TStringView view)
{
    std::wstring result(text::WideLength(view), L'\0');
    text::ToWide(view, result.data());
    return result;
}

int toWCharArray(TStringView view, wchar_t* dst, int capacity)
{
    return text::ToWideArray(view, dst, capacity, "StringUtils::toWCharArray");
}

} // namespace StringUtils
