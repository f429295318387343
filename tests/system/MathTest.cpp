// Numeric helpers beside exact 128-bit arithmetic, the C++ library's rounding, and tables for what is theirs alone.

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <qvxsys/TMath.h>

namespace {

__extension__ using Wide = __int128;
constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Math, MulDivCases)
{
    constexpr struct
    {
        int a, b, c, expected;
    } kCases[] = {{1, 1, 0, -1},        {5, 3, 2, 8},           {-5, 3, 2, -7},
                  {kMost, 2, 1, kMost}, {kLeast, 1, -1, kMost}, {kLeast, kLeast, kLeast, kLeast + 1},
                  {kLeast, 0, 0, -1},   {7, 1, -2, -3},         {-7, 1, -2, 4},
                  {1, 1, 2, 1},         {-1, 1, 2, 0}};
    for (auto const& t : kCases) {
        EXPECT_EQ(TMath::MulDiv(t.a, t.b, t.c), t.expected) << t.a << '*' << t.b << '/' << t.c;
    }
}

// The quotient is within what rounding a * b / c to the nearest can be off, or the limit that the true one is beyond.
TEST(Math, MulDivIsNearest)
{
    std::mt19937 random(20);
    for (int i = 0; i < 200'000; ++i) {
        auto const draw = [&] { return static_cast<int>(random() >> random() % 31); };
        int const a = draw() & kMost;
        int const b = draw() & kMost;
        int const c = (draw() & kMost) | 1 << random() % 31;
        Wide const twice = 2 * (Wide{TMath::MulDiv(a, b, c)} * c - Wide{a} * b);
        if (Wide{a} * b > Wide{kMost} * c) {
            ASSERT_EQ(TMath::MulDiv(a, b, c), kMost);
        } else {
            ASSERT_TRUE(-c < twice && twice <= c) << a << '*' << b << '/' << c;
        }
        // Of the other signs, all cases where the half is added away from the quotient's sign or toward it.
        ASSERT_EQ(TMath::MulDiv(-a, -b, c), TMath::MulDiv(a, b, c));
        ASSERT_EQ(TMath::MulDiv(-a, b, -c), TMath::MulDiv(a, b, c));
    }
}

TEST(Math, Round2Cases)
{
    constexpr struct
    {
        double x;
        short digits;
        double expected;
    } kCases[] = {{2.5, 0, 3},
                  {-2.5, 0, -3},
                  {-0.001, 2, 0},
                  {-0.0, 3, 0},
                  {1234, -2, 1200},
                  {-1250, -2, -1300},
                  {0.125, 2, 0.13},
                  {-0.125, 2, -0.13},
                  {1.5, 15, 1.5},
                  {0.49999999999999994, 0, 1},
                  {3.25, 16, 3.25},
                  {1e300, 15, kInfinity},
                  {-kInfinity, 2, -kInfinity}};
    for (auto const& t : kCases) {
        double const rounded = TMath::round2(t.x, t.digits);
        EXPECT_EQ(rounded, t.expected) << t.x << " to " << t.digits;
        EXPECT_TRUE(rounded != 0 || !std::signbit(rounded)) << t.x;
    }
    EXPECT_TRUE(std::isnan(TMath::round2(kNaN, 2)));
    EXPECT_TRUE(std::isnan(TMath::round2(1, -400)));
}

// With halves and quarters nothing is lost in adding a half, so the C++ library's rounding must come out; of decimals,
// the double nearest to the decimal number that is nearest.
TEST(Math, Round2AgainstTheLibrary)
{
    std::mt19937_64 random(21);
    for (int i = 0; i < 100'000; ++i) {
        double const quarters = static_cast<double>(static_cast<std::int64_t>(random()) >> (13 + random() % 40)) / 4;
        double const expected = std::round(quarters);
        ASSERT_EQ(TMath::round2(quarters, 0), expected) << quarters;
        auto const digits = static_cast<short>(random() % 7);
        double const f = std::pow(10.0, digits);
        double const decimal = std::floor(static_cast<double>(random() % 1'000'000'000)) / f;
        ASSERT_EQ(TMath::round2(decimal, digits), decimal) << digits;
        ASSERT_EQ(TMath::round2(-decimal, digits), -decimal) << digits;
        ASSERT_EQ(TMath::round2(decimal + 0.3 / f, digits), decimal) << digits;
    }
}

TEST(Math, Angles)
{
    EXPECT_EQ(TMath::DegreesToRadians(180), std::numbers::pi);
    EXPECT_EQ(TMath::RadiansToDegrees(std::numbers::pi), 180);
    EXPECT_EQ(TMath::DegreesToRadians(1e307), 1e307 * std::numbers::pi / 180); // the product first,
    EXPECT_EQ(TMath::DegreesToRadians(1e308), kInfinity);                      // as it shows where it is too large
    EXPECT_EQ(TMath::RadiansToDegrees(-1e307), -kInfinity);
}

TEST(Math, Identical)
{
    using Row = std::vector<double>;
    using Rows = std::vector<Row>;
    EXPECT_TRUE(TMath::identical(kNaN, -kNaN));
    EXPECT_TRUE(TMath::identical(0.0, -0.0));
    EXPECT_TRUE(TMath::identical(kInfinity, kInfinity));
    EXPECT_FALSE(TMath::identical(kInfinity, -kInfinity));
    EXPECT_FALSE(TMath::identical(kNaN, 0.0));
    EXPECT_TRUE(TMath::identical(Row{}, Row{}));
    EXPECT_TRUE(TMath::identical(Row{1, kNaN}, Row{1, kNaN}));
    EXPECT_FALSE(TMath::identical(Row{1, kNaN}, Row{1}));
    EXPECT_FALSE(TMath::identical(Row{1}, Row{1, 2}));
    EXPECT_FALSE(TMath::identical(Row{1, 2}, Row{1, 3}));
    EXPECT_TRUE(TMath::identical(Rows{}, Rows{}));
    EXPECT_TRUE(TMath::identical(Rows{{1}, {}, {kNaN}}, Rows{{1}, {}, {kNaN}}));
    EXPECT_FALSE(TMath::identical(Rows{{1}, {}}, Rows{{1}}));
    EXPECT_FALSE(TMath::identical(Rows{{1}, {}}, Rows{{1}, {2}}));
}

} // namespace
