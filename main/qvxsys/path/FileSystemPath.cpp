#include <qvxsys/FileSystemPath.h>

#include <qvxsys/CharacterUtils.h>

#include "PathAccess.h"

using namespace qvxsys::detail::path;

namespace {

constexpr char16_t kEscape = 0xDC00;

constexpr bool IsEscape(char16_t unit) noexcept
{
    return (unit >= 0xDC80 && unit <= 0xDCFF) || unit == kEscape + u'\\' || unit == kEscape + u':';
}

constexpr char16_t Escaped(char byte) noexcept
{
    return static_cast<char16_t>(kEscape + static_cast<unsigned char>(byte));
}

// The bytes of the code point at the beginning of `bytes` (which is not empty), and the code point; 0, and any `c`,
// where it is malformed: the table of well-formed sequences in the Unicode Standard, section 3.9.
int DecodeUtf8(std::string_view bytes, char32_t& c) noexcept
{
    auto const at = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    unsigned const lead = at(0);
    if (lead < 0x80) {
        c = lead;
        return 1;
    }
    std::size_t const length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || bytes.size() < length) {
        return 0;
    }
    c = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xC0) != 0x80) {
            return 0;
        }
        c = c << 6 | (at(i) & 0x3Fu);
    }
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    bool const wellFormed = c >= kLeast[length] && c <= 0x10FFFF && !CharacterUtils::IsSurrogate(c);
    return wellFormed ? static_cast<int>(length) : 0;
}

void AppendUtf8(std::string& bytes, char32_t c)
{
    auto const continuation = [&bytes, c](int shift) { bytes += static_cast<char>(0x80 | (c >> shift & 0x3F)); };
    if (c < 0x80) {
        bytes += static_cast<char>(c);
    } else if (c < 0x800) {
        bytes += static_cast<char>(0xC0 | c >> 6);
        continuation(0);
    } else if (c < 0x10000) {
        bytes += static_cast<char>(0xE0 | c >> 12);
        continuation(6);
        continuation(0);
    } else {
        bytes += static_cast<char>(0xF0 | c >> 18);
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

// Whether the text up to the ':' at its end is a drive's root name ("//abc:" is a server's).
bool IsDrive(TStringView text) noexcept
{
    return text.length() == (IsExtended(text) ? 6 : 2) && RootOf(text).name == text.length();
}

} // namespace

// Both ways, what is well-formed and has nothing to escape, nearly every name, is converted as any text is: several
// times as fast. U+FFFD in what comes of it tells that it was not, or that the name has one itself.
TPathCore qvxsys::detail::PathFromBytes(std::string_view bytes)
{
    int const length = CheckedLength(bytes.size());
    TStringCore text;
    if (bytes.find('\\') == bytes.npos && bytes.find(':') == bytes.npos) {
        text = TStringCore::fromUtf8(bytes.data(), length);
        if (text.indexOf(CharacterUtils::kReplacement) < 0) {
            return PathAccess::AsIs(static_cast<TStringCore&&>(text));
        }
        text.clear();
    }
    text.reserve(length);
    while (!bytes.empty()) {
        char32_t c = 0;
        int const n = DecodeUtf8(bytes, c);
        if (n == 0 || c == U'\\') {
            text.append(Escaped(bytes[0]));
        } else {
            text.append(c);
        }
        bytes.remove_prefix(n == 0 ? 1 : static_cast<std::size_t>(n));
        if (n == 1 && c == U':' && !(IsDrive(text) && (bytes.empty() || bytes[0] == '/'))) {
            text.data()[text.length() - 1] = Escaped(':');
        }
    }
    text.squeeze();
    return PathAccess::AsIs(static_cast<TStringCore&&>(text));
}

std::string qvxsys::detail::PathToBytes(TPathCore const& path)
{
    TStringView const text = path.GenericString();
    std::string bytes = path.GenericString().toStdString();
    if (bytes.find("\xEF\xBF\xBD") == bytes.npos) {
        return bytes;
    }
    bytes.clear();
    for (int i = 0; i < text.length(); ++i) {
        char16_t const unit = At(text, i);
        if (CharacterUtils::IsHighSurrogate(unit) && i + 1 < text.length() &&
            CharacterUtils::IsLowSurrogate(At(text, i + 1))) {
            AppendUtf8(bytes, CharacterUtils::CombineSurrogates(unit, At(text, ++i)));
        } else if (IsEscape(unit)) {
            bytes += static_cast<char>(unit - kEscape);
        } else {
            AppendUtf8(bytes, unit);
        }
    }
    return bytes;
}

TPathCore qvxsys::detail::PathFromUnits(TStringView units)
{
    TStringCore text = units;
    text.replace(u'\\', u'/');
    return PathAccess::AsIs(static_cast<TStringCore&&>(text));
}
