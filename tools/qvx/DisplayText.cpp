#include "DisplayText.h"

#include <algorithm>
#include <iterator>

#include <qvxsys/CodePointView.h>
#include <qvxsys/QvxICU.h>

namespace qvx {
namespace {

// The blocks of the characters with East_Asian_Width W or F (Unicode Standard Annex #11), joined where only unassigned
// or rare ones lie between.
struct Range
{
    char32_t first, last;
};
constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x4DBF},   {0x4E00, 0xA4CF},
    {0xA960, 0xA97C},   {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6B},
    {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},   {0x17000, 0x18CFF}, {0x1B000, 0x1B2FF},
    {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD},
};

int CharacterWidth(char32_t c)
{
    if (c < 0x300) {
        return 1;
    }
    switch (QvxICU::t_u_charType(c)) {
    case QvxICU::ICUCharCategory::NonSpacingMark:
    case QvxICU::ICUCharCategory::EnclosingMark:
    case QvxICU::ICUCharCategory::FormatChar:
        return 0;
    default:
        return std::any_of(std::begin(kWide), std::end(kWide),
                           [c](Range const& range) { return c >= range.first && c <= range.last; })
                   ? 2
                   : 1;
    }
}

void ReplaceControls(TStringCore& text, char16_t kept)
{
    auto const isControl = [kept](char16_t unit) {
        bool const isDirection = (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
        return (unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || isDirection) && unit != kept;
    };
    if (std::any_of(text.cbegin(), text.cend(), isControl)) {
        std::replace_if(text.begin(), text.end(), isControl, u'\uFFFD');
    }
}

[[maybe_unused]] bool IsText(std::string const& name, TStringCore const& text)
{
    return text.toStdString() == name;
}

[[maybe_unused]] bool IsText(std::wstring const& name, TStringCore const& text)
{
    return text == TStringCore(name.c_str());
}

} // namespace

TStringCore NameText(std::filesystem::path const& path)
{
    // To UTF-8 and back, so that lone surrogates are replaced wherever names are UTF-16.
    return TStringCore::fromStdString(TStringCore(path.c_str()).toStdString());
}

std::string RawName(std::filesystem::path const& path)
{
    std::filesystem::path::string_type const& name = path.native();
    if (IsText(name, NameText(path))) {
        return {};
    }
    std::string hex;
    auto const* const bytes = reinterpret_cast<unsigned char const*>(name.data());
    for (std::size_t i = 0; i < name.size() * sizeof name[0]; ++i) {
        hex += "0123456789abcdef"[bytes[i] >> 4];
        hex += "0123456789abcdef"[bytes[i] & 15];
    }
    return hex;
}

TStringCore Printable(TStringCore text, bool keepsTabs)
{
    ReplaceControls(text, keepsTabs ? u'\t' : u' ');
    return text;
}

TStringCore DisplayName(std::filesystem::path const& path)
{
    TStringCore name = NameText(path);
    ReplaceControls(name, u' ');
    return name;
}

int DisplayWidth(TStringView text)
{
    int width = 0;
    for (char32_t const c : text.codePoints()) {
        width += CharacterWidth(c);
    }
    return width;
}

} // namespace qvx
