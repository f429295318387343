#include "Find.h"

#include <utility>

namespace qvx {
namespace {

// The end of a text that is at most n units long and does not begin inside a pair.
TStringView Tail(TStringView text, int n)
{
    TStringView const tail = text.right(n);
    bool const cut = tail.size() < text.size() && !tail.empty() && CharacterUtils::IsLowSurrogate(tail[0]);
    return cut ? tail.mid(1) : tail;
}

TStringView Head(TStringView text, int n)
{
    TStringView const head = text.left(n);
    bool const cut = head.size() < text.size() && !head.empty() && CharacterUtils::IsHighSurrogate(head[head.size() - 1]);
    return cut ? head.left(head.length() - 1) : head;
}

} // namespace

// Whole lines are searched where they stand. A line that the end of a piece cuts waits for its rest.
void Finder::Feed(TStringView piece, bool last)
{
    if (!m_rest.empty()) {
        int const end = piece.indexOf(u'\n');
        TStringView const restOfLine = end < 0 ? piece : piece.left(end + 1);
        m_rest.append(restOfLine);
        piece = piece.mid(restOfLine.length());
        if (end < 0 && !last && m_rest.length() < kLongestLine) {
            return;
        }
        TStringCore const line = std::exchange(m_rest, TStringCore());
        Search(line);
        if (end < 0 && !last) {
            // No match lies wholly in what is kept, so none is found twice.
            TStringView const kept = Tail(line, m_options.text.length() - 1);
            m_columnsBefore += static_cast<std::uint64_t>(line.lengthInCodePoints() - kept.lengthInCodePoints());
            m_rest = kept;
            return;
        }
    }
    int const whole = last ? piece.length() : piece.lastIndexOf(u'\n') + 1;
    Search(piece.left(whole));
    m_rest = piece.mid(whole);
}

void Finder::Search(TStringView text)
{
    CaseCompare const cs = m_options.ignoreCase ? CaseCompare::Insensitive : CaseCompare::Sensitive;
    int lineStart = 0;
    auto const passLines = [&](int to) {
        TStringView const passed = text.mid(lineStart, to - lineStart);
        if (int const lines = passed.count(u'\n'); lines != 0) {
            m_line += static_cast<std::uint64_t>(lines);
            lineStart += passed.lastIndexOf(u'\n') + 1;
            m_lineCounted = false;
            m_columnsBefore = 0;
        }
    };
    for (int at = text.indexOf(m_options.text, 0, cs); at >= 0; at = text.indexOf(m_options.text, at, cs)) {
        passLines(at);
        ++m_result.matches;
        m_result.lines += m_lineCounted ? 0 : 1;
        m_lineCounted = true;
        if (m_result.kept.size() < m_options.kept) {
            Keep(text, lineStart, at);
        }
        at += m_options.text.length();
    }
    passLines(text.length());
}

void Finder::Keep(TStringView text, int lineStart, int at)
{
    TStringView const before = text.mid(lineStart, at - lineStart);
    TStringView behind = text.mid(at + m_options.text.length());
    int const end = behind.indexOf(u'\n');
    behind = behind.left(end < 0 ? behind.length() : end);
    if (behind.endsWith(u'\r')) {
        behind = behind.left(behind.length() - 1);
    }
    Match match;
    match.line = m_line;
    match.column = m_columnsBefore + static_cast<std::uint64_t>(before.lengthInCodePoints()) + 1;
    match.before = Tail(before, Match::kContext);
    match.text = text.mid(at, m_options.text.length());
    match.behind = Head(behind, Match::kContext);
    m_result.kept.push_back(std::move(match));
}

} // namespace qvx
