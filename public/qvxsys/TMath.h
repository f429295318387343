#pragma once
// Small numeric functions with exact rules of rounding and comparison.
//
//     double const shown = TMath::round2(price, 2);              // half away from zero, never -0.0
//     int const pixels = TMath::MulDiv(points, dpi, 72);         // 64 bits in between, clamped to int
//     if (!TMath::identical(before, after)) { ... }              // NaN is the same as NaN
//
// They are compiled in the library, so that a program's own floating-point options do not change them. Thread-safe.

#include <vector>

#include <qvxsys/Platform.h>

namespace TMath {

/// x * pi / 180 and x * 180 / pi, in this order, with pi the nearest double.
[[nodiscard]] QVXSYS_API double DegreesToRadians(double x) noexcept;
[[nodiscard]] QVXSYS_API double RadiansToDegrees(double x) noexcept;

/// (a * b + c / 2) / c in 64 bits, both divisions truncating toward zero, clamped to the range of int; -1 when c is 0.
/// That rounds half up where a * b and c are not negative, and only there: MulDiv(-5, 3, 2) is -7.
[[nodiscard]] QVXSYS_API int MulDiv(int a, int b, int c) noexcept;

/// Rounds to `digits` decimals, negative ones being tens, hundreds and so on; half away from zero. With f = 10^digits
/// it is floor(x * f + 0.5) / f, for negative x ceil(x * f - 0.5) / f, as doubles compute it: 0.49999999999999994
/// becomes 1, an infinity stays one also when it comes from x * f, NaN stays NaN, and where f is no finite number above
/// 0 (`digits` far beyond +-300) the result can be NaN. A zero is always +0.0.
[[nodiscard]] QVXSYS_API double round2(double x, short digits) noexcept;

/// a == b, or both are NaN. So 0.0 and -0.0 are identical.
[[nodiscard]] QVXSYS_API bool identical(double a, double b) noexcept;
/// The same size and identical elements.
[[nodiscard]] QVXSYS_API bool identical(std::vector<double> const& a, std::vector<double> const& b) noexcept;
/// The same number of rows and identical rows.
[[nodiscard]] QVXSYS_API bool identical(std::vector<std::vector<double>> const& a,
                                        std::vector<std::vector<double>> const& b) noexcept;

} // namespace TMath
