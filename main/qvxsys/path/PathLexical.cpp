// Normal forms and what stands on them, and the names that Windows accepts.

#include <qvxsys/TPathCore.h>

#include <algorithm>

#include "PathAccess.h"

using namespace qvxsys::detail::path;
using qvxsys::detail::PathAccess;

namespace {

constexpr TStringView kDot(u".", 1);
constexpr TStringView kDots(u"..", 2);

bool SameName(TStringView a, TStringView b) noexcept
{
    return qvxsys::FoldedEqual()(a, b);
}

// In "//?/Volume{...}/dir" the name behind the prefix is not one like others.
bool IsOpaque(TStringView text) noexcept
{
    return RootOf(text).name == 0 && text.size() >= 3 && text[0] == u'/' && text[1] == u'/' && text[2] == u'?';
}

// 1 for ".", 2 for "..", 0 for other names.
int DotsOf(TStringView text, int start, int end) noexcept
{
    int const length = end - start;
    bool const isDots = length >= 1 && length <= 2 && At(text, start) == u'.' && At(text, end - 1) == u'.';
    return isDots ? length : 0;
}

// Whether nothing is to be done. False for some that are normal.
bool IsNormal(TStringView text) noexcept
{
    Root const root = RootOf(text);
    for (int start = root.Length(); start < text.length();) {
        int const end = FindSeparator(text, start);
        if (end == start || DotsOf(text, start, end) != 0 || end + 1 == text.length()) {
            return false;
        }
        start = end + 1;
    }
    return true;
}

// Names that belong together, without a root: what nothing is left of is ".", and a "./" keeps a first name apart that
// would be read as a root name.
void MakePath(TStringCore& names)
{
    if (names.empty()) {
        names = kDot;
    } else if (RootOf(names).name > 0) {
        names.prepend(TStringView(u"./", 2));
    }
}

// The end of the names in [begin, end) without the last one, and without the separator before it.
int EndBeforeLast(char16_t const* text, int begin, int end) noexcept
{
    while (end > begin && text[end - 1] != u'/') {
        --end;
    }
    return end > begin ? end - 1 : end;
}

// Puts names behind a root path. Those that lie side by side in the text are copied together, as late as can be: most
// texts have few names that are to be left out.
class NameWriter
{
public:
    // `units` has room for the text.
    NameWriter(TStringView text, int root, char16_t* units) noexcept
        : m_text(text), m_units(units), m_root(root), m_length(root), m_kept(root)
    {
        std::copy_n(text.data(), root, units);
    }
    void Add(int start, int end) noexcept
    {
        if (m_start == m_end || start != m_end + 1) {
            Copy();
            m_start = start;
        }
        m_end = end;
    }
    // The names that are there stay, whatever comes.
    void Keep() noexcept
    {
        Copy();
        m_kept = m_length;
    }
    // Takes the last name back; false when there is none that may be.
    bool TakeBack() noexcept
    {
        if (m_start < m_end) {
            m_end = EndBeforeLast(m_text.data(), m_start, m_end);
            return true;
        }
        if (m_length == m_kept) {
            return false;
        }
        m_length = EndBeforeLast(m_units, m_kept, m_length);
        return true;
    }
    int Finish() noexcept
    {
        Copy();
        return m_length;
    }

private:
    void Copy() noexcept
    {
        if (m_start == m_end) {
            return;
        }
        if (m_length > m_root) {
            m_units[m_length++] = u'/';
        }
        m_length =
            static_cast<int>(std::copy(m_text.data() + m_start, m_text.data() + m_end, m_units + m_length) - m_units);
        m_start = m_end;
    }

    TStringView const m_text;
    char16_t* const m_units;
    int const m_root;
    int m_length;
    int m_kept;
    // Of the text, not copied yet.
    int m_start = 0;
    int m_end = 0;
};

// Writes the normal form to `units`, which has room for the text, and returns its length.
int WriteNormal(TStringView text, Root root, char16_t* units) noexcept
{
    NameWriter writer(text, root.Length(), units);
    bool isShare = IsUnc(text); // the next name but "."; ".." is what it is
    for (Element name = ElementBehind(text, root.Length()); name.start < text.length(); MoveToNext(text, name)) {
        int const dots = DotsOf(text, name.start, name.end);
        bool const isUp = dots == 2 && !isShare;
        if (dots == 1 || (isUp && (writer.TakeBack() || root.directory))) {
            continue;
        }
        writer.Add(name.start, name.end);
        if (isShare || isUp) {
            writer.Keep();
        }
        isShare = false;
    }
    return writer.Finish();
}

TPathCore NormalPath(TStringView text)
{
    // Not in place: a text would keep the room for what has been left out, and a short one a block.
    constexpr int kUsual = 260;
    char16_t usual[kUsual];
    TStringCore unusual;
    if (text.length() > kUsual) {
        unusual.resize(text.length());
    }
    char16_t* const units = text.length() > kUsual ? unusual.data() : usual;
    Root const root = RootOf(text);
    TStringView const normal(units, static_cast<std::size_t>(WriteNormal(text, root, units)));
    if (root.Length() > 0 || (!normal.empty() && RootOf(normal).name == 0)) {
        return PathAccess::AsIs(normal);
    }
    TStringCore names = normal;
    MakePath(names);
    return PathAccess::AsIs(static_cast<TStringCore&&>(names));
}

// The names of a normal form, without the "." that is for nothing but to be there.
TStringView NamesOf(TStringView normal, Root root) noexcept
{
    TStringView const names = normal.mid(root.Length());
    bool const hasDot = root.Length() == 0 && !names.empty() && names.left(FindSeparator(names, 0)) == kDot;
    return hasDot ? names.mid(SkipSeparators(names, 1)) : names;
}

// Steps over the first name of each while they are the same; returns their number.
int SkipCommonNames(TStringView& a, TStringView& b) noexcept
{
    for (int n = 0;; ++n) {
        int const endA = FindSeparator(a, 0);
        int const endB = FindSeparator(b, 0);
        if (a.empty() || b.empty() || !SameName(a.left(endA), b.left(endB))) {
            return n;
        }
        a = a.mid(SkipSeparators(a, endA));
        b = b.mid(SkipSeparators(b, endB));
    }
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
    return IsNormal(text) || IsOpaque(text) ? *this : NormalPath(text);
}

TPathCore TPathCore::LexicallyRelative(TPathCore const& base) const
{
    TPathCore const normalTo = LexicallyNormal();
    TPathCore const normalFrom = base.LexicallyNormal();
    if (IsOpaque(m_text) || IsOpaque(base.m_text)) {
        return normalTo == normalFrom ? TPathCore(kDot) : TPathCore();
    }
    TStringView const to = normalTo.m_text;
    TStringView const from = normalFrom.m_text;
    Root const root = RootOf(from);
    TStringView names = NamesOf(to, RootOf(to));
    TStringView up = NamesOf(from, root);
    bool const hasShare = IsUnc(from) && !up.empty();
    if (!SameName(to.left(RootOf(to).Length()), from.left(root.Length())) ||
        (SkipCommonNames(names, up) == 0 && hasShare)) {
        return {};
    }
    TStringCore result;
    for (int end = 0; !up.empty(); up = up.mid(SkipSeparators(up, end))) {
        end = FindSeparator(up, 0);
        if (up.left(end) == kDots) {
            return {};
        }
        result.append(result.empty() ? kDots : TStringView(u"/..", 3));
    }
    if (!result.empty() && !names.empty()) {
        result.append(u'/');
    }
    result.append(names);
    MakePath(result);
    return PathAccess::AsIs(static_cast<TStringCore&&>(result));
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
