// Editing strings in place: inserting, removing, trimming, filling, line endings.

#include <qvxsys/TStringEditing.h>

#include <algorithm>

#include <qvxsys/StringUtils.h>
#include <qvxsys/TStringCore.h>

#include "StringLimits.h"

namespace text = qvxsys::text;
using text::CopyUnits;
using text::MoveUnits;

namespace {

constexpr char16_t kByteOrderMark = 0xFEFF;

// The units of n that a text has behind `pos`.
int Available(int length, int pos, int n) noexcept
{
    return std::clamp(n, 0, length - pos);
}

} // namespace

// ---- the two ways to change a text

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
    if (count != n) {
        MoveUnits(at + n, at + count, tail);
    }
    if (n > 0) {
        CopyUnits(at, units, n);
    }
    SetLength(sum);
}

// A shared block is not copied whole to be cut then: only what is kept is.
TStringCore& TStringEditing::Keep(TStringView kept)
{
    int const n = kept.length();
    if (n == length()) {
        return Self();
    }
    if (!IsBlock() || !IsShared(Block())) {
        char16_t* const text = data();
        if (kept.data() != text) {
            MoveUnits(text, kept.data(), n);
        }
        StoreLength(n);
    } else {
        TStringCore own = Fresh(n);
        CopyUnits(own.SetLength(n), kept.data(), n);
        swap(own);
    }
    return Self();
}

TStringCore TStringEditing::Fresh(int n) const
{
    TStringCore fresh;
    if (IsBlock()) {
        fresh.SetBlock(Reallocate(nullptr, n >= capacity() ? GrownCapacity(n) : capacity()));
    } else {
        fresh.SetLength(n);
    }
    return fresh;
}

// ---- inserting

TStringCore& TStringEditing::InsertText(int pos, TStringView v)
{
    int const n = text::CheckedUnits(v.size());
    if (n > 0) {
        if (inSelf(v.data())) {
            TStringCore const copy(v.data(), n);
            return InsertText(pos, copy);
        }
        ReplaceUnits(std::clamp(pos, 0, length()), 0, v.data(), n);
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

// ---- removing

TStringCore& TStringEditing::removeAt(int pos, int n)
{
    int const old = length();
    if (pos < 0 || pos >= old || n < 1) {
        return Self();
    }
    int const count = Available(old, pos, n);
    TStringView const text = Self().view();
    if (pos == 0) {
        return Keep(text.mid(count));
    }
    if (pos + count == old) {
        return Keep(text.left(pos));
    }
    ReplaceUnits(pos, count, nullptr, 0);
    return Self();
}

TStringCore& TStringEditing::chop(int n)
{
    return n < 1 ? Self() : Keep(Self().view().left(length() - std::min(n, length())));
}

TStringCore& TStringEditing::truncate(int n)
{
    return Keep(Self().view().left(n));
}

TStringCore& TStringEditing::truncateAtFirstNull()
{
    return truncate(length(constData()));
}

// ---- trimming

TStringCore& TStringEditing::trim()
{
    return Keep(qvxsys::detail::Trimmed(Self(), true, true));
}

TStringCore& TStringEditing::trimLeft()
{
    return Keep(qvxsys::detail::Trimmed(Self(), true, false));
}

TStringCore& TStringEditing::trimRight()
{
    return Keep(qvxsys::detail::Trimmed(Self(), false, true));
}

TStringCore& TStringEditing::Trim(TStringView set, bool left, bool right)
{
    return Keep(qvxsys::detail::Trimmed(Self(), set, left, right));
}

// ---- filling and reversing

TStringCore& TStringEditing::AssignCopies(qvxsys::detail::UnitsOf units, int n)
{
    n = std::max(n, 0);
    char16_t* out = SetLength(text::CheckedUnits(static_cast<std::uint64_t>(n) * static_cast<unsigned>(units.count)));
    if (units.count == 1) {
        std::fill_n(out, n, units.units[0]);
    } else {
        for (int i = 0; i < n; ++i) {
            *out++ = units.units[0];
            *out++ = units.units[1];
        }
    }
    return Self();
}

TStringCore& TStringEditing::Fill(qvxsys::detail::UnitsOf units, int n)
{
    int const copies = n >= 0 ? n : units.count == 1 ? length() : lengthInCodePoints();
    return copies == 0 && empty() ? Self() : Self().AssignCopies(units, copies);
}

TStringCore& TStringEditing::reverse()
{
    if (lengthInCodePoints() < 2) {
        return Self();
    }
    char16_t* const begin = data();
    char16_t* const end = begin + length();
    std::reverse(begin, end);
    // Pairs now stand the wrong way round, low surrogate first; what stands so and was none before, a low surrogate in
    // front of a high one, is high in front of low now.
    for (char16_t* at = begin; end - at > 1; ++at) {
        if (CharacterUtils::IsLowSurrogate(at[0]) && CharacterUtils::IsHighSurrogate(at[1])) {
            std::swap(at[0], at[1]);
            ++at;
        }
    }
    return Self();
}

// ---- byte-order mark and line endings

TStringCore& TStringEditing::prependBOM()
{
    return Self().hasBOM() ? Self() : insert(0, kByteOrderMark);
}

TStringCore& TStringEditing::removeBOM()
{
    return Self().hasBOM() ? removeAt(0) : Self();
}

TStringCore& TStringEditing::dosToUnix()
{
    if (Self().contains(u'\r')) {
        SetLength(StringUtils::normalizeLineEndings(data(), length()));
    }
    return Self();
}

TStringCore& TStringEditing::unixToDos()
{
    TStringView const text = Self().view();
    for (int at = text.indexOf(u'\n'); at >= 0; at = text.indexOf(u'\n', at + 1)) {
        if (at == 0 || text[static_cast<std::size_t>(at) - 1] != u'\r') {
            return Self() = StringUtils::unixToDos(text.data(), text.size());
        }
    }
    return Self();
}

TStringCore& TStringEditing::toNativeLineEndings()
{
    return qvxsys::kLinesEndInCrLf ? unixToDos() : dosToUnix();
}
