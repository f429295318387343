// Splitting strings and views.

#include <qvxsys/TTextReading.h>

#include <qvxsys/TStringCore.h>

namespace qvxsys::detail {
namespace {

// Cuts at what `next(rest)` finds, which is `width` units wide.
template<class Next>
void Cut(TStringView text, int width, bool skipEmpty, std::vector<TStringView>& parts, Next next)
{
    for (int pos = 0;;) {
        TStringView const rest = text.mid(pos);
        int const at = next(rest);
        TStringView const part = at < 0 ? rest : rest.left(at);
        if (!skipEmpty || !part.empty()) {
            parts.push_back(part);
        }
        if (at < 0) {
            return;
        }
        pos += at + width;
    }
}

} // namespace

void Split(TStringView text, TStringView separator, bool skipEmpty, bool folded, std::vector<TStringView>& parts)
{
    if (!separator.empty()) {
        Cut(text, separator.length(), skipEmpty, parts,
            [&](TStringView rest) { return FindText(rest, separator, 0, folded); });
    }
}

void SplitOnAny(TStringView text, TStringView set, bool skipEmpty, std::vector<TStringView>& parts)
{
    Cut(text, 1, skipEmpty, parts, [&](TStringView rest) { return FindMember(rest, set, 0, true); });
}

} // namespace qvxsys::detail
