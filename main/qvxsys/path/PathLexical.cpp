// Normal forms and what stands on them, and the names that Windows accepts.

#include <qvxsys/TPathCore.h>

#include <algorithm>
#include <vector>

#include "PathAccess.h"
#include "PathText.h"

using namespace qvxsys::path;
using qvxsys::detail::PathAccess;

namespace {

constexpr TStringView kDot(u".", 1);
constexpr TStringView kDots(u"..", 2);

bool SameName(TStringView a, TStringView b) noexcept
{
    return qvxsys::FoldedEqual()(a, b);
}

// A path taken apart for lexical work; views of its text.
struct Normal
{
    TStringView root;               ///< with its root directory
    std::vector<TStringView> names; ///< without "."; ".." at the beginning only
    std::size_t fixed = 0;          ///< the names that ".." does not take back: the share
    bool isRooted = false;
};

// One of its own kinds, in which "/" does not only separate.
bool IsOpaque(TStringView text) noexcept
{
    return RootOf(text).name == 0 && text.startsWith(TStringView(u"//?", 3));
}

Normal Normalized(TStringView text)
{
    Normal normal;
    Root const root = RootOf(text);
    normal.root = text.left(root.Length());
    normal.isRooted = root.directory;
    normal.fixed = IsUnc(text) ? 1 : 0;
    for (int start = SkipSeparators(text, root.Length()); start < text.length();) {
        int const end = FindSeparator(text, start);
        TStringView const name = text.mid(start, end - start);
        start = SkipSeparators(text, end);
        bool const isShare = normal.names.size() < normal.fixed;
        if (name == kDots && !isShare) {
            if (normal.names.size() > normal.fixed && normal.names.back() != kDots) {
                normal.names.pop_back();
            } else if (!normal.isRooted) {
                normal.names.push_back(name);
            }
        } else if (name != kDot || isShare) {
            normal.names.push_back(name);
        }
    }
    return normal;
}

// A "./" keeps a first name apart that would be read as a root name.
TPathCore Joined(TStringView root, std::vector<TStringView> const& names)
{
    TStringCore text = root;
    if (root.empty() && (names.empty() || RootOf(names[0]).name > 0)) {
        text.append(names.empty() ? kDot : TStringView(u"./", 2));
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) {
            text.append(u'/');
        }
        text.append(names[i]);
    }
    return PathAccess::AsIs(static_cast<TStringCore&&>(text));
}

std::size_t CommonNames(Normal const& a, Normal const& b) noexcept
{
    std::size_t const n = std::min(a.names.size(), b.names.size());
    std::size_t i = 0;
    while (i < n && SameName(a.names[i], b.names[i])) {
        ++i;
    }
    return i;
}

// What Windows has a device for: a word, or a word and a digit. `upper` is ASCII.
bool IsWord(TStringView name, TStringView upper) noexcept
{
    auto const same = [](char16_t c, char16_t u) { return c == u || (u >= u'A' && u <= u'Z' && (c & ~0x20) == u); };
    return std::equal(name.begin(), name.end(), upper.begin(), upper.end(), same);
}

bool IsDevice(TStringView name) noexcept
{
    TStringView base = name.left(static_cast<int>(std::find(name.begin(), name.end(), u'.') - name.begin()));
    while (!base.empty() && base.end()[-1] == u' ') {
        base = base.left(base.length() - 1);
    }
    constexpr TStringView kWords[] = {u"CON", u"PRN", u"AUX", u"NUL", u"CONIN$", u"CONOUT$"};
    if (std::any_of(std::begin(kWords), std::end(kWords), [base](TStringView w) { return IsWord(base, w); })) {
        return true;
    }
    if (base.length() != 4 || !(IsWord(base.left(3), u"COM") || IsWord(base.left(3), u"LPT"))) {
        return false;
    }
    char16_t const digit = base[3];
    return (digit >= u'1' && digit <= u'9') || digit == 0xB9 || digit == 0xB2 || digit == 0xB3;
}

} // namespace

TPathCore TPathCore::LexicallyNormal() const
{
    TStringView const text = m_text;
    if (text.empty() || IsOpaque(text)) {
        return *this;
    }
    Normal const normal = Normalized(text);
    return Joined(normal.root, normal.names);
}

TPathCore TPathCore::LexicallyRelative(TPathCore const& base) const
{
    if (IsOpaque(m_text) || IsOpaque(base.m_text)) {
        return *this == base ? TPathCore(kDot) : TPathCore();
    }
    Normal const to = Normalized(m_text);
    Normal const from = Normalized(base.m_text);
    std::size_t const common = CommonNames(to, from);
    bool const cannotClimb = common < std::min(from.names.size(), from.fixed);
    if (!SameName(to.root, from.root) || cannotClimb ||
        std::find(from.names.begin() + static_cast<std::ptrdiff_t>(common), from.names.end(), kDots) !=
            from.names.end()) {
        return {};
    }
    std::vector<TStringView> names(from.names.size() - common, kDots);
    names.insert(names.end(), to.names.begin() + static_cast<std::ptrdiff_t>(common), to.names.end());
    return Joined({}, names);
}

bool TPathCore::IsWithin(TPathCore const& folder) const
{
    TPathCore const relative = LexicallyRelative(folder);
    TStringView const text = relative.m_text;
    return !text.empty() && text.left(FindSeparator(text, 0)) != kDots;
}

TPathCore::NameFault TPathCore::CheckName(TStringView name) noexcept
{
    constexpr TStringView kForbidden = u"<>:\"/\\|?*";
    if (name.empty()) {
        return NameFault::Empty;
    }
    auto const forbidden = [kForbidden](char16_t c) {
        return c < 0x20 || std::find(kForbidden.begin(), kForbidden.end(), c) != kForbidden.end();
    };
    if (std::any_of(name.begin(), name.end(), forbidden)) {
        return NameFault::Character;
    }
    char16_t const last = name.end()[-1];
    if (last == u'.' || last == u' ') {
        return NameFault::TrailingDotOrSpace;
    }
    if (IsDevice(name)) {
        return NameFault::Device;
    }
    return name.length() > 255 ? NameFault::TooLong : NameFault::None;
}

TPathCore::NameFault TPathCore::CheckNames() const noexcept
{
    TStringView const text = m_text;
    for (int start = SkipSeparators(text, RootOf(text).Length()); start < text.length();) {
        int const end = FindSeparator(text, start);
        TStringView const name = text.mid(start, end - start);
        if (name != kDot && name != kDots) {
            if (NameFault const fault = CheckName(name); fault != NameFault::None) {
                return fault;
            }
        }
        start = SkipSeparators(text, end);
    }
    return NameFault::None;
}
