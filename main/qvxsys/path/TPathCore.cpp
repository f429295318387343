#include <qvxsys/TPathCore.h>

#include "PathAccess.h"
#include "PathText.h"

using namespace qvxsys::path;

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

} // namespace

void TPathCore::Normalize()
{
    int const length = m_text.length();
    if (length == 0) {
        return;
    }
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

TPathCore TPathCore::Piece(int start, int end) const
{
    if (start == 0 && end == m_text.length()) {
        return *this;
    }
    return TPathCore(AsIs(), TStringCore(m_text.constData() + start, end - start));
}

TPathCore TPathCore::fromVector(std::vector<TStringCore> const& elements)
{
    TStringCore text;
    auto const isSeparator = [](char16_t c) { return c == u'/' || c == u'\\'; };
    for (TStringCore const& element : elements) {
        if (!text.empty() && !element.empty() && !isSeparator(text.view().end()[-1]) && !isSeparator(element.front())) {
            text.append(u'/');
        }
        text.append(element);
    }
    return TPathCore(static_cast<TStringCore&&>(text));
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

TPathCore TPathCore::RootName() const
{
    return Piece(0, RootOf(m_text).name);
}

TPathCore TPathCore::RootDirectory() const
{
    Root const root = RootOf(m_text);
    return Piece(root.name, root.Length());
}

TPathCore TPathCore::RootPath() const
{
    return Piece(0, RootOf(m_text).Length());
}

TPathCore TPathCore::Filename() const
{
    int const start = FilenameStart(m_text);
    return start == kNone ? TPathCore() : Piece(start, m_text.length());
}

TPathCore TPathCore::Stem() const
{
    int const start = FilenameStart(m_text);
    if (start == kNone) {
        return {};
    }
    int const extension = ExtensionStart(m_text.view().mid(start));
    return Piece(start, extension == kNone ? m_text.length() : start + extension - 1);
}

TStringCore TPathCore::Extension() const
{
    int const start = ExtensionStart(m_text);
    return start == kNone ? TStringCore() : TStringCore(m_text.constData() + start, m_text.length() - start);
}

TPathCore TPathCore::Parent() const
{
    return Piece(0, ParentLength(m_text));
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

bool TPathCore::HasRootName() const noexcept
{
    return RootOf(m_text).name > 0;
}

bool TPathCore::HasRootDirectory() const noexcept
{
    return RootOf(m_text).directory;
}

bool TPathCore::HasRootPath() const noexcept
{
    return RootOf(m_text).Length() > 0;
}

bool TPathCore::HasFilename() const noexcept
{
    return FilenameStart(m_text) != kNone;
}

bool TPathCore::HasStem() const noexcept
{
    return HasFilename();
}

bool TPathCore::HasExtension() const noexcept
{
    return ExtensionStart(m_text) != kNone;
}

bool TPathCore::HasParentPath() const noexcept
{
    int const length = ParentLength(m_text);
    return length > 0 && length < m_text.length();
}

bool TPathCore::HasUNCObjectName() const noexcept
{
    return ObjectStart(m_text) < m_text.length();
}

bool TPathCore::IsAbsolute() const noexcept
{
    Root const root = RootOf(m_text);
    return root.directory && root.name > 0;
}

bool TPathCore::IsRelative() const noexcept
{
    return !HasRootDirectory();
}

bool TPathCore::IsUNC() const noexcept
{
    return IsUnc(m_text);
}

bool TPathCore::IsAdminShare() const noexcept
{
    Span const share = ShareOf(m_text);
    return share.end - share.start == 2 && At(m_text, share.start + 1) == u'$';
}

bool TPathCore::IsExtendedLength() const noexcept
{
    return IsExtended(m_text);
}

bool TPathCore::IsDots() const noexcept
{
    int const start = FilenameStart(m_text);
    TStringView const name = m_text.view().mid(start == kNone ? m_text.length() : start);
    return name == u'.' || name == TStringView(u"..", 2);
}

TPathCore& TPathCore::Append(TPathCore const& other)
{
    if (!m_text.empty() && !other.m_text.empty() && m_text.view().end()[-1] != u'/' && other.m_text.front() != u'/') {
        TStringCore const right = other.m_text; // which may be this path's own
        m_text.reserve(m_text.length() + 1 + right.length());
        m_text.append(u'/').append(right);
    } else {
        m_text.append(other.m_text);
    }
    return *this;
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
