// Strings, views and whole-text functions on arbitrary bytes and units, against ICU and the code-point-at-a-time
// routines.

#include <qvxsys/qvxsys.h>

#include "Fuzz.h"
#include "support/IcuConvert.h"

namespace {

void CheckBytes(char const* bytes, int n)
{
    std::string const all(bytes, static_cast<std::size_t>(n));
    Require(TStringCore(bytes, n).view() == TStringView(icu_reference::ToUtf16(all).text));

    // By code point, up to the first 0: the same as the whole-text routine on that stretch.
    auto const stretch = static_cast<int>(std::min(all.find('\0'), all.size()));
    std::u32string points;
    for (int at = 0; at < stretch;) {
        char32_t c = 0;
        at += CharacterUtils::DecodeUtf8(bytes + at, stretch - at, c);
        points += c;
    }
    std::u32string whole(points.size() + 1, U'?');
    int const produced = StringUtils::Utf8ToUtf32(bytes, stretch, whole.data(), static_cast<int>(whole.size()));
    Require(static_cast<std::size_t>(produced) == points.size() && whole.compare(0, points.size(), points) == 0);

    auto const lines = Exact<char>(bytes, all.size());
    int const left = StringUtils::normalizeLineEndings(lines.get(), n);
    Require(left <= n && std::string_view(lines.get(), static_cast<std::size_t>(left)).find('\r') == all.npos);
    Require(TStringCore::fromLocal8Bit(bytes, n).length() <= n);
}

void CheckUnits(char16_t const* units, std::size_t n)
{
    TStringView const view(units, n);
    auto const length = static_cast<int>(n);
    Require(view.lengthInCodePoints() == u_countChar32(units, length) || n == 0);
    TStringCore const text(view);
    Require(TStringCore::fromStdWString(text.toStdWString()).view() == view);
    std::u16string valid(n, u'\0');
    if (view.findOneOf(TStringView(u"\0", 1)) < 0) {
        Require(StringUtils::StringValidateCopy(units, length, valid.data(), length) == length);
        Require(TStringCore::fromStdString(text.toStdString()).view() == TStringView(valid));
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
    Require(n == 0 || view.indexOf(view.right(3), 0, CaseCompare::Insensitive) >= 0);
    Require(text.compare(written) == -written.compare(text));
}

} // namespace

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    CheckBytes(Exact<char>(data, size).get(), static_cast<int>(size));
    CheckUnits(Exact<char16_t>(data, size / 2).get(), size / 2);
}
