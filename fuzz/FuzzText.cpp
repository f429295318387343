// Strings, views and whole-text functions on arbitrary bytes and units, against ICU and the code-point-at-a-time
// routines. Sources are copied into heap blocks of their exact size, so that reading past an end is found.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <qvxsys/qvxsys.h>

#include "support/IcuConvert.h"

namespace {

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

template<class Unit>
std::unique_ptr<Unit[]> Exact(void const* data, std::size_t units)
{
    std::unique_ptr<Unit[]> copy(new Unit[units]);
    if (units != 0) {
        std::memcpy(copy.get(), data, units * sizeof(Unit));
    }
    return copy;
}

void CheckBytes(char const* bytes, int n)
{
    std::u16string const expected = icu_reference::ToUtf16({bytes, static_cast<std::size_t>(n)}).text;
    auto const length = static_cast<int>(expected.size());
    TStringCore const text(bytes, n);
    Require(text.view() == TStringView(expected));
    Require(StringUtils::MeasureUtf8ToUtf16(bytes, n) == length);
    std::vector<char16_t> tight(expected.size() + 1);
    Require(StringUtils::Utf8ToUtf16(bytes, n, tight.data(), length + 1) == length);

    // By code point, up to the first 0: the same as the whole-text routine on that stretch.
    auto const* const zero =
        static_cast<char const*>(n == 0 ? nullptr : std::memchr(bytes, 0, static_cast<std::size_t>(n)));
    int const stretch = zero == nullptr ? n : static_cast<int>(zero - bytes);
    std::u32string points;
    for (int at = 0; at < stretch;) {
        char32_t c = 0;
        at += CharacterUtils::DecodeUtf8(bytes + at, stretch - at, c);
        points += c;
    }
    std::u32string whole(points.size() + 1, U'?');
    int const produced = StringUtils::Utf8ToUtf32(bytes, stretch, whole.data(), static_cast<int>(whole.size()));
    Require(static_cast<std::size_t>(produced) == points.size() && whole.compare(0, points.size(), points) == 0);

    std::vector<char> lines(bytes, bytes + n);
    int const left = StringUtils::normalizeLineEndings(lines.data(), n);
    Require(left <= n && (left == 0 || std::memchr(lines.data(), '\r', static_cast<std::size_t>(left)) == nullptr));
    TStringCore const local = TStringCore::fromLocal8Bit(bytes, n);
    Require(local.length() <= n);
}

void CheckUnits(char16_t const* units, std::size_t n)
{
    TStringView const view(units, n);
    auto const length = static_cast<int>(n);
    Require(view.lengthInCodePoints() == u_countChar32(units, length) || n == 0);
    TStringCore const text(view);
    Require(text.view() == view);
    std::string const utf8 = text.toStdString();
    Require(static_cast<int>(utf8.size()) == StringUtils::MeasureUtf16ToUtf8(units, length));
    Require(TStringCore::fromStdWString(text.toStdWString()).view() == view);
    std::vector<char16_t> valid(n + 1);
    if (view.findOneOf(TStringView(u"\0", 1)) < 0) {
        Require(StringUtils::StringValidateCopy(units, length, valid.data(), length) == length);
        Require(TStringCore::fromStdString(utf8).view() == TStringView(valid.data(), n));
    }
    // Both iterators walk every text to its end and back.
    int steps = 0;
    for (auto it = view.codepoint_cbegin(); it != view.codepoint_cend(); ++it) {
        Require(*it <= 0x10FFFF);
        ++steps;
    }
    Require(view.codepoint_cbegin().distance(view.codepoint_cend()) == steps);
    for (auto it = view.codepoint_cend(); it.codeUnitIndex() != 0 && !view.empty();) {
        --it;
    }
    TStringCore written = text;
    for (auto c : written.codePointView()) {
        c = c ^ 1u;
    }
    static_cast<void>(view.trimmed().front());
    static_cast<void>(view.back());
    for (TStringView const part : view.split(u'a')) {
        Require(part.data() >= units && part.end() <= units + n);
    }
    int const at = view.indexOf(view.right(3), 0, CaseCompare::Insensitive);
    Require(n == 0 || at >= 0);
    Require(text.compare(written) == -written.compare(text));
}

} // namespace

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    auto const bytes = Exact<char>(data, size);
    CheckBytes(bytes.get(), static_cast<int>(size));
    auto const units = Exact<char16_t>(data, size / 2);
    CheckUnits(units.get(), size / 2);
    return 0;
}
