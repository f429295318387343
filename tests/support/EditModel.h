#pragma once
// Runs a program of edits, given as bytes, on a TStringCore and on a naive model in std::u16string, and reports the
// first difference. Texts are drawn from a small alphabet, so that needles occur and overlap. Every other edit is done
// on a copy that shares its block with a keeper, which must not change.

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include <qvxsys/qvxsys.h>

namespace testing_support {

class EditModel
{
public:
    EditModel(std::uint8_t const* program, std::size_t size) : m_at(program), m_end(program + size) {}

    /// "" when string and model agreed to the end, else what went wrong.
    std::string Run()
    {
        while (m_at != m_end && m_error.empty()) {
            TStringCore const keeper = m_string;
            std::u16string const kept = m_model;
            m_operation = Byte() % 26;
            Edit(m_operation);
            Require(m_string.toStdUString() == m_model && m_string.constData()[m_string.length()] == 0 &&
                    m_string.length() < m_string.capacity());
            Require(keeper.toStdUString() == kept);
            // What changed nothing must not have copied a shared block (assigning anew may).
            Require(m_model != kept || m_string.constData() == keeper.constData() || kept.size() < 15 || m_mayDetach);
            m_mayDetach = false;
            if (m_model.size() > 300) {
                m_model.resize(20);
                m_string.truncate(20);
            }
        }
        return m_error;
    }

private:
    using Text = std::u16string;
    static constexpr std::size_t kNone = Text::npos;

    int Byte() { return m_at == m_end ? 0 : *m_at++; }
    int Position() { return Byte() % 40 - 4; }
    char16_t Unit()
    {
        static constexpr char16_t kAlphabet[] = u"aaabbA ,\t\r\n\u00E9\u00C9\xD83D\xDE00\uFEFF";
        return kAlphabet[static_cast<std::size_t>(Byte()) % (sizeof kAlphabet / 2)]; // the terminator, too
    }
    Text Units(int most)
    {
        Text text(static_cast<std::size_t>(Byte() % (most + 1)), u'\0');
        std::generate(text.begin(), text.end(), [this] { return Unit(); });
        return text;
    }

    void Require(bool condition)
    {
        if (!condition && m_error.empty()) {
            m_error = "operation " + std::to_string(m_operation) + " gave \"" + m_string.toStdString() + "\" (" +
                      std::to_string(m_string.length()) + " units), expected \"" + TStringCore(m_model).toStdString() +
                      "\"";
        }
    }

    static char16_t Fold(char16_t c) { return TCType::FoldCase(c); }
    static Text Folded(Text text, bool folded)
    {
        if (folded) {
            std::transform(text.begin(), text.end(), text.begin(), Fold);
        }
        return text;
    }
    static Text Replaced(Text const& text, Text const& before, Text const& after, bool folded, int& count)
    {
        Text const in = Folded(text, folded);
        Text const wanted = Folded(before, folded);
        Text result;
        for (std::size_t at = 0; at < text.size();) {
            if (!before.empty() && in.compare(at, wanted.size(), wanted) == 0) {
                result += after;
                at += wanted.size();
                ++count;
            } else {
                result += text[at++];
            }
        }
        return result;
    }
    // The code points as texts of one or two units.
    static std::vector<Text> CodePoints(Text const& text)
    {
        std::vector<Text> points;
        for (std::size_t i = 0; i < text.size(); ++i) {
            bool const pair = CharacterUtils::IsHighSurrogate(text[i]) && i + 1 < text.size() &&
                              CharacterUtils::IsLowSurrogate(text[i + 1]);
            points.push_back(text.substr(i, pair ? 2 : 1));
            i += pair ? 1 : 0;
        }
        return points;
    }
    static Text Join(std::vector<Text> const& points) { return std::accumulate(points.begin(), points.end(), Text()); }
    static bool Has(Text const& set, Text const& point)
    {
        auto const points = CodePoints(set);
        return std::find(points.begin(), points.end(), point) != points.end();
    }
    template<class Drop>
    static Text Trimmed(Text const& text, bool left, bool right, Drop drop)
    {
        auto points = CodePoints(text);
        while (left && !points.empty() && drop(points.front())) {
            points.erase(points.begin());
        }
        while (right && !points.empty() && drop(points.back())) {
            points.pop_back();
        }
        return Join(points);
    }
    static Text Cut(Text const& text, int pos, int n)
    {
        bool const inside = pos >= 0 && pos <= static_cast<int>(text.size()) && n > 0;
        return inside ? text.substr(static_cast<std::size_t>(pos), static_cast<std::size_t>(n)) : Text();
    }

    void Edit(int operation)
    {
        bool const folded = Byte() % 2 != 0;
        auto const cs = folded ? TStringCore::CaseInsensitive : TStringCore::CaseSensitive;
        auto const length = static_cast<int>(m_model.size());
        switch (operation) {
        case 0:
        case 1:
        case 2: {
            Text const text = Units(20);
            int const pos = Position();
            m_string.insert(pos, text);
            m_model.insert(static_cast<std::size_t>(std::clamp(pos, 0, length)), text);
            break;
        }
        case 3: {
            int const pos = Position();
            int const n = Position();
            m_string.removeAt(pos, n);
            if (pos >= 0 && pos < length && n > 0) {
                m_model.erase(static_cast<std::size_t>(pos), static_cast<std::size_t>(n));
            }
            break;
        }
        case 4: {
            int const pos = Position();
            int const n = Position();
            // From inside the string itself.
            Text const text = Cut(m_model, 1, 5);
            m_string.replace(pos, n, m_string.view().mid(1, 5));
            m_mayDetach = true;
            if (pos >= 0 && pos <= length) {
                m_model.replace(static_cast<std::size_t>(pos), static_cast<std::size_t>(std::max(n, 0)), text);
            }
            break;
        }
        case 5:
        case 6:
        case 7:
        case 8:
        case 9: {
            // Other texts, its own text, nothing, units.
            Text const before = operation == 7 ? Cut(m_model, 2, 2) : operation == 9 ? Text(1, Unit()) : Units(3);
            Text const after = operation == 7   ? Cut(m_model, 0, 3)
                               : operation == 8 ? Text()
                               : operation == 9 ? Text(1, Unit())
                                                : Units(3);
            int count = 0;
            m_model = Replaced(m_model, before, after, folded, count);
            m_mayDetach = count != 0 && operation != 8;
            TStringView const own = m_string;
            switch (operation) {
            case 7:
                m_string.replace(own.mid(2, 2), own.left(3), cs);
                break;
            case 8:
                m_string.removeAll(before, cs);
                break;
            case 9:
                m_string.replace(before[0], after[0], cs);
                break;
            default:
                Require(m_string.replaceCount(before, after, cs) == count);
            }
            break;
        }
        case 10: {
            Text const set = Units(3);
            Text const after = folded ? Units(3) : Text();
            Text result;
            bool found = false;
            for (Text const& point : CodePoints(m_model)) {
                bool const member = Has(set, point);
                result += member ? after : point;
                found |= member;
            }
            m_mayDetach = found;
            m_model = result;
            folded ? m_string.replaceAnyOf(set, after) : m_string.removeAnyOf(set);
            break;
        }
        case 11: {
            Text const set = Units(3);
            m_model = Trimmed(m_model, true, folded, [&](Text const& point) { return Has(set, point); });
            folded ? m_string.trim(set) : m_string.trimLeft(set);
            break;
        }
        case 12: {
            auto const isSpace = [](Text const& point) { return TCType::isSpace(point[0]); };
            m_model = Trimmed(m_model, folded, true, isSpace);
            folded ? m_string.trim() : m_string.trimRight();
            break;
        }
        case 13: {
            int const n = Position();
            int const kept = std::clamp(n, 0, length);
            folded ? m_string.chop(n) : m_string.truncate(n);
            m_model.resize(static_cast<std::size_t>(folded ? length - kept : kept));
            break;
        }
        case 14: {
            int const n = Position();
            folded ? m_string.resize(n) : m_string.reserve(std::max(n, 0) * 4);
            m_model.resize(folded ? static_cast<std::size_t>(std::max(n, 0)) : m_model.size());
            for (int i = length; i < m_string.length(); ++i) {
                m_model[static_cast<std::size_t>(i)] = m_string[i] = u'r'; // were arbitrary
            }
            m_mayDetach = true;
            break;
        }
        case 15: {
            auto points = CodePoints(m_model);
            std::reverse(points.begin(), points.end());
            m_model = Join(points);
            m_mayDetach = true;
            m_string.reverse();
            break;
        }
        case 16: {
            int const pos = Position();
            int const n = Position();
            bool const toZero = n < 0 && pos > 0 && pos <= length;
            Text const expected = pos == 0 && n < 0 ? m_model
                                  : toZero          ? Text(m_model.c_str() + pos)
                                                    : Cut(m_model, pos, n);
            m_string = m_string.mid(pos, n);
            m_model = expected;
            m_mayDetach = true;
            break;
        }
        case 17: {
            int const n = Position();
            auto const kept = static_cast<std::size_t>(std::clamp(n, 0, length));
            m_string = folded ? m_string.left(n) : m_string.right(n);
            m_model = folded ? m_model.substr(0, kept) : m_model.substr(m_model.size() - kept);
            break;
        }
        case 18: {
            auto points = CodePoints(m_model);
            auto const n = static_cast<std::ptrdiff_t>(std::clamp(Position(), 0, static_cast<int>(points.size())));
            m_string =
                folded ? m_string.leftCodePoints(static_cast<int>(n)) : m_string.rightCodePoints(static_cast<int>(n));
            folded ? points.erase(points.begin() + n, points.end()) : points.erase(points.begin(), points.end() - n);
            m_model = Join(points);
            break;
        }
        case 19: {
            int const width = Position();
            char16_t const fill = Unit();
            auto const missing = static_cast<std::size_t>(std::max(width - length, 0));
            bool const truncate = Byte() % 2 != 0;
            m_string =
                folded ? m_string.leftJustified(width, fill, truncate) : m_string.rightJustified(width, fill, truncate);
            m_model = folded ? m_model + Text(missing, fill) : Text(missing, fill) + m_model;
            if (truncate) {
                m_model.resize(static_cast<std::size_t>(std::max(width, 0)));
            }
            break;
        }
        case 20: {
            int const n = Byte() % 4;
            Text const once = m_model;
            m_model.clear();
            for (int i = 0; i < n; ++i) {
                m_model += once;
            }
            m_string = m_string.repeated(n);
            break;
        }
        case 21: {
            // Cut to pieces and put together again.
            Text const separator = Units(2);
            if (separator.empty()) {
                Require(m_string.split(separator).empty());
                break;
            }
            auto const parts =
                folded ? TStringCore::viewsToStrings(m_string.split(separator)) : m_string.splitCopy(separator);
            int count = 0;
            m_model = Replaced(m_model, separator, u"|", false, count);
            Require(static_cast<int>(parts.size()) == count + 1);
            m_string = TStringCore::join(parts, u'|');
            m_mayDetach = true;
            break;
        }
        case 22: {
            Text const set = Units(3);
            Text joined;
            for (char16_t const c : m_model) {
                joined += set.find(c) != kNone ? u'|' : c;
            }
            if (!set.empty()) {
                m_model = joined;
                m_string = TStringCore::join(m_string.splitCopyOnAny(set), u"|");
                m_mayDetach = true;
            }
            break;
        }
        case 23:
            Search(Units(3), Position(), folded, cs);
            break;
        case 24: {
            m_string.squeeze();
            m_mayDetach = true;
            if (folded) {
                m_string.removeBOM();
                m_model.erase(0, !m_model.empty() && m_model[0] == 0xFEFF ? 1 : 0);
            } else {
                m_string.prependBOM();
                m_model.insert(0, !m_model.empty() && m_model[0] == 0xFEFF ? 0 : 1, u'\uFEFF');
            }
            break;
        }
        default: {
            char16_t const fill = Unit();
            int const n = folded ? -1 : Byte() % 30;
            m_string.fill(fill, n);
            m_model.assign(n < 0 ? m_model.size() : static_cast<std::size_t>(n), fill);
            m_mayDetach = true;
        }
        }
    }

    void Search(Text const& needle, int from, bool folded, TStringCore::CaseSensitivity cs)
    {
        auto const length = static_cast<int>(m_model.size());
        Text const in = Folded(m_model, folded);
        Text const wanted = Folded(needle, folded);
        int const start = from < 0 ? from + length : from;
        bool const inside = start >= 0 && start < length;
        auto const at = static_cast<std::size_t>(start);
        auto const position = [](std::size_t found) { return found == kNone ? -1 : static_cast<int>(found); };
        TStringView const view = m_string;
        auto const viewCs = folded ? CaseCompare::Insensitive : CaseCompare::Sensitive;
        int const first = inside ? position(in.find(wanted, at)) : -1;
        int const last = inside ? position(in.rfind(wanted, at)) : -1;
        Require(m_string.indexOf(needle, from, cs) == first && view.indexOf(needle, from, viewCs) == first);
        Require(m_string.lastIndexOf(needle, from, cs) == last && view.lastIndexOf(needle, from, viewCs) == last);
        Require(m_string.contains(needle, cs) == (length > 0 && in.find(wanted) != kNone));
        Require(m_string.findOneOf(needle, from) == (inside ? position(m_model.find_first_of(needle, at)) : -1));
        Require(m_string.findOneNotOf(needle, from) == (inside ? position(m_model.find_first_not_of(needle, at)) : -1));
        std::size_t const run = m_model.find_first_not_of(needle);
        Require(m_string.spanIncluding(needle) == (run == kNone ? length : static_cast<int>(run)));
        std::size_t const other = m_model.find_first_of(needle);
        Require(m_string.spanExcluding(needle) == (other == kNone ? length : static_cast<int>(other)));
        int count = 0;
        for (std::size_t i = in.find(wanted); i != kNone && length > 0 && i < in.size(); i = in.find(wanted, i + 1)) {
            ++count;
        }
        Require(m_string.count(needle, cs) == count && view.count(needle, viewCs) == count);
    }

    std::uint8_t const* m_at;
    std::uint8_t const* const m_end;
    TStringCore m_string;
    std::u16string m_model;
    int m_operation = 0;
    bool m_mayDetach = false;
    std::string m_error;
};

} // namespace testing_support
