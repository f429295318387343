#include <qvxsys/TMath.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

#include "SystemPlatform.h"

namespace {

constexpr double kPowers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

double PowerOfTen(short digits) noexcept
{
    return digits >= 0 && digits <= 15 ? kPowers[digits] : qvxsys::system::platform::PowerOfTen(digits);
}

} // namespace

namespace TMath {

double DegreesToRadians(double x) noexcept
{
    return x * std::numbers::pi / 180;
}

double RadiansToDegrees(double x) noexcept
{
    return x * 180 / std::numbers::pi;
}

int MulDiv(int a, int b, int c) noexcept
{
    if (c == 0) {
        return -1;
    }
    std::int64_t const quotient = (std::int64_t{a} * b + c / 2) / c;
    return static_cast<int>(
        std::clamp<std::int64_t>(quotient, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

double round2(double x, short digits) noexcept
{
    double const f = PowerOfTen(digits);
    double const rounded = x >= 0 ? std::floor(x * f + 0.5) / f : std::ceil(x * f - 0.5) / f;
    return rounded == 0 ? 0.0 : rounded;
}

bool identical(double a, double b) noexcept
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

bool identical(std::vector<double> const& a, std::vector<double> const& b) noexcept
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) { return identical(x, y); });
}

bool identical(std::vector<std::vector<double>> const& a, std::vector<std::vector<double>> const& b) noexcept
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](auto const& x, auto const& y) { return identical(x, y); });
}

} // namespace TMath
