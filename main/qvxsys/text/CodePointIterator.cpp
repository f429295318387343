// What the code point iterators share, and the members of TStringCore that make them.

#include <qvxsys/CodePointIterator.h>

#include <algorithm>
#include <stdexcept>
#include <string>

#include <qvxsys/CodePointView.h>
#include <qvxsys/StringUtils.h>
#include <qvxsys/TStringCore.h>

namespace qvxsys::detail {
namespace {

constexpr char const* kForeign = " iterators do not reference the same underlying string.";

} // namespace

int OrdinalOf(char16_t const* text, int length, int index) noexcept
{
    int ordinal = 0;
    for (int at = 0; at >= 0 && at < index; at = NextCodePoint(text, length, at)) {
        ++ordinal;
    }
    return ordinal;
}

void ThrowIncrementedPastEnd()
{
    throw std::runtime_error(
        "CodePointIterator<>::operator++: attempted to increment the iterator past the end of the string.");
}

void ThrowDecrementedPastBegin()
{
    throw std::runtime_error(
        "CodePointIterator<>::operator--: attempted to decrement iterator past the begining of the string.");
}

void ThrowPositionOutOfRange(int position)
{
    throw std::runtime_error("CodePointIterator<>::operator++: m_position[" + std::to_string(position) +
                             "] is out of range.");
}

void ThrowForeignIterator(char const* of, char const* operation)
{
    throw std::runtime_error(std::string("TConstCodePointIterator<class ") + of + ">::operator " + operation +
                             kForeign);
}

void ThrowForeignIteratorFrom(char const* of)
{
    throw std::runtime_error(std::string(of) + "::iteratorFrom" + kForeign);
}

int CheckedCodeUnitIndex(char16_t const* text, int length, int index)
{
    if (index == length || index == -1) {
        return -1;
    }
    int const at = index < 0 ? index + length : index;
    if (at < 0 || at >= length) {
        throw std::runtime_error("TStringCore::createFromIndex codeUnitIndex is out of range.");
    }
    if (CharacterUtils::IsLowSurrogate(text[at])) {
        throw std::runtime_error(
            "TStringCore::createFromIndex codeUnitIndex does not reference the begining of a code point.");
    }
    return at;
}

} // namespace qvxsys::detail

TCodePointView TStringCore::codePointView() noexcept
{
    return TCodePointView(*this);
}

TCodePointRange<TStringCore> TStringCore::constCodePointView() const noexcept
{
    return TCodePointRange<TStringCore>(*this);
}

TStringCore::code_point_iterator TStringCore::codepoint_cbegin() const
{
    // Unchecked: the text may begin with a lone low surrogate, and it can be walked all the same.
    return empty() ? codepoint_cend() : code_point_iterator(0, 0, *this);
}

TStringCore::code_point_iterator TStringCore::codepoint_cend() const noexcept
{
    return {-1, -1, *this};
}

TStringCore::code_point_iterator TStringCore::iteratorFrom(int codeUnitIndex) const
{
    return code_point_iterator::createFromIndex(*this, codeUnitIndex);
}

TStringCore::code_point_iterator TStringCore::iteratorFrom(code_point_iterator const& other) const
{
    if (other.text() != constData()) {
        qvxsys::detail::ThrowForeignIteratorFrom("TStringCore");
    }
    bool const inside = other.codeUnitIndex() >= 0 && other.codeUnitIndex() < length();
    return inside ? code_point_iterator(other.codePointIndex(), other.codeUnitIndex(), *this) : codepoint_cend();
}

int TStringCore::getInsertCodeUnitIndex(code_point_iterator const& position) const
{
    int const index = iteratorFrom(position).codeUnitIndex();
    return index < 0 ? length() : index;
}

int TStringCore::subStringSizeInCodeUnits(int start, int n) const noexcept
{
    return StringUtils::SubStringSizeInCodeUnits(constData(), length(), start, n);
}

char32_t TCodePointReference::Get() const noexcept
{
    TStringCore const& text = *m_string;
    bool const inside = m_position >= 0 && m_position < text.length();
    return inside ? qvxsys::detail::CodePointAt(text.data(), text.length(), m_position) : 0;
}

TCodePointReference const& TCodePointReference::operator=(char32_t c) const
{
    TStringCore const& text = *m_string;
    if (m_position >= 0 && m_position < text.length()) {
        int const old = CharacterUtils::CountCodeUnits(Get());
        qvxsys::detail::UnitsOf const units(c);
        m_string->ReplaceUnits(m_position, old, units.units, units.count);
    }
    return *this;
}
