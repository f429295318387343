// Numbers to text and back, held against the C++ and C libraries.

#include <bit>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "support/NumberReference.h"
#include "support/TextPrinters.h"

using testing_support::TextError;

namespace {

constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
constexpr auto kMin = std::numeric_limits<std::int64_t>::min();

// Values of every magnitude: the powers of two and of ten and their neighbours, and random bits cut to random widths.
std::vector<std::uint64_t> Values(int random)
{
    std::vector<std::uint64_t> values{0, 1, ~0ull};
    for (int bit = 0; bit < 64; ++bit) {
        std::uint64_t const power = 1ull << bit;
        values.insert(values.end(), {power - 1, power, power + 1});
    }
    for (std::uint64_t power = 1; power < 10000000000000000000ull; power *= 10) {
        values.insert(values.end(), {power - 1, power, power + 1, power * 9});
    }
    std::mt19937_64 engine(1);
    for (int i = 0; i < random; ++i) {
        values.push_back(engine() >> engine() % 64);
    }
    return values;
}

// Doubles of every exponent, with neighbours of short decimals among them.
std::vector<double> Doubles(int random)
{
    using Limits = std::numeric_limits<double>;
    std::vector<double> values{0.0,    -0.0,    0.5,    1,       1.5,  2.5,  9.5,  99.95, 1e15,
                               123456, 1234567, 0.0001, 0.00001, 1e21, 1e22, 1e23, 1e308};
    values.insert(values.end(), {Limits::max(), Limits::min(), Limits::denorm_min()});
    std::mt19937_64 engine(2);
    for (int i = 0; i < random; ++i) {
        auto const any = std::bit_cast<double>(engine());
        values.push_back(std::isfinite(any) ? any : 1.0);
        values.push_back(std::ldexp(static_cast<double>(engine() % 100000), static_cast<int>(engine() % 60) - 30));
        values.push_back(std::ldexp(static_cast<double>(engine() >> 11), static_cast<int>(engine() % 90) - 65));
        values.push_back(
            std::nextafter(static_cast<double>(engine() % 1000000) / 100.0, engine() % 2 == 0 ? 0.0 : 1e9));
    }
    return values;
}

TEST(Number, ValuesInEveryBaseReadBack)
{
    for (std::uint64_t const v : Values(2000)) {
        for (int base = 2; base <= 36; ++base) {
            number_reference::CheckValue(v, base, static_cast<int>(v % 70), u'\u00E9');
        }
        auto const s = static_cast<long long>(v);
        ASSERT_EQ(TStringCore::number(s, 16).toStdString(), number_reference::Digits(v, 16));
        TStringCore const base64 = TStringCore::number(v, 64);
        std::uint64_t back = 0;
        for (char16_t const c : base64) {
            back = back * 64 + std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
                                   .find(static_cast<char>(c));
        }
        ASSERT_EQ(back, v);
        ASSERT_TRUE(v == 0 ? base64 == u'A' : base64.front() != u'A') << v;
    }
}

TEST(Number, WidthAndFill)
{
    for (long long const v :
         {0ll, 7ll, -7ll, 42ll, -42ll, 123456789012345ll, -123456789012345ll, static_cast<long long>(kMin)}) {
        for (int width = -3; width < 40; ++width) {
            char expected[64];
            std::snprintf(expected, sizeof expected, "%0*lld", std::max(width, 0), v);
            ASSERT_EQ(TStringCore::number(v, 10, width, '0').toStdString(), expected);
            std::snprintf(expected, sizeof expected, "%*lld", std::max(width, 0), v);
            ASSERT_EQ(TStringCore::number(v, 10, width).toStdString(), expected);
            std::snprintf(expected, sizeof expected, "%0*llx", std::max(width, 0), static_cast<unsigned long long>(v));
            ASSERT_EQ(TStringCore::number(v, 16, width, L'0').toStdString(), expected);
        }
    }
    EXPECT_EQ(TStringCore::number(-5, 10, INT_MIN), u"-5");
    EXPECT_EQ(TStringCore::number(5u, 64, -INT_MAX, u'0'), u"F");
    // A code point of two units counts once; every kind of character fills.
    EXPECT_EQ(TStringCore::number32(-7, 10, 4, 0x1F600), u"\U0001F600\U0001F600-7");
    EXPECT_EQ(TStringCore::number(7u, 2, 5, U'\U0001F600'), TStringCore::number32(7u, 2, 5, 0x1F600));
    auto const pad = [](auto fill) {
        EXPECT_EQ(TStringCore::number(7, 10, 3, fill), u"\u00E9\u00E97");
        EXPECT_EQ(TStringCore::number32(7, 10, 3, fill), u"\u00E9\u00E97");
    };
    pad('\xE9');
    pad(u'\u00E9');
    pad(L'\u00E9');
    pad(U'\u00E9');
    EXPECT_EQ(TStringCore::number(0u, 64, 3, '='), u"==A");
    EXPECT_EQ(TextError([] { (void)TStringCore::number(7, 10, 0x7FFFFFFF, U'\U0001F600'); }),
              "Allocation size less than zero; probable overflow");
}

template<class V, class... How>
concept CanSet = requires(TStringCore s, V v, How... how)
{
    s.setNum(v, how...);
};
static_assert(CanSet<int> && CanSet<short, int, int, char> && CanSet<float, char, int> && CanSet<long double>);
static_assert(!CanSet<char16_t const*> && !CanSet<TStringCore> && !CanSet<int, TStringCore>);
// More than 64 bits would be cut. (std::integral includes these types in GNU mode, which this file is compiled in.)
template<class I>
concept CanRead = requires(TScanStringCore s, I& i)
{
    s.readInt(i);
};
__extension__ using Int128 = __int128;
__extension__ using UInt128 = unsigned __int128;
static_assert(CanSet<long long> && CanSet<unsigned long long> && CanRead<long long> && CanRead<unsigned char>);
static_assert(!CanSet<Int128> && !CanSet<UInt128> && !CanRead<Int128> && !CanRead<UInt128>);

TEST(Number, TypesAndBases)
{
    enum Plain { Three = 3 };
    EXPECT_EQ(TStringCore::number(static_cast<short>(-1), 16), u"ffffffffffffffff");
    EXPECT_EQ(TStringCore::number(static_cast<unsigned short>(0xFFFF), 16), u"ffff");
    EXPECT_EQ(TStringCore::number(-1, 2), TStringCore(u'1', 64));
    EXPECT_EQ(TStringCore::number(~0u), u"4294967295");
    EXPECT_EQ(TStringCore::number(Three), u"3");
    for (int const base : {-1, 0, 1, 37, 63, 65}) {
        for (auto const make : {+[](int b) { return TStringCore::number(255u, b); },
                                +[](int b) { return TStringCore::number32(-1ll, b); }}) {
            EXPECT_EQ(TextError([&] { (void)make(base); }), "TStringCore::number: base out of range.") << base;
        }
        EXPECT_EQ(TextError([&] { TStringView(u"1").toInt(nullptr, base); }),
                  base == 0 ? "" : "TStringCore::parseInteger: base out of range.");
    }
    TStringCore text;
    EXPECT_EQ(text.setNum(-42, 10, 6, '0'), u"-00042");
    EXPECT_EQ(&text.setNum(2.5, 'f', 3), &text);
    EXPECT_EQ(text, u"2.500");

    auto const* const address = reinterpret_cast<void const*>(0x1234);
    EXPECT_EQ(TStringCore::pointer(address, true, true), u"0x0000000000001234");
    EXPECT_EQ(TStringCore::pointer(address, true, false), u"0x1234");
    EXPECT_EQ(TStringCore::pointer(nullptr, false, false), u"0");
    EXPECT_EQ(TStringCore::pointer(&text, false, true).toULongLong(nullptr, 16),
              reinterpret_cast<std::uintptr_t>(&text));
}

TEST(Number, DoublesAsThePrintingOfTheCLibrary)
{
    for (double const v : Doubles(1500)) {
        for (char const format : {'e', 'E', 'f', 'F', 'g', 'G'}) {
            for (int const precision : {-1, 0, 1, 2, 6, 9, 10, 16, 17, 60}) {
                ASSERT_EQ(TStringCore::number(v, format, precision).toStdString(),
                          number_reference::Printed(v, format, precision < 0 ? 6 : precision))
                    << v << ' ' << format << precision;
            }
        }
    }
    double const limits[] = {1e308, 1.0 / 3, -std::numeric_limits<double>::denorm_min(), 0.0, 123456.75};
    for (double const v : limits) {
        for (char const format : {'e', 'f', 'g'}) {
            for (int const precision : {700, 712, 713, 714, 766, 767, 768, 1000, 1015, 1016, 1017, 1018, 1021, 1022,
                                        1023, 1024, 2000, 0x7FFFFFFF}) {
                if (precision < 3000 || format != 'f') {
                    ASSERT_EQ(TStringCore::number(v, format, precision).toStdString(),
                              number_reference::Printed(v, format, std::min(precision, 3000)))
                        << v << ' ' << format << precision;
                }
            }
        }
        EXPECT_TRUE(TStringCore::number(v, 'f', 0x7FFFFFFF).empty());
        EXPECT_EQ(TStringCore::number(v, 'x', -5), TStringCore::number(v, 'f', 6));
    }
    EXPECT_EQ(TStringCore::number(0.1), u"0.1");
    EXPECT_EQ(TStringCore::number(2.5f), u"2.5");
    for (char const format : {'e', 'G', 'f', '?'}) {
        EXPECT_EQ(TStringCore::number(HUGE_VAL, format), u"inf");
        EXPECT_EQ(TStringCore::number(-HUGE_VAL, format, 2, true), u"-inf");
        EXPECT_EQ(TStringCore::number(std::nan(""), format), u"nan");
        EXPECT_EQ(TStringCore::number(-std::nan(""), format), u"nan");
    }
    EXPECT_EQ(TStringCore::number(1.0, 'g', 6, true), u"1.0");
    EXPECT_EQ(TStringCore::number(-1e20, 'G', 6, true), u"-1.0E+20");
    EXPECT_EQ(TStringCore::number(1.5e-7, 'e', 1, true), u"1.5e-07");
    EXPECT_EQ(TStringCore::number(0.0, 'f', 1022, true).length(), 0);
    EXPECT_EQ(TStringCore::number(0.0, 'f', 1021, true).length(), 1023);
}

// (That they read back the same is asked of every value above.)
TEST(Number, ShortestTexts)
{
    EXPECT_EQ(TStringCore::numberShortest(0.1), u"0.1");
    EXPECT_EQ(TStringCore::numberShortest(0.1f), u"0.1");
    EXPECT_EQ(TStringCore::numberShortest(1), u"1");
    EXPECT_EQ(TStringCore::numberShortest(1ull << 63), u"9223372036854775808");
    EXPECT_EQ(TStringCore::numberShortest(1.5L), u"1.5");
    EXPECT_EQ(TStringCore::numberShortest(1e23), u"1e+23");
    EXPECT_EQ(TStringCore::numberShortest(-0.0), u"-0");
    EXPECT_EQ(TStringCore::numberShortest(-HUGE_VAL), u"-inf");
    EXPECT_EQ(TStringCore::numberShortest(-std::numeric_limits<float>::quiet_NaN()), u"nan");
}

TEST(NumberParsing, WholeNumbers)
{
    using namespace std::string_literals;
    using Case = std::tuple<std::u16string, int, long long, bool, int>; // the last: leftIntegerLength
    for (auto const& [units, base, value, isNumber, left] : {
             Case{u" 12 ", 10, 12, true, 0},
             Case{u"12a", 10, 12, false, 2},
             Case{u"0x1F", 0, 31, true, 4},
             Case{u"0X1f", 16, 31, true, 4},
             Case{u"010", 0, 8, true, 3},
             Case{u"-0x10", 0, -16, true, 5},
             Case{u"0x", 16, 0, false, 1},
             Case{u"0xg", 0, 0, false, 1},
             Case{u"0x10", 10, 0, false, 1},
             Case{u"0x10", 36, 33 * 36 * 36 + 36, true, 4},
             Case{u"+5", 10, 5, true, 2},
             Case{u"+-5", 10, 0, false, 0},
             Case{u"- 5", 10, 0, false, 0},
             Case{u"19", 2, 11, true, 2}, // decimal digits count in every base
             Case{u"zz", 35, 0, false, 0},
             Case{u"1:", 10, 1, false, 1},
             Case{u"1@", 16, 1, false, 1},
             Case{u"1`", 36, 1, false, 1},
             Case{u"1\x11"s, 10, 1, false, 1}, // with bit 0x20 it would be "1"
             Case{u"1\0 2"s, 10, 1, false, 1},
             Case{u"\u00A0\u30001\u2003\t\r\n\u0085"s, 10, 1, true, 0},
             Case{u"\u200B1"s, 10, 0, false, 0},
             Case{u"1\u0661"s, 10, 1, false, 1},
             Case{u"\uFF11"s, 10, 0, false, 0},
             Case{u"00000000000000000000000000000000012"s, 10, 12, true, 35},
             // Not seen by the overflow test as documented: 64 * 10^18 modulo 2^64.
             Case{u"64000000000000000000", 10, 8659767778871345152, true, 20},
         }) {
        TStringCore const text(units);
        bool ok = !isNumber;
        EXPECT_EQ(text.toLongLong(&ok, base), value) << text.toStdString();
        EXPECT_EQ(ok, isNumber) << text.toStdString();
        EXPECT_EQ(text.view().toLongLong(nullptr, base), value);
        EXPECT_EQ(text.leftIntegerLength(base), left) << text.toStdString() << ' ' << base;
    }
    bool ok = true;
    EXPECT_EQ(TStringView().toInt(&ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(TStringCore::leftIntegerLength(u"-12x", -1), 3);
    EXPECT_EQ(TStringCore::leftIntegerLength(L"7f,", 2, 16), 2);
    EXPECT_EQ(TStringCore::leftIntegerLength(static_cast<char16_t const*>(nullptr), 5), 0);
    EXPECT_EQ(TextError([] { (void)TStringView(u"").leftIntegerLength(1); }),
              "TStringCore::parseInteger: base out of range.");
    ok = true;
    EXPECT_NE(TextError([&] { TStringView(u"1").toInt(&ok, 64); }), "");
    EXPECT_FALSE(ok);
}

template<class Integer, class Read>
void CheckLimits(Read read)
{
    // One past the limits of the type, as far as 64 bits with a sign reach.
    auto const low = Int128{std::numeric_limits<Integer>::min()};
    auto const high = std::min(Int128{std::numeric_limits<Integer>::max()}, Int128{kMax});
    for (Int128 const limit : {low, high, Int128{0}}) {
        for (int off = -2; off <= 2; ++off) {
            Int128 const v = limit + off;
            auto const magnitude = static_cast<std::uint64_t>(v < 0 ? -v : v);
            for (int const base : {2, 10, 16, 36}) {
                std::string const text = (v < 0 ? "-" : "") + number_reference::Digits(magnitude, base);
                bool const fits = v >= low && v <= high;
                auto const check = [&](auto const& string) {
                    bool ok = !fits;
                    ASSERT_EQ(read(string, &ok, base), fits ? static_cast<Integer>(v) : Integer{0}) << text;
                    ASSERT_EQ(ok, fits) << text;
                };
                TStringCore const string = text.c_str();
                check(string);
                check(string.view());
            }
        }
    }
}

TEST(NumberParsing, LimitsOfTheTypes)
{
    CheckLimits<short>([](auto const& text, auto... how) { return text.toShort(how...); });
    CheckLimits<unsigned short>([](auto const& text, auto... how) { return text.toUShort(how...); });
    CheckLimits<int>([](auto const& text, auto... how) { return text.toInt(how...); });
    CheckLimits<unsigned>([](auto const& text, auto... how) { return text.toUInt(how...); });
    CheckLimits<long>([](auto const& text, auto... how) { return text.toLong(how...); });
    CheckLimits<unsigned long>([](auto const& text, auto... how) { return text.toULong(how...); });
    CheckLimits<long long>([](auto const& text, auto... how) { return text.toLongLong(how...); });
    CheckLimits<unsigned long long>([](auto const& text, auto... how) { return text.toULongLong(how...); });
}

TEST(NumberParsing, RandomDigitsInEveryBase)
{
    std::mt19937 engine(3);
    for (int i = 0; i < 60000; ++i) {
        int const base = static_cast<int>(2 + engine() % 35);
        std::string text = engine() % 2 == 0 ? "-" : "";
        int const digits = static_cast<int>(1 + engine() % 24);
        for (int d = 0; d < digits; ++d) {
            text += "0123456789abcdefghijklmnopqrstuvwxyz"[engine() % static_cast<unsigned>(base)];
        }
        number_reference::CheckInteger(text, base);
    }
}

// Anything made of these pieces is a number as far as strtod takes it for one.
TEST(NumberParsing, FloatingPointGrammarIsThatOfStrtod)
{
    constexpr char const* kPieces[] = {"+", "-",   ".",   "0",     "1",  "5", "99999999", "e",
                                       "E", "309", "inf", "INITY", "iN", ",", "f "};
    std::mt19937 engine(6);
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (auto n = engine() % 8; n > 0; --n) {
            text += kPieces[engine() % std::size(kPieces)];
        }
        char* end = nullptr;
        double const value = std::strtod(text.c_str(), &end);
        auto const left = static_cast<int>(end - text.c_str());
        TStringCore const string = text.c_str();
        // The second far into a long text, where the number is measured first.
        for (TStringCore const& form : {string, string + TStringCore(u' ', 200)}) {
            double const read = form.toDouble();
            bool const sameSign = std::signbit(read) == std::signbit(value) || left == 0; // of none some make -0
            ASSERT_TRUE(read == value && sameSign) << text << ": " << read;
        }
        ASSERT_EQ(string.leftDoubleLength(), left) << text;
        number_reference::CheckFloat<double>(text);
        number_reference::CheckFloat<float>(text);
    }
}

TEST(NumberParsing, FloatingPointTextsOfItsOwn)
{
    using Case = std::tuple<TStringCore, double, bool, int>;
    for (auto const& [text, value, isNumber, left] : {
             Case{u" 1.5\u2003", 1.5, true, 0},
             Case{u"", 0, false, 0},
             Case{u"0x10", 0, false, 1},
             Case{u"1\u0660", 1, false, 1},
             Case{u"1\uFF31", 1, false, 1},
             Case{u"1e5\u0135", 1e5, false, 3},
             Case{u"\u0149nf", 0, false, 0},
             Case{u"0e999999999999999999999", 0, true, 23},
             Case{u"1e99999999999999999999999999", HUGE_VAL, false, 28},
             Case{u"1e-99999999999999999999999999", 0, false, 29},
         }) {
        bool ok = !isNumber;
        EXPECT_EQ(text.toDouble(&ok), value) << text;
        EXPECT_EQ(ok, isNumber) << text;
        EXPECT_EQ(text.leftDoubleLength(), left) << text;
        EXPECT_EQ(text.view().toFloat(), static_cast<float>(value)) << text;
    }
    bool ok = false;
    EXPECT_TRUE(std::isnan(TStringCore(u"-NaN").toDouble(&ok)) && ok);
    EXPECT_TRUE(std::isnan(TStringCore(u"nan(1)").toFloat(&ok)) && !ok);
    EXPECT_EQ(TStringCore(u"nan(1)").leftDoubleLength(), 3);
    EXPECT_EQ(TStringView(u"1.5\0", 4).toDouble(&ok), 1.5);
    EXPECT_FALSE(ok);
    EXPECT_EQ(TStringView().toDouble(&ok), 0);
    EXPECT_EQ(TStringCore(u"1e39").toFloat(&ok), std::numeric_limits<float>::infinity());
    EXPECT_FALSE(ok);
    EXPECT_EQ(TStringCore::leftDoubleLength(L"1.5e", -1), 3);
    EXPECT_EQ(TStringView::leftDoubleLength(u"1.5e5", 4), 3);
    EXPECT_EQ(TStringView::leftDoubleLength(L"1.5e5", 4), 3);
    EXPECT_EQ(TStringView::leftIntegerLength(L"12z", -1, 36), 3);
    EXPECT_EQ(TStringView::leftIntegerLength(L"12z", 1, 36), 1);
    EXPECT_EQ(TStringCore::leftIntegerLength(static_cast<wchar_t const*>(nullptr)), 0);
    EXPECT_EQ(TStringView::leftDoubleLength(nullptr), 0);
}

TEST(NumberParsing, EveryTextIsRoundedCorrectly)
{
    std::mt19937_64 engine(4);
    auto const pick = [&](int below) { return static_cast<int>(engine() % static_cast<unsigned>(below)); };
    for (int i = 0; i < 20000; ++i) {
        // Up to 1,000 digits with a point anywhere and exponents around and past the limits.
        std::string text = pick(2) != 0 ? "-" : "";
        int const digits = 1 + (i % 20 == 0 ? pick(1000) : pick(30));
        int const point = pick(digits);
        for (int d = 0; d < digits; ++d) {
            text += d == point ? "." : "";
            text += static_cast<char>('0' + (pick(4) == 0 ? 0 : pick(10)));
        }
        if (pick(4) != 0) {
            text += "e" + std::to_string(pick(2) != 0 ? pick(700) - 350 : pick(80) - 40 - digits);
        }
        number_reference::CheckFloat<double>(text);
        number_reference::CheckFloat<float>(text);
    }
    // Halfway between two neighbours, written out in full, and off it by a digit far behind.
    for (int i = 0; i < 2000; ++i) {
        std::uint64_t const tie = ((1ull << 53) + engine() % (1ull << 53)) | 1;
        std::string const text =
            std::to_string(tie << pick(10)) + "." + std::string(static_cast<std::size_t>(pick(1000)), '0');
        number_reference::CheckFloat<double>(text);
        number_reference::CheckFloat<double>(text + "1");
        auto const single =
            static_cast<float>(std::fmod(std::bit_cast<float>(static_cast<std::uint32_t>(engine() >> 32)), 1e30F));
        double const middle = (static_cast<double>(single) + static_cast<double>(std::nextafter(single, 2e38F))) / 2;
        std::string const half = number_reference::Printed(std::isfinite(middle) ? middle : 1.0, 'e', 300);
        number_reference::CheckFloat<float>(half);
        number_reference::CheckFloat<float>(std::string(half).insert(half.find('e'), "1"));
    }
    // The smallest double above 0: 751 significant digits.
    std::string const smallest = number_reference::Printed(std::numeric_limits<double>::denorm_min(), 'e', 800);
    number_reference::CheckFloat<double>(smallest);
}

// A decimal comma, as a locale has it, changes nothing.
struct CommaPoint : std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(Number, NoLocaleChangesADigit)
{
    std::locale const before = std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
#if defined(QVXSYS_COMMA_LOCALES)
    ::setenv("LOCPATH", QVXSYS_COMMA_LOCALES, 1);
    ASSERT_NE(std::setlocale(LC_NUMERIC, "comma"), nullptr)
        << "localedef has made no locale: needs the package locales";
#endif
    int commas = 0;
    for (char const* const name : {"C", "comma", "de_DE.UTF-8", "German_Germany.1252", "fr_FR.UTF-8"}) {
        if (std::setlocale(LC_NUMERIC, name) == nullptr) {
            continue;
        }
        commas += *std::localeconv()->decimal_point == ',' ? 1 : 0;
        EXPECT_EQ(TStringCore::number(1234567.25, 'f', 2), u"1234567.25");
        EXPECT_EQ(TStringCore::numberShortest(0.5), u"0.5");
        EXPECT_EQ(TStringCore::number(1234567), u"1234567");
        bool ok = false;
        EXPECT_EQ(TStringCore(u"1234.5").toDouble(&ok), 1234.5);
        EXPECT_TRUE(ok);
        EXPECT_EQ(TStringCore(u"1,5").toFloat(&ok), 1);
        EXPECT_FALSE(ok);
    }
    std::setlocale(LC_NUMERIC, "C");
    std::locale::global(before);
#if defined(QVXSYS_COMMA_LOCALES)
    ::unsetenv("LOCPATH");
    EXPECT_GT(commas, 0);
#else
    if (commas == 0) {
        GTEST_SKIP() << "no locale with a decimal comma here";
    }
#endif
}

} // namespace
