#include <qvxsys/TPathCore.h>

#include <algorithm>

#include "PathAccess.h"

using namespace qvxsys::detail::path;

namespace {

TStringCore Native(TStringCore text)
{
    text.replace(u'/', u'\\');
    return text;
}

struct Span
{
    int start;
    int end;
};

// The share of a UNC path, behind all separators that follow the server.
Span ShareOf(TStringView text) noexcept
{
    int const start = IsUnc(text) ? SkipSeparators(text, RootOf(text).name) : text.length();
    return {start, FindSeparator(text, start)};
}

int ObjectStart(TStringView text) noexcept
{
    return SkipSeparators(text, ShareOf(text).end);
}

// Whether what stands at `i` is a server: "." names the devices in "//./", and a text with '?' there would be taken for
// the prefix.
bool IsServerAt(TStringView text, int i) noexcept
{
    return At(text, i) != u'?' && (At(text, i) != u'.' || FindSeparator(text, i) > i + 1);
}

bool IsSeparatorMissing(TStringView left, TStringView right) noexcept
{
    return !left.empty() && !right.empty() && left.end()[-1] != u'/' && right[0] != u'/';
}

} // namespace

void TPathCore::NormalizeText()
{
    int const length = m_text.length();
    int at = m_text.indexOf(u'\\');
    if (at >= 0) {
        char16_t* const units = m_text.data();
        for (; at < length; ++at) {
            units[at] = units[at] == u'\\' ? u'/' : units[at];
        }
    }
    TStringView const text = m_text;
    if (At(text, length - 1) == u'/' && RootOf(text).Length() != length) {
        m_text.truncate(length - 1);
    }
}

TPathCore TPathCore::fromVector(std::vector<TStringCore> const& elements)
{
    TPathCore path;
    for (TStringCore const& element : elements) {
        // The root name of "///share" would be the path "/".
        bool const isRootName = path.empty() && element.view() == TStringView(u"//", 2);
        path.Append(isRootName ? qvxsys::detail::PathAccess::AsIs(TStringCore(element)) : TPathCore(element));
    }
    path.Normalize();
    return path;
}

TStringCore TPathCore::NativeString() const
{
    return Native(m_text);
}

TStringCore TPathCore::NativeLongPath() const
{
    TStringView const text = m_text;
    if (!IsAbsolute() || IsExtended(text) || (IsUnc(text) && !IsServerAt(text, 2))) {
        return NativeString();
    }
    TStringCore longer;
    longer.reserve(text.length() + 8);
    longer.append(IsUnc(text) ? TStringView(u"\\\\?\\UNC") : TStringView(u"\\\\?\\"));
    longer.append(IsUnc(text) ? text.mid(1) : text);
    return Native(static_cast<TStringCore&&>(longer));
}

TStringCore TPathCore::NativeShortPath() const
{
    TStringView const text = m_text;
    if (!IsAbsolute() || !IsExtended(text)) {
        return NativeString();
    }
    if (!IsUnc(text)) {
        return Native(text.mid(4));
    }
    return IsServerAt(text, 8) ? Native(u'/' + TStringCore(text.mid(7))) : NativeString();
}

TStringCore TPathCore::UNCShareName() const
{
    Span const share = ShareOf(m_text);
    return TStringCore(m_text.constData() + share.start, share.end - share.start);
}

TStringCore TPathCore::UNCObjectName() const
{
    int const start = ObjectStart(m_text);
    return TStringCore(m_text.constData() + start, m_text.length() - start);
}

char16_t TPathCore::AdminShareDriveLetter() const noexcept
{
    Span const share = ShareOf(m_text);
    return share.start < share.end ? At(m_text, share.start) : u'\0';
}

bool TPathCore::HasUNCObjectName() const noexcept
{
    return ObjectStart(m_text) < m_text.length();
}

bool TPathCore::IsAdminShare() const noexcept
{
    Span const share = ShareOf(m_text);
    return share.end - share.start == 2 && At(m_text, share.start + 1) == u'$';
}

bool TPathCore::IsDots() const noexcept
{
    int const start = FilenameStart(m_text);
    TStringView const name = m_text.view().mid(start == kNone ? m_text.length() : start);
    return name == u'.' || name == TStringView(u"..", 2);
}

TPathCore& TPathCore::Append(TPathCore const& other)
{
    if (&other == this) {
        return *this = Joined(*this, other);
    }
    if (IsSeparatorMissing(m_text, other.m_text)) {
        m_text.append(u'/');
    }
    m_text.append(other.m_text);
    return *this;
}

TPathCore TPathCore::Joined(TPathCore const& a, TPathCore const& b)
{
    TStringView const left = a.m_text;
    TStringView const right = b.m_text;
    bool const separate = IsSeparatorMissing(left, right);
    TPathCore joined;
    joined.m_text.resize(left.length() + right.length() + (separate ? 1 : 0));
    char16_t* const units = joined.m_text.data();
    std::copy_n(left.data(), left.size(), units);
    if (separate) {
        units[left.size()] = u'/';
    }
    std::copy_n(right.data(), right.size(), units + left.size() + (separate ? 1 : 0));
    return joined;
}

TPathCore& TPathCore::operator+=(TPathCore const& other)
{
    m_text.append(other.m_text);
    return *this;
}

TPathCore& TPathCore::RemoveFilename()
{
    m_text.truncate(ParentLength(m_text));
    return *this;
}

TPathCore& TPathCore::RemoveExtension()
{
    int const start = ExtensionStart(m_text);
    if (start != kNone) {
        m_text.truncate(start - 1);
    }
    return *this;
}

TPathCore& TPathCore::ReplaceExtension(TStringCore const& extension)
{
    TStringCore generic = extension; // before this path changes, whose text it may be
    generic.replace(u'\\', u'/');
    RemoveExtension();
    if (!generic.empty()) {
        m_text.append(u'.').append(generic);
    }
    return *this;
}
