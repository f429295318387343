// Splitting, sections and joining.

#include <qvxsys/TTextReading.h>

#include <algorithm>
#include <bit>

#include <emmintrin.h>

#include <qvxsys/TStringCore.h>

#include "StringLimits.h"
#include "UnitSearch.h"
#include "UnitSet.h"
#include "kernels/Kernels.h"

namespace text = qvxsys::text;

namespace qvxsys::detail {
namespace {

// Takes parts as they are cut off from the front; `Last` takes the rest.
template<class Part>
class Cutter
{
public:
    Cutter(TStringView text, bool skipEmpty, std::vector<Part>& parts) noexcept
        : m_begin(text.data()), m_end(text.end()), m_skipEmpty(skipEmpty), m_parts(parts)
    {}

    void Cut(char16_t const* separator, std::size_t width)
    {
        Take(separator);
        m_begin = separator + width;
    }
    void Last() { Take(m_end); }
    /// Room for what so many single units cut off: parts that are not empty have a separator between them, so they
    /// are at most every second unit.
    void Reserve(std::size_t separators)
    {
        std::size_t const parts = separators + 1;
        std::size_t const apart = (static_cast<std::size_t>(m_end - m_begin) + 1) / 2;
        m_parts.reserve(m_parts.size() + (m_skipEmpty ? std::min(parts, apart) : parts));
    }

private:
    void Take(char16_t const* end)
    {
        if (!m_skipEmpty || end != m_begin) {
            m_parts.emplace_back(TStringView(m_begin, static_cast<std::size_t>(end - m_begin)));
        }
    }

    char16_t const* m_begin;
    char16_t const* const m_end;
    bool const m_skipEmpty;
    std::vector<Part>& m_parts;
};

// At every single unit, sixteen at a time: the bits of a comparison tell where to cut.
template<class Part>
void SplitAtUnit(TStringView text, char16_t unit, Cutter<Part>& cutter)
{
    // Counting is an order of magnitude faster than cutting, and the parts are then allocated once.
    cutter.Reserve(text::kernels().countUnit(text.data(), text.size(), unit));
    char16_t const* at = text.data();
    char16_t const* const end = text.end();
    __m128i const wanted = _mm_set1_epi16(static_cast<short>(unit));
    auto const equal = [wanted](char16_t const* p) {
        return _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<__m128i const*>(p)), wanted);
    };
    for (; end - at >= 16; at += 16) {
        auto bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(equal(at), equal(at + 8))));
        for (; bits != 0; bits &= bits - 1) {
            cutter.Cut(at + std::countr_zero(bits), 1);
        }
    }
    for (; at != end; ++at) {
        if (*at == unit) {
            cutter.Cut(at, 1);
        }
    }
}

template<class Part>
void SplitInto(TStringView text, TStringView separator, bool skipEmpty, bool folded, std::vector<Part>& parts)
{
    if (separator.empty()) {
        return;
    }
    Cutter<Part> cutter(text, skipEmpty, parts);
    if (separator.size() == 1 && !folded) {
        SplitAtUnit(text, separator[0], cutter);
    } else {
        text::UnitMatches matches(text.data(), text.size(), separator.data(), separator.size(), folded);
        for (std::size_t at = matches.Next(); at != text::kNotFound; at = matches.Next(at + separator.size())) {
            cutter.Cut(text.data() + at, separator.size());
        }
    }
    cutter.Last();
}

template<class Part>
void SplitOnAnyInto(TStringView text, TStringView set, bool skipEmpty, std::vector<Part>& parts)
{
    Cutter<Part> cutter(text, skipEmpty, parts);
    if (set.size() == 1) {
        SplitAtUnit(text, set[0], cutter);
    } else {
        text::UnitSet const members(set);
        for (char16_t const& c : text) {
            if (members.Contains(c)) {
                cutter.Cut(&c, 1);
            }
        }
    }
    cutter.Last();
}

} // namespace

void Split(TStringView text, TStringView separator, bool skipEmpty, bool folded, std::vector<TStringView>& parts)
{
    SplitInto(text, separator, skipEmpty, folded, parts);
}

void Split(TStringView text, TStringView separator, bool skipEmpty, bool folded, std::vector<TStringCore>& parts)
{
    SplitInto(text, separator, skipEmpty, folded, parts);
}

void SplitOnAny(TStringView text, TStringView set, bool skipEmpty, std::vector<TStringView>& parts)
{
    SplitOnAnyInto(text, set, skipEmpty, parts);
}

void SplitOnAny(TStringView text, TStringView set, bool skipEmpty, std::vector<TStringCore>& parts)
{
    SplitOnAnyInto(text, set, skipEmpty, parts);
}

TStringView Section(TStringView text, TStringView separator, int first, int last, int flags)
{
    std::vector<TStringView> parts;
    Split(text, separator, false, (flags & TStringCore::SectionCaseInsensitiveSeps) != 0, parts);
    bool const skip = (flags & TStringCore::SectionSkipEmpty) != 0;
    auto const isNumbered = [skip](TStringView part) { return !skip || !part.empty(); };
    auto const numbered = std::count_if(parts.begin(), parts.end(), isNumbered);
    std::int64_t const from = first < 0 ? first + numbered : first;
    std::int64_t const to = last < 0 ? last + numbered : last;
    if (numbered == 0 || from >= numbered || to < 0 || from > to) {
        return {};
    }
    // The first part of the range, and the last one, which may be past the end. Empty parts that are not numbered
    // belong to the range where they stand inside it.
    std::int64_t number = 0;
    auto begin = from < 0 ? parts.begin() : parts.end();
    auto end = parts.end() - 1;
    for (auto part = parts.begin(); part != parts.end() && number <= to; ++part) {
        if (isNumbered(*part)) {
            begin = number == from ? part : begin;
            end = number == to ? part : end;
            ++number;
        }
    }
    std::size_t const width = separator.size();
    bool const leading = (flags & TStringCore::SectionIncludeLeadingSep) != 0 && begin != parts.begin();
    bool const trailing = (flags & TStringCore::SectionIncludeTrailingSep) != 0 && end != parts.end() - 1;
    char16_t const* const start = begin->data() - (leading ? width : 0);
    char16_t const* const stop = end->end() + (trailing ? width : 0);
    return {start, static_cast<std::size_t>(stop - start)};
}

} // namespace qvxsys::detail

namespace {

template<class Part>
TStringCore Joined(std::vector<Part> const& parts, TStringView separator)
{
    std::size_t total = parts.empty() ? 0 : (parts.size() - 1) * separator.size();
    for (Part const& part : parts) {
        total += part.size();
    }
    TStringCore result;
    result.resize(text::CheckedUnits(total));
    char16_t* out = result.data();
    auto const put = [&out](char16_t const* units, std::size_t n) { out = std::copy_n(units, n, out); };
    bool isFirst = true;
    for (Part const& part : parts) {
        if (!isFirst) {
            put(separator.data(), separator.size());
        }
        isFirst = false;
        put(TStringView(part).data(), part.size());
    }
    return result;
}

} // namespace

TStringCore TStringEditing::Join(std::vector<TStringCore> const& parts, TStringView separator)
{
    return Joined(parts, separator);
}

TStringCore TStringEditing::Join(std::vector<TStringView> const& parts, TStringView separator)
{
    return Joined(parts, separator);
}

TStringCore TStringEditing::join32(std::vector<TStringCore> const& parts, char32_t separator)
{
    return join(parts, separator);
}

TStringCore TStringEditing::join32(std::vector<TStringView> const& parts, char32_t separator)
{
    return join(parts, separator);
}
