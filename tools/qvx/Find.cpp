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
    bool const cut =
        head.size() < text.size() && !head.empty() && CharacterUtils::IsHighSurrogate(head[head.size() - 1]);
    return cut ? head.left(head.length() - 1) : head;
}

} // namespace

// Strings fold unit by unit; a text with characters of two units has to be looked for by code point.
Finder::Finder(FindOptions const& options, std::function<void(Match const&)> onMatch)
    : m_options(options), m_onMatch(std::move(onMatch))
{
    if (options.ignoreCase && options.text.lengthInCodePoints() < options.text.length()) {
        m_table.emplace(options.text, CaseCompare::Insensitive);
    }
}

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
        int const behindMatches = Search(line);
        if (end < 0 && !last) {
            // Too short for a whole match, and without what belongs to one already: none is found twice.
            TStringView const kept = Tail(line.view().mid(behindMatches), m_options.text.length() - 1);
            TStringView const dropped = line.view().mid(m_columnAt, line.length() - kept.length() - m_columnAt);
            m_columns += static_cast<std::uint64_t>(dropped.lengthInCodePoints());
            m_lineStart = 0;
            m_columnAt = 0;
            m_rest = kept;
            return;
        }
    }
    int const whole = last ? piece.length() : piece.lastIndexOf(u'\n') + 1;
    Search(piece.left(whole));
    m_rest = piece.mid(whole);
}

int Finder::Next(TStringView text, int from) const
{
    if (!m_table) {
        return text.indexOf(m_options.text, from,
                            m_options.ignoreCase ? CaseCompare::Insensitive : CaseCompare::Sensitive);
    }
    int const at = KMP::searchString(text.mid(from), *m_table);
    return at < 0 ? at : from + at;
}

// Returns where the last match ends.
int Finder::Search(TStringView text)
{
    int passed = 0; // up to where lines are counted
    auto const passLines = [&](int to) {
        TStringView const lines = text.mid(passed, to - passed);
        if (int const ends = lines.count(u'\n'); ends != 0) {
            m_line += static_cast<std::uint64_t>(ends);
            m_lineStart = m_columnAt = passed + lines.lastIndexOf(u'\n') + 1;
            m_columns = 0;
            m_lineCounted = false;
        }
        passed = to;
    };
    m_lineStart = m_columnAt = 0;
    int behind = 0;
    for (int at = Next(text, 0); at >= 0; at = Next(text, behind)) {
        passLines(at);
        m_result.lines += m_lineCounted ? 0 : 1;
        m_lineCounted = true;
        if (++m_result.matches <= m_options.shown) {
            Match match = MatchAt(text, at);
            if (m_onMatch) {
                m_onMatch(match);
            } else {
                m_result.kept.push_back(std::move(match));
            }
        }
        behind = at + m_options.text.length(); // a case has as many units as the other
    }
    passLines(text.length());
    return behind;
}

Match Finder::MatchAt(TStringView text, int at)
{
    m_columns += static_cast<std::uint64_t>(text.mid(m_columnAt, at - m_columnAt).lengthInCodePoints());
    m_columnAt = at;
    TStringView const before = text.mid(m_lineStart, at - m_lineStart);
    // The line's end is looked for as far as it is shown only.
    TStringView behind = text.mid(at + m_options.text.length(), m_options.context + 2);
    int const end = behind.indexOf(u'\n');
    behind = behind.left(end < 0 ? behind.length() : end);
    if (behind.endsWith(u'\r')) {
        behind = behind.left(behind.length() - 1);
    }
    Match match;
    match.line = m_line;
    match.column = m_columns + 1;
    match.before = Tail(before, m_options.context);
    match.text = text.mid(at, m_options.text.length());
    match.behind = Head(behind, m_options.context);
    match.cutBefore = match.before.size() < before.size();
    match.cutBehind = match.behind.size() < behind.size();
    return match;
}

} // namespace qvx
