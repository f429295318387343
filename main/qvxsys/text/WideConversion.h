#pragma once
// UTF-16 as wide text: the units themselves where wchar_t has 16 bits, else code points, a lone surrogate as its value
// so that nothing is lost on the way there and back.

#include <cstddef>

#include <qvxsys/TStringView.h>

namespace qvxsys::text {

/// The number of wchar_t that ToWide writes.
std::size_t WideLength(TStringView text) noexcept;

/// Writes the wide form, exactly WideLength units, without a terminator.
void ToWide(TStringView text, wchar_t* dst) noexcept;

/// Writes the wide form and a terminator and returns its length; throws the capacity error naming `routine` when they
/// do not fit. A null dst gets nothing.
int ToWideArray(TStringView text, wchar_t* dst, int capacity, char const* routine);

} // namespace qvxsys::text
