// Editing strings in place.

#include <qvxsys/TStringEditing.h>

#include <algorithm>

#include <qvxsys/TStringCore.h>

#include "StringLimits.h"

using qvxsys::text::Bytes;
using qvxsys::text::CopyUnits;

// Replaces `count` units at `pos` by n units that do not lie in the own text.
void TStringEditing::ReplaceUnits(int pos, int count, char16_t const* units, int n)
{
    int const old = length();
    int const tail = old - pos - count;
    int const sum = AddLengths(old - count, n);
    if (sum > old) {
        SetLength(sum);
    }
    char16_t* const at = data() + pos;
    std::memmove(at + n, at + count, Bytes(tail));
    if (n > 0) {
        CopyUnits(at, units, n);
    }
    SetLength(sum);
}

TStringCore& TStringEditing::InsertText(int pos, TStringView v)
{
    if (v.length() > 0) {
        if (inSelf(v.data())) {
            TStringCore const copy(v.data(), v.length());
            return InsertText(pos, copy);
        }
        ReplaceUnits(std::clamp(pos, 0, length()), 0, v.data(), v.length());
    }
    return Self();
}

TStringCore& TStringEditing::insert(int pos, char16_t const* s, int n)
{
    if (s == nullptr) {
        return Self();
    }
    int count = n < 0 ? length(s) : n;
    if (inSelf(s)) {
        count = std::min(count, length() - static_cast<int>(s - constData()));
    }
    return InsertText(pos, TStringView(s, static_cast<std::size_t>(count)));
}

TStringCore& TStringEditing::insert(int pos, wchar_t const* s, int n)
{
    if constexpr (qvxsys::kWideIsUtf16) {
        return insert(pos, reinterpret_cast<char16_t const*>(s), n);
    } else {
        return InsertText(pos, TStringCore(s, n));
    }
}

TStringCore& TStringEditing::insert(int pos, char const* utf8, int n)
{
    return InsertText(pos, TStringCore(utf8, n));
}
