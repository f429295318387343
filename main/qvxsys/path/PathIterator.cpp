// The iterator over elements, and the range without empty ones.

#include <qvxsys/TPathCore.h>

#include <list>
#include <string>
#include <utility>

#include "CallStack.h"
#include "PathText.h"
#include "ThrowSite.h"

using namespace qvxsys::path;
using qvxsys::error::ThrowSite;

namespace {

constexpr TError::ErrorSource kSource = TError::SourcePathIterator;

// Amid the pair that it ends.
bool IsAmidPair(TStringView text, int i) noexcept
{
    return i > 0 && CharacterUtils::IsLowSurrogate(At(text, i)) && CharacterUtils::IsHighSurrogate(At(text, i - 1));
}

} // namespace

TPathCore::iterator TPathCore::begin() const
{
    if (m_text.empty()) {
        return end();
    }
    return {*this, 0, ElementEnd(m_text, RootOf(m_text), 0)};
}

TPathCore::iterator TPathCore::end() const noexcept
{
    return {*this, iterator::kEnd, iterator::kEnd};
}

std::size_t TPathCore::size() const noexcept
{
    TStringView const text = m_text;
    Root const root = RootOf(text);
    std::size_t n = 0;
    for (int start = 0; start < text.length(); ++n) {
        start = NextElement(text, root, start, ElementEnd(text, root, start));
    }
    return n;
}

TStringCore TPathCore::front() const
{
    return m_text.empty() ? TStringCore() : *begin();
}

TStringCore TPathCore::back() const
{
    return m_text.empty() ? TStringCore() : *--end();
}

std::vector<TStringCore> TPathCore::toVector() const
{
    return {begin(), end()};
}

TPathCore::iterator& TPathCore::iterator::operator=(iterator const& other)
{
    if (m_path != nullptr && m_path != other.m_path) {
        throw Exception(u"Invalid TPathCore::iterator asignment of from one TPathCore to different TPathCore.",
                        ThrowSite(0x4E3E0D3F, kSource), true);
    }
    m_path = other.m_path;
    m_start = other.m_start;
    m_end = other.m_end;
    return *this;
}

TStringCore TPathCore::iterator::operator*() const
{
    TStringView const text = m_path != nullptr ? m_path->m_text.view() : TStringView();
    if (m_start == kEnd || m_start >= text.length() || IsAmidPair(text, m_start)) {
        throw Exception(u"TPathCore::iterator::locateElementEnd element starting position is out of range, or not "
                        u"valid for current path.",
                        ThrowSite(0x9E82DC54, kSource), true);
    }
    int const end = ElementEnd(text, RootOf(text), m_start);
    return TStringCore(text.data() + m_start, end - m_start);
}

TPathCore::iterator& TPathCore::iterator::operator++()
{
    if (m_path != nullptr && m_start == kEnd) {
        throw Exception(u"TPathCore::iterator trying to increment beyond end.", ThrowSite(0x24209A38, kSource), true);
    }
    TStringView const text = m_path != nullptr ? m_path->m_text.view() : TStringView();
    if (m_start == kEnd || m_start >= text.length()) {
        throw Exception(u"Invalid position in TPathCore::iterator::nextElement.", ThrowSite(0xA22179A7, kSource), true);
    }
    // Where the element ends is known: it need not be looked for again, only be an end still.
    Root const root = RootOf(text);
    bool const inRoot = m_start < root.Length();
    bool const ends = inRoot ? m_end == ElementEnd(text, root, m_start)
                             : m_end == text.length() || (m_end < text.length() && At(text, m_end) == u'/');
    if (!ends) {
        throw Exception(u"TPathCore::iterator::locateNextElement element end position is out of range, or not valid "
                        u"for this path.",
                        ThrowSite(0x38CA4808, kSource), true);
    }
    int const next = NextElement(text, root, m_start, m_end);
    bool const isEnd = next >= text.length();
    m_start = isEnd ? kEnd : next;
    m_end = isEnd ? kEnd : ElementEnd(text, root, next);
    return *this;
}

TPathCore::iterator& TPathCore::iterator::operator--()
{
    TStringView const text = m_path != nullptr ? m_path->m_text.view() : TStringView();
    int const start = m_start == kEnd ? text.length() : m_start;
    if (start == 0) {
        throw Exception(u"TPathCore::iterator trying to decrement beyond beginning.", ThrowSite(0x6C884971, kSource),
                        true);
    }
    Root const root = RootOf(text);
    int const previous = start <= text.length() ? PreviousElement(text, root, start) : kNone;
    int const end = previous == kNone ? kNone : ElementEnd(text, root, previous);
    if (previous == kNone || NextElement(text, root, previous, end) != start) {
        throw Exception(u"TPathCore::iterator out of sync in prev.", ThrowSite(0x2BC6B9CE, kSource), true);
    }
    m_start = previous;
    m_end = end;
    return *this;
}

bool TPathCore::iterator::operator==(iterator const& other) const noexcept
{
    if (m_start != other.m_start) {
        return false;
    }
    return m_path == other.m_path || (m_path != nullptr && other.m_path != nullptr && *m_path == *other.m_path);
}

qvxsys::detail::PathElement qvxsys::detail::PathElementFrom(TStringView text, int start) noexcept
{
    Root const root = RootOf(text);
    // What follows the root path begins behind all separators.
    int const first = start < root.Length() ? start : SkipSeparators(text, start);
    return {first, first < text.length() ? ElementEnd(text, root, first) : first};
}

qvxsys::detail::PathElement qvxsys::detail::PathElementBefore(TStringView text, int start) noexcept
{
    Root const root = RootOf(text);
    int previous = PreviousElement(text, root, start);
    int end = ElementEnd(text, root, previous);
    if (previous == end) {
        previous = PreviousElement(text, root, previous);
        end = ElementEnd(text, root, previous);
    }
    return {previous, end};
}

TPathCore::Exception::Exception(TStringCore const& message, TError::ErrorInfo const& info, bool withCallStack)
    : QuorvexException(message, info)
{
    if (withCallStack) {
        for (std::string const& line : CallStack()) {
            StackMessage(TStringCore::fromStdString(line));
        }
    }
}

TPathCore::Exception::~Exception() = default;

QuorvexException* TPathCore::Exception::Clone() const
{
    return new Exception(*this);
}

void TPathCore::Exception::Throw() const
{
    throw Exception(*this);
}
